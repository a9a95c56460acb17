#include "platform/zebdev/software/y4m_format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <utility>

namespace zebx::zebdev {
namespace {

constexpr std::string_view kMagic = "YUV4MPEG2";
constexpr std::string_view kBlanks = " \t\r\n\v\f";

// The kinds of 8-bit 4:2:0 differ in where chroma samples lie, which nothing here depends on.
constexpr std::array<std::string_view, 4> kColourSpaces = {"420", "420jpeg", "420mpeg2",
                                                           "420paldv"};

bool IsWord(std::string_view line, std::string_view word) {
  return line.starts_with(word) && (line.size() == word.size() || line[word.size()] == ' ');
}

std::optional<DWORD> ParseNumber(std::string_view text) {
  DWORD number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

std::optional<std::pair<DWORD, DWORD>> ParseRatio(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const auto first = ParseNumber(text.substr(0, colon));
  const auto second = ParseNumber(text.substr(colon + 1));
  if (!first || !second) return std::nullopt;
  return std::pair(*first, *second);
}

int ParseSide(std::string_view text) {
  return static_cast<int>(std::min<DWORD>(ParseNumber(text).value_or(0), kY4mMaxSide + 1));
}

// Takes over one field of the line; what is wrong with it, or nothing.
CString ParseField(char tag, std::string_view value, Y4mHeader& header) {
  if (tag == 'W') {
    header.width = ParseSide(value);
  } else if (tag == 'H') {
    header.height = ParseSide(value);
  } else if (tag == 'F') {
    const auto rate = ParseRatio(value);
    if (!rate || (rate->first != 0 && rate->second == 0)) {
      return "the frame rate F" + CString(value) + " is no fraction";
    }
    if (rate->first != 0) header.rate = FrameRate{rate->first, rate->second}.Reduced();
  } else if (tag == 'A') {
    const auto shape = ParseRatio(value);
    if (shape && shape->first != 0 && shape->second != 0) {
      header.pixel_width = shape->first;
      header.pixel_height = shape->second;
    }
  } else if (tag == 'C' &&
             std::find(kColourSpaces.begin(), kColourSpaces.end(), value) == kColourSpaces.end()) {
    return "its pictures are C" + CString(value) + ", not 8-bit 4:2:0";
  }
  return {};
}

CString CheckLimits(const Y4mHeader& header) {
  const ULONGLONG pixels =
      static_cast<ULONGLONG>(header.width) * static_cast<ULONGLONG>(header.height);
  if (pixels == 0 || header.width > kY4mMaxSide || header.height > kY4mMaxSide ||
      pixels > kY4mMaxPixels) {
    const CString side = std::to_string(kY4mMaxSide);
    return "the header has no picture size, or one above " + side + " x " + side +
           " or 64 million pixels";
  }
  if (!header.rate.IsUsable()) {
    return "its frame rate is not between one a minute and a thousand a second";
  }
  return {};
}

}  // namespace

std::optional<Y4mHeader> ParseY4mHeader(std::string_view line, CString& fault) {
  fault.clear();
  if (!IsWord(line, kMagic)) {
    fault = "it is no Y4M video";
    return std::nullopt;
  }
  Y4mHeader header;
  std::size_t end = kMagic.size();
  while (fault.empty()) {
    const std::size_t begin = line.find_first_not_of(kBlanks, end);
    if (begin == std::string_view::npos) break;
    end = std::min(line.find_first_of(kBlanks, begin), line.size());
    fault = ParseField(line[begin], line.substr(begin + 1, end - begin - 1), header);
  }
  if (fault.empty()) fault = CheckLimits(header);
  return fault.empty() ? std::optional(header) : std::nullopt;
}

CString FormatY4mHeader(const Y4mHeader& header) {
  return CString(kMagic) + " W" + std::to_string(header.width) + " H" +
         std::to_string(header.height) + " F" + std::to_string(header.rate.frames) + ':' +
         std::to_string(header.rate.seconds) + " Ip A" + std::to_string(header.pixel_width) + ':' +
         std::to_string(header.pixel_height) + " C420jpeg";
}

bool IsY4mFrameLine(std::string_view line) {
  return IsWord(line, kY4mFrameLine);
}

ULONGLONG RawPictureBytes(int width, int height) {
  const auto pixels = [](int w, int h) {
    return static_cast<ULONGLONG>(w) * static_cast<ULONGLONG>(h);
  };
  return pixels(width, height) + 2 * pixels((width + 1) / 2, (height + 1) / 2);
}

}  // namespace zebx::zebdev
