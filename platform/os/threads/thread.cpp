#include "platform/os/threads/thread.h"

#include <sys/resource.h>

#include <cerrno>
#include <exception>
#include <system_error>
#include <utility>

#include "platform/framework/error_report.h"

using namespace zebx;

namespace os {
namespace {

// About a third of a normal thread's share of a busy processor.
constexpr int kNiceStep = 5;

std::atomic<DWORD> starts_to_failure = 0;

bool IsStartToFail() {
  DWORD left = starts_to_failure;
  while (left != 0 && !starts_to_failure.compare_exchange_weak(left, left - 1)) {
  }
  return left == 1;
}

// The nice value is one of each thread here, and may be raised by anybody. A refusal is no failure.
void LowerOwnPriority() {
  errno = 0;
  const int nice = getpriority(PRIO_PROCESS, 0);
  if (errno == 0) setpriority(PRIO_PROCESS, 0, nice + kNiceStep);
}

void RunBody(std::function<void()> body) noexcept {
  const AwaitedWork work;
  try {
    body();
  } catch (const std::exception& failure) {
    ReportError(failure);
  }
  body = nullptr;  // what it captured may send when it ends
}

}  // namespace

Thread::~Thread() {
  Join();
}

bool Thread::Start(std::function<void()> body, ThreadPriority priority) {
  m_end.emplace();
  if (IsStartToFail()) return false;
  try {
    m_thread = std::thread([this, priority, body = std::move(body)]() mutable {
      m_id = std::this_thread::get_id();
      if (priority == ThreadPriority::kBelowNormal) LowerOwnPriority();
      RunBody(std::move(body));
      m_end->Complete();
    });
  } catch (const std::system_error&) {
    return false;
  }
  return true;
}

void Thread::Join() {
  if (!m_thread.joinable()) return;
  m_end->Wait();
  JoinWithoutAnswering();
}

void Thread::JoinWithoutAnswering() {
  if (!m_thread.joinable()) return;
  m_thread.join();
  m_id = std::thread::id();
}

void FailThreadStart(DWORD nth) {
  starts_to_failure = nth;
}

}  // namespace os
