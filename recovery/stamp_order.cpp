#include "recovery/stamp_order.h"

#include <cstdlib>

#include "recovery/stamp_rule.h"

namespace zebx {
namespace {

constexpr std::size_t kFramesAhead = 4;
constexpr int kMostStepsBack = 99;

// How far a stamp is from where it is expected.
LONGLONG Distance(DWORD stamp, DWORD expected) {
  return std::abs(LONGLONG{static_cast<LONG>(stamp - expected)});
}

bool IsBetween(DWORD stamp, std::optional<DWORD> ahead, std::optional<DWORD> behind) {
  return (!ahead || !GoesBack(*ahead, stamp)) && (!behind || !GoesBack(stamp, *behind));
}

}  // namespace

std::optional<OrderedFrame> StampOrder::Next() {
  LookAhead();
  if (m_ahead.empty()) return std::nullopt;
  OrderedFrame ordered{m_ahead.front()};
  DWORD& stamp = ordered.frame.header.m_time_stamp;
  if (StepsBackForGood() && ordered.frame.header.IsIFrame() && m_steps_back < kMostStepsBack) {
    ordered.begins_file = true;
    ++m_steps_back;
  } else if (IsStray()) {
    stamp = RestoredStamp();
    ordered.is_stamp_restored = true;
  }
  if (m_last && !ordered.begins_file && !ordered.is_stamp_restored) m_interval = stamp - *m_last;
  m_last = stamp;
  m_ahead.pop_front();
  return ordered;
}

void StampOrder::LookAhead() {
  while (m_ahead.size() < kFramesAhead) {
    auto frame = m_source();
    if (!frame) return;
    m_ahead.push_back(*frame);
  }
}

// One stamp that is behind the last is damaged; two of them that agree are another time.
bool StampOrder::StepsBackForGood() const {
  return m_last && m_ahead.size() > 1 && GoesBack(*m_last, StampOf(0)) &&
         GoesBack(*m_last, StampOf(1)) && !GoesBack(StampOf(0), StampOf(1));
}

// Whether it is the next frame's stamp that is damaged, not that of one around it.
bool StampOrder::IsStray() const {
  if (m_last && GoesBack(*m_last, StampOf(0))) return true;
  if (m_ahead.size() < 2 || !GoesBack(StampOf(0), StampOf(1))) return false;
  // This stamp or the one behind it is wrong: the one further from where it is expected.
  if (m_last && GoesBack(*m_last, StampOf(1))) return false;
  if (m_ahead.front().block_stamp == StampOf(0)) return false;
  if (m_ahead.size() == kFramesAhead) {
    const DWORD interval = StampOf(3) - StampOf(2);
    const DWORD expected = StampOf(2) - interval;
    return Distance(StampOf(0), expected - interval) > Distance(StampOf(1), expected);
  }
  if (m_last) {
    const DWORD expected = *m_last + m_interval;
    return Distance(StampOf(0), expected) > Distance(StampOf(1), expected + m_interval);
  }
  return m_ahead.size() > 2 && GoesBack(StampOf(0), StampOf(2));
}

// Between those of the frames ahead and behind: what the block header says, or what a single
// flipped bit leaves, the nearest to the usual interval, or else the stamp of the frame ahead.
DWORD StampOrder::RestoredStamp() const {
  std::optional<DWORD> behind;
  if (m_ahead.size() > 1 && (!m_last || !GoesBack(*m_last, StampOf(1)))) behind = StampOf(1);
  const auto block_stamp = m_ahead.front().block_stamp;
  if (block_stamp && IsBetween(*block_stamp, m_last, behind)) return *block_stamp;
  const DWORD expected = m_last ? *m_last + m_interval : *behind - (StampOf(2) - StampOf(1));
  DWORD best = m_last ? *m_last : *behind;
  bool found = false;
  for (DWORD bit = 1; bit != 0; bit <<= 1) {
    const DWORD stamp = StampOf(0) ^ bit;
    if (!IsBetween(stamp, m_last, behind)) continue;
    if (!found || Distance(stamp, expected) < Distance(best, expected)) best = stamp;
    found = true;
  }
  return best;
}

}  // namespace zebx
