#include "platform/zebdev/software/pre_alarm_ring.h"

#include <utility>

namespace zebx::zebdev {

std::shared_ptr<FramePacket> PreAlarmRing::NewPacket(bool is_i_frame) {
  std::shared_ptr<FramePacket> packet;
  {
    const std::lock_guard lock(m_mutex);
    Packets& free = is_i_frame ? m_free_i : m_free_p;
    if (!free.empty()) {
      packet = std::move(free.back());
      free.pop_back();
      m_memory_bytes -= packet->m_bytes.capacity();
    }
  }
  if (packet == nullptr) packet = std::make_shared<FramePacket>();
  packet->m_bytes.clear();
  packet->m_is_i_frame = is_i_frame;
  return packet;
}

void PreAlarmRing::Push(std::shared_ptr<FramePacket> packet) {
  const std::lock_guard lock(m_mutex);
  m_memory_bytes += packet->m_bytes.capacity();
  const DWORD now_ms = packet->m_time_stamp;
  const std::size_t bytes = packet->m_bytes.size();
  while (m_count > 0 && (m_count == kMaxFrames || m_bytes + bytes > kMaxBytes)) DropFirstGroup();
  if ((m_count == 0 && !packet->m_is_i_frame) || bytes > kMaxBytes) {
    Recycle(std::move(packet));
    return;
  }
  m_slots[(m_first + m_count) % kMaxFrames] = std::move(packet);
  ++m_count;
  m_bytes += bytes;
  const auto is_old = [&](std::size_t next) {
    return next < m_count && now_ms - At(next)->m_time_stamp >= kPreAlarmMs;
  };
  while (is_old(FirstGroup())) DropFirstGroup();
}

bool PreAlarmRing::Replay(const std::function<bool(FramePacket&)>& visit) {
  Packets held;
  {
    const std::lock_guard lock(m_mutex);
    for (std::size_t index = 0; index < m_count; ++index) held.push_back(At(index));
  }
  bool goes_on = true;
  for (auto packet = held.begin(); packet != held.end() && goes_on; ++packet) {
    goes_on = visit(**packet);
  }
  const std::lock_guard lock(m_mutex);
  held.clear();
  return goes_on;
}

std::size_t PreAlarmRing::FirstGroup() const {
  std::size_t frames = 1;
  while (frames < m_count && !At(frames)->m_is_i_frame) ++frames;
  return frames;
}

void PreAlarmRing::DropFirstGroup() {
  for (std::size_t left = FirstGroup(); left > 0; --left) {
    auto packet = std::move(m_slots[m_first]);
    m_bytes -= packet->m_bytes.size();
    Recycle(std::move(packet));
    m_first = (m_first + 1) % kMaxFrames;
    --m_count;
  }
}

void PreAlarmRing::Recycle(std::shared_ptr<FramePacket> packet) {
  // Somebody replays it: its memory goes with the last holder. So it does when there is too much:
  // each packet has the room of the largest frame that ever was in it.
  if (packet.use_count() > 1 || m_memory_bytes > 2 * kMaxBytes) {
    m_memory_bytes -= packet->m_bytes.capacity();
    return;
  }
  (packet->m_is_i_frame ? m_free_i : m_free_p).push_back(std::move(packet));
}

}  // namespace zebx::zebdev
