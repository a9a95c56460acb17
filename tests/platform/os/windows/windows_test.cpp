#include "platform/os/windows/windows.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <memory>
#include <string>

#include "platform/framework/error_report.h"
#include "platform/framework/file_exception.h"
#include "tests/support/window_fixture.h"

using namespace zebx;

namespace {

constexpr LONG kMin = std::numeric_limits<LONG>::min();
constexpr LONG kMax = std::numeric_limits<LONG>::max();
constexpr CRect kRectangle{10, 20, 330, 260};

class Windows : public WindowTest {};
class DestroyWindow : public WindowTest {};
class WindowPictures : public WindowTest {};

TEST_F(Windows, AreNoneOnceTheyAreDestroyed) {
  HWND window = Make();
  CRect rectangle;
  EXPECT_EQ(os::DestroyWindow(window), 1);
  EXPECT_NE(Make(), window);
  EXPECT_EQ(os::IsWindow(window) + os::DestroyWindow(window), 0);
  EXPECT_EQ(os::GetWindowRect(window, &rectangle) + os::MoveWindow(window, {}), 0);
  EXPECT_EQ(Make(nullptr), nullptr);
}

// To the sink, which may replace itself, and without one as a line.
TEST_F(Windows, ReportTheExceptionsThatTheirProceduresLetOut) {
  std::string report;
  SetErrorSink([&](const std::exception& error) {
    report += error.what();
    SetErrorSink({});
    report += "!";  // what was captured still lives
  });
  HWND window = Make([](HWND, UINT, WPARAM, LPARAM) -> LRESULT {
    throw CFileException(CFileException::Cause::kAccessDenied, EACCES, "x");
  });
  testing::internal::CaptureStderr();
  EXPECT_EQ(os::SendMessage(window, os::kWmUser, 0, 0), 0);
  EXPECT_EQ(os::DestroyWindow(window), 1);
  EXPECT_EQ(report, "x: access is denied (Permission denied)!");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "zebx: x: access is denied (Permission denied)\n");
}

// Whatever a procedure does when told, every window is told once, a child after its parent.
TEST_F(DestroyWindow, TellsTheWholeFamilyEvenWhenProceduresDestroyAndCreateMeanwhile) {
  std::vector<HWND> family, told;
  const auto procedure = [&](HWND window, UINT message, WPARAM, LPARAM) -> LRESULT {
    if (message != os::kWmDestroy) return 0;
    told.push_back(window);
    EXPECT_EQ(os::IsWindow(window), 1);
    EXPECT_EQ(os::DestroyWindow(window), 0);
    EXPECT_EQ(Make(AddParameters, window), nullptr);
    for (HWND other : family) os::DestroyWindow(other);
    return 0;
  };
  HWND parent = Make(procedure);
  HWND child = Make(procedure, parent);
  HWND grandchild = Make(procedure, child);
  EXPECT_EQ(os::DestroyWindow(parent), 1);
  EXPECT_EQ(told, (std::vector<HWND>{parent, child, grandchild}));

  told.clear();
  parent = Make(procedure);
  family = {parent, Make(procedure, parent), Make(procedure, parent)};
  EXPECT_EQ(os::DestroyWindow(family[1]), 1);
  EXPECT_EQ(told.size(), 3U);
  for (HWND window : family) EXPECT_EQ(os::IsWindow(window), 0);
}

TEST_F(Windows, EndWithTheirThreadWhichTellsOnlyChildrenInOtherThreads) {
  HWND parent = Make();
  std::promise<std::vector<HWND>> made;
  std::promise<void> child_made, child_told;
  const auto alive = std::make_shared<int>();
  std::thread owner([&] {
    const auto make = [alive](HWND above) {
      return os::CreateWindow(above, "", {}, [alive](HWND, UINT, WPARAM, LPARAM) -> LRESULT {
        ADD_FAILURE() << "what it refers to may have ended";
        return 0;
      });
    };
    HWND first = make(nullptr);
    made.set_value({first, make(first), make(parent)});
    child_made.get_future().wait();
  });
  const std::vector<HWND> windows = made.get_future().get();
  const auto tell = [&](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
    if (message != os::kWmDestroy) return 0;
    child_told.set_value();
    os::PostQuitMessage(0);
    return 0;
  };
  const LoopThread other(tell, windows[0]);
  EXPECT_EQ(os::DestroyWindow(other.Window()), 0) << "its own thread's alone";
  child_made.set_value();
  owner.join();
  child_told.get_future().wait();
  for (HWND window : windows) EXPECT_EQ(os::IsWindow(window), 0);
  EXPECT_EQ(os::IsWindow(other.Window()), 0);
  EXPECT_EQ(alive.use_count(), 1);
  EXPECT_EQ(os::DestroyWindow(parent), 1);
}

TEST_F(WindowPictures, KeepWhatIsDrawnAndTurnBlackWhenTheSizeChanges) {
  HWND window = Make();
  // Moves the window. What a first byte was before it is set; -1 without a picture.
  const auto draw = [&](const CRect& rectangle) {
    int before = -1;
    os::MoveWindow(window, rectangle);
    os::WithWindowPicture(window, [&](const os::WindowPicture& picture) {
      EXPECT_EQ(picture.m_size, (CSize{rectangle.Width(), rectangle.Height()}));
      ASSERT_EQ(picture.m_pixels.size(), 320U * 240 * 4);
      before = std::exchange(picture.m_pixels.front(), BYTE{1});
    });
    return before;
  };
  EXPECT_EQ(draw(kRectangle), 0);
  EXPECT_EQ(draw({0, 0, 320, 240}), 1);
  EXPECT_EQ(draw({0, 0, 240, 320}), 0);
  for (const CRect& none : {CRect{9, 9, 0, 0}, CRect{0, 0, 16385, 1}, CRect{0, 0, 1, 16385},
                            CRect{kMin, kMin, kMax, kMax}, CRect{kMax, kMax, kMin, kMin}}) {
    EXPECT_EQ(draw(none), -1);
  }
}

}  // namespace
