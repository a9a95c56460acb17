#include "platform/os/threads/thread.h"

#include <sys/resource.h>

#include <stdexcept>
#include <string>

#include "platform/framework/error_report.h"
#include "tests/support/window_fixture.h"

using namespace zebx;

namespace {

class Thread : public WindowTest {};

TEST_F(Thread, RunsItsBodyWithThePriorityAndReportsWhatItLetsOut) {
  std::string report;
  SetErrorSink([&](const std::exception& error) { report = error.what(); });
  const int nice = getpriority(PRIO_PROCESS, 0);
  os::Thread thread;
  for (const int steps : {0, 1}) {
    int nice_inside = 0;
    const auto body = [&] {
      EXPECT_TRUE(thread.IsThis());
      nice_inside = getpriority(PRIO_PROCESS, 0);
      throw std::runtime_error("out of paper");
    };
    os::FailThreadStart(2);
    ASSERT_TRUE(thread.Start(
        body, steps == 0 ? os::ThreadPriority::kNormal : os::ThreadPriority::kBelowNormal));
    EXPECT_TRUE(thread.IsStarted());
    EXPECT_FALSE(thread.IsThis());
    thread.Join();
    EXPECT_EQ(nice_inside, std::min(19, nice + 5 * steps));
    EXPECT_EQ(std::exchange(report, ""), "out of paper");
    EXPECT_FALSE(thread.Start(body));
    EXPECT_FALSE(thread.IsStarted());
  }
  EXPECT_EQ(getpriority(PRIO_PROCESS, 0), nice);
  SetErrorSink({});
}

// The body, and what it captured, send to the thread that joins: outside of its procedure, and
// inside the one that answers the body.
TEST_F(Thread, IsJoinedByAThreadThatAnswersIt) {
  os::Thread outer, inner;
  HWND window = Make([&](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
    if (message == os::kWmUser) inner.Join();
    return 7;
  });
  const auto send_at_end = [&](void*) { EXPECT_EQ(os::SendMessage(window, os::kWmNull, 0, 0), 7); };
  ASSERT_TRUE(outer.Start([window, last = std::shared_ptr<void>(nullptr, send_at_end)] {
    EXPECT_EQ(os::SendMessage(window, os::kWmNull, 0, 0), 7);
  }));
  outer.Join();
  ASSERT_TRUE(inner.Start([&] { EXPECT_EQ(os::SendMessage(window, os::kWmUser, 0, 0), 0); }));
  while (inner.IsStarted()) {
    os::Message message;
    os::PeekMessage(&message);
  }
}

}  // namespace
