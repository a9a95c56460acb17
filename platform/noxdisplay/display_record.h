// The records that pass through the display library's door. The display record keeps its byte
// layout; what holds an address is as wide as a pointer.
#pragma once

#include <cstddef>
#include <type_traits>

#include "platform/framework/types.h"

namespace zebx::noxdisplay {

inline constexpr std::size_t kDisplayTextBytes = 65;  // with the terminator
inline constexpr std::size_t kDisplayMasks = 5;

}  // namespace zebx::noxdisplay

// A rectangle that is outlined over the picture, in macroblocks of 16 pixels of the record's encode
// size.
struct tag_DISPLAYMASK {
  LONG m_left;
  LONG m_top;
  LONG m_right;
  LONG m_bottom;
  DWORD m_state;  // kMaskSeesMotion, kMaskIsInAlarm
};

// What is drawn around and over a picture. Zero-filled when it is made; texts end with a zero byte.
// Colours are 0x00BBGGRR.
struct tag_DISPLAYINFO {
  DWORD m_flags;  // kShow...
  // What the masks are counted in: the size at which the channel encodes, in pixels. 0: the
  // stream's size. A preview of half that size, or a picture decoded at twice of it, has to say.
  WORD m_encode_width;
  WORD m_encode_height;
  // Where in the stream's picture captions go. Empty: anywhere.
  LONG m_caption_left;
  LONG m_caption_top;
  LONG m_caption_right;
  LONG m_caption_bottom;
  DWORD m_mask_count;  // kDisplayMasks at most
  tag_DISPLAYMASK m_masks[zebx::noxdisplay::kDisplayMasks];
  char m_camera_name[zebx::noxdisplay::kDisplayTextBytes];
  BYTE m_padding_193[3];
  DWORD m_camera_name_color;
  char m_board_name[zebx::noxdisplay::kDisplayTextBytes];
  BYTE m_padding_265[3];
  DWORD m_board_name_color;
  char m_clock[zebx::noxdisplay::kDisplayTextBytes];
  BYTE m_padding_337[3];
  DWORD m_clock_color;
  char m_begin_time[zebx::noxdisplay::kDisplayTextBytes];
  char m_end_time[zebx::noxdisplay::kDisplayTextBytes];  // or a date
  BYTE m_padding_474[2];
};

namespace zebx::noxdisplay {

enum : DWORD { kMaskSeesMotion = 0x01, kMaskIsInAlarm = 0x02 };

// What the display draws for each bit. The status pictures are those registered under the numbers
// of streams.h with the same names.
enum : DWORD {
  kShowMonitor = 0x00000001,     // the working picture
  kShowCameraName = 0x00000002,  // the three bits of a caption that is on
  kShowBoardName = 0x00000004,
  kShowClock = 0x00000008,
  kShowProgramming = 0x00000010,
  kShowActive = 0x00000020,  // without a registered picture a frame round the window
  kShowAlarm = 0x00000040,
  kShowMasks = 0x00000080,
  kShowPlayed = 0x00000100,  // a recording's picture, not a live one; nothing is drawn for it
  kShowRecord = 0x00000200,
  kShowAudio = 0x00000400,
  kShowVideoLost = 0x00000800,  // in the place of the picture and of masks
  kShowBeginTime = 0x00002000,
  kShowEndTime = 0x00004000,
  kShowSmooth = 0x00040000,  // made smaller with means; else rows and columns are left out
  kShowReserved19 = 0x00080000,
};

}  // namespace zebx::noxdisplay

static_assert(sizeof(tag_DISPLAYMASK) == 20 && sizeof(tag_DISPLAYINFO) == 476 &&
              offsetof(tag_DISPLAYINFO, m_encode_width) == 4 &&
              offsetof(tag_DISPLAYINFO, m_caption_left) == 8 &&
              offsetof(tag_DISPLAYINFO, m_mask_count) == 24 &&
              offsetof(tag_DISPLAYINFO, m_masks) == 28 &&
              offsetof(tag_DISPLAYINFO, m_camera_name) == 128 &&
              offsetof(tag_DISPLAYINFO, m_camera_name_color) == 196 &&
              offsetof(tag_DISPLAYINFO, m_board_name) == 200 &&
              offsetof(tag_DISPLAYINFO, m_board_name_color) == 268 &&
              offsetof(tag_DISPLAYINFO, m_clock) == 272 &&
              offsetof(tag_DISPLAYINFO, m_clock_color) == 340 &&
              offsetof(tag_DISPLAYINFO, m_begin_time) == 344 &&
              offsetof(tag_DISPLAYINFO, m_end_time) == 409 &&
              std::is_trivially_copyable_v<tag_DISPLAYINFO>);

// Where noxshowGetPicture puts a picture.
struct tag_PICTUREDESC {
  DWORD m_format;  // kPicture24Bits
  BYTE* m_pixels;  // width * height * 3 bytes
  DWORD m_reserved[3];
  DWORD m_width;
  DWORD m_height;
  LONG m_pitch;  // bytes from row to row; negative: the rows of the buffer go from the bottom up
};

namespace zebx::noxdisplay {

inline constexpr DWORD kPicture24Bits = 0x200;

}  // namespace zebx::noxdisplay

// What noxshowLock gives.
struct tag_SURFACELOCK {
  std::uintptr_t m_reserved_0;
  BYTE* m_pixels;          // of 4 bytes: blue, green, red and one that means nothing
  std::uintptr_t m_pitch;  // bytes from row to row, from the top down
  std::uintptr_t m_reserved[2];
};
