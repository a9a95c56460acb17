// Which calls of a software library are to fail, and a journal of the calls it gets: what tests and
// tools need of every library that stands in for a real one.
#pragma once

#include <atomic>
#include <mutex>
#include <new>
#include <optional>
#include <span>
#include <vector>

#include "platform/framework/types.h"

namespace zebx {

// Any thread may call any operation. Functions are numbers, indexes into the names given to the
// constructor. The lock guards the orders and the lines; it is not held while an action runs.
class CallScript {
 public:
  // `names` is borrowed for good. Takes no memory, so that a library can be used first when there
  // is none.
  explicit CallScript(std::span<const char* const> names) noexcept;

  // Forgets every order and the journal.
  void Reset();
  // Makes the n-th call of the function from now on fail without any effect; 1 is the next one.
  // Each order stands for itself, so several calls can be told to fail.
  void FailCall(std::size_t function, DWORD nth);
  // Starts an empty journal of one line for each call.
  void StartJournal();
  // The lines since the last call or the start, in the order in which the calls ended.
  std::vector<CString> TakeJournal();

  // One call: 0, or 1 when it was to fail, which leaves `action` out, or `action` answered false.
  // The line, left out where memory does not suffice for it, is the function's name, then each
  // argument behind a space, then ` failed` behind a call that answered 1. An argument is a number,
  // a text, or an optional number: null is `-`.
  template <typename Action, typename... Arguments>
  int Call(std::size_t function, Action action, const Arguments&... arguments) {
    const bool is_good = !IsToFail(function) && action();
    try {
      if (m_keeps_journal) Write(function, (CString() + ... + Word(arguments)), is_good);
    } catch (const std::bad_alloc&) {
      // The call is done, and its answer holds.
    }
    return is_good ? 0 : 1;
  }

 private:
  struct Failure {
    std::size_t m_function;
    DWORD m_calls_left;  // 1: the next one
  };

  static CString Word(ULONGLONG number) { return " " + std::to_string(number); }
  static CString Word(DWORD number) { return " " + std::to_string(number); }
  static CString Word(int number) { return " " + std::to_string(number); }
  template <typename Number>
  static CString Word(std::optional<Number> number) {
    return number ? Word(*number) : " -";
  }
  static CString Word(const char* text) { return CString(" ") + (text == nullptr ? "-" : text); }

  bool IsToFail(std::size_t function);
  void Write(std::size_t function, const CString& arguments, bool is_good);

  const std::span<const char* const> m_names;
  // So that a call without a journal makes no text.
  std::atomic<bool> m_keeps_journal = false;
  std::mutex m_mutex;
  // Guarded by m_mutex.
  std::vector<Failure> m_failures;
  std::vector<CString> m_journal;
};

}  // namespace zebx
