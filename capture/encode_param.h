// The encoder settings of one camera: what the host fills in and the device's channel is set to.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/types.h"

// A value: four numbers. Setters limit; what is read from bytes is taken as it stands. Used by one
// thread at a time.
class ZEBX_API CEncodeParam {
 public:
  // Medium quality, no sound, watched for video loss.
  CEncodeParam();
  CEncodeParam(const CEncodeParam&);
  CEncodeParam& operator=(const CEncodeParam&);
  virtual ~CEncodeParam();

  // 1 when all four numbers are equal, else 0.
  int operator==(const CEncodeParam& other) const;

  // 0 to kMaxQuality, the best; a larger value is kMaxQuality.
  void SetQuarity(DWORD quality);
  DWORD GetQuarity() const { return m_quality; }
  // 0 to kMaxMotionSensitivity; a larger value is kMaxMotionSensitivity.
  void SetMoveSen(DWORD sensitivity);
  DWORD GetMoveSen() const { return m_motion_sensitivity; }
  // Reports of motion in a row that make an alarm; any number.
  void SetAlarmFrameNum(DWORD frames) { m_alarm_frames = frames; }
  DWORD GetAlarmFrameNum() const { return m_alarm_frames; }

  // What the channel does. Setters switch on for every value but 0.
  void EnableVideo(int is_on) { SetBit(kEncodesVideo, is_on); }
  int IsVideoEncode() const { return (m_streams & kEncodesVideo) != 0 ? 1 : 0; }
  void EnableAudio(int is_on) { SetBit(kEncodesAudio, is_on); }
  int IsAudioEncode() const { return (m_streams & kEncodesAudio) != 0 ? 1 : 0; }
  void EnableVideoLostCheck(int is_on) { SetBit(kChecksVideoLoss, is_on); }
  // Answers the masked bit, 4 or 0.
  int IsVideoLostCheck() const { return static_cast<int>(m_streams & kChecksVideoLoss); }

  // The steps on the encoder's own scales: quantisers of I-frames and of other frames, the
  // threshold of the bit stream, and the thresholds of motion detection and of motion alarms.
  DWORD GetQi() const;
  DWORD GetQp() const;
  DWORD GetBitStreamThreshold() const;
  DWORD GetMotionDetectSen() const;
  DWORD GetAlarmDetectSen() const;

  // Byte form: the low byte of each number, kBytes in all. The cursor advances; the answer is the
  // bytes moved. Write needs GetSize() bytes, and limits the object's own quality and sensitivity
  // once it has written them as they were. Read limits nothing; the form with `end` answers 0, with
  // everything as it was, when the bytes before `end` are too few.
  static constexpr DWORD GetSize() { return kBytes; }
  DWORD Write(BYTE*& cursor);
  DWORD Read(BYTE*& cursor);
  DWORD Read(BYTE*& cursor, const BYTE* end);

  static constexpr DWORD kBytes = 4;
  static constexpr DWORD kMaxQuality = 10;
  static constexpr DWORD kMaxMotionSensitivity = 16;

 private:
  enum : DWORD { kEncodesVideo = 0x1, kEncodesAudio = 0x2, kChecksVideoLoss = 0x4 };
  void SetBit(DWORD bit, int is_on) { m_streams = is_on != 0 ? m_streams | bit : m_streams & ~bit; }

  DWORD m_quality = 5;
  DWORD m_motion_sensitivity = 8;
  DWORD m_alarm_frames = 3;
  DWORD m_streams = kEncodesVideo | kChecksVideoLoss;
};
