// Sending, posting and taking messages, within a thread and across threads.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "platform/os/windows.h"
#include "tests/support/loop_thread.h"

namespace {

constexpr UINT kPing = os::kWmUser + 1;
constexpr UINT kAdd = os::kWmUser + 2;

using Numbers = std::vector<UINT>;

HWND MakeWindow(os::WindowProcedure procedure) {
  return os::CreateWindow(nullptr, "", {}, std::move(procedure));
}

LRESULT Add(HWND, UINT, WPARAM wparam, LPARAM lparam) {
  return static_cast<LRESULT>(wparam) + lparam;
}

// The numbers of the messages that are waiting, taken.
Numbers TakeAll(HWND window = nullptr, UINT first = 0, UINT last = 0) {
  Numbers numbers;
  os::Message message;
  while (os::PeekMessage(&message, window, first, last) != 0) numbers.push_back(message.m_message);
  return numbers;
}

// A thread with a window that takes no messages until it is told to go on, and ends then.
class ParkedThread {
 public:
  explicit ParkedThread(std::function<void(HWND)> go_on) {
    std::promise<HWND> made;
    auto window = made.get_future();
    m_thread = std::thread([this, &made, go_on = std::move(go_on)] {
      const HWND own = MakeWindow(Add);
      made.set_value(own);
      m_go_on.get_future().wait();
      go_on(own);
    });
    m_window = window.get();
  }
  ~ParkedThread() { m_thread.join(); }
  ParkedThread(const ParkedThread&) = delete;
  ParkedThread& operator=(const ParkedThread&) = delete;

  HWND Window() const { return m_window; }
  void GoOn() { m_go_on.set_value(); }

 private:
  std::thread m_thread;
  std::promise<void> m_go_on;
  HWND m_window = nullptr;
};

// A thread that waits in SendMessage for the answer of `target`, a window of a third thread.
class WaitingSender {
 public:
  explicit WaitingSender(HWND target) {
    std::promise<HWND> made;
    auto window = made.get_future();
    m_answer = std::async(std::launch::async, [target, &made] {
      made.set_value(MakeWindow(Add));
      return os::SendMessage(target, kAdd, 3, 4);
    });
    m_window = window.get();
    // It has no loop: it answers only once its own message is on its way.
    EXPECT_EQ(os::SendMessage(m_window, kAdd, 1, 2), 3);
  }
  LRESULT Answer() { return m_answer.get(); }

 private:
  HWND m_window = nullptr;
  std::future<LRESULT> m_answer;
};

TEST(Messages, AreTakenInTheOrderOfPostingAndDispatchedToTheirWindow) {
  Numbers first_seen;
  Numbers second_seen;
  const HWND first = MakeWindow([&](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
    first_seen.push_back(message);
    return 11;
  });
  const HWND second = MakeWindow([&](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
    second_seen.push_back(message);
    return 22;
  });
  EXPECT_EQ(os::PostMessage(first, 0x401, 5, -6), 1);
  EXPECT_EQ(os::PostMessage(second, 0x402, 0, 0), 1);
  EXPECT_EQ(os::PostMessage(first, 0x403, 0, 0), 1);
  EXPECT_TRUE(first_seen.empty());

  os::Message message;
  ASSERT_EQ(os::GetMessage(&message), 1);
  EXPECT_EQ(message.m_window, first);
  EXPECT_EQ(message.m_wparam, 5U);
  EXPECT_EQ(message.m_lparam, -6);
  EXPECT_EQ(os::DispatchMessage(message), 11);
  ASSERT_EQ(os::GetMessage(&message), 1);
  EXPECT_EQ(os::DispatchMessage(message), 22);
  EXPECT_EQ(TakeAll(), Numbers{0x403});
  EXPECT_EQ(first_seen, Numbers{0x401});
  EXPECT_EQ(second_seen, Numbers{0x402});
  os::DestroyWindow(first);
  os::DestroyWindow(second);
}

TEST(Messages, AreFoundByWindowAndNumber) {
  const HWND first = MakeWindow(Add);
  const HWND second = MakeWindow(Add);
  for (const UINT number : {0x401U, 0x466U, 0x402U, 0x466U}) os::PostMessage(first, number, 0, 0);
  os::PostMessage(second, 0x466, 0, 0);
  os::PostQuitMessage(0);
  EXPECT_EQ(TakeAll(first, 0x466, 0x466), (Numbers{0x466, 0x466}));
  EXPECT_EQ(TakeAll(second), Numbers{0x466});
  EXPECT_EQ(TakeAll(nullptr, 0x402, 0x500), Numbers{0x402});
  EXPECT_EQ(TakeAll(), (Numbers{0x401, os::kWmQuit}));
  os::DestroyWindow(first);
  os::DestroyWindow(second);
}

TEST(Messages, EndTheLoopWithTheQuitMessageBehindWhatWasPosted) {
  const HWND window = MakeWindow(Add);
  os::PostQuitMessage(7);
  os::PostMessage(window, kPing, 0, 0);
  os::Message message;
  EXPECT_EQ(os::GetMessage(&message), 1);
  EXPECT_EQ(message.m_message, kPing);
  EXPECT_EQ(os::GetMessage(&message), 0);
  EXPECT_EQ(message.m_message, os::kWmQuit);
  EXPECT_EQ(message.m_wparam, 7U);
  EXPECT_EQ(os::PeekMessage(&message), 0);
  os::DestroyWindow(window);
}

TEST(Messages, AreDroppedWithTheirWindow) {
  const HWND window = MakeWindow(Add);
  const HWND other = MakeWindow(Add);
  os::PostMessage(window, 0x401, 0, 0);
  os::PostMessage(other, 0x402, 0, 0);
  os::SetTimer(window, 1, 1);
  os::DestroyWindow(window);
  EXPECT_EQ(TakeAll(), Numbers{0x402});
  os::DestroyWindow(other);
}

TEST(Messages, DoNotFillTheMemoryOfAThreadThatTakesNone) {
  const HWND window = MakeWindow(Add);
  int posted = 0;
  while (posted < 100000 && os::PostMessage(window, kPing, 0, 0) != 0) ++posted;
  EXPECT_EQ(posted, 10000);
  os::Message message;
  os::GetMessage(&message);
  EXPECT_EQ(os::PostMessage(window, kPing, 0, 0), 1);
  os::DestroyWindow(window);
}

TEST(SendMessage, RunsTheOwnThreadsProcedureAtOnce) {
  const HWND window = MakeWindow(Add);
  os::PostMessage(window, kPing, 0, 0);
  EXPECT_EQ(os::SendMessage(window, kAdd, 40, 2), 42);
  EXPECT_EQ(TakeAll(), Numbers{kPing});
  os::DestroyWindow(window);
}

TEST(SendMessage, WaitsForTheLoopOfAnotherThread) {
  std::atomic<std::thread::id> ran_in;
  const LoopThread other([&](HWND, UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
    if (message == kAdd) ran_in = std::this_thread::get_id();
    return static_cast<LRESULT>(wparam) + lparam;
  });
  EXPECT_EQ(os::SendMessage(other.Window(), kAdd, 40, 2), 42);
  EXPECT_NE(ran_in.load(), std::thread::id());
  EXPECT_NE(ran_in.load(), std::this_thread::get_id());
}

TEST(SendMessage, IsAnsweredByPeekingToo) {
  ParkedThread owner([](HWND window) { EXPECT_EQ(TakeAll(window, kPing, kPing), Numbers{}); });
  WaitingSender first(owner.Window());
  WaitingSender second(owner.Window());
  owner.GoOn();
  EXPECT_EQ(first.Answer(), 7);
  EXPECT_EQ(second.Answer(), 7);
}

TEST(SendMessage, AnswersSendersButTakesNoPostedMessagesWhileItWaits) {
  const HWND window = MakeWindow(Add);
  os::PostMessage(window, kPing, 0, 0);
  // Sends back to the window that is waiting for it.
  const LoopThread other([&](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
    return message == kPing ? os::SendMessage(window, kAdd, 40, 2) + 1 : 0;
  });
  EXPECT_EQ(os::SendMessage(other.Window(), kPing, 0, 0), 43);
  EXPECT_EQ(TakeAll(), Numbers{kPing});
  os::DestroyWindow(window);
}

TEST(SendMessage, Gives0WhenTheWindowEndsFirst) {
  std::promise<void> may_end;
  ParkedThread owner([&](HWND window) {
    os::DestroyWindow(window);
    may_end.get_future().wait();
  });
  WaitingSender first(owner.Window());
  WaitingSender second(owner.Window());
  owner.GoOn();
  EXPECT_EQ(first.Answer(), 0);
  EXPECT_EQ(second.Answer(), 0);
  may_end.set_value();
}

TEST(SendMessage, Gives0WhenTheThreadEndsFirst) {
  ParkedThread owner([](HWND) {});
  WaitingSender first(owner.Window());
  WaitingSender second(owner.Window());
  owner.GoOn();
  EXPECT_EQ(first.Answer(), 0);
  EXPECT_EQ(second.Answer(), 0);
}

TEST(SendMessage, AnswersAfterTheProcedureDestroyedItsWindow) {
  const LoopThread other([](HWND window, UINT message, WPARAM, LPARAM) -> LRESULT {
    if (message == kPing) {
      os::DestroyWindow(window);
      os::PostQuitMessage(0);
    }
    return 5;
  });
  EXPECT_EQ(os::SendMessage(other.Window(), kPing, 0, 0), 5);
  EXPECT_EQ(os::IsWindow(other.Window()), 0);
}

// Every thread sends to the next one of a ring, and each message goes on round the ring twice
// before it is answered, so that all threads wait for each other all the time.
TEST(SendMessage, NeverLocksThreadsThatSendToEachOther) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 200;
  std::vector<HWND> windows(kThreads);
  std::vector<std::unique_ptr<LoopThread>> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.push_back(std::make_unique<LoopThread>(
        [&windows, i](HWND, UINT message, WPARAM steps, LPARAM) -> LRESULT {
          const HWND next = windows[static_cast<std::size_t>((i + 1) % kThreads)];
          if (message == kAdd) {
            return steps == 0 ? 1 : os::SendMessage(next, kAdd, steps - 1, 0) + 1;
          }
          if (message != kPing) return 0;
          for (int round = 0; round < kRounds; ++round) {
            EXPECT_EQ(os::SendMessage(next, kAdd, 2 * kThreads, 0), 2 * kThreads + 1);
          }
          return 0;
        }));
    windows[static_cast<std::size_t>(i)] = threads.back()->Window();
  }
  std::vector<std::thread> starters;
  for (const HWND window : windows) {
    starters.emplace_back([window] { os::SendMessage(window, kPing, 0, 0); });
  }
  for (std::thread& starter : starters) starter.join();
}

// Windows come and go while others send, post and set timers: nobody hangs, and a handle that is
// gone stays gone.
TEST(SendMessage, ComesBackFromWindowsThatComeAndGo) {
  std::atomic<HWND> target = nullptr;
  std::atomic<bool> is_over = false;
  std::thread owner([&] {
    for (int i = 0; i < 300; ++i) {
      const HWND window = MakeWindow(Add);
      target = window;
      os::Message message;
      while (i % 3 != 0 && os::PeekMessage(&message) == 0 && !is_over) std::this_thread::yield();
      os::DestroyWindow(window);
      EXPECT_EQ(os::IsWindow(window), 0);
    }
    is_over = true;
  });
  std::thread poster([&] {
    while (!is_over) {
      os::PostMessage(target, kPing, 0, 0);
      os::SetTimer(target, 1, 1);
    }
  });
  while (!is_over) {
    const LRESULT answer = os::SendMessage(target, kAdd, 3, 4);
    EXPECT_TRUE(answer == 0 || answer == 7);
  }
  owner.join();
  poster.join();
}

}  // namespace
