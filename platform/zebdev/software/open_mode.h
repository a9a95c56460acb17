// What the modes mean in which devices are opened.
#pragma once

#include "platform/framework/types.h"

namespace zebx::zebdev {

inline constexpr DWORD kOpenModes = 4;
inline constexpr DWORD kNtscFramesPerSecond = 30;
inline constexpr DWORD kPalFramesPerSecond = 25;

struct OpenMode {
  bool m_is_ntsc;
  int m_width;  // of coded pictures
  int m_height;
};

// `mode` is below kOpenModes. Devices of type 0x040, 0x100 and 0x400 have the wider pictures of PAL
// in NTSC, too: of 352 columns all three, of 704 columns the last one.
constexpr OpenMode OpenModeOf(DWORD mode, DWORD device_type) {
  constexpr OpenMode kModes[kOpenModes] = {
      {false, 352, 288}, {true, 320, 240}, {false, 704, 288}, {true, 640, 240}};
  constexpr DWORD kWideTypes = 0x040 | 0x100 | 0x400;
  constexpr DWORD kVeryWideType = 0x400;
  OpenMode opened = kModes[mode];
  if (opened.m_width == 320 && (device_type & kWideTypes) != 0) opened.m_width = 352;
  if (opened.m_width == 640 && (device_type & kVeryWideType) != 0) opened.m_width = 704;
  return opened;
}

}  // namespace zebx::zebdev
