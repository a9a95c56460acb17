// Arbitrary bytes as a Y4M video on the standard input: what its header says is within the limits,
// and its pictures are read until one is not whole.
#include <cstdlib>
#include <sstream>

#include "tools/zebtool/media/y4m.h"

using namespace zebx;

extern "C" int LLVMFuzzerTestOneInput(const BYTE* data, std::size_t size) {
  std::istringstream in(std::string(data, data + size));
  std::ostringstream out;
  zebtool::Console console{in, out, out};
  try {
    zebtool::InputStream input(zebtool::kStandardStream, console);
    zebtool::Y4mReader reader(input);
    const zebdev::Y4mHeader& header = reader.Header();
    const ULONGLONG bytes = zebdev::RawPictureBytes(header.width, header.height);
    if (bytes == 0 || bytes > zebdev::kY4mMaxPixels * 3) std::abort();
    // One whose picture the input cannot hold would cost nothing but the time to clear it.
    if (bytes > size) return 0;
    noxcodec::Picture picture(header.width, header.height);
    while (reader.ReadPicture(picture)) {
    }
  } catch (const zebtool::JobError&) {
    // It was refused with a message.
  }
  return 0;
}
