// Sending, posting and taking messages, within a thread and across threads.

#include "tests/support/window_fixture.h"

namespace {

constexpr UINT kPing = os::kWmUser + 1;
constexpr UINT kAdd = os::kWmUser + 2;

using Numbers = std::vector<UINT>;

// The numbers of the messages that are waiting, taken.
Numbers TakeAll(HWND window = nullptr, UINT first = 0, UINT last = 0) {
  Numbers numbers;
  os::Message message;
  while (os::PeekMessage(&message, window, first, last) != 0) numbers.push_back(message.m_message);
  return numbers;
}

class Messages : public WindowTest {};
class SendMessage : public WindowTest {};

TEST_F(Messages, AreTakenInTheOrderOfPostingBeforeTheQuitMessageAndDispatched) {
  HWND first = Make();
  HWND second = Make();
  os::PostQuitMessage(7);
  EXPECT_EQ(os::PostMessage(first, kPing, 5, -6), 1);
  EXPECT_EQ(os::PostMessage(second, kAdd, 20, 2), 1);
  os::Message message;
  ASSERT_EQ(os::GetMessage(&message), 1);
  EXPECT_EQ(message.m_window, first);
  EXPECT_EQ(os::DispatchMessage(message), -1);
  ASSERT_EQ(os::GetMessage(&message), 1);
  EXPECT_EQ(os::DispatchMessage(message), 22);
  EXPECT_EQ(os::GetMessage(&message), 0);
  EXPECT_EQ(message.m_message, os::kWmQuit);
  EXPECT_EQ(message.m_wparam, 7U);
  EXPECT_EQ(os::PeekMessage(&message), 0);
}

TEST_F(Messages, AreFoundByWindowAndNumberAndDroppedWithTheirWindow) {
  HWND first = Make();
  HWND second = Make();
  for (const UINT number : {0x401U, 0x466U, 0x402U, 0x466U}) os::PostMessage(first, number, 0, 0);
  os::PostMessage(second, 0x466, 0, 0);
  os::PostQuitMessage(0);
  EXPECT_EQ(TakeAll(first, 0x466, 0x466), (Numbers{0x466, 0x466}));
  EXPECT_EQ(TakeAll(second), Numbers{0x466});
  EXPECT_EQ(TakeAll(nullptr, 0x402, 0x500), Numbers{0x402});
  os::PostMessage(second, 0x403, 0, 0);
  EXPECT_EQ(TakeAll(), (Numbers{0x401, 0x403, os::kWmQuit}));

  os::PostMessage(first, 0x401, 0, 0);
  os::PostMessage(second, 0x402, 0, 0);
  os::SetTimer(first, 1, 1);
  os::DestroyWindow(first);
  EXPECT_EQ(TakeAll(), Numbers{0x402});
}

TEST_F(Messages, DoNotFillTheMemoryOfAThreadThatTakesNone) {
  HWND window = Make();
  int posted = 0;
  while (posted < 100000 && os::PostMessage(window, kPing, 0, 0) != 0) ++posted;
  EXPECT_EQ(posted, 10000);
  EXPECT_EQ(os::PostNotice(window, kAdd, 0, 0), 1);
  EXPECT_EQ(os::RemoveMessages(window, kAdd + 1, kAdd + 9), 0U);
  EXPECT_EQ(os::RemoveMessages(window, kPing, kPing), 10000U);
  EXPECT_EQ(os::PostMessage(window, kPing, 0, 0), 1);
  EXPECT_EQ(TakeAll(), (Numbers{kAdd, kPing}));
  os::DestroyWindow(window);
  EXPECT_EQ(os::PostNotice(window, kAdd, 0, 0), 0);
}

TEST_F(SendMessage, RunsInTheWindowsThreadWhichTakesNothingElseMeanwhile) {
  HWND window = Make();
  os::PostMessage(window, kPing, 0, 0);
  EXPECT_EQ(os::SendMessage(window, kAdd, 40, 2), 42);
  std::thread::id ran_in;
  // Sends back to the window that is waiting for it, and answers for one that is gone.
  const LoopThread other([&](HWND own, UINT message, WPARAM, LPARAM) -> LRESULT {
    if (message != kPing) return 0;
    ran_in = std::this_thread::get_id();
    os::DestroyWindow(own);
    os::PostQuitMessage(0);
    return os::SendMessage(window, kAdd, 40, 2) + 1;
  });
  EXPECT_EQ(os::SendMessage(other.Window(), kPing, 0, 0), 43);
  EXPECT_EQ(os::IsWindow(other.Window()), 0);
  EXPECT_NE(ran_in, std::thread::id());
  EXPECT_NE(ran_in, std::this_thread::get_id());
  EXPECT_EQ(TakeAll(), Numbers{kPing});
}

// A thread that waits in SendMessage for the answer of `target`, a window of a third thread.
std::future<LRESULT> SendFromAnotherThread(HWND target) {
  std::promise<HWND> made;
  auto window = made.get_future();
  auto answer = std::async(std::launch::async, [target, made = std::move(made)]() mutable {
    made.set_value(os::CreateWindow(nullptr, "", {}, AddParameters));
    return os::SendMessage(target, kAdd, 3, 4);
  });
  // It has no loop: it answers only once its own message is on its way.
  EXPECT_EQ(os::SendMessage(window.get(), kAdd, 1, 2), 3);
  return answer;
}

TEST_F(SendMessage, IsAnsweredByPeekingAndGives0WhenTheWindowOrItsThreadEndsFirst) {
  enum class Event { kPeeks, kDestroysWindow, kEnds, kLosesParent };
  for (const Event event :
       {Event::kPeeks, Event::kDestroysWindow, Event::kEnds, Event::kLosesParent}) {
    SCOPED_TRACE(static_cast<int>(event));
    HWND parent = Make();
    std::promise<HWND> made;
    std::promise<void> go_on;
    std::promise<void> answered;
    std::thread owner([&] {
      HWND window = os::CreateWindow(parent, "", {}, AddParameters);
      made.set_value(window);
      go_on.get_future().wait();
      if (event == Event::kPeeks) TakeAll(window, kPing, kPing);
      if (event == Event::kDestroysWindow) os::DestroyWindow(window);
      if (event != Event::kEnds) answered.get_future().wait();
    });
    HWND window = made.get_future().get();
    auto first = SendFromAnotherThread(window);
    auto second = SendFromAnotherThread(window);
    if (event == Event::kLosesParent) os::DestroyWindow(parent);
    go_on.set_value();
    EXPECT_EQ(first.get(), event == Event::kPeeks ? 7 : 0);
    EXPECT_EQ(second.get(), event == Event::kPeeks ? 7 : 0);
    answered.set_value();
    owner.join();
  }
}

}  // namespace
