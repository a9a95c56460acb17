#include "platform/os/threads/event.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>
#include <vector>

#include "platform/framework/clock.h"

using namespace zebx;

namespace {

// Does one thing each time it is read: first when a wait begins, then whenever the wait looks.
class ReadClock final : public Clock {
 public:
  explicit ReadClock(std::vector<std::function<DWORD()>> reads) : m_reads(std::move(reads)) {
    SetClock(this);
  }
  ~ReadClock() override { SetClock(nullptr); }
  ReadClock(const ReadClock&) = delete;
  ReadClock& operator=(const ReadClock&) = delete;

  DWORD TickMs() const override { return m_reads.at(m_count++)(); }
  DWORD WallSeconds() const override { return 0; }
  std::size_t Count() const { return m_count; }

 private:
  const std::vector<std::function<DWORD()>> m_reads;
  mutable std::size_t m_count = 0;
};

TEST(Events, EndAWaitWithTheLowestIndexEvenWhenTheyAreResetAtOnce) {
  os::Event first, second, third;
  os::Event* const events[] = {&first, &second, &third};
  EXPECT_EQ(os::WaitForMultipleObjects(events, 0), os::kWaitTimedOut);
  third.Set();
  second.Set();
  EXPECT_EQ(os::WaitForMultipleObjects(events), 1U);
  second.Reset();
  EXPECT_EQ(os::WaitForMultipleObjects(events, 0), 2U);
  third.Reset();
  EXPECT_FALSE(third.IsSet());

  const ReadClock clock({[] { return 0; },
                         [&] {
                           third.Set();
                           second.Set();
                           second.Reset();
                           return 10;
                         }});
  EXPECT_EQ(os::WaitForMultipleObjects(events, 1000), 1U);
}

TEST(Events, LetATimeOutPassByAClockThatWrapsAndIsSetBack) {
  std::vector<std::function<DWORD()>> reads;
  for (const DWORD tick : {0xFFFFFF00U, 244U, 100U, 599U, 600U}) {
    reads.emplace_back([tick] { return tick; });
  }
  const ReadClock clock(reads);
  os::Event event;
  EXPECT_EQ(os::WaitForSingleObject(event, 1000), os::kWaitTimedOut);
  EXPECT_EQ(clock.Count(), 5U);
}

}  // namespace
