#include "tools/zebtool/media/y4m.h"

#include <algorithm>
#include <array>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>

#include "tools/zebtool/console/text.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr std::string_view kMagic = "YUV4MPEG2";
constexpr std::string_view kFrameMagic = "FRAME";
constexpr std::size_t kMaxHeaderLength = 1024;

// The kinds of 8-bit 4:2:0 differ in where chroma samples lie, which nothing here depends on.
constexpr std::array<std::string_view, 4> kColourSpaces = {"420", "420jpeg", "420mpeg2",
                                                           "420paldv"};

std::optional<std::pair<DWORD, DWORD>> ParseRatio(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const auto first = ParseNumber(text.substr(0, colon));
  const auto second = ParseNumber(text.substr(colon + 1));
  if (!first || !second) return std::nullopt;
  return std::pair(*first, *second);
}

}  // namespace

ULONGLONG RawPictureBytes(int width, int height) {
  const auto pixels = [](int w, int h) {
    return static_cast<ULONGLONG>(w) * static_cast<ULONGLONG>(h);
  };
  return pixels(width, height) + 2 * pixels((width + 1) / 2, (height + 1) / 2);
}

Y4mReader::Y4mReader(InputStream& input) : m_input(input) {
  const std::string line = m_input.ReadLine(kMaxHeaderLength);
  if (line != kMagic && !line.starts_with(std::string(kMagic) + ' ')) {
    Fail("it is no Y4M video; 'ffmpeg -i VIDEO -pix_fmt yuv420p OUT.y4m' makes one");
  }
  if (!m_input.IsLineWhole()) Fail("the header line does not end");
  ParseHeader(line);
  CheckHeader();
}

void Y4mReader::Fail(const std::string& what) const {
  throw JobError("cannot read " + m_input.Name() + ": " + what);
}

void Y4mReader::ParseHeader(const std::string& line) {
  std::istringstream fields(line.substr(kMagic.size()));
  for (std::string field; fields >> field;) ParseField(field.front(), field.substr(1));
}

void Y4mReader::ParseField(char tag, const std::string& value) {
  const auto size = [&] {
    return static_cast<int>(std::min<DWORD>(ParseNumber(value).value_or(0), kMaxSize + 1));
  };
  if (tag == 'W') {
    m_header.width = size();
  } else if (tag == 'H') {
    m_header.height = size();
  } else if (tag == 'F') {
    const auto rate = ParseRatio(value);
    if (!rate || (rate->first != 0 && rate->second == 0))
      Fail("the frame rate F" + value + " is no fraction");
    if (rate->first != 0) m_header.rate = FrameRate{rate->first, rate->second}.Reduced();
  } else if (tag == 'A') {
    const auto shape = ParseRatio(value);
    if (shape && shape->first != 0 && shape->second != 0) {
      m_header.pixel_width = shape->first;
      m_header.pixel_height = shape->second;
    }
  } else if (tag == 'C' &&
             std::find(kColourSpaces.begin(), kColourSpaces.end(), value) == kColourSpaces.end()) {
    Fail("its pictures are C" + value +
         ", not 8-bit 4:2:0; convert it with 'ffmpeg -pix_fmt yuv420p'");
  }
}

void Y4mReader::CheckHeader() const {
  const ULONGLONG pixels =
      static_cast<ULONGLONG>(m_header.width) * static_cast<ULONGLONG>(m_header.height);
  if (pixels == 0 || m_header.width > kMaxSize || m_header.height > kMaxSize ||
      pixels > kMaxPixels) {
    Fail("the header has no picture size, or one above " + std::to_string(kMaxSize) + " x " +
         std::to_string(kMaxSize) + " or 64 million pixels");
  }
  if (!m_header.rate.IsUsable()) {
    Fail("its frame rate is not between one a minute and a thousand a second");
  }
}

bool Y4mReader::ReadPicture(noxcodec::Picture& picture) {
  const std::string line = m_input.ReadLine(kMaxHeaderLength);
  if (line.empty() && !m_input.IsLineWhole()) return false;
  const std::string number = std::to_string(m_pictures);
  const bool is_frame = line == kFrameMagic || line.starts_with(std::string(kFrameMagic) + ' ');
  if (!m_input.IsLineWhole() || !is_frame) Fail("picture " + number + " does not begin with FRAME");
  for (int index = 0; index < noxcodec::kPlaneCount; ++index) {
    const auto plane = picture.Plane(index);
    const auto width = static_cast<std::size_t>(plane.width);
    for (int y = 0; y < plane.height; ++y) {
      if (m_input.Read({plane.Row(y), width}) < width) Fail("it ends inside picture " + number);
    }
  }
  ++m_pictures;
  return true;
}

Y4mWriter::Y4mWriter(OutputStream& output, const Y4mHeader& header) : m_output(output) {
  std::ostringstream line;
  line << kMagic << " W" << header.width << " H" << header.height << " F" << header.rate.frames
       << ':' << header.rate.seconds << " Ip A" << header.pixel_width << ':' << header.pixel_height
       << " C420jpeg\n";
  m_output.WriteText(line.str());
}

void Y4mWriter::WritePicture(std::span<const BYTE> picture) {
  m_output.WriteText("FRAME\n");
  m_output.Write(picture);
}

}  // namespace zebtool
