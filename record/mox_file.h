// A face file: the face pictures of one camera, each with its time.
#pragma once

#include <memory>
#include <span>

#include "platform/framework/export.h"
#include "platform/framework/geometry.h"
#include "platform/framework/types.h"

class CFile;

// States: detached -> (Open to write or to read) attached -> (Close) detached. Copies share the
// open file with its position; it is closed when the last of them lets go of it. Operations throw
// CFileException when the disk fails; what goes wrong when a file is dropped without Close or Open,
// by an assignment or at the end, is reported. No locks: callers serialise their calls on one
// object.
class ZEBX_API CMoxFile {
 public:
  CMoxFile();
  CMoxFile(const CMoxFile&);
  CMoxFile& operator=(const CMoxFile&);
  virtual ~CMoxFile();

  // Lets go of a file attached before. `write` 0 opens a file for reading; otherwise one is
  // created, or emptied, with the names, numbers and gmt of this object as its header. 1 when the
  // file could be opened, even if its header is not valid: then nothing stays attached, every other
  // value stays as it was, and Read and Write answer 0. Hosts rely on that result. 0 when it could
  // not.
  int Open(const char* path, int write);
  // Lets go of the file and sets counts, times and gmt to 0; names, numbers and image size stay.
  // Always 1.
  int Close();

  // Appends a face: GetImageSize() luminance bytes, and when it was seen, in one system call. 1, or
  // 0 for null and when no file is open for writing.
  int Write(const BYTE* picture, DWORD time);
  // Reads face `index`, counted from 0, into `picture`, which holds GetImageSize() bytes, and its
  // time into `*time` unless that is null. -1 reads the current face, which is the one read last:
  // it is not moved on. 1, or 0 for null, behind the last face, when no file is open for reading,
  // and for a picture that the file does not hold whole or, as a span, does not fit.
  int Read(BYTE* picture, DWORD* time, int index);
  int Read(std::span<BYTE> picture, DWORD* time, int index);

  DWORD GetTotalFaceNum() const { return m_total_faces; }
  // The face that Read with -1 reads; when writing, the number of faces written.
  DWORD GetCurrentIndex() const { return m_current_index; }
  // In pixels: 100 * 120, or what the file read last has.
  CSize GetImageSize() const;
  BYTE GetBoardIndex() const { return m_board_index; }
  void SetBoardIndex(BYTE index) { m_board_index = index; }
  BYTE GetCameraIndex() const { return m_camera_index; }
  void SetCameraIndex(BYTE index) { m_camera_index = index; }
  // Null sets an empty name.
  CString GetHostName() const { return m_host_name; }
  void SetHostName(const char* name) { m_host_name = TextOf(name); }
  CString GetBoardName() const { return m_board_name; }
  void SetBoardName(const char* name) { m_board_name = TextOf(name); }
  CString GetCameraName() const { return m_camera_name; }
  void SetCameraName(const char* name) { m_camera_name = TextOf(name); }
  // Seconds since 1970: when the file was made, and the last face's time (the start time for a file
  // without faces).
  DWORD GetStartTime() const { return m_start_time; }
  DWORD GetEndTime() const { return m_end_time; }
  // The time of the face read or written last.
  DWORD GetTickCount() const { return m_face_time; }
  void SetTimeStamp(DWORD time) { m_face_time = time; }
  // Universal hour minus local hour, set by the caller.
  int GetGmt() const { return m_gmt; }
  void SetGmt(int gmt) { m_gmt = gmt; }

 protected:
  // 0 when no file is attached for writing or reading, and for a header that is not valid, which
  // leaves every value as it was.
  int WriteHeader();
  int ReadHeader();

 private:
  void Detach();
  static CString TextOf(const char* name) { return name != nullptr ? name : ""; }
  ULONGLONG PictureBytes() const { return ULONGLONG{m_image_width} * m_image_height; }
  // Where a face's record begins: its time, then its picture.
  ULONGLONG RecordOffset(DWORD index) const;

  DWORD m_header_bytes = 0;
  BYTE m_board_index = 0;
  BYTE m_camera_index = 0;
  DWORD m_image_width = 100;
  DWORD m_image_height = 120;
  CString m_host_name;
  CString m_board_name;
  CString m_camera_name;
  DWORD m_start_time = 0;
  DWORD m_face_time = 0;
  int m_gmt = 0;
  int m_write_mode = 0;
  DWORD m_total_faces = 0;
  DWORD m_current_index = 0;
  DWORD m_end_time = 0;
  std::shared_ptr<CFile> m_file;  // null when detached
};
