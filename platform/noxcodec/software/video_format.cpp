#include "platform/noxcodec/software/video_format.h"

#include "platform/framework/byte_order.h"
#include "platform/noxcodec/software/crc32.h"
#include "platform/noxcodec/software/video_encoder.h"

namespace zebx::noxcodec {
namespace {

constexpr BYTE kVersion = 0x51;
constexpr std::size_t kChecksumBytes = sizeof(DWORD);

bool Within(int value, int least, int most) {
  return value >= least && value <= most;
}

}  // namespace

DWORD SealPacket(const PacketHeader& header, std::span<BYTE> packet) {
  ByteWriter writer(packet.subspan(kChecksumBytes));
  writer.Put(kVersion);
  writer.Put(static_cast<BYTE>(header.kind));
  writer.Put(static_cast<BYTE>(header.quantiser));
  writer.Put(static_cast<WORD>(header.width));
  writer.Put(static_cast<WORD>(header.height));
  writer.Put(header.reference);
  const DWORD checksum = Crc32(packet.subspan(kChecksumBytes));
  ByteWriter(packet).Put(checksum);
  return checksum;
}

std::optional<PacketHeader> OpenPacket(std::span<const BYTE> packet) {
  if (packet.size() < kPacketHeaderBytes) return std::nullopt;
  ByteReader reader(packet);
  PacketHeader header;
  header.checksum = reader.Get<DWORD>();
  if (header.checksum != Crc32(packet.subspan(kChecksumBytes))) return std::nullopt;
  if (reader.Get<BYTE>() != kVersion) return std::nullopt;
  const auto kind = reader.Get<BYTE>();
  if (kind > static_cast<BYTE>(FrameKind::kPredicted)) return std::nullopt;
  header.kind = static_cast<FrameKind>(kind);
  header.quantiser = reader.Get<BYTE>();
  header.width = reader.Get<WORD>();
  header.height = reader.Get<WORD>();
  header.reference = reader.Get<DWORD>();
  const bool within = Within(header.quantiser, kMinQuantiser, kMaxQuantiser) &&
                      Within(header.width, kMinCodedSize, kMaxCodedSize) &&
                      Within(header.height, kMinCodedSize, kMaxCodedSize);
  return within ? std::optional(header) : std::nullopt;
}

}  // namespace zebx::noxcodec
