#include "platform/os/graphics/dib_format.h"

#include "platform/framework/byte_order.h"

using namespace zebx;

namespace os {

BitmapInfoHeader BitmapInfoHeader::Parse(std::span<const BYTE, kBytes> bytes) {
  ByteReader reader(bytes);
  reader.Get<DWORD>();  // its own size
  BitmapInfoHeader header;
  header.m_width = reader.Get<LONG>();
  header.m_height = reader.Get<LONG>();
  header.m_planes = reader.Get<WORD>();
  header.m_bit_count = reader.Get<WORD>();
  header.m_compression = reader.Get<DWORD>();
  header.m_image_bytes = reader.Get<DWORD>();
  header.m_x_pixels_per_meter = reader.Get<LONG>();
  header.m_y_pixels_per_meter = reader.Get<LONG>();
  header.m_colors_used = reader.Get<DWORD>();
  header.m_colors_important = reader.Get<DWORD>();
  return header;
}

std::array<BYTE, BitmapInfoHeader::kBytes> BitmapInfoHeader::Format() const {
  std::array<BYTE, kBytes> bytes;
  ByteWriter writer(bytes);
  writer.Put(static_cast<DWORD>(kBytes));
  writer.Put(m_width);
  writer.Put(m_height);
  writer.Put(m_planes);
  writer.Put(m_bit_count);
  writer.Put(m_compression);
  writer.Put(m_image_bytes);
  writer.Put(m_x_pixels_per_meter);
  writer.Put(m_y_pixels_per_meter);
  writer.Put(m_colors_used);
  writer.Put(m_colors_important);
  return bytes;
}

DWORD BitmapInfoHeader::ColorCount() const {
  if (m_colors_used != 0) return m_colors_used;
  switch (m_bit_count) {
    case 1:
    case 4:
    case 8:
      return DWORD{1} << m_bit_count;
    default:
      return 0;
  }
}

}  // namespace os
