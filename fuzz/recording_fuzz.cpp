// Arbitrary bytes as a recording file and as the buffer forms of a header and a frame: whatever
// they are, they are read, searched, clipped and copied within the memory they have.
#include "fuzz/recording_exercise.h"
#include "fuzz/sparse_disk.h"
#include "tests/support/recording_fixture.h"

using namespace zebx;

namespace {

void ReadBufferForms(std::span<const BYTE> input) {
  // A heap copy of exactly the input's size, so that a read behind its end is seen.
  std::vector<BYTE> bytes(input.begin(), input.end());
  bytes.shrink_to_fit();
  const BYTE* const end = bytes.data() + bytes.size();

  CZebFrameData frame(16, 16, 256);
  BYTE* cursor = bytes.data();
  while (cursor != end && frame.Read(cursor, end) != 0) {
    std::vector<BYTE> written(frame.GetSize());
    BYTE* write_cursor = written.data();
    frame.Write(write_cursor);
  }
  CZebFileInfo info;
  cursor = bytes.data();
  while (cursor != end && info.Read(cursor, end) != 0) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const BYTE* data, std::size_t size) {
  ReadBufferForms({data, size});
  const SparseBytes input = SparseBytes::Of({data, size}, kSmallGapBytes);
  SparseDisk disk;
  disk.PutSparse("r", input);
  if (ExerciseRecording("r")) return 0;
  // Behind a good header, for an input whose own is damaged.
  static const std::string header = RawRecording({});
  disk.PutSparse("r", input.Behind(header));
  ExerciseRecording("r");
  return 0;
}
