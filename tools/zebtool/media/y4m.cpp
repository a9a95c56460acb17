#include "tools/zebtool/media/y4m.h"

using namespace zebx;

namespace zebtool {

Y4mReader::Y4mReader(InputStream& input) : m_input(input) {
  std::string fault;
  const auto header = zebdev::ParseY4mHeader(m_input.ReadLine(zebdev::kY4mMaxLineBytes), fault);
  if (!header) Fail(fault + "; 'ffmpeg -i VIDEO -pix_fmt yuv420p OUT.y4m' makes one that fits");
  if (!m_input.IsLineWhole()) Fail("the header line does not end");
  m_header = *header;
}

void Y4mReader::Fail(const std::string& what) const {
  throw JobError("cannot read " + m_input.Name() + ": " + what);
}

bool Y4mReader::ReadPicture(noxcodec::Picture& picture) {
  const std::string line = m_input.ReadLine(zebdev::kY4mMaxLineBytes);
  if (line.empty() && !m_input.IsLineWhole()) return false;
  const std::string number = std::to_string(m_pictures);
  if (!m_input.IsLineWhole() || !zebdev::IsY4mFrameLine(line)) {
    Fail("picture " + number + " does not begin with FRAME");
  }
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
  m_output.WriteText(zebdev::FormatY4mHeader(header) + '\n');
}

void Y4mWriter::WritePicture(std::span<const BYTE> picture) {
  m_output.WriteText(std::string(zebdev::kY4mFrameLine) + '\n');
  m_output.Write(picture);
}

}  // namespace zebtool
