// Arbitrary bytes as the flat forms of search criteria and search results: what is read is within
// the bytes, and what is written of it is as long as announced and reads back.
#include <cstdlib>

#include "storage/file_search_info.h"

namespace {

void Require(bool condition) {
  if (!condition) std::abort();
}

// Neither reads a byte behind the end nor writes one behind what GetSize announces: the buffers are
// heap copies of exactly those sizes.
void ExerciseCriteria(std::vector<BYTE> bytes) {
  bytes.shrink_to_fit();
  CSearchParam criteria;
  BYTE* cursor = bytes.data();
  const DWORD consumed = criteria.Read(cursor, bytes.data() + bytes.size());
  Require(cursor == bytes.data() && consumed <= bytes.size());
  if (consumed == 0) return;
  std::vector<BYTE> written(criteria.GetSize());
  BYTE* target = written.data();
  Require(criteria.Write(target) == written.size() && written.size() <= consumed);
  CSearchParam again;
  Require(again.Read(target, target + written.size()) == written.size());
  Require((again == criteria) == 1);
}

void ExerciseResult(std::vector<BYTE> bytes) {
  bytes.shrink_to_fit();
  CFileSearchInfo info(nullptr);
  BYTE* cursor = bytes.data();
  int start = 0;
  int count = 0;
  const DWORD consumed = info.Read(cursor, bytes.data() + bytes.size(), start, count);
  Require(consumed == 0 || cursor == bytes.data() + consumed);
  if (info.GetSearchParam() == nullptr) return;
  for (const int slice_start : {0, 1, start}) {
    int written_start = slice_start;
    int written_count = count;
    std::vector<BYTE> written(info.GetSize(written_start, written_count));
    BYTE* target = written.data();
    Require(info.Write(target, written_start, written_count) == written.size());
    CFileSearchInfo again(nullptr);
    target = written.data();
    int read_start = 0;
    int read_count = 0;
    const DWORD read = again.Read(target, written.data() + written.size(), read_start, read_count);
    Require(read == written.size() && read_start == written_start && read_count == written_count);
  }
  CFileSearchInfo copy(nullptr);
  copy = info;
  copy += info;
  copy = info;
  Require(copy.GetCount() == 3 * info.GetCount() && (copy == info) == 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const BYTE* data, std::size_t size) {
  const std::vector<BYTE> bytes(data, data + size);
  ExerciseCriteria(bytes);
  ExerciseResult(bytes);
  // Behind criteria without values, with many headers announced.
  std::vector<BYTE> slice = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0x7F};
  slice.insert(slice.end(), bytes.begin(), bytes.end());
  ExerciseResult(slice);
  return 0;
}
