#include "platform/os/windows/completion.h"

#include <gtest/gtest.h>

#include <thread>

#include "platform/os/windows/windows.h"

namespace {

constexpr UINT kAsk = os::kWmUser;
constexpr UINT kNested = os::kWmUser + 1;

TEST(MessagesInACompletion, AreAnsweredWhileTheirReceiverWaitsForTheSender) {
  os::Completion sender_is_done;
  HWND window = os::CreateWindow(nullptr, "", {}, [](HWND, UINT, WPARAM word, LPARAM) {
    return static_cast<LRESULT>(word + 1);
  });
  std::jthread sender([&] {
    EXPECT_EQ(os::SendMessage(window, kAsk, 41, 0), 42);
    sender_is_done.Complete();
  });
  sender_is_done.Wait();
  sender_is_done.Wait();  // at once
  os::DestroyWindow(window);
}

// A procedure that waits for the very thread whose message it is answering, once directly and once
// inside another message of that kind.
TEST(MessagesInACompletion, AreAnsweredEarlyForASenderThatIsWaitedFor) {
  os::Completion first_is_done, second_is_done, second_has_run;
  HWND window = nullptr;
  window = os::CreateWindow(nullptr, "", {}, [&](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
    if (message == kNested) second_has_run.Complete();
    (message == kNested ? second_is_done : first_is_done).Wait();
    return 7;
  });
  std::jthread first([&] {
    EXPECT_EQ(os::SendMessage(window, kAsk, 0, 0), 0);
    second_has_run.Wait();
    first_is_done.Complete();
  });
  std::jthread second([&] {
    EXPECT_EQ(os::SendMessage(window, kNested, 0, 0), 0);
    second_is_done.Complete();
  });
  second_has_run.Wait();
  first_is_done.Wait();
  second_is_done.Wait();
  os::DestroyWindow(window);
}

}  // namespace
