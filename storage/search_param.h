// What a search looks for: kind of file, host, day or time range or moment, names, camera.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/time.h"
#include "platform/framework/types.h"
#include "record/zeb_file_info.h"

namespace zebx {

// What criteria consist of. Each setter adds the flag of its value; the kinds of files are added
// with SetSearch. Without any kind it is recordings that are searched; with several, the first that
// the search tests.
enum : DWORD {
  kSearchHostName = 0x0001,
  kSearchDbsName = 0x0002,
  kSearchBoardName = 0x0004,
  kSearchCameraName = 0x0008,
  kSearchDate = 0x0010,
  kSearchBeginTime = 0x0020,
  kSearchEndTime = 0x0040,
  kSearchFrameSize = 0x0080,
  kSearchComparesBeginTime = 0x0100,  // consulted by operator== alone
  kSearchPicture = 0x0400,
  kSearchTimeBegin = 0x1000,
  kSearchCameraID = 0x2000,
  kSearchClip = 0x4000,
  kSearchLog = 0x8000,
  kSearchAlarm = 0x10000,
  kSearchFace = 0x20000,
};

}  // namespace zebx

// Criteria, a value. The beginning of a time range and the moment of a search around a moment are
// one field with two flags: what was set last counts for both. Used by one thread at a time.
class ZEBX_API CSearchParam {
 public:
  CSearchParam();
  CSearchParam(const CSearchParam&);
  CSearchParam& operator=(const CSearchParam&);
  virtual ~CSearchParam();

  // No criteria: flags, texts, times and camera empty, frame size 255.
  void Reset();

  // The host name is the directory level that every search needs.
  void SetHostName(const CString& name) { Set(zebx::kSearchHostName, m_host_name, name); }
  // A disk's name with its drive, as CHddObj::GetDbsName answers it.
  void SetDbsName(const CString& name) { Set(zebx::kSearchDbsName, m_dbs_name, name); }
  void SetBoardName(const CString& name) { Set(zebx::kSearchBoardName, m_board_name, name); }
  void SetCameraName(const CString& name) { Set(zebx::kSearchCameraName, m_camera_name, name); }
  // A day, as any moment of it in seconds since 1970.
  void SetDate(DWORD date) { Set(zebx::kSearchDate, m_date, date); }
  // A range of time.
  void SetBeginTime(CTime time) { Set(zebx::kSearchBeginTime, m_begin_time, time); }
  void SetEndTime(CTime time) { Set(zebx::kSearchEndTime, m_end_time, time); }
  // A moment: recordings that had not ended by then.
  void SetTimeBegin(CTime time) { Set(zebx::kSearchTimeBegin, m_begin_time, time); }
  void SetFrameSize(tag_FRAMESIZE size) { Set(zebx::kSearchFrameSize, m_frame_size, size); }
  void SetCameraID(tag_ZEBCAMERAID id) { Set(zebx::kSearchCameraID, m_camera_id, id); }

  // 1 with the value, or 0 with the output untouched when it was not set.
  int GetHostName(CString& name) const { return Get(zebx::kSearchHostName, m_host_name, name); }
  int GetDbsName(CString& name) const { return Get(zebx::kSearchDbsName, m_dbs_name, name); }
  int GetBoardName(CString& name) const { return Get(zebx::kSearchBoardName, m_board_name, name); }
  int GetCameraName(CString& name) const {
    return Get(zebx::kSearchCameraName, m_camera_name, name);
  }
  int GetDate(DWORD& date) const { return Get(zebx::kSearchDate, m_date, date); }
  int GetBeginTime(CTime& time) const { return Get(zebx::kSearchBeginTime, m_begin_time, time); }
  int GetEndTime(CTime& time) const { return Get(zebx::kSearchEndTime, m_end_time, time); }
  int GetTimeBegin(CTime& time) const { return Get(zebx::kSearchTimeBegin, m_begin_time, time); }
  int GetFrameSize(tag_FRAMESIZE& size) const {
    return Get(zebx::kSearchFrameSize, m_frame_size, size);
  }
  int GetCameraID(tag_ZEBCAMERAID& id) const { return Get(zebx::kSearchCameraID, m_camera_id, id); }

  // 1 when every flag of the mask is set.
  int IsSearch(DWORD mask) const { return (m_flags & mask) == mask ? 1 : 0; }
  void SetSearch(DWORD mask) { m_flags |= mask; }

  // 1 when both have the same flags and equal values for them. The beginning of a range counts only
  // together with kSearchComparesBeginTime, which no setter sets.
  int operator==(const CSearchParam& other) const;

  // Flat form, without board name, camera name and frame size; reading leaves those as they are.
  // Texts are cut to their length modulo 256, and end at their first zero byte when read. Both
  // return the number of bytes; neither moves the cursor. The form of Read with `end` returns 0,
  // the criteria as they were, when the buffer ends first.
  DWORD GetSize() const;
  DWORD Write(BYTE*& cursor) const;
  DWORD Read(BYTE*& cursor);
  DWORD Read(BYTE*& cursor, const BYTE* end);

 private:
  template <typename T>
  void Set(DWORD flag, T& field, const T& value) {
    field = value;
    m_flags |= flag;
  }
  template <typename T>
  int Get(DWORD flag, const T& field, T& value) const {
    if ((m_flags & flag) == 0) return 0;
    value = field;
    return 1;
  }

  DWORD m_flags = 0;
  CString m_host_name;
  CString m_dbs_name;
  CString m_board_name;
  CString m_camera_name;
  DWORD m_date = 0;
  tag_FRAMESIZE m_frame_size{0xFF};
  CTime m_begin_time;  // of kSearchBeginTime and kSearchTimeBegin
  CTime m_end_time;
  tag_ZEBCAMERAID m_camera_id;
};
