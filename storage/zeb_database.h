// The storage database: the recorder's disks, which of them new recordings go to, and the file that
// keeps this list between runs.
#pragma once

#include <memory>

#include "platform/framework/object.h"
#include "platform/framework/types.h"

class CArchive;
class CFileSearchInfo;
class CHddObj;
class CZebFile;
class CZebFileInfo;
struct tag_HDDPARAM;

// The disks, in the order of their addition, at most one a drive; the object owns them. A disk's
// index is its position in the list. The working disk is remembered by its drive root alone, which
// may name a drive that is not in the list: then there is no working disk. Only Open, AddHDD to an
// empty list, ChangeWorkDir and Close touch it. No locks: callers serialise their calls.
class CZebDatabase : public CObject {
  DECLARE_DYNAMIC(CZebDatabase)

 public:
  CZebDatabase();
  // Closes.
  ~CZebDatabase() override;
  CZebDatabase(const CZebDatabase&) = delete;
  CZebDatabase& operator=(const CZebDatabase&) = delete;

  // Appends to `info` what every disk finds. 1, or 0 for null.
  virtual int SearchFile(CFileSearchInfo* info);
  // Stores and loads nothing: the list lives in the database file.
  void Serialize(CArchive& archive) override;

  // Loads the disk list from the database file. A disk that cannot be made from its record drops
  // out; a file cut short gives the records that are whole. When no disk is left but the data
  // directory exists, a default disk is made in its directory "database" and becomes the working
  // disk. 1, or 0 when there is no disk.
  int Open(const CString& data_directory, HWND host_window, const CString& database_file,
           const CString& host_name);
  // Writes the database file and destroys the disks. Without disks nothing is written, and the
  // working disk keeps its name. When the file cannot be written the list is lost all the same; the
  // file then holds what it held before.
  void Close();
  // Writes the database file: 1, or 0 without disks or a file name, and when it cannot be written;
  // then the file is the one from before. A file that Open could not read because the disk refused
  // is never written over: it may hold disks that are not in the list. Its mode and owner stay, and
  // a link to it does.
  int Save();

  // Takes another disk into the list, its path lower-cased in the caller's record. 1, or 0 for a
  // drive that is in the list already, and where CHddObj::Create fails.
  int AddHDD(tag_HDDPARAM* param);
  // CHddObj::ChangeBaseDir of the disk on the drive of the new path; 0 when there is none.
  int ChangeBaseDir(tag_HDDPARAM* param);
  // Take a disk out of the list: 1, or 0 when there is no such disk. By index it is 0 also when the
  // only disk was the working disk, although that is out of the list then; it lives until the next
  // such disk or Close, for the host was told that it stayed.
  int RemoveHDD(int index);
  int RemoveHDD(const CString& path);

  const CObList& GetHDDs() const { return m_disks; }
  // Borrowed; null when there is none.
  CHddObj* GetHDD(int index) const;
  CHddObj* GetWorkHDD() const;
  // The position of the disk with this name, drive included, matching case; -1 when there is none.
  int FindHDD(const CString& name) const;

  // The space of the disk at `index` in MB. 1, or 0: only the first disk is ever answered, on
  // purpose.
  int GetHDDSpace(int index, DWORD& total, DWORD& used, DWORD& free) const;
  // The free space of the working disk's drive in MB; 0 when it is not known.
  DWORD GetWorkHDDFreeSpace() const;
  // CheckWorkingDisk and ChooseWorkingDisk of this list.
  int CheckWorkHDD(DWORD& free_mb) const;
  int ChangeWorkDir();
  // While ChangeWorkDir sends messages to the host window the list does not change: AddHDD,
  // ChangeBaseDir, RemoveHDD and Close are refused.
  bool IsChoosing() const { return m_is_choosing; }

  // MB; only kept. 1, or 0 with the old value for less than 50.
  DWORD GetOnceDelSpace() const { return m_once_delete_mb; }
  int SetOnceDelSpace(DWORD space_mb);
  const CString& GetHostName() const { return m_host_name; }

  // Creates a recording in today's directory of the working disk, whatever the header's begin time,
  // and names it in the header after camera and begin time. Null when there is no working disk,
  // when no directory can be made, and where CZebFile::Open fails.
  std::unique_ptr<CZebFile> CreateZebFile(CZebFileInfo& info) const;
  std::unique_ptr<CZebFile> CreateZebAlarmFile(CZebFileInfo& info) const;

 protected:
  // A search whose result is given to those with equal criteria, until one with others is made.
  // Nothing in this class puts one here.
  std::unique_ptr<CFileSearchInfo> m_last_search;

 private:
  void LoadFile();
  int MakeDefaultDisk();
  // Makes a disk and appends it; null when it cannot be made.
  CHddObj* AppendDisk(tag_HDDPARAM* param);
  // The first disk on the drive of a path, borrowed; null when there is none.
  CHddObj* FindOnDrive(const CString& path) const;
  std::unique_ptr<CHddObj> TakeOut(const CHddObj* disk);

  HWND m_host_window = nullptr;
  DWORD m_once_delete_mb;
  CString m_working_disk;  // drive root; empty for none
  CString m_data_directory;
  CString m_host_name;
  CString m_database_file;
  bool m_is_choosing = false;
  bool m_is_file_unread = false;            // the disk refused; what it holds is not known
  CObList m_disks;                          // of CHddObj, owned, none null
  std::unique_ptr<CHddObj> m_refused_disk;  // taken out by a removal that answered 0
};
