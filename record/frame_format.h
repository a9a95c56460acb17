// The file form of a frame, as it lies in a recording file: a header of 12 bytes, 16 with speech,
// then the video bytes, then the speech bytes. docs/recording-format.md is its page.
#pragma once

#include <array>
#include <optional>
#include <span>

#include "platform/framework/export.h"
#include "platform/framework/types.h"

class CFile;

namespace zebx {

// Bits of a frame's flags word.
enum : WORD {
  kFrameVideoLost = 0x0001,
  kFrameVideoAlarm = 0x0002,
  kFrameIOAlarm = 0x0004,
  kFrameEncoderTypeMask = 0x00F0,
  kFrameAlarm = 0x2000,
  kFrameRT = 0x4000,     // marked by the live capture path
  kFrameVoice = 0x8000,  // carries speech
};

// Frame types: 0 is an I-frame; every other value depends on earlier frames.
inline constexpr WORD kIFrame = 0;

// Board family whose recordings carry the RT8Port flag and whose blocks are counted in I-frames.
inline constexpr BYTE kEncoderTypeRT8Port = 2;

inline constexpr std::size_t kFrameHeaderBytes = 12;
inline constexpr std::size_t kVoicedFrameHeaderBytes = 16;

struct ZEBX_API FrameHeader {
  WORD m_type = 0;
  WORD m_flags = 0;
  DWORD m_time_stamp = 0;
  DWORD m_video_bytes = 0;
  DWORD m_speech_bytes = 0;  // 0 without the voice flag

  // The header at the start of `bytes`; nothing when it is not whole.
  static std::optional<FrameHeader> Parse(std::span<const BYTE> bytes);
  // The header at the file's position, which then stands behind it; nothing when the file ends
  // first. One system call. Throws CFileException.
  static std::optional<FrameHeader> Read(CFile& file);
  // Puts the header into `buffer` and returns the part of it that is used.
  std::span<const BYTE> Format(std::array<BYTE, kVoicedFrameHeaderBytes>& buffer) const;

  bool IsIFrame() const { return m_type == kIFrame; }
  bool IsVoice() const { return (m_flags & kFrameVoice) != 0; }
  std::size_t HeaderBytes() const {
    return IsVoice() ? kVoicedFrameHeaderBytes : kFrameHeaderBytes;
  }
  ULONGLONG BodyBytes() const { return ULONGLONG{m_video_bytes} + m_speech_bytes; }
  ULONGLONG TotalBytes() const { return HeaderBytes() + BodyBytes(); }
};

}  // namespace zebx
