#include "capture/encode_param.h"

#include <algorithm>

#include "platform/framework/byte_order.h"

using namespace zebx;

namespace {

// The encoder's own scales for a range of qualities.
struct QualityStep {
  DWORD m_last_quality;  // of the range
  DWORD m_qi;
  DWORD m_qp;
  DWORD m_bit_stream_threshold;
};

constexpr QualityStep kQualitySteps[] = {
    {1, 12, 12, 150}, {3, 10, 10, 250}, {6, 8, 8, 300}, {8, 6, 6, 450}, {0xFFFFFFFF, 4, 6, 500},
};

const QualityStep& StepOf(DWORD quality) {
  return *std::ranges::find_if(
      kQualitySteps, [quality](const QualityStep& step) { return quality <= step.m_last_quality; });
}

constexpr DWORD kMotionThresholdBase = 0x1500;
constexpr DWORD kAlarmThresholdBase = 0x1800;
constexpr DWORD kThresholdStep = 256;

}  // namespace

CEncodeParam::CEncodeParam() = default;
CEncodeParam::CEncodeParam(const CEncodeParam&) = default;
CEncodeParam& CEncodeParam::operator=(const CEncodeParam&) = default;
CEncodeParam::~CEncodeParam() = default;

int CEncodeParam::operator==(const CEncodeParam& other) const {
  return m_quality == other.m_quality && m_motion_sensitivity == other.m_motion_sensitivity &&
                 m_streams == other.m_streams && m_alarm_frames == other.m_alarm_frames
             ? 1
             : 0;
}

void CEncodeParam::SetQuarity(DWORD quality) {
  m_quality = std::min(quality, kMaxQuality);
}

void CEncodeParam::SetMoveSen(DWORD sensitivity) {
  m_motion_sensitivity = std::min(sensitivity, kMaxMotionSensitivity);
}

DWORD CEncodeParam::GetQi() const {
  return StepOf(m_quality).m_qi;
}

DWORD CEncodeParam::GetQp() const {
  return StepOf(m_quality).m_qp;
}

DWORD CEncodeParam::GetBitStreamThreshold() const {
  return StepOf(m_quality).m_bit_stream_threshold;
}

// From the quality and not from the motion sensitivity, on purpose.
DWORD CEncodeParam::GetMotionDetectSen() const {
  return kMotionThresholdBase - kThresholdStep * m_quality;
}

DWORD CEncodeParam::GetAlarmDetectSen() const {
  return kAlarmThresholdBase - kThresholdStep * m_motion_sensitivity;
}

DWORD CEncodeParam::Write(BYTE*& cursor) {
  ByteWriter writer({cursor, kBytes});
  for (const DWORD value : {m_quality, m_motion_sensitivity, m_alarm_frames, m_streams}) {
    writer.Put(static_cast<BYTE>(value));
  }
  cursor += kBytes;
  SetQuarity(m_quality);
  SetMoveSen(m_motion_sensitivity);
  return kBytes;
}

DWORD CEncodeParam::Read(BYTE*& cursor) {
  return Read(cursor, cursor + kBytes);
}

DWORD CEncodeParam::Read(BYTE*& cursor, const BYTE* end) {
  if (end - cursor < std::ptrdiff_t{kBytes}) return 0;
  ByteReader reader({cursor, kBytes});
  for (DWORD* value : {&m_quality, &m_motion_sensitivity, &m_alarm_frames, &m_streams}) {
    *value = reader.Get<BYTE>();
  }
  cursor += kBytes;
  return kBytes;
}
