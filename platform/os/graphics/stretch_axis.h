// Which pixels of a source make a pixel of the target, along one direction of the copying.
#pragma once

#include <algorithm>
#include <cstdint>

#include "platform/framework/types.h"

namespace os {

// Pixels `m_begin` to `m_end` - 1 of the source make one pixel of the target.
struct Span {
  LONG m_begin = 0;
  LONG m_end = 0;

  bool operator==(const Span&) const = default;
  LONG Size() const { return m_end - m_begin; }
};

// One direction of copying `from_size` pixels from `from` on to `onto_size` places from `onto` on.
// Neither size is 0.
class Axis {
 public:
  Axis(LONG onto, LONG onto_size, LONG target_size, LONG from, LONG from_size, LONG source_size)
      : m_onto(onto),
        m_onto_size(onto_size),
        m_from(from),
        m_from_size(from_size),
        m_source_size(source_size) {
    const std::int64_t end = std::min<std::int64_t>(m_onto + m_onto_size, target_size);
    m_first = FirstWhere(std::max<std::int64_t>(onto, 0), end,
                         [this](std::int64_t place) { return EndAt(place) > 0; });
    m_end = FirstWhere(m_first, end,
                       [this](std::int64_t place) { return BeginAt(place) >= m_source_size; });
  }

  bool operator==(const Axis&) const = default;

  // The places that are visible and have source pixels.
  std::int64_t First() const { return m_first; }
  std::int64_t End() const { return m_end; }
  bool IsUnscaled() const { return m_onto_size == m_from_size; }
  // Not empty for one of those.
  Span At(std::int64_t place) const {
    return {static_cast<LONG>(std::max<std::int64_t>(BeginAt(place), 0)),
            static_cast<LONG>(std::min(EndAt(place), m_source_size))};
  }

 private:
  // Of places in rising order that have a quality from one on, that one.
  template <class Has>
  static std::int64_t FirstWhere(std::int64_t first, std::int64_t end, const Has& has) {
    while (first < end) {
      const std::int64_t middle = first + (end - first) / 2;
      if (has(middle)) {
        end = middle;
      } else {
        first = middle + 1;
      }
    }
    return first;
  }
  std::int64_t BeginAt(std::int64_t place) const {
    return m_from + (place - m_onto) * m_from_size / m_onto_size;
  }
  std::int64_t EndAt(std::int64_t place) const {
    return std::max(BeginAt(place) + 1, BeginAt(place + 1));
  }

  std::int64_t m_onto;
  std::int64_t m_onto_size;
  std::int64_t m_from;
  std::int64_t m_from_size;
  std::int64_t m_source_size;
  std::int64_t m_first = 0;
  std::int64_t m_end = 0;
};

}  // namespace os
