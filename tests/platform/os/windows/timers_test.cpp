// Window timers by a clock that is stepped by hand.
#include <semaphore>

#include "platform/os/clock.h"
#include "tests/support/window_fixture.h"

namespace {

using Ids = std::vector<WPARAM>;

class Timers : public WindowTest {
 protected:
  // The timers that are due after so many milliseconds more, in the order of their messages.
  Ids After(ULONGLONG milliseconds) {
    m_clock.Advance(milliseconds);
    Ids ids;
    os::Message message;
    while (os::PeekMessage(&message) != 0) {
      EXPECT_EQ(message.m_message, os::kWmTimer);
      ids.push_back(message.m_wparam);
    }
    return ids;
  }

  os::SteppedClock m_clock{1000, 0xFFFFFFF0};  // close to where the tick counter wraps
  HWND m_window = Make();
};

TEST_F(Timers, FallDueEveryIntervalOnTheirGrid) {
  EXPECT_EQ(os::SetTimer(m_window, 100, 5), 1);
  EXPECT_EQ(After(4), Ids{});
  EXPECT_EQ(After(1), Ids{100});
  EXPECT_EQ(After(7), Ids{100});   // at 12: the one of 10 is late
  EXPECT_EQ(After(3), Ids{100});   // at 15, behind the wrap
  EXPECT_EQ(After(14), Ids{100});  // at 29: those of 20 and 25 are one
}

TEST_F(Timers, ComeBehindEverythingElseAndTheLatestFirst) {
  os::SetTimer(m_window, 1, 10);
  os::SetTimer(m_window, 2, 5);
  os::SetTimer(m_window, 3, 7);
  m_clock.Advance(10);
  os::PostMessage(m_window, os::kWmUser, 0, 0);
  os::PostQuitMessage(0);
  os::Message message;
  EXPECT_EQ(os::GetMessage(&message), 1);
  EXPECT_EQ(message.m_message, os::kWmUser);
  EXPECT_EQ(os::GetMessage(&message), 0);
  EXPECT_EQ(os::PeekMessage(&message, nullptr, os::kWmUser, os::kWmUser), 0);
  EXPECT_EQ(After(0), (Ids{2, 3, 1}));
}

TEST_F(Timers, WaitForWhatWasPostedBeforeButNotForWhatIsPostedMeanwhile) {
  HWND other = Make();
  os::SetTimer(m_window, 1, 10);
  os::SetTimer(other, 2, 10);
  const auto post = [&](HWND window) { os::PostMessage(window, os::kWmUser, 0, 0); };
  for (HWND window : {m_window, other, m_window}) post(window);
  m_clock.Advance(10);
  // Every message is posted again as soon as it is taken.
  const auto take = [&](HWND window, UINT first, UINT last) {
    os::Message message;
    EXPECT_EQ(os::PeekMessage(&message, window, first, last), 1);
    if (message.m_message == os::kWmUser) post(message.m_window);
    return message.m_message == os::kWmTimer ? message.m_wparam : 0;
  };
  EXPECT_EQ(take(other, 0, 0), 0U);
  EXPECT_EQ(take(other, os::kWmUser, os::kWmUser), 0U);
  EXPECT_EQ(take(other, 0, 0), 2U);
  Ids ids;
  for (int count = 0; count < 5; ++count) ids.push_back(take(nullptr, 0, 0));
  EXPECT_EQ(ids, (Ids{0, 0, 1, 0, 0}));
  EXPECT_EQ(os::RemoveMessages(m_window, 0, 0) + os::RemoveMessages(other, 0, 0), 3U);
}

TEST_F(Timers, StartAnewWhenSetAgainAndStopWhenKilled) {
  os::SetTimer(m_window, 1, 10);
  os::SetTimer(m_window, 2, 10);
  m_clock.Advance(9);
  os::SetTimer(m_window, 1, 5);
  EXPECT_EQ(os::KillTimer(m_window, 2) + os::KillTimer(m_window, 2), 1);
  EXPECT_EQ(After(4), Ids{});
  EXPECT_EQ(After(1), Ids{1});
  os::SetTimer(m_window, 1, 0xFFFFFFFF);
  EXPECT_EQ(After(0x7FFFFFFF), Ids{1});
  os::SetTimer(m_window, 1, 0);
  m_clock.MoveTo(0x7FFFFFFF - 50000);
  EXPECT_EQ(After(0), Ids{});
  EXPECT_EQ(After(1), Ids{1});
}

TEST_F(Timers, WakeALoopThatWaitsWhenTheClockIsStepped) {
  std::counting_semaphore<> fired(0);
  const LoopThread other([&](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
    if (message == os::kWmTimer) fired.release();
    return 0;
  });
  // Set from this thread while the loop waits without a timer; hours that pass in one step.
  EXPECT_EQ(os::SetTimer(other.Window(), 100, 3600000), 1);
  for (int hour = 0; hour < 5; ++hour) {
    m_clock.Advance(3600000);
    fired.acquire();
  }
}

}  // namespace
