// A thread with one window and a message loop, as a host's main thread is.
#pragma once

#include <future>
#include <thread>
#include <utility>

#include "platform/os/windows.h"

// The window exists when the constructor returns; the destructor ends the loop and joins.
class LoopThread {
 public:
  explicit LoopThread(os::WindowProcedure procedure, HWND parent = nullptr) {
    std::promise<HWND> made;
    std::future<HWND> window = made.get_future();
    m_thread = std::thread(
        [&made, parent](os::WindowProcedure own_procedure) {
          made.set_value(os::CreateWindow(parent, "loop", {}, std::move(own_procedure)));
          os::Message message;
          while (os::GetMessage(&message) != 0) os::DispatchMessage(message);
        },
        std::move(procedure));
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
