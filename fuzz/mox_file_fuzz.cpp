// Arbitrary bytes as a face file and as a device's face records: read within the memory they have.
#include <utility>
#include <vector>

#include "fuzz/sparse_disk.h"
#include "record/mox_face.h"
#include "record/mox_file.h"

namespace {

void ReadRecords(std::span<const BYTE> input) {
  // A heap copy of exactly the input's size, so that a read behind its end is seen.
  std::vector<BYTE> bytes(input.begin(), input.end());
  bytes.shrink_to_fit();
  const BYTE* cursor = bytes.data();
  const BYTE* const end = cursor + bytes.size();
  CMoxFace face;
  while (face.Create(nullptr, cursor, end, CTime()) == 1) {
    const CSize size = face.GetSize();
    cursor += CMoxFace::kRecordHeaderBytes +
              static_cast<std::size_t>(size.cx) * static_cast<std::size_t>(size.cy);
  }
}

void ReadFile(SparseBytes bytes) {
  constexpr std::size_t kRoom = 256;
  SparseDisk disk;
  disk.PutSparse("in", std::move(bytes));
  CMoxFile file;
  file.Open("in", 0);
  std::vector<BYTE> picture(kRoom);
  DWORD time = 0;
  for (int face = 0; face < 100; ++face) {
    if (file.Read(std::span(picture), &time, face) == 0) break;
  }
  file.Read(std::span(picture), &time, static_cast<int>(file.GetTotalFaceNum() - 1));
  file.Close();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const BYTE* bytes, std::size_t size) {
  ReadRecords({bytes, size});
  ReadFile(SparseBytes::Of({bytes, size}));
  return 0;
}
