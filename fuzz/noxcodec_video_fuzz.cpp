// Feeds packets to a video decoder. The input is cut into packets by a length of two bytes each;
// most get the right checksum and reference, so that what lies behind those checks is reached.
#include <algorithm>
#include <cstdlib>
#include <vector>

#include "platform/framework/byte_order.h"
#include "platform/noxcodec/noxcodec.h"
#include "platform/noxcodec/software/crc32.h"
#include "platform/noxcodec/software/video_format.h"

using namespace zebx;

namespace {

constexpr int kShownSize = 48;
constexpr std::size_t kKindOffset = 5;
constexpr std::size_t kWidthOffset = 7;
constexpr std::size_t kHeightOffset = 9;
constexpr std::size_t kReferenceOffset = 11;

// Sizes stay small, so that the time goes into many packets; one bit of the width's upper byte lets
// any size through.
void LimitSize(std::span<BYTE> packet) {
  if ((packet[kWidthOffset + 1] & 0x80) != 0) {
    packet[kWidthOffset + 1] &= 0x7F;
    return;
  }
  packet[kWidthOffset + 1] = 0;
  packet[kHeightOffset + 1] = 0;
}

void Seal(std::span<BYTE> packet, DWORD reference) {
  LimitSize(packet);
  if (packet[kKindOffset] != 0) ByteWriter(packet.subspan(kReferenceOffset)).Put(reference);
  ByteWriter(packet).Put(noxcodec::Crc32(packet.subspan(sizeof(DWORD))));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const BYTE* data, std::size_t size) {
  NxcHandle decoder = nullptr;
  if (nxcCreateVideoDecoder(&decoder, 1, kShownSize, kShownSize, 0) != 0) std::abort();
  std::vector<BYTE> pixels(kShownSize * kShownSize * 4);
  ByteReader reader({data, size});
  DWORD reference = 0;
  while (reader.Remaining() > sizeof(WORD)) {
    const auto head = reader.Get<WORD>();
    const bool sealed = (head & 0x8000) == 0;
    const auto taken = reader.Take(std::min<std::size_t>(head & 0x0FFF, reader.Remaining()));
    std::vector<BYTE> packet(taken.begin(), taken.end());
    if (sealed && packet.size() >= noxcodec::kPacketHeaderBytes) Seal(packet, reference);
    const WORD frame_type = packet.size() > kKindOffset ? packet[kKindOffset] : 0;
    const auto length = static_cast<DWORD>(packet.size());
    if (nxcDecodeVideo(decoder, frame_type, packet.data(), length) != 0) continue;
    reference = ByteReader(packet).Get<DWORD>();
    const bool upright = (head & 0x4000) == 0;
    const int pitch = upright ? kShownSize * 4 : -kShownSize * 4;
    if (nxcGetVideo(decoder, pixels.data(), kNxcFormatBgrx, pitch, head >> 12) != 0) std::abort();
  }
  nxcDestroyHandle(decoder);
  return 0;
}
