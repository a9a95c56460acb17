// The header of a recording file: which camera recorded what, where and when.
#pragma once

#include "capture/picture_formats.h"
#include "platform/framework/export.h"
#include "platform/framework/object.h"
#include "platform/framework/time.h"

class CFile;

// A camera's identity. Boards are numbered from 0 over all devices.
struct tag_ZEBCAMERAID {
  WORD m_board = 0;
  WORD m_camera = 0;

  bool operator==(const tag_ZEBCAMERAID&) const = default;
};

// A value: the header at the start of every recording file, the record that searches pass around,
// and the base of CZebFile. Used by one thread at a time.
class ZEBX_API CZebFileInfo : public CObject {
 public:
  CZebFileInfo();
  CZebFileInfo(const CZebFileInfo&);
  CZebFileInfo& operator=(const CZebFileInfo&);
  ~CZebFileInfo() override;

  // What only an open file knows; all 0 here, overridden by CZebFile.
  virtual int GetFrameNumOfBlock(int block) const;
  virtual int GetTotalBlock() const;
  virtual int GetTotalFrame() const;
  virtual int GetFrameIndex(int block, int index) const;
  virtual int GetFrameIndexOfBlock(int block) const;

  // Reads length and header of the recording at `path` and nothing else, also while it is being
  // written. 1, or 0 when the file cannot be opened or its header is not valid; fields may then
  // have changed.
  int Create(const CString& path);
  // The same of a file that was just opened for reading.
  int Create(CFile& file, const CString& path);

  // File form, at the file's position. The number of bytes, or 0 for a null file, a wrong magic, a
  // text length above kMaxTextBytes, a file that ends inside the header, or a file error, which is
  // reported. Write cuts texts to kMaxTextBytes.
  DWORD Read(CFile* file);
  DWORD Write(CFile* file);
  // The same two with file errors thrown to the caller.
  DWORD ReadFrom(CFile& file);
  DWORD WriteTo(CFile& file);
  // The size of the file form in bytes: the offset of the first block.
  DWORD GetSize() const;

  // Buffer form, with the file name, the length and the picture size. Both advance the cursor and
  // return the number of bytes. Write puts every text at full length: keep texts within
  // kMaxTextBytes, or reserve more than GetSizeForWrite. The form of Read with `end` returns 0, the
  // record and the cursor as they were, when the buffer ends first.
  DWORD Read(BYTE*& cursor);
  DWORD Read(BYTE*& cursor, const BYTE* end);
  DWORD Write(BYTE*& cursor) const;
  DWORD GetSizeForWrite() const;

  // Only the low byte of each member is kept.
  tag_ZEBCAMERAID GetCameraID() const { return {m_board_index, m_camera_index}; }
  void SetCameraID(tag_ZEBCAMERAID id);

  CString GetHostName() const { return m_host_name; }
  void SetHostName(const CString& name) { m_host_name = name; }
  CString GetCameraName() const { return m_camera_name; }
  void SetCameraName(const CString& name) { m_camera_name = name; }
  CString GetBoardName() const { return m_board_name; }
  void SetBoardName(const CString& name) { m_board_name = name; }
  CString GetFileName() const { return m_file_name; }
  void SetFileName(const CString& name) { m_file_name = name; }

  CTime GetBeginTime() const { return m_begin_time; }
  // Also sets gmt for the moment.
  void SetBeginTime(CTime time);
  CTime GetEndTime() const { return m_end_time; }
  void SetEndTime(CTime time) { m_end_time = time; }
  DWORD GetBeginTimeStamp() const { return m_begin_time_stamp; }
  void SetBeginTimeStamp(DWORD time_stamp) { m_begin_time_stamp = time_stamp; }
  // Universal hour minus local hour at the begin time, 0 to 23.
  int GetGmt() const { return m_gmt; }
  void SetGmt(int gmt) { m_gmt = gmt; }
  // The moment of a frame's time stamp, to the second. The stamp may have wrapped once.
  CTime GetTime(DWORD time_stamp) const {
    return m_begin_time + (time_stamp - m_begin_time_stamp) / 1000;
  }

  tag_FRAMESIZE GetFrameSize() const { return tag_FRAMESIZE{m_frame_size}; }
  // Only the low byte is kept. Also sets width and height where the size is known; recordings of
  // RT8Port boards have sizes of their own, so that flag comes first.
  void SetFrameSize(tag_FRAMESIZE frame_size);
  DWORD GetWidth() const { return m_width; }
  void SetWidth(DWORD width) { m_width = width; }
  DWORD GetHeight() const { return m_height; }
  void SetHeight(DWORD height) { m_height = height; }
  DWORD GetLength() const { return m_length; }
  void SetLength(DWORD length_bytes) { m_length = length_bytes; }
  DWORD GetFileVersion() const { return m_file_version; }

  // Queries answer the masked bit.
  int IsRemote() const;
  void SetRemote(int remote);
  int IsClip() const;
  void SetClip(int clip);
  int IsRT8Port() const;

  static constexpr DWORD kMaxTextBytes = 500;

 protected:
  void SetRT8Port();
  // Moves the begin time alone: gmt stays.
  void SetBeginTimeKeepingGmt(CTime time) { m_begin_time = time; }
  // The header size as it was last read or written.
  DWORD GetHeaderSize() const { return m_header_size; }
  DWORD GetFlags() const { return m_flags; }
  void SetFlags(DWORD flags) { m_flags = flags; }

 private:
  void SetFlagBit(DWORD bit, int on);

  DWORD m_file_version = 0;
  DWORD m_header_size = 0;
  DWORD m_flags = 0;
  DWORD m_reserved = 0;
  BYTE m_camera_index = 159;
  BYTE m_board_index = 0;
  BYTE m_frame_size = 0;
  CTime m_begin_time;
  CTime m_end_time;
  DWORD m_begin_time_stamp = 0;
  int m_gmt = 0;
  CString m_camera_name;
  CString m_board_name;
  CString m_file_name;
  CString m_host_name;
  DWORD m_length = 0;
  DWORD m_width = 0;
  DWORD m_height = 0;
};
