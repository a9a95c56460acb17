// Time stamps put in order: frames whose stamps are damaged are told from recordings whose stamps
// really step back.
#pragma once

#include <deque>
#include <functional>
#include <optional>

#include "recovery/frame_finder.h"

namespace zebx {

struct OrderedFrame {
  FoundFrame frame;  // its header has the stamp to be written
  bool is_stamp_restored = false;
  bool begins_file = false;  // stamps step back for good, and this is an I-frame
};

// Looks a few frames ahead. Every frame that comes out keeps the rule of stamp_rule.h against the
// one before it, unless it begins a file. There are a hundred files at most.
class StampOrder {
 public:
  using Source = std::function<std::optional<FoundFrame>()>;

  explicit StampOrder(Source source) : m_source(std::move(source)) {}

  // The next frame; nothing when the source has none left.
  std::optional<OrderedFrame> Next();

 private:
  void LookAhead();
  DWORD StampOf(std::size_t ahead) const { return m_ahead[ahead].header.m_time_stamp; }
  bool StepsBackForGood() const;
  bool IsStray() const;
  DWORD RestoredStamp() const;

  Source m_source;
  std::deque<FoundFrame> m_ahead;
  std::optional<DWORD> m_last;  // stamp of the frame that came out last
  DWORD m_interval = 0;         // between the last two
  int m_steps_back = 0;
};

}  // namespace zebx
