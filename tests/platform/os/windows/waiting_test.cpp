// Who is waited for, and whose messages are answered early.
#include <latch>

#include "platform/os/windows/activities.h"
#include "platform/os/windows/completion.h"
#include "tests/support/window_fixture.h"

namespace {

constexpr UINT kAsk = os::kWmUser;
constexpr UINT kNested = os::kWmUser + 1;
constexpr UINT kOther = os::kWmUser + 2;

// A procedure that waits for the very thread whose message it is answering, once directly and once
// inside another message of that kind. Who is not waited for gets the answer of the procedure.
TEST(MessagesInACompletion, AreAnsweredEarlyForASenderThatIsWaitedFor) {
  os::Completion first_is_done, second_is_done, second_has_run, other_is_waited_for;
  HWND window = nullptr;
  window = os::CreateWindow(nullptr, "", {}, [&](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
    if (message == kOther) {
      other_is_waited_for.Complete();
      first_is_done.Wait();
      return 7;
    }
    if (message == kNested) second_has_run.Complete();
    (message == kNested ? second_is_done : first_is_done).Wait();
    return 7;
  });
  std::jthread other([&] { EXPECT_EQ(os::SendMessage(window, kOther, 0, 0), 7); });
  std::jthread first([&] {
    const os::AwaitedWork work;
    other_is_waited_for.Wait();
    EXPECT_EQ(os::SendMessage(window, kAsk, 0, 0), 0);
    second_has_run.Wait();
    first_is_done.Complete();
  });
  // Sends over a window of a third thread.
  const LoopThread between([&](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
    return message == kNested ? os::SendMessage(window, kNested, 0, 0) : 0;
  });
  std::jthread second([&] {
    const os::AwaitedWork work;
    EXPECT_EQ(os::SendMessage(between.Window(), kNested, 0, 0), 0);
    second_is_done.Complete();
  });
  second_has_run.Wait();
  first_is_done.Wait();
  second_is_done.Wait();
  os::DestroyWindow(window);
}

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
