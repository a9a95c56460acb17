// The records that pass through the device library's door. Their byte layouts are the door's, fixed
// for every implementation: little-endian, packed, reserved bytes 0 unless somebody else set them.
#pragma once

#include <cstddef>
#include <type_traits>

#include "platform/framework/types.h"

// What a device is and has. Reserved bytes belong to the device library: copy them, never read
// them.
struct tag_DEVICECAP {
  DWORD m_device_type;  // exactly one bit, 0x001 to 0x800
  BYTE m_reserved_4[20];
  BYTE m_channels;  // kDeviceChannelsMask
  BYTE m_reserved_25;
  BYTE m_io_ports;  // kDeviceIoPortsMask
  BYTE m_watchdog;  // kDeviceWatchdogBit
  BYTE m_tv;        // kDeviceTvBit
  BYTE m_reserved_29[35];
};

namespace zebx::zebdev {

enum : BYTE {
  kDeviceChannelsMask = 0x3F,  // number of video channels
  kDeviceIoPortsMask = 0x3F,   // anything but 0: there are I/O ports
  kDeviceWatchdogBit = 0x40,
  kDeviceTvBit = 0x10,
};

}  // namespace zebx::zebdev

static_assert(sizeof(tag_DEVICECAP) == 64 && offsetof(tag_DEVICECAP, m_channels) == 24 &&
              offsetof(tag_DEVICECAP, m_io_ports) == 26 &&
              offsetof(tag_DEVICECAP, m_watchdog) == 27 && offsetof(tag_DEVICECAP, m_tv) == 28);

// How a channel runs. Only what the two bytes of bits name is taken over; the rest stays as it was.
// The bits for what is encoded, for preview audio and for the check for video loss count only with
// kConfigHasEncoder, the watermark only with kConfigHasWatermark. What changes is taken over with
// the next frame; a watermark is for devices that draw one, which virtual ones do not.
struct tag_CHANNELCONFIG {
  BYTE m_valid;    // kConfigHas..., kConfigChecksVideoLoss
  BYTE m_streams;  // kConfigEncodes..., kConfigPreviewsAudio, kConfigHasWatermark
  BYTE m_reserved_2[10];
  DWORD m_quality;
  DWORD m_speed;  // the host's own; virtual devices take frames a second, 0 for as many as possible
  DWORD m_motion_sensitivity;
  DWORD m_alarm_frames;  // frames with motion on end that make an alarm
  DWORD m_reserved_28;
  DWORD m_watermark;  // transparency, 0 to 128; kNoWatermark for none
};

namespace zebx::zebdev {

enum : BYTE {
  kConfigHasEncoder = 0x02,
  kConfigHasSpeed = 0x04,
  kConfigHasQuality = 0x08,
  kConfigHasMotionSensitivity = 0x10,
  kConfigHasAlarmFrames = 0x40,
  kConfigChecksVideoLoss = 0x80,
};

enum : BYTE {
  kConfigEncodesVideo = 0x01,
  kConfigEncodesAudio = 0x02,
  kConfigPreviewsAudio = 0x04,
  kConfigHasWatermark = 0x08,
};

inline constexpr DWORD kNoWatermark = 0xFFFFFFFF;

}  // namespace zebx::zebdev

static_assert(sizeof(tag_CHANNELCONFIG) == 36 && offsetof(tag_CHANNELCONFIG, m_quality) == 12 &&
              offsetof(tag_CHANNELCONFIG, m_alarm_frames) == 24 &&
              offsetof(tag_CHANNELCONFIG, m_watermark) == 32);

// The head of a frame packet. `m_video_bytes` of compressed video follow it, then, when
// kPacketHasSpeech is set, `m_speech_bytes` of speech.
struct tag_DEVFRAME {
  BYTE m_reserved_0[12];
  DWORD m_flags;       // kPacket...
  DWORD m_time_stamp;  // ticks, ms
  DWORD m_video_bytes;
  DWORD m_speech_bytes;
  DWORD m_reserved_28;
};

namespace zebx::zebdev {

enum : DWORD {
  kPacketTypeMask = 0x000000FF,
  kPacketVideoLost = 0x00010000,
  kPacketVideoAlarm = 0x00020000,
  kPacketEncoderTypeMask = 0x00F00000,
  kPacketHasSpeech = 0x80000000,
};

inline constexpr int kPacketEncoderTypeShift = 20;

}  // namespace zebx::zebdev

static_assert(sizeof(tag_DEVFRAME) == 32 && offsetof(tag_DEVFRAME, m_flags) == 12 &&
              offsetof(tag_DEVFRAME, m_speech_bytes) == 24);

// The head of a packet of faces. `m_count` face records follow it, each a head of 16 bytes with
// the width (u16) at byte 4 and the height (u16) at byte 6, then width * height bytes.
struct tag_FACEPACKET {
  BYTE m_reserved_0[8];
  DWORD m_count;
  BYTE m_kind;  // kFacePacket, else this is no packet of faces
  BYTE m_reserved_13[19];
};

namespace zebx::zebdev {

inline constexpr BYTE kFacePacket = 0x80;

}  // namespace zebx::zebdev

static_assert(sizeof(tag_FACEPACKET) == 32 && offsetof(tag_FACEPACKET, m_count) == 8 &&
              offsetof(tag_FACEPACKET, m_kind) == 12);

namespace zebx::zebdev {

inline constexpr std::size_t kCaptionTextBytes = 68;  // with the terminator

}  // namespace zebx::zebdev

// The caption of a channel's live picture, handed over by the device library to be filled. Bits and
// bytes without a name here are the device library's own and stay as they are.
struct tag_CAPTIONINFO {
  DWORD m_bits;  // kCaption...
  BYTE m_reserved_4[124];
  char m_camera_name[zebx::zebdev::kCaptionTextBytes];
  DWORD m_camera_name_color;
  char m_board_name[zebx::zebdev::kCaptionTextBytes];
  DWORD m_board_name_color;
  BYTE m_reserved_272[68];
  DWORD m_time_color;
  char m_begin_time[zebx::zebdev::kCaptionTextBytes];  // shown with kCaptionShowsBeginTime
};

namespace zebx::zebdev {

enum : DWORD {
  kCaptionMonitor = 0x0001,
  kCaptionShows = 0x000E,  // the three bits of a caption that is on
  kCaptionProgramming = 0x0010,
  kCaptionActive = 0x0020,
  kCaptionAlarm = 0x0040,
  kCaptionAlways = 0x0080,
  kCaptionRecord = 0x0200,
  kCaptionShowsBeginTime = 0x2000,
};

}  // namespace zebx::zebdev

static_assert(sizeof(tag_CAPTIONINFO) == 412 && offsetof(tag_CAPTIONINFO, m_camera_name) == 128 &&
              offsetof(tag_CAPTIONINFO, m_camera_name_color) == 196 &&
              offsetof(tag_CAPTIONINFO, m_board_name) == 200 &&
              offsetof(tag_CAPTIONINFO, m_board_name_color) == 268 &&
              offsetof(tag_CAPTIONINFO, m_time_color) == 340 &&
              offsetof(tag_CAPTIONINFO, m_begin_time) == 344);

// An area in which a channel looks for motion, in macroblocks of 16 pixels of the encode size.
struct tag_MASKAREA {
  DWORD m_left;
  DWORD m_top;
  DWORD m_right;
  DWORD m_bottom;
};

static_assert(sizeof(tag_MASKAREA) == 16);

namespace zebx::zebdev {

inline constexpr std::size_t kMaskStates = 5;

}  // namespace zebx::zebdev

// What a channel sees in its mask areas, in the order in which they were added.
struct tag_MASKSTATE {
  struct Area {
    BYTE m_reserved_0[16];
    DWORD m_state;  // kMaskMotion, kMaskAlarm
  };

  DWORD m_count;  // may say more than there are entries
  Area m_areas[zebx::zebdev::kMaskStates];
};

namespace zebx::zebdev {

enum : DWORD { kMaskMotion = 0x01, kMaskAlarm = 0x02 };

}  // namespace zebx::zebdev

static_assert(sizeof(tag_MASKSTATE) == 104 && offsetof(tag_MASKSTATE, m_areas) == 4 &&
              sizeof(tag_MASKSTATE::Area) == 20 && offsetof(tag_MASKSTATE::Area, m_state) == 16);

// The colour of a channel. The words stand in the device library's own order: the last two
// components are the other way round than everywhere else in this library.
struct tag_DEVCOLOR {
  LONG m_component_0;
  LONG m_component_1;
  LONG m_component_3;
  LONG m_component_2;
};

static_assert(sizeof(tag_DEVCOLOR) == 16);

static_assert(std::is_trivially_copyable_v<tag_DEVICECAP> &&
              std::is_trivially_copyable_v<tag_CAPTIONINFO>);
