// Closing windows for good, from other threads than theirs.
#include <atomic>
#include <functional>
#include <latch>

#include "platform/os/windows/completion.h"
#include "tests/support/window_fixture.h"

namespace {

constexpr UINT kGo = os::kWmUser;
constexpr UINT kAsk = os::kWmUser + 1;

class CloseWindow : public WindowTest {};

void AwaitGone(HWND window) {
  while (os::IsWindow(window) != 0) std::this_thread::yield();
}

// A window of another thread that does something for kGo, once, and says where that stands. The
// thread ends afterwards.
class BusyWindow {
 public:
  explicit BusyWindow(std::function<void(HWND)> work, HWND parent = nullptr)
      : m_loop(
            [this, work = std::move(work)](HWND window, UINT message, WPARAM, LPARAM) -> LRESULT {
              if (message != kGo) ++m_other_calls;
              if (message != kGo) return 9;
              m_is_inside.Complete();
              work(window);
              m_has_ended = true;
              os::PostQuitMessage(0);
              return 9;
            },
            parent) {}

  HWND Window() const { return m_loop.Window(); }
  void Go() {
    EXPECT_EQ(os::PostMessage(Window(), kGo, 0, 0), 1);
    m_is_inside.Wait();
  }
  bool HasEnded() const { return m_has_ended; }
  int OtherCalls() const { return m_other_calls; }

 private:
  os::Completion m_is_inside;
  std::atomic<bool> m_has_ended = false;
  std::atomic<int> m_other_calls = 0;
  const LoopThread m_loop;
};

TEST_F(CloseWindow, WaitsForTheProcedureWhateverThatDoesAndLetsNothingFollow) {
  HWND own = Make();
  HWND above = Make();
  std::jthread second_closer;
  const BusyWindow* closed = nullptr;
  const std::vector<std::function<void(HWND)>> works = {
      [](HWND) {}, [&](HWND) { EXPECT_EQ(os::SendMessage(own, kAsk, 40, 2), 42); },
      [&](HWND window) { EXPECT_EQ(os::DestroyWindow(window) + os::CloseWindow(window), 0); },
      [&](HWND window) {
        second_closer = std::jthread([&, window] {
          EXPECT_EQ(os::CloseWindow(window), 0);
          EXPECT_TRUE(closed->HasEnded());
        });
      }};
  for (const auto& work : works) {
    for (HWND parent : {HWND{}, above}) {
      SCOPED_TRACE(&work - works.data());
      BusyWindow busy(
          [&](HWND window) {
            AwaitGone(window);
            work(window);
          },
          parent);
      closed = &busy;
      busy.Go();
      os::PostMessage(busy.Window(), kAsk, 0, 0);
      os::SetTimer(busy.Window(), 1, 1);
      std::future<LRESULT> asked =
          std::async([&] { return os::SendMessage(busy.Window(), kAsk, 0, 0); });
      // With its parent, which is this thread's and does not run.
      EXPECT_EQ(os::CloseWindow(parent != nullptr ? parent : busy.Window()), 1);
      EXPECT_TRUE(busy.HasEnded());
      EXPECT_EQ(os::PostMessage(busy.Window(), kAsk, 0, 0), 0);
      EXPECT_EQ(asked.get(), 0);
      EXPECT_EQ(busy.OtherCalls(), 0);
      if (second_closer.joinable()) second_closer.join();
    }
    above = Make();
  }
}

// The closer is answering a message that came out of the procedure: directly, over another thread,
// or the procedure is closing what waits for that message.
TEST_F(CloseWindow, AnswersEarlyWhatCameOutOfTheProcedure) {
  enum class Way { kDirectly, kOverAnother, kOverAnotherCloser };
  for (const Way way : {Way::kDirectly, Way::kOverAnother, Way::kOverAnotherCloser}) {
    SCOPED_TRACE(static_cast<int>(way));
    HWND to_close = nullptr;
    std::function<bool()> has_ended;
    bool is_done = false;
    HWND own = Make([&](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
      if (message == kAsk) {
        EXPECT_EQ(os::CloseWindow(to_close), 1);
        EXPECT_TRUE(has_ended());
        is_done = true;
      }
      return 7;
    });
    const LoopThread between([&](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
      return message == kAsk ? os::SendMessage(own, kAsk, 0, 0) + 3 : 0;
    });
    BusyWindow sender([&](HWND window) {
      if (way == Way::kOverAnotherCloser) AwaitGone(window);
      const bool is_over_another = way == Way::kOverAnother;
      HWND to_ask = is_over_another ? between.Window() : own;
      EXPECT_EQ(os::SendMessage(to_ask, kAsk, 0, 0), is_over_another ? 3 : 0);
    });
    // Waits for the sender, and is what is waited for.
    BusyWindow closer([&](HWND) {
      if (way == Way::kOverAnotherCloser) os::CloseWindow(sender.Window());
    });
    BusyWindow& waited_for = way == Way::kOverAnotherCloser ? closer : sender;
    to_close = waited_for.Window();
    has_ended = [&] { return waited_for.HasEnded(); };
    sender.Go();
    if (way == Way::kOverAnotherCloser) {
      closer.Go();
    } else {
      os::PostMessage(closer.Window(), kGo, 0, 0);
    }
    while (!is_done) {
      os::Message message;
      os::PeekMessage(&message);
    }
  }
}

TEST_F(CloseWindow, DoesNotWaitForAProcedureThatIsClosingItsOwn) {
  std::vector<std::unique_ptr<BusyWindow>> circle;
  os::Completion all_inside;
  constexpr std::size_t kCount = 3;
  std::atomic<int> others_ended = 0;
  std::latch all_looked(kCount);
  for (std::size_t index = 0; index < kCount; ++index) {
    circle.push_back(std::make_unique<BusyWindow>([&, next = (index + 1) % kCount](HWND) {
      all_inside.Wait();
      EXPECT_EQ(os::CloseWindow(circle[next]->Window()), 1);
      if (circle[next]->HasEnded()) ++others_ended;
      all_looked.count_down();
    }));
  }
  for (const auto& busy : circle) busy->Go();
  all_inside.Complete();
  all_looked.wait();
  EXPECT_EQ(others_ended, 2);  // all but for the one that was the last to close
}

// Two threads that wait for each other's windows without a circle: what is waited for runs inside
// of the first wait.
TEST_F(CloseWindow, WaitsForAProcedureThatRunsWhileItsThreadWaits) {
  std::atomic<bool> has_ended = false;
  os::Completion is_inside;
  HWND own = Make([&](HWND window, UINT message, WPARAM, LPARAM) -> LRESULT {
    if (message != kAsk) return 0;
    is_inside.Complete();
    AwaitGone(window);
    has_ended = true;
    return 0;
  });
  BusyWindow busy([&](HWND window) {
    AwaitGone(window);
    const std::jthread sender([&] { os::SendMessage(own, kAsk, 0, 0); });
    is_inside.Wait();
    EXPECT_EQ(os::CloseWindow(own), 1);
    EXPECT_TRUE(has_ended);
  });
  busy.Go();
  EXPECT_EQ(os::CloseWindow(busy.Window()), 1);
  EXPECT_TRUE(busy.HasEnded());
}

}  // namespace
