#include "platform/zebdev/software/face_packet.h"

#include <algorithm>
#include <cstring>

#include "platform/framework/byte_order.h"

namespace zebx::zebdev {
namespace {

using FaceArea = ChannelSource::FaceArea;

constexpr std::size_t kRecordHeadBytes = 16;
constexpr DWORD kWidthMultiple = 4;
constexpr DWORD kMaxSide = 0xFFFF;  // records say places and sizes in 16 bits

FaceArea CutOff(const FaceArea& area, const noxcodec::PlaneView& luma) {
  const DWORD width = std::min(static_cast<DWORD>(luma.width), kMaxSide);
  const DWORD height = std::min(static_cast<DWORD>(luma.height), kMaxSide);
  FaceArea cut{std::min(area.m_left, width), std::min(area.m_top, height)};
  cut.m_width = std::min(area.m_width, width - cut.m_left) / kWidthMultiple * kWidthMultiple;
  cut.m_height = std::min(area.m_height, height - cut.m_top);
  return cut;
}

void AppendRecord(const noxcodec::PlaneView& luma, const FaceArea& area, DWORD index,
                  std::vector<BYTE>& packet) {
  const std::size_t head = packet.size();
  packet.resize(head + kRecordHeadBytes);
  ByteWriter writer({packet.data() + head, kRecordHeadBytes});
  writer.Put<DWORD>(0);  // not used
  writer.Put(static_cast<WORD>(area.m_width));
  writer.Put(static_cast<WORD>(area.m_height));
  writer.Put(static_cast<WORD>(area.m_left));
  writer.Put(static_cast<WORD>(area.m_top));
  writer.Put(static_cast<WORD>(index));
  writer.Put<WORD>(0);  // not used
  for (DWORD y = area.m_height; y-- > 0;) {
    const BYTE* const row = luma.Row(static_cast<int>(area.m_top + y)) + area.m_left;
    packet.insert(packet.end(), row, row + area.m_width);
  }
}

}  // namespace

DWORD WriteFacePacket(const noxcodec::PictureView& picture, std::span<const FaceArea> areas,
                      std::vector<BYTE>& packet) {
  packet.resize(sizeof(tag_FACEPACKET));
  tag_FACEPACKET head = {};
  head.m_kind = kFacePacket;
  const noxcodec::PlaneView& luma = picture.planes[noxcodec::kLuma];
  for (const FaceArea& area : areas) {
    const FaceArea cut = CutOff(area, luma);
    if (cut.m_width != 0 && cut.m_height != 0) AppendRecord(luma, cut, head.m_count++, packet);
  }
  std::memcpy(packet.data(), &head, sizeof(head));
  return head.m_count;
}

std::vector<FaceArea> PlacedFaces(int picture_width, int picture_height, DWORD count) {
  // As square a grid as holds them all, each face half as wide and high as its field.
  const DWORD faces = std::min(count, kMaxPlacedFaces);
  DWORD across = 1;
  while (across * across < faces) ++across;
  const DWORD width = static_cast<DWORD>(picture_width) / across;
  const DWORD height = static_cast<DWORD>(picture_height) / across;
  std::vector<FaceArea> areas;
  for (DWORD face = 0; face < faces; ++face) {
    const DWORD left = face % across * width, top = face / across * height;
    areas.push_back({left + width / 4, top + height / 4, width / 2, height / 2});
  }
  return areas;
}

}  // namespace zebx::zebdev
