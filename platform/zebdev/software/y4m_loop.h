// A Y4M file as a video without an end.
#pragma once

#include <vector>

#include "platform/framework/file.h"
#include "platform/framework/types.h"
#include "platform/noxcodec/software/picture.h"
#include "platform/zebdev/software/y4m_format.h"

namespace zebx::zebdev {

// Plays the pictures of a file at its own rate, over and over. One picture is in memory at a time.
// What lies behind the first one that is not whole is not played, and a file that is cut meanwhile
// becomes shorter. Used by one thread at a time.
class Y4mLoop {
 public:
  // Opens a file whose first picture is whole. Empty, or what is wrong with it.
  CString Open(const CString& path);

  // The picture of that time, which may go back; null when there is none, because of an error or a
  // file that has become empty. Borrowed until the next call.
  const noxcodec::Picture* PictureAt(ULONGLONG time_ms);
  // How many pictures were read so far: unchanged when a call of PictureAt answers the one before.
  ULONGLONG PicturesRead() const { return m_pictures_read; }

 private:
  CString ReadHeader();
  bool GoTo(ULONGLONG index);
  bool ReadPicture();
  bool SkipPicture();
  bool ReadFrameLine();
  bool IsPictureThere() const;
  void Rewind();

  CFile m_file;
  Y4mHeader m_header;
  ULONGLONG m_first_offset = 0;
  ULONGLONG m_next = 0;  // the number of the picture at the file's position
  ULONGLONG m_pictures_read = 0;
  ULONGLONG m_count = 0;  // whole pictures of the file; 0 as long as its end was not seen
  noxcodec::Picture m_picture;
  bool m_is_shown = false;  // m_picture holds picture m_next - 1
  std::vector<BYTE> m_line;
};

}  // namespace zebx::zebdev
