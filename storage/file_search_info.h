// A search with what it found: the criteria and the headers of the files that meet them.
#pragma once

#include <memory>
#include <vector>

#include "platform/framework/export.h"
#include "platform/framework/object.h"
#include "platform/framework/types.h"
#include "storage/search_param.h"

// A list of CZebFileInfo, which it owns, in the order in which they were found. Entries may be null
// after an assignment. Used by one thread at a time.
class ZEBX_API CFileSearchInfo : public CObList {
 public:
  // Copies the criteria; null for none.
  explicit CFileSearchInfo(CSearchParam* criteria);
  ~CFileSearchInfo() override;
  CFileSearchInfo(const CFileSearchInfo&) = delete;

  // Borrowed; null without criteria.
  CSearchParam* GetSearchParam() const { return m_criteria.get(); }

  // Adds a header at the end.
  void Append(std::unique_ptr<CZebFileInfo> header);
  // Forgets what was found and keeps the criteria.
  void Reset();
  // Appends copies of the other's headers.
  void operator+=(const CFileSearchInfo& other);
  // Takes over the other's criteria (without any, this record's stay) and copies of its headers.
  // For a record with an empty list: in another one the headers held so far are destroyed and leave
  // null entries in front of the new ones.
  void operator=(const CFileSearchInfo& other);
  // CSearchParam's own comparison; 0 when either has no criteria.
  int operator==(const CSearchParam& criteria) const;
  int operator==(const CFileSearchInfo& other) const;

  // Flat form: the criteria, and of the headers the slice of `count` from position `start` on.
  // Positions count headers; null entries are passed over. Write answers the slice that it wrote in
  // `start` and `count`: cut to the headers there are, and both 0 when `start` is not the position
  // of any; it needs criteria, else 0. Read appends the headers and answers the slice as it stands
  // in the buffer. Both advance the cursor and return the number of bytes. When the buffer ends
  // before the slice does, or memory runs out, Read returns 0 and what it read so far stays.
  DWORD GetSize(int start, int count) const;
  DWORD Write(BYTE*& cursor, int& start, int& count) const;
  DWORD Read(BYTE*& cursor, int& start, int& count);
  DWORD Read(BYTE*& cursor, const BYTE* end, int& start, int& count);

 private:
  std::vector<const CZebFileInfo*> Headers() const;
  void DestroyHeaders();

  std::unique_ptr<CSearchParam> m_criteria;
};
