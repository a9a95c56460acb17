// The last seconds of a channel's frames.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/framework/types.h"

namespace zebx::zebdev {

// A frame packet as it was live: a tag_DEVFRAME and its data.
struct FramePacket {
  std::vector<BYTE> m_bytes;
  DWORD m_time_stamp = 0;  // ticks, ms
  bool m_is_i_frame = false;
};

// Holds the frames of the last kPreAlarmMs and those before them down to an I-frame, with which it
// always begins, but no more than its limits. Memory is kept for frames to come as long as all of
// it is within twice the limit. Any thread may call. The lock guards all of it; nobody is called
// while it is held.
class PreAlarmRing {
 public:
  static constexpr DWORD kPreAlarmMs = 5000;
  static constexpr std::size_t kMaxBytes = std::size_t{8} << 20U;
  static constexpr std::size_t kMaxFrames = 1024;

  // An empty packet to fill, whose memory was used before where possible.
  std::shared_ptr<FramePacket> NewPacket(bool is_i_frame);
  // Takes a filled packet in, which nobody changes any more. One that depends on a frame that is
  // not there is left out.
  void Push(std::shared_ptr<FramePacket> packet);
  // Hands what is held now to `visit`, oldest first, until it answers false, which is the result.
  // Packets stay while they are handed out, whatever is pushed meanwhile.
  bool Replay(const std::function<bool(FramePacket&)>& visit);

 private:
  using Packets = std::vector<std::shared_ptr<FramePacket>>;

  const std::shared_ptr<FramePacket>& At(std::size_t index) const {
    return m_slots[(m_first + index) % kMaxFrames];
  }
  // How many frames there are from the first I-frame up to the next one, or to the end.
  std::size_t FirstGroup() const;
  void DropFirstGroup();
  void Recycle(std::shared_ptr<FramePacket> packet);

  std::mutex m_mutex;
  // Guarded by m_mutex; so are the packets' reference counts.
  Packets m_slots{kMaxFrames};
  std::size_t m_first = 0;
  std::size_t m_count = 0;
  std::size_t m_bytes = 0;
  std::size_t m_memory_bytes = 0;  // of the frames and of the free packets
  Packets m_free_i, m_free_p;      // apart, as I-frames take several times the memory
};

}  // namespace zebx::zebdev
