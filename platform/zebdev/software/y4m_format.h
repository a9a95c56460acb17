// The text lines of uncompressed video in Y4M form: a header line, then before each picture, 8-bit
// planar 4:2:0, a frame line. Lines are given and made without their line break.
#pragma once

#include <optional>
#include <string_view>

#include "platform/framework/export.h"
#include "platform/framework/types.h"
#include "platform/zebdev/software/frame_rate.h"

namespace zebx::zebdev {

inline constexpr std::size_t kY4mMaxLineBytes = 1024;
inline constexpr int kY4mMaxSide = 16384;
inline constexpr ULONGLONG kY4mMaxPixels = 1 << 26;

// What a header line tells: a size within the limits above, a usable rate.
struct Y4mHeader {
  int width = 0;
  int height = 0;
  FrameRate rate;         // 25 where none is stated
  DWORD pixel_width = 1;  // the shape of a pixel
  DWORD pixel_height = 1;
};

// Nothing for anything but 8-bit 4:2:0; `fault` then says what is wrong with the video.
ZEBX_API std::optional<Y4mHeader> ParseY4mHeader(std::string_view line, CString& fault);
ZEBX_API CString FormatY4mHeader(const Y4mHeader& header);

ZEBX_API bool IsY4mFrameLine(std::string_view line);
inline constexpr std::string_view kY4mFrameLine = "FRAME";

// Bytes of one picture of 4:2:0, the chroma planes' sizes rounded up.
ZEBX_API ULONGLONG RawPictureBytes(int width, int height);

}  // namespace zebx::zebdev
