// Windows of the test's own thread and of others.
#pragma once

#include <gtest/gtest.h>

#include <future>
#include <thread>
#include <utility>
#include <vector>

#include "platform/os/windows/windows.h"

// The answer of most windows in tests.
inline LRESULT AddParameters(HWND, UINT, WPARAM wparam, LPARAM lparam) {
  return static_cast<LRESULT>(wparam) + lparam;
}

// Makes windows of the test's thread and destroys them at the end.
class WindowTest : public testing::Test {
 protected:
  void TearDown() override {
    for (HWND window : m_windows) os::DestroyWindow(window);
  }

  HWND Make(os::WindowProcedure procedure = AddParameters, HWND parent = nullptr,
            const CRect& rectangle = {}) {
    return m_windows.emplace_back(
        os::CreateWindow(parent, "title", rectangle, std::move(procedure)));
  }

 private:
  std::vector<HWND> m_windows;
};

// A thread with one window and a message loop, as a host's main thread is. The window exists when
// the constructor returns; the destructor ends the loop and joins.
class LoopThread {
 public:
  explicit LoopThread(os::WindowProcedure procedure, HWND parent = nullptr) {
    std::promise<HWND> made;
    std::future<HWND> window = made.get_future();
    m_thread =
        std::thread([made = std::move(made), procedure = std::move(procedure), parent]() mutable {
          made.set_value(os::CreateWindow(parent, "loop", {}, std::move(procedure)));
          os::Message message;
          while (os::GetMessage(&message) != 0) os::DispatchMessage(message);
        });
    m_window = window.get();
  }
  ~LoopThread() {
    // A procedure that ended the loop or the window itself has posted the quit message.
    os::PostMessage(m_window, os::kWmQuit, 0, 0);
    m_thread.join();
  }
  LoopThread(const LoopThread&) = delete;
  LoopThread& operator=(const LoopThread&) = delete;

  HWND Window() const { return m_window; }

 private:
  std::thread m_thread;
  HWND m_window = nullptr;
};
