#include "platform/os/windows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <limits>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/framework/error_report.h"
#include "tests/support/loop_thread.h"

namespace {

constexpr CRect kRectangle{10, 20, 330, 260};

LRESULT Ignore(HWND, UINT, WPARAM, LPARAM) {
  return 0;
}

HWND MakeWindow(HWND parent = nullptr, os::WindowProcedure procedure = Ignore) {
  return os::CreateWindow(parent, "title", kRectangle, std::move(procedure));
}

TEST(Windows, HaveARectangleAndATitleUntilTheyAreDestroyed) {
  const HWND window = MakeWindow();
  CRect rectangle;
  EXPECT_EQ(os::IsWindow(window), 1);
  EXPECT_EQ(os::GetWindowText(window), "title");
  EXPECT_EQ(os::GetWindowRect(window, &rectangle), 1);
  EXPECT_EQ(rectangle, kRectangle);
  EXPECT_EQ(os::MoveWindow(window, {1, 2, 3, 4}), 1);
  EXPECT_EQ(os::GetWindowRect(window, &rectangle), 1);
  EXPECT_EQ(rectangle, (CRect{1, 2, 3, 4}));

  EXPECT_EQ(os::DestroyWindow(window), 1);
  for (const HWND stale : {window, HWND{nullptr}, reinterpret_cast<HWND>(&rectangle)}) {
    EXPECT_EQ(os::IsWindow(stale), 0);
    EXPECT_EQ(os::DestroyWindow(stale), 0);
    EXPECT_EQ(os::GetWindowText(stale), "");
    EXPECT_EQ(os::GetWindowRect(stale, &rectangle), 0);
    EXPECT_EQ(os::MoveWindow(stale, kRectangle), 0);
    EXPECT_EQ(os::PostMessage(stale, os::kWmUser, 0, 0), 0);
    EXPECT_EQ(os::SendMessage(stale, os::kWmUser, 0, 0), 0);
    EXPECT_EQ(os::SetTimer(stale, 1, 1), 0);
    EXPECT_EQ(os::KillTimer(stale, 1), 0);
    EXPECT_EQ(os::DispatchMessage({stale, os::kWmUser, 0, 0}), 0);
    EXPECT_EQ(os::WithWindowPicture(stale, [](const os::WindowPicture&) { FAIL(); }), 0);
  }
  EXPECT_EQ(rectangle, (CRect{1, 2, 3, 4}));
}

TEST(Windows, NeverUseAHandleAgain) {
  std::set<HWND> handles;
  for (int i = 0; i < 1000; ++i) {
    const HWND window = MakeWindow();
    EXPECT_TRUE(handles.insert(window).second);
    os::DestroyWindow(window);
  }
}

TEST(Windows, NeedAProcedureAndALivingParent) {
  EXPECT_EQ(MakeWindow(nullptr, nullptr), nullptr);
  const HWND parent = MakeWindow();
  os::DestroyWindow(parent);
  EXPECT_EQ(MakeWindow(parent), nullptr);
}

TEST(DestroyWindow, TellsTheWindowAndThenEverythingBelowIt) {
  std::vector<std::string> told;
  const auto teller = [&told](const std::string& name) {
    return [&told, name](HWND window, UINT message, WPARAM, LPARAM) -> LRESULT {
      if (message == os::kWmDestroy) told.push_back(name);
      EXPECT_EQ(os::IsWindow(window), 1);
      return 0;
    };
  };
  const HWND parent = MakeWindow(nullptr, teller("parent"));
  const HWND child = MakeWindow(parent, teller("child"));
  const HWND grandchild = MakeWindow(child, teller("grandchild"));
  const HWND gone = MakeWindow(parent, teller("gone"));
  EXPECT_EQ(os::DestroyWindow(gone), 1);
  EXPECT_EQ(os::DestroyWindow(parent), 1);
  EXPECT_EQ(told, (std::vector<std::string>{"gone", "parent", "child", "grandchild"}));
  for (const HWND window : {parent, child, grandchild}) EXPECT_EQ(os::IsWindow(window), 0);
}

// Whatever a procedure does when told, every window is told once and goes.
TEST(DestroyWindow, EndsWhenProceduresDestroyAndCreateMeanwhile) {
  HWND parent = nullptr;
  HWND first = nullptr;
  HWND second = nullptr;
  int times_told = 0;
  const auto procedure = [&](HWND window, UINT message, WPARAM, LPARAM) -> LRESULT {
    if (message != os::kWmDestroy) return 0;
    ++times_told;
    EXPECT_EQ(os::DestroyWindow(window), 0);
    EXPECT_EQ(MakeWindow(window), nullptr);
    for (const HWND other : {parent, first, second}) os::DestroyWindow(other);
    return 0;
  };
  for (const int destroyed : {0, 1}) {
    times_told = 0;
    parent = MakeWindow(nullptr, procedure);
    first = MakeWindow(parent, procedure);
    second = MakeWindow(parent, procedure);
    EXPECT_EQ(os::DestroyWindow(destroyed == 0 ? parent : first), 1);
    EXPECT_EQ(times_told, 3);
    for (const HWND window : {parent, first, second}) EXPECT_EQ(os::IsWindow(window), 0);
  }
}

TEST(DestroyWindow, IsRefusedToOtherThreads) {
  const LoopThread other(Ignore);
  EXPECT_EQ(os::DestroyWindow(other.Window()), 0);
  EXPECT_EQ(os::IsWindow(other.Window()), 1);
}

TEST(DestroyWindow, TellsAChildOfAnotherThreadFromItsOwnLoop) {
  const HWND parent = MakeWindow();
  std::promise<std::thread::id> told;
  auto owned = std::make_shared<int>();
  const std::weak_ptr<int> alive = owned;
  {
    const LoopThread other(
        [&told, owned = std::move(owned)](HWND window, UINT message, WPARAM, LPARAM) -> LRESULT {
          if (message == os::kWmDestroy) {
            EXPECT_EQ(os::IsWindow(window), 0);
            told.set_value(std::this_thread::get_id());
            os::PostQuitMessage(0);
          }
          return 0;
        },
        parent);
    EXPECT_EQ(os::DestroyWindow(parent), 1);
    EXPECT_EQ(os::IsWindow(other.Window()), 0);
    EXPECT_NE(told.get_future().get(), std::this_thread::get_id());
  }
  EXPECT_TRUE(alive.expired());
}

TEST(Threads, DestroyTheirWindowsAtTheirEndWithoutTellingThem) {
  const HWND parent = MakeWindow();
  std::vector<HWND> windows;
  bool told = false;
  auto owned = std::make_shared<int>();
  const std::weak_ptr<int> alive = owned;
  std::thread([&] {
    const auto procedure = [&told, owned](HWND, UINT, WPARAM, LPARAM) -> LRESULT {
      told = true;
      return 0;
    };
    windows.push_back(MakeWindow(nullptr, procedure));
    windows.push_back(MakeWindow(windows[0], procedure));
    windows.push_back(MakeWindow(parent, procedure));
  }).join();
  owned.reset();
  for (const HWND window : windows) EXPECT_EQ(os::IsWindow(window), 0);
  EXPECT_FALSE(told);
  EXPECT_TRUE(alive.expired());
  EXPECT_EQ(os::DestroyWindow(parent), 1);
}

TEST(Threads, TakeChildrenInOtherThreadsAlongAtTheirEnd) {
  std::promise<HWND> parent_made;
  std::promise<void> child_made;
  std::promise<void> child_told;
  std::thread owner([&] {
    parent_made.set_value(MakeWindow());
    child_made.get_future().wait();
  });
  const LoopThread other(
      [&](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
        if (message != os::kWmDestroy) return 0;
        child_told.set_value();
        os::PostQuitMessage(0);
        return 0;
      },
      parent_made.get_future().get());
  child_made.set_value();
  owner.join();
  EXPECT_EQ(os::IsWindow(other.Window()), 0);
  child_told.get_future().wait();
}

TEST(Procedures, ReportTheExceptionsTheyLetOut) {
  std::string report;
  const ErrorSink before =
      SetErrorSink([&](const std::exception& error) { report = error.what(); });
  const HWND window = MakeWindow(
      nullptr, [](HWND, UINT, WPARAM, LPARAM) -> LRESULT { throw std::runtime_error("x"); });
  EXPECT_EQ(os::SendMessage(window, os::kWmUser, 0, 0), 0);
  EXPECT_EQ(report, "x");
  report.clear();
  os::DestroyWindow(window);
  EXPECT_EQ(report, "x");
  EXPECT_EQ(os::IsWindow(window), 0);
  SetErrorSink(before);
}

TEST(WindowPictures, KeepWhatIsDrawnAndTurnBlackWhenTheSizeChanges) {
  const HWND window = MakeWindow();
  const auto pixel_sum = [&] {
    int sum = -1;
    os::WithWindowPicture(window, [&](const os::WindowPicture& picture) {
      sum = 0;
      for (const BYTE byte : picture.m_pixels) sum += byte;
    });
    return sum;
  };
  const auto draw = [](const os::WindowPicture& picture) {
    EXPECT_EQ(picture.m_size, (CSize{320, 240}));
    ASSERT_EQ(picture.m_pixels.size(), 320U * 240 * 4);
    picture.m_pixels.front() = 1;
    picture.m_pixels.back() = 2;
  };
  EXPECT_EQ(pixel_sum(), 0);
  EXPECT_EQ(os::WithWindowPicture(window, draw), 1);
  EXPECT_EQ(pixel_sum(), 3);
  os::MoveWindow(window, {0, 0, 320, 240});
  EXPECT_EQ(pixel_sum(), 3);
  os::MoveWindow(window, {0, 0, 240, 320});
  EXPECT_EQ(pixel_sum(), 0);
  os::DestroyWindow(window);
  EXPECT_EQ(pixel_sum(), -1);
}

TEST(WindowPictures, ArePresentOnlyWhereTheRectangleHasAnArea) {
  constexpr LONG kMin = std::numeric_limits<LONG>::min();
  constexpr LONG kMax = std::numeric_limits<LONG>::max();
  for (const CRect& rectangle :
       {CRect{}, CRect{5, 5, 5, 50}, CRect{9, 9, 0, 0}, CRect{0, 0, 16385, 1},
        CRect{kMin, kMin, kMax, kMax}, CRect{kMax, kMax, kMin, kMin}}) {
    const HWND window = os::CreateWindow(nullptr, "", rectangle, Ignore);
    EXPECT_EQ(os::WithWindowPicture(window, [](const os::WindowPicture&) { FAIL(); }), 0);
    os::DestroyWindow(window);
  }
}

TEST(WindowPictures, AreDrawnByOneThreadAtATime) {
  const HWND window = MakeWindow();
  const auto draw = [window](BYTE value) {
    for (int i = 0; i < 50; ++i) {
      os::WithWindowPicture(window, [&](const os::WindowPicture& picture) {
        const BYTE before = picture.m_pixels.front();
        EXPECT_EQ(std::count(picture.m_pixels.begin(), picture.m_pixels.end(), before),
                  std::ssize(picture.m_pixels));
        std::fill(picture.m_pixels.begin(), picture.m_pixels.end(), value);
        os::PostMessage(window, os::kWmUser, value, 0);
      });
    }
  };
  std::thread first(draw, BYTE{1});
  std::thread second(draw, BYTE{2});
  for (LONG width = 320; width > 300; --width) os::MoveWindow(window, {0, 0, width, 240});
  first.join();
  second.join();
  os::DestroyWindow(window);
}

}  // namespace
