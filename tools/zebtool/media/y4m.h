// Uncompressed video in Y4M form: a text header, then the pictures, 8-bit planar 4:2:0.
#pragma once

#include <string>

#include "platform/noxcodec/software/picture.h"
#include "tools/zebtool/files/input_stream.h"
#include "tools/zebtool/files/output_stream.h"
#include "tools/zebtool/media/frame_rate.h"

namespace zebtool {

struct Y4mHeader {
  int width = 0;
  int height = 0;
  FrameRate rate;
  DWORD pixel_width = 1;  // the shape of a pixel
  DWORD pixel_height = 1;
};

// Bytes of one picture of 4:2:0 in memory, the chroma planes' sizes rounded up.
ULONGLONG RawPictureBytes(int width, int height);

class Y4mReader {
 public:
  // Reads the header. Throws JobError for anything but 8-bit 4:2:0 of a size up to kMaxSize in each
  // direction. A rate that is not stated counts as 25.
  explicit Y4mReader(InputStream& input);

  const Y4mHeader& Header() const { return m_header; }
  // Reads the next picture into `picture`, which has the header's size; false at the end. Throws
  // JobError when the input ends inside a picture or goes on with something else.
  bool ReadPicture(zebx::noxcodec::Picture& picture);

  static constexpr int kMaxSize = 16384;
  static constexpr ULONGLONG kMaxPixels = 1 << 26;

 private:
  void ParseHeader(const std::string& line);
  void ParseField(char tag, const std::string& value);
  void CheckHeader() const;
  [[noreturn]] void Fail(const std::string& what) const;

  InputStream& m_input;
  Y4mHeader m_header;
  ULONGLONG m_pictures = 0;
};

class Y4mWriter {
 public:
  Y4mWriter(OutputStream& output, const Y4mHeader& header);
  // `picture` holds the planes back to back, RawPictureBytes of the header's size.
  void WritePicture(std::span<const BYTE> picture);

 private:
  OutputStream& m_output;
};

}  // namespace zebtool
