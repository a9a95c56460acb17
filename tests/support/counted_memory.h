// Memory that is counted and can run out. Replaces operator new, so that only one file of a program
// may include it.
#pragma once

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace counted_memory {

inline std::atomic<std::size_t> live_bytes = 0;
inline std::atomic<std::size_t> peak_bytes = 0;
// Allocations until one is refused; never for a negative number.
inline std::atomic<int> calls_left = -1;

}  // namespace counted_memory

// NOLINTBEGIN(*-no-malloc,misc-definitions-in-headers)
// Not inlined: where only one of the two is, the compiler takes them for a pair that does not
// match.
[[gnu::noinline]] void* operator new(std::size_t bytes) {
  using namespace counted_memory;
  const bool is_refused = calls_left >= 0 && calls_left-- == 0;
  void* const memory = is_refused ? nullptr : std::malloc(bytes);
  if (memory == nullptr) throw std::bad_alloc();
  live_bytes += malloc_usable_size(memory);
  peak_bytes = std::max(peak_bytes.load(), live_bytes.load());
  return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  counted_memory::live_bytes -= malloc_usable_size(memory);
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}
// NOLINTEND(*-no-malloc,misc-definitions-in-headers)
