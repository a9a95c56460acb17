// Little-endian, packed reading and writing over byte spans: the one way bytes of a file or buffer
// form become numbers and back. Nothing here reads or writes outside the span it was given.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <span>
#include <string_view>
#include <type_traits>

#include "platform/framework/types.h"

namespace zebx {

// The end of a buffer whose size nobody told: as far as the lengths inside it may lead.
inline const BYTE* UnknownEnd(const BYTE* cursor) {
  return cursor + 0x7FFFFFFFFFFF;
}

// Takes values from the front of a span. The first value that is not whole makes the reader fail
// for good: it and every later one read as 0 or empty, and Ok() is false.
class ByteReader {
 public:
  explicit ByteReader(std::span<const BYTE> bytes) : m_rest(bytes) {}

  template <std::integral T>
  T Get() {
    const auto bytes = Take(sizeof(T));
    std::make_unsigned_t<T> value = 0;
    for (std::size_t i = bytes.size(); i-- > 0;) {
      value = static_cast<std::make_unsigned_t<T>>((ULONGLONG{value} << 8) | bytes[i]);
    }
    return static_cast<T>(value);
  }

  // The next `count` bytes, borrowed from the underlying span; empty when there are fewer.
  std::span<const BYTE> Take(std::size_t count) {
    if (count > m_rest.size()) {
      m_ok = false;
      m_rest = {};
      return {};
    }
    const auto taken = m_rest.first(count);
    m_rest = m_rest.subspan(count);
    return taken;
  }

  // The next `count` bytes as text.
  CString TakeText(std::size_t count) {
    const auto bytes = Take(count);
    return {bytes.begin(), bytes.end()};
  }

  bool Ok() const { return m_ok; }
  std::size_t Remaining() const { return m_rest.size(); }

 private:
  std::span<const BYTE> m_rest;
  bool m_ok = true;
};

// Puts values at the front of a span, mirroring ByteReader. A value that does not fit is not
// written at all, and Ok() is false from then on.
class ByteWriter {
 public:
  explicit ByteWriter(std::span<BYTE> bytes) : m_rest(bytes), m_size(bytes.size()) {}

  template <std::integral T>
  void Put(T value) {
    auto rest = static_cast<std::make_unsigned_t<T>>(value);
    BYTE bytes[sizeof(T)];
    for (BYTE& byte : bytes) {
      byte = static_cast<BYTE>(rest & 0xFF);
      rest = static_cast<std::make_unsigned_t<T>>(ULONGLONG{rest} >> 8);
    }
    PutBytes(bytes);
  }

  void PutBytes(std::span<const BYTE> bytes) {
    if (!m_ok || bytes.size() > m_rest.size()) {
      m_ok = false;
      return;
    }
    std::copy(bytes.begin(), bytes.end(), m_rest.begin());
    m_rest = m_rest.subspan(bytes.size());
  }

  void PutText(std::string_view text) {
    PutBytes({reinterpret_cast<const BYTE*>(text.data()), text.size()});
  }

  bool Ok() const { return m_ok; }
  std::size_t Written() const { return m_size - m_rest.size(); }

 private:
  std::span<BYTE> m_rest;
  std::size_t m_size;
  bool m_ok = true;
};

}  // namespace zebx
