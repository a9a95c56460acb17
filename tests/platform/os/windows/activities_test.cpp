#include "platform/os/windows/activities.h"

#include <latch>

#include "tests/support/window_fixture.h"

namespace {

class Activities : public WindowTest {};

// A circle over a message was cut, but the sender has not noticed when a third thread looks.
TEST_F(Activities, FollowNoMessageThatWasAnsweredEarly) {
  HWND sending = Make();
  HWND answering = Make();
  std::latch is_sent(1), is_closing(1), is_over(1);
  os::SentMessage message, first_waiter, second_waiter;
  std::jthread sender([&] {
    os::Activity call{.m_called = sending};
    os::Activities::Get().Begin(call);
    const os::ActivityEnd call_end(call);
    os::Activity send{.m_sent = &message};
    os::Activities::Get().Begin(send);
    const os::ActivityEnd send_end(send);
    is_sent.count_down();
    is_over.wait();
  });
  std::jthread closer([&] {
    is_sent.wait();
    os::Activity run{.m_called = answering, .m_run = &message};
    os::Activities::Get().Begin(run);
    const os::ActivityEnd run_end(run);
    os::Activity closing{.m_closed = {sending}, .m_waiter = &first_waiter};
    ASSERT_TRUE(os::Activities::Get().BeginClosing(closing));
    is_closing.count_down();
    is_over.wait();
    os::Activities::Get().End(closing);
  });
  is_closing.wait();
  os::Activity closing{.m_closed = {sending}, .m_waiter = &second_waiter};
  EXPECT_TRUE(os::Activities::Get().BeginClosing(closing));
  is_over.count_down();
  sender.join();
  closer.join();
  os::Activities::Get().End(closing);
}

}  // namespace
