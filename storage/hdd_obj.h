// One storage disk: its tree of day directories, its free space, its recycling and its search.
#pragma once

#include <span>

#include "platform/framework/export.h"
#include "platform/framework/object.h"
#include "platform/framework/time.h"
#include "platform/framework/types.h"

class CArchive;
class CFileSearchInfo;

// How a caller describes a disk.
struct tag_HDDPARAM {
  DWORD m_reserved_mb = 0;
  int m_recycle = 0;
  CString m_path;           // a drive root such as d:\ or a directory such as d:\dvr
  CString m_database_name;  // without the drive; empty for "ZebDatabase"
  int m_alarm_when_space_not_enough = 0;
  CString m_alarm_sound;  // path of a sound file, only stored
};

// Kinds of files, each with a directory of its own below the day's.
enum tag_ZEBFILETYPE : DWORD {
  kZebFileVideo = 0,
  kZebFileClip = 1,
  kZebFileAlarm = 2,
  kZebFilePicture = 3,
  kZebFileLog = 4,
  kZebFileFace = 5,
};

// A base directory on a fixed or network drive, under which every file lives in one directory per
// day. Without a base directory (before Create) every getter answers an empty string. Dates are
// local midnights in seconds since 1970. No locks: callers serialise their calls on one object.
class ZEBX_API CHddObj : public CObject {
  DECLARE_DYNAMIC(CHddObj)

 public:
  CHddObj();
  ~CHddObj() override;
  CHddObj(const CHddObj&) = delete;
  // Takes over the base directory, the name with the drive and the local dates, nothing else.
  void operator=(const CHddObj& other);

  // A new default object, owned by the caller.
  static CObject* CreateObject();

  // Takes the disk over, makes its directory when it does not exist (but no parents), and loads the
  // local dates. 1, or 0: no parameters, a path shorter than a drive root, a drive that is neither
  // fixed nor a network's, a file in the directory's place, or a directory that cannot be made. On
  // failure recycling, reserved and alarm space, alarm flag and sound are the new ones all the
  // same; directory and names are the old ones.
  int Create(tag_HDDPARAM* param);
  // Create, but only for a path on the drive where the disk already is; else 0.
  int ChangeBaseDir(tag_HDDPARAM* param);
  // 1 when the path is on this disk's drive: equal drive letters, d:\ and
  // D:/ alike.
  int operator==(const CString& path) const;

  // The drive root, such as d:\; empty without a base directory.
  CString GetHDD() const;
  // In lower case, with a backslash at its end.
  CString GetBaseDir() const { return m_base_dir; }
  // The name followed by the drive root, such as ZebDatabase(d:\).
  CString GetDbsName() const { return m_database_name; }
  void SetDbsName(const CString& name) { m_database_name = name; }
  // The name alone, as it is saved.
  CString GetDbsName1() const { return m_plain_database_name; }

  // Below the reserved space the disk must be recycled or left; below the alarm space it is running
  // short. MB.
  DWORD GetReservedSpace() const { return m_reserved_mb; }
  DWORD GetAlarmSpace() const { return m_alarm_mb; }
  int IsAlarmWhenSpaceNotEnough() const { return m_alarm_when_space_not_enough; }
  void EnableAlarmWhenSpaceNotEnough(int enable) { m_alarm_when_space_not_enough = enable; }
  CString GetAlarmSound() const { return m_alarm_sound; }
  void SetAlarmSound(const CString& path) { m_alarm_sound = path; }
  int IsRecycle() const { return m_recycle; }
  void EnableRecycle() { m_recycle = 1; }
  void DisableRecycle() { m_recycle = 0; }

  // Stores or loads, as the archive goes, all but the plain name, the alarm space and the dates.
  // Throws CFileException.
  void Serialize(CArchive& archive) override;

  // Today's directory under "Local", "Remote" and "Picture", made when it does not exist; its date
  // then joins the local, remote or picture dates. Empty when a level is a file or cannot be made.
  CString GetVideoDir();
  CString GetRemoteVideoDir();
  CString GetPictureDir();

  // A link in a day's place is no day to any of the operations of this class: none is made or found
  // behind it, and it is neither listed nor deleted.

  // The directory of one kind of files of `name` (the recorder's host name for recordings) on the
  // day of `time`, 0 for now; every level that does not exist is made, and a new day joins the
  // local dates. No backslash at its end; in lower case. Empty when a level is a file or cannot be
  // made; the levels above it stay.
  CString GetVideoDir(const CString& name, CTime time);
  CString GetClipDir(const CString& name, CTime time);
  CString GetAlarmDir(const CString& name, CTime time);
  CString GetPictureDir(const CString& name, CTime time);
  CString GetLogDir(const CString& name, CTime time);
  CString GetFaceDir(const CString& name, CTime time);
  // The same with a level for the host (left out when empty) and one for the camera. Another type
  // answers empty once the levels above are made.
  CString GetDir(const CString& host, const CString& camera, tag_ZEBFILETYPE type, CTime time);

  // The same directories when they exist, else empty. Nothing is made, and time 0 is a day in 1970.
  CString GetVideoDirInfo(const CString& name, CTime time) const;
  CString GetClipDirInfo(const CString& name, CTime time) const;
  CString GetAlarmDirInfo(const CString& name, CTime time) const;
  CString GetPictureDirInfo(const CString& name, CTime time) const;
  CString GetLogDirInfo(const CString& name, CTime time) const;
  CString GetFaceDirInfo(const CString& name, CTime time) const;

  // Loads the local dates anew: the day directories right below the base directory, ascending. On
  // the root of a network drive there are none.
  void Refresh();
  // Compares two DWORD dates: -1, 0 or 1.
  static int CompareFunc(const void* left, const void* right);
  // 1 when the bare name is that of a day directory: 'd' in either case and eight digits, whatever
  // month and day they make. A path never is one.
  static int IsVideoDir(const CString& name);
  // The same, with the day's local midnight. A month or day out of range is carried over as the
  // calendar does.
  static int GetVideoDirDate(CTime& date, const CString& name);

  // The remote dates when `remote` is not 0, else the local ones: their number, and the one at
  // `index`, 0xFFFFFFFF for an index outside.
  int GetDirNum(int remote) const;
  DWORD GetDirDate(int index, int remote) const;
  // 1 when a walk over the remote dates (only when `remote` is not 0) and then the local ones meets
  // the date before any older one: in effect, when it is the oldest of its list. Else 0.
  int FindDate(DWORD date, int remote) const;

  // Base directory, name with the drive, and local dates in a buffer of GetDirSize bytes; `size` is
  // not consulted. Both return the number of bytes. Without a base directory only its length, 0, is
  // written; reading that empties all three.
  DWORD GetDirSize() const;
  DWORD WriteDirToBuf(BYTE* buffer, DWORD size) const;
  DWORD ReadDirFromBuf(BYTE* buffer, DWORD size);
  // The same within the buffer: 0, and nothing changed, when it ends first.
  DWORD WriteDirToBuf(std::span<BYTE> buffer) const;
  DWORD ReadDirFromBuf(std::span<const BYTE> buffer);

  // Room on the disk that the path is on, in MB (2^20 bytes); `free` is what the caller may use. 1,
  // or 0 with the figures untouched: a path of one character, or a disk that does not answer.
  static int GetHDDSpace(const CString& path, DWORD& total, DWORD& used, DWORD& free);
  // Of this disk.
  int GetHDDSpace(DWORD& total, DWORD& used, DWORD& free) const;

  // The first local date later than `after` (0: the oldest of all). 1, or 0 with date 0.
  int FindOldestDir(DWORD& date, DWORD after) const;
  // Deletes a directory below the root of a drive with everything in it, links as such; any other
  // path, and a link to a directory, fails untouched. `freed_bytes` (modulo 2^32) counts the files
  // deleted, also when the first entry that cannot be deleted ends it. 1, or 0.
  static int DeleteDir(const CString& directory, DWORD& freed_bytes);
  // Takes the day out of the local dates, then deletes its directory. 1 when anything was freed,
  // although files may have stayed: the next Refresh brings such a day back. Else 0.
  int DeleteDate(DWORD date, DWORD& freed_bytes);

  // Appends the headers of the files that the criteria in `info` ask for. No error is reported:
  // what cannot be read is not found, nor is a file with a backslash in its name. The days of a
  // range are 24 hours apart: behind a day of 25 hours that day is searched twice, and behind
  // either change of the clocks the last day of the range is not searched. Who wants every calendar
  // day once searches by date, day by day.
  void SearchFile(CFileSearchInfo* info);
  // Appends the recordings in `directory` that had not ended at the moment in the criteria.
  static void SearchVideoFileByTime(CFileSearchInfo* info, const CString& directory);

 protected:
  void LoadLocalDir();
  void LoadRemoteDir();
  void LoadPictureDir();
  // Appends the dates of the day directories right below `directory`, in no particular order.
  static void GetDirStruct(CDWordArray* list, const CString& directory);
  // 1 for a directory that holds a file itself; what lies deeper does not count.
  static int IsAnyFile(const CString& directory);
  // Appends the files in `directory` (with its backslash) that pass the criteria.
  static void SearchDirectory(CFileSearchInfo* info, const CString& directory);

 private:
  CString MakeTodayDir(const char* folder, CDWordArray& dates);
  // `folder` with its backslash.
  static CString MakeDayDir(const CString& folder, CTime time, CDWordArray& dates);
  CString MakeDirs(CTime time, std::span<const CString> levels);
  CString MakeLeafDir(const CString& name, CTime time, tag_ZEBFILETYPE type);
  CString FindLeafDir(const CString& name, CTime time, tag_ZEBFILETYPE type) const;

  int m_recycle = 0;
  CString m_base_dir;
  CString m_database_name;
  CString m_plain_database_name;
  DWORD m_reserved_mb;
  DWORD m_alarm_mb;
  int m_alarm_when_space_not_enough = 0;
  CString m_alarm_sound;
  CDWordArray m_local_dates;
  CDWordArray m_remote_dates;
  CDWordArray m_picture_dates;
};
