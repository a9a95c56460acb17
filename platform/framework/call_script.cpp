#include "platform/framework/call_script.h"

#include <utility>

namespace zebx {

CallScript::CallScript(std::span<const char* const> names)
    : m_names(names), m_failures(names.size()) {}

void CallScript::Reset() {
  const std::lock_guard lock(m_mutex);
  for (auto& calls_left : m_failures) calls_left.clear();
  m_keeps_journal = false;
  m_journal.clear();
}

void CallScript::FailCall(std::size_t function, DWORD nth) {
  const std::lock_guard lock(m_mutex);
  m_failures.at(function).push_back(nth);
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
  std::vector<DWORD>& calls_left = m_failures.at(function);
  for (DWORD& calls : calls_left) is_to_fail |= --calls == 0;
  std::erase(calls_left, DWORD{0});
  return is_to_fail;
}

void CallScript::Write(std::size_t function, const CString& arguments, bool is_good) {
  const std::lock_guard lock(m_mutex);
  if (!m_keeps_journal) return;
  m_journal.push_back(m_names[function] + arguments + (is_good ? "" : " failed"));
}

}  // namespace zebx
