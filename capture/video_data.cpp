#include "capture/video_data.h"

#include "capture/encode_param.h"
#include "capture/mask_list.h"
#include "platform/framework/byte_order.h"
#include "record/zeb_file.h"

using namespace zebx;

namespace {

constexpr DWORD kSpeechBufferBytes = 65536;

}  // namespace

CVideoData::CVideoData(tag_ZEBCAMERAID camera, DWORD width, DWORD height)
    : CZebFrameData(width, height, kSpeechBufferBytes),
      m_camera(std::make_shared<tag_ZEBCAMERAID>(camera)),
      m_masks(std::make_shared<CMaskList>()),
      m_encode_param(std::make_shared<CEncodeParam>()) {}

CVideoData::CVideoData(const CVideoData&) = default;

CVideoData::~CVideoData() = default;

int CVideoData::operator=(const CVideoData& other) {
  if (this == &other) return 1;
  if (CZebFrameData::operator=(other) == 0) return 0;
  m_is_yuv = other.m_is_yuv;
  return 1;
}

int CVideoData::SetFile(CZebFile* file) {
  if (file == m_file.get()) return 1;
  if (file == nullptr) {
    m_file = nullptr;  // a file can be finished without memory for another
    return 1;
  }
  // The owner is made before it owns anything: without the memory the file stays the caller's.
  auto owner = std::make_shared<std::unique_ptr<CZebFile>>();
  owner->reset(file);
  m_file = {owner, file};
  return 1;
}

void CVideoData::SetSize(DWORD /*width*/, DWORD /*height*/) {}

DWORD CVideoData::GetSize() const {
  return m_masks->GetSize() + CZebFrameData::GetSize();
}

DWORD CVideoData::Write(BYTE*& cursor) const {
  const DWORD frame_bytes = CZebFrameData::Write(cursor);
  return frame_bytes != 0 ? frame_bytes + m_masks->Write(cursor) : 0;
}

DWORD CVideoData::Read(BYTE*& cursor) {
  return Read(cursor, UnknownEnd(cursor));
}

DWORD CVideoData::Read(BYTE*& cursor, const BYTE* end) {
  // The list is read before the frame record, which then can only fail without the memory.
  const std::size_t frame_bytes = BufferFormBytes(cursor, end);
  if (frame_bytes == 0) return 0;
  BYTE* at = cursor + frame_bytes;
  CMaskList masks;
  if (masks.Read(at, end) == 0 || CZebFrameData::Read(cursor, end) == 0) return 0;
  m_masks->Swap(masks);
  const auto bytes = static_cast<DWORD>(frame_bytes + static_cast<std::size_t>(at - cursor));
  cursor = at;
  return bytes;
}
