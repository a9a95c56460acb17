// Window timers by a clock that is stepped by hand.
#include <gtest/gtest.h>

#include <future>
#include <optional>
#include <vector>

#include "platform/os/clock.h"
#include "platform/os/windows.h"
#include "tests/support/loop_thread.h"

namespace {

using Ids = std::vector<WPARAM>;

class TimersTest : public testing::Test {
 protected:
  ~TimersTest() override { os::DestroyWindow(m_window); }

  // The timers that are due now, in the order of their messages.
  static Ids TakeDue() {
    Ids ids;
    os::Message message;
    while (os::PeekMessage(&message) != 0) {
      EXPECT_EQ(message.m_message, os::kWmTimer);
      ids.push_back(message.m_wparam);
    }
    return ids;
  }

  static LRESULT Ignore(HWND, UINT, WPARAM, LPARAM) { return 0; }

  // Close to where the tick counter wraps.
  std::optional<os::SteppedClock> m_clock{std::in_place, 1000, 0xFFFFFFF0};
  const HWND m_window = os::CreateWindow(nullptr, "", {}, Ignore);
};

TEST_F(TimersTest, FallDueEveryIntervalOnTheirGrid) {
  EXPECT_EQ(os::SetTimer(m_window, 100, 5), 1);
  EXPECT_EQ(TakeDue(), Ids{});
  m_clock->Advance(4);
  EXPECT_EQ(TakeDue(), Ids{});
  m_clock->Advance(1);
  EXPECT_EQ(TakeDue(), Ids{100});
  m_clock->Advance(7);  // at 12: the one of 10 is late
  EXPECT_EQ(TakeDue(), Ids{100});
  m_clock->Advance(3);  // at 15, behind the wrap
  EXPECT_EQ(TakeDue(), Ids{100});
  m_clock->Advance(14);  // at 29: those of 20 and 25 are one
  EXPECT_EQ(TakeDue(), Ids{100});
  m_clock->Advance(1);
  EXPECT_EQ(TakeDue(), Ids{100});
}

TEST_F(TimersTest, ComeBehindEverythingElseAndTheLatestFirst) {
  os::SetTimer(m_window, 1, 10);
  os::SetTimer(m_window, 2, 5);
  os::SetTimer(m_window, 3, 7);
  m_clock->Advance(10);
  os::PostMessage(m_window, os::kWmUser, 0, 0);
  os::PostQuitMessage(0);
  os::Message message;
  EXPECT_EQ(os::GetMessage(&message), 1);
  EXPECT_EQ(message.m_message, os::kWmUser);
  EXPECT_EQ(os::GetMessage(&message), 0);
  EXPECT_EQ(os::PeekMessage(&message, nullptr, os::kWmUser, os::kWmUser), 0);
  EXPECT_EQ(TakeDue(), (Ids{2, 3, 1}));
}

TEST_F(TimersTest, StartAnewWhenSetAgainAndStopWhenKilled) {
  os::SetTimer(m_window, 1, 10);
  os::SetTimer(m_window, 2, 10);
  m_clock->Advance(9);
  os::SetTimer(m_window, 1, 5);
  EXPECT_EQ(os::KillTimer(m_window, 2), 1);
  EXPECT_EQ(os::KillTimer(m_window, 2), 0);
  m_clock->Advance(4);
  EXPECT_EQ(TakeDue(), Ids{});
  m_clock->Advance(1);
  EXPECT_EQ(TakeDue(), Ids{1});
}

TEST_F(TimersTest, TakeExtremeIntervals) {
  os::SetTimer(m_window, 1, 0);
  os::SetTimer(m_window, 2, 0xFFFFFFFF);
  EXPECT_EQ(TakeDue(), Ids{});
  m_clock->Advance(1);
  EXPECT_EQ(TakeDue(), Ids{1});
  os::KillTimer(m_window, 1);
  m_clock->Advance(0x7FFFFFFE);
  EXPECT_EQ(TakeDue(), Ids{2});
}

TEST_F(TimersTest, GoOnAfterTheClockWasSetBack) {
  m_clock->Advance(50000);
  os::SetTimer(m_window, 1, 10);
  m_clock->MoveTo(0);
  EXPECT_EQ(TakeDue(), Ids{});
  m_clock->Advance(10);
  EXPECT_EQ(TakeDue(), Ids{1});
}

TEST_F(TimersTest, GoOnByTheClockPutInForce) {
  os::SetTimer(m_window, 1, 10);
  m_clock.reset();
  m_clock.emplace(1000, 500000);
  TakeDue();  // due or not, as the two clocks happen to stand to each other
  m_clock->Advance(10);
  EXPECT_EQ(TakeDue(), Ids{1});
}

TEST_F(TimersTest, WakeALoopThatWaitsWhenTheClockIsStepped) {
  std::promise<WPARAM> fired;
  const LoopThread other([&](HWND window, UINT message, WPARAM wparam, LPARAM) -> LRESULT {
    if (message == os::kWmTimer) {
      os::KillTimer(window, static_cast<UINT>(wparam));
      fired.set_value(wparam);
    }
    return 0;
  });
  // Set from this thread while the loop waits without a timer; an hour that passes in one step.
  EXPECT_EQ(os::SetTimer(other.Window(), 100, 3600000), 1);
  m_clock->Advance(3600000);
  EXPECT_EQ(fired.get_future().get(), 100U);
}

TEST_F(TimersTest, RunByTheMachinesClockWithoutAnyStep) {
  m_clock.reset();
  os::SetTimer(m_window, 5, 1);
  os::Message message;
  EXPECT_EQ(os::GetMessage(&message), 1);
  EXPECT_EQ(message.m_message, os::kWmTimer);
  EXPECT_EQ(message.m_wparam, 5U);
}

}  // namespace
