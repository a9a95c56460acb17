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

}  // namespace
