#include "capture/video_color.h"

#include <algorithm>

#include "platform/framework/archive.h"
#include "platform/framework/byte_order.h"
#include "platform/framework/error_report.h"
#include "platform/zebdev/channels.h"

using namespace zebx;

namespace {

struct Limits {
  std::int16_t m_min;
  std::int16_t m_max;
};

constexpr std::array<Limits, CVideoColor::kComponents> kLimits = {
    {{0, 255}, {0, 127}, {-128, 127}, {0, 127}}};

// The one bit by which the device library knows a type; types that it does not know count as 0.
DWORD DeviceTypeBit(BYTE board_type) {
  constexpr DWORD kTypeMask = 0x7F;  // without the bit of a device's second board
  constexpr DWORD kLastType = 11;
  const DWORD type = board_type & kTypeMask;
  return type <= kLastType ? 1U << type : 1U;
}

}  // namespace

IMPLEMENT_DYNAMIC(CVideoColor, CObject)

CVideoColor::CVideoColor(BYTE board_type, tag_VIDEOSTANDARD standard)
    : m_board_type(board_type), m_standard(standard) {
  Reset(standard);
}

CVideoColor::~CVideoColor() = default;

CVideoColor& CVideoColor::operator=(const CVideoColor& other) {
  if (this == &other) return *this;
  m_standard = other.m_standard;
  m_board_type = other.m_board_type;
  m_values = other.m_values;
  return *this;
}

void CVideoColor::GetDefaultColor() {
  tag_DEVCOLOR color{};
  const int is_ntsc = m_standard == kVideoStandardNtsc ? 1 : 0;
  if (noxdevGetDefaultColor(DeviceTypeBit(m_board_type), &color, is_ntsc) != 0) color = {};
  m_defaults = {static_cast<std::int16_t>(color.m_component_0),
                static_cast<std::int16_t>(color.m_component_1),
                static_cast<std::int16_t>(color.m_component_2),
                static_cast<std::int16_t>(color.m_component_3)};
}

void CVideoColor::Reset(tag_VIDEOSTANDARD standard) {
  m_standard = standard;
  GetDefaultColor();
  m_values = m_defaults;
}

void CVideoColor::SetValue(std::int16_t value, tag_VCLR component) {
  if (component >= kComponents) return;
  m_values[component] = std::clamp(value, GetMin(component), GetMax(component));
}

std::int16_t CVideoColor::GetValue(tag_VCLR component) const {
  return component < kComponents ? m_values[component] : std::int16_t{0};
}

std::int16_t CVideoColor::GetDefault(tag_VCLR component) const {
  return component < kComponents ? m_defaults[component] : std::int16_t{0};
}

std::int16_t CVideoColor::GetMin(tag_VCLR component) {
  return component < kComponents ? kLimits[component].m_min : std::int16_t{0};
}

std::int16_t CVideoColor::GetMax(tag_VCLR component) {
  return component < kComponents ? kLimits[component].m_max : std::int16_t{0};
}

DWORD CVideoColor::Write(BYTE*& cursor) const {
  ByteWriter writer({cursor, kBytes});
  for (const std::int16_t value : m_values) writer.Put(value);
  cursor += kBytes;
  return kBytes;
}

DWORD CVideoColor::Read(BYTE*& cursor) {
  return Read(cursor, cursor + kBytes);
}

DWORD CVideoColor::Read(BYTE*& cursor, const BYTE* end) {
  if (end - cursor < std::ptrdiff_t{kBytes}) return 0;
  ByteReader reader({cursor, kBytes});
  for (std::int16_t& value : m_values) value = reader.Get<std::int16_t>();
  cursor += kBytes;
  return kBytes;
}

void CVideoColor::Serialize(CArchive& archive) {
  try {
    for (std::int16_t& value : m_values) {
      if (archive.IsStoring()) {
        archive << value;
      } else {
        archive >> value;
      }
    }
  } catch (const std::exception& failure) {
    ReportError(failure);
  }
}
