// A file with a position of its own, on disk or in memory.
#pragma once

#include <initializer_list>
#include <memory>
#include <span>

#include "platform/framework/export.h"
#include "platform/framework/file_exception.h"
#include "platform/framework/object.h"
#include "platform/framework/types.h"

namespace zebx {
class FileHandle;
}  // namespace zebx

// An unbuffered disk file: every Read and every Write is one system call, Seek is none. Operations
// throw CFileException where a failure is not said to be a result. Used by one thread at a time.
class ZEBX_API CFile : public CObject {
  DECLARE_DYNAMIC(CFile)

 public:
  // Flags of Open, to be ORed: one access, one share mode, and how to create.
  enum OpenFlags : UINT {
    kModeRead = 0x0000,
    kModeWrite = 0x0001,
    kModeReadWrite = 0x0002,
    kShareExclusive = 0x0010,
    kShareDenyNone = 0x0040,
    kModeCreate = 0x1000,
    kModeNoTruncate = 0x2000,  // with kModeCreate: an existing file keeps its bytes
  };

  CFile();
  ~CFile() override;  // closes silently
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;

  // Opens the file and stands at its start. 1, or 0 with `*error` filled when it is not null. The
  // object must not have a file open. While open, the file counts as in use for os::DeleteFile.
  int Open(const CString& path, UINT flags, CFileException* error = nullptr);
  // Takes over a file that was opened without this object, and stands at its start. The path is
  // what GetFilePath answers then.
  void Attach(std::unique_ptr<zebx::FileHandle> handle, const CString& path);
  virtual bool IsOpen() const;
  // True when the last opening made the file: it was not there before.
  bool IsNew() const { return m_is_new; }
  // The absolute path of the file opened last.
  const CString& GetFilePath() const { return m_path; }

  // Reads at the position and moves it on. Fewer bytes than asked for means the end of the file.
  virtual std::size_t Read(std::span<BYTE> into);
  // Writes at the position and moves it on.
  void Write(std::span<const BYTE> bytes) { WritePieces({bytes}); }
  // Writes the pieces back to back in one system call; at most FileHandle::kMaxPieces. A write that
  // fails leaves the position where it was.
  virtual void WritePieces(std::initializer_list<std::span<const BYTE>> pieces);

  // Moves the position, also beyond the end, and returns it.
  ULONGLONG Seek(ULONGLONG position);
  void SeekToBegin() { Seek(0); }
  ULONGLONG SeekToEnd() { return Seek(GetLength()); }
  ULONGLONG GetPosition() const { return m_position; }
  virtual ULONGLONG GetLength() const;
  // The length that opening found: for a file just opened, without another system call.
  ULONGLONG GetLengthAtOpening() const;
  // True when it is certain that nobody else has the file open: it was opened with kShareExclusive,
  // and the disk keeps locks.
  bool IsAlone() const;
  // Cuts or extends (with zeros) the file. The position stays.
  virtual void SetLength(ULONGLONG length);

  // From now on, room on the disk is reserved ahead of what is written, up to the next multiple of
  // `step_bytes`, so that files written side by side lie in few pieces. The length stays; closing
  // gives back what was not used. Where the disk refuses, the file is written without.
  void ReserveAhead(ULONGLONG step_bytes) { m_reserve_step = step_bytes; }
  // Gives back what lies behind the end of the file, reserved by a writer that did not close it.
  // Nobody else may be writing it. Throws.
  void GiveBackReserve();

  // Closes the file; the object can open another. Throws when the system reports at closing that
  // bytes were lost; the file is closed all the same.
  virtual void Close();

 protected:
  ULONGLONG m_position = 0;

 private:
  zebx::FileHandle& Handle() const;
  void ReserveUpTo(ULONGLONG end);

  std::unique_ptr<zebx::FileHandle> m_handle;
  CString m_path;
  bool m_is_new = false;
  ULONGLONG m_reserve_step = 0;  // 0: nothing is to be reserved
  ULONGLONG m_reserved_end = 0;  // 0: nothing is known to be reserved
  bool m_has_reserved = false;
  bool m_is_reserve_refused = false;
};
