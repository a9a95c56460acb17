#include "platform/framework/call_script.h"

#include <utility>

namespace zebx {

CallScript::CallScript(std::span<const char* const> names) noexcept : m_names(names) {}

void CallScript::Reset() {
  const std::lock_guard lock(m_mutex);
  m_failures.clear();
  m_keeps_journal = false;
  m_journal.clear();
}

void CallScript::FailCall(std::size_t function, DWORD nth) {
  const std::lock_guard lock(m_mutex);
  m_failures.push_back({function, nth});
}

void CallScript::StartJournal() {
  const std::lock_guard lock(m_mutex);
  m_keeps_journal = true;
  m_journal.clear();
}

std::vector<CString> CallScript::TakeJournal() {
  const std::lock_guard lock(m_mutex);
  return std::exchange(m_journal, {});
}

bool CallScript::IsToFail(std::size_t function) {
  const std::lock_guard lock(m_mutex);
  bool is_to_fail = false;
  for (Failure& failure : m_failures) {
    if (failure.m_function == function) is_to_fail |= --failure.m_calls_left == 0;
  }
  std::erase_if(m_failures, [](const Failure& failure) { return failure.m_calls_left == 0; });
  return is_to_fail;
}

void CallScript::Write(std::size_t function, const CString& arguments, bool is_good) {
  const std::lock_guard lock(m_mutex);
  if (!m_keeps_journal) return;
  m_journal.push_back(m_names[function] + arguments + (is_good ? "" : " failed"));
}

}  // namespace zebx
