// Uncompressed video in Y4M form: a text header, then the pictures, 8-bit planar 4:2:0.
#pragma once

#include <string>

#include "platform/noxcodec/software/picture.h"
#include "platform/zebdev/software/y4m_format.h"
#include "tools/zebtool/files/input_stream.h"
#include "tools/zebtool/files/output_stream.h"

namespace zebtool {

using zebx::zebdev::RawPictureBytes;
using zebx::zebdev::Y4mHeader;

class Y4mReader {
 public:
  // Reads the header. Throws JobError for one that cannot be played.
  explicit Y4mReader(InputStream& input);

  const Y4mHeader& Header() const { return m_header; }
  // Reads the next picture into `picture`, which has the header's size; false at the end. Throws
  // JobError when the input ends inside a picture or goes on with something else.
  bool ReadPicture(zebx::noxcodec::Picture& picture);

 private:
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
