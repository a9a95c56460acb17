// A camera makes face pictures of the packets that its channel brings, for the host to keep.
#include <cstring>
#include <span>
#include <vector>

#include "capture/capture_app.h"
#include "capture/capture_camera.h"
#include "platform/framework/byte_order.h"
#include "platform/framework/time.h"
#include "record/mox_face.h"

using namespace zebx;

namespace {

// Nothing tells how long a packet is but the heads in it. More than this is none that a picture can
// hold: such a packet is ignored, so that no head leads far out of it or asks for much memory.
constexpr DWORD kMaxFaces = 64;
constexpr std::size_t kMaxRecordBytes = 4 * 1024 * 1024;  // of all faces of a packet

// The bytes of a face record: its head, and one for every pixel.
std::size_t RecordBytes(const BYTE* record) {
  ByteReader head({record, CMoxFace::kRecordHeaderBytes});
  head.Get<DWORD>();  // not used
  const std::size_t width = head.Get<WORD>();
  const std::size_t height = head.Get<WORD>();
  return CMoxFace::kRecordHeaderBytes + width * height;
}

// The records of a packet, one behind the other; empty for what is no packet of faces.
std::span<const BYTE> FindRecords(const tag_FACEPACKET& head, const void* packet) {
  if (head.m_kind != zebdev::kFacePacket || head.m_count > kMaxFaces) return {};
  const BYTE* const first = static_cast<const BYTE*>(packet) + sizeof head;
  std::size_t bytes = 0;
  for (DWORD i = 0; i < head.m_count; ++i) {
    bytes += RecordBytes(first + bytes);
    if (bytes > kMaxRecordBytes) return {};
  }
  return {first, bytes};
}

}  // namespace

void CCaptureCamera::TakeFaces(std::uintptr_t device, const void* packet) const {
  tag_ZEBCAMERAID id;
  {
    const std::lock_guard lock(m_mutex);
    if (!IsBoundTo(device)) return;
    id = ToCameraId(m_id);
  }
  if (packet == nullptr) return;
  tag_FACEPACKET head;
  std::memcpy(&head, packet, sizeof head);
  std::span<const BYTE> records = FindRecords(head, packet);
  if (records.empty()) return;

  const CTime now = CTime::GetCurrentTime();
  std::vector<std::unique_ptr<CMoxFace>> faces;
  auto handed_over = std::make_unique<CMoxFace*[]>(head.m_count);
  for (DWORD i = 0; i < head.m_count; ++i) {
    const auto record = records.first(RecordBytes(records.data()));
    records = records.subspan(record.size());
    faces.push_back(std::make_unique<CMoxFace>());
    faces.back()->Create(&id, record.data(), record.data() + record.size(), now);
    handed_over[i] = faces.back().get();
  }
  // Nothing of this object is touched any more, as with live frames.
  const auto array = reinterpret_cast<std::uintptr_t>(handed_over.get());
  if (!GetCaptureApp().CallHost(ZEBX_MSG_FACES, head.m_count, array)) return;
  // Array and faces are the host's now, who may have destroyed them already.
  static_cast<void>(handed_over.release());
  for (auto& face : faces) static_cast<void>(face.release());
}
