// Arbitrary bytes as the byte forms of live frames, mask lists and encoder settings, and as the
// archive form of a mask list: what is read is within the bytes, is taken whole or not at all, and
// reads back as it was written.
#include <cstdlib>

#include "capture/encode_param.h"
#include "capture/mask_info.h"
#include "capture/mask_list.h"
#include "capture/video_data.h"
#include "fuzz/sparse_disk.h"
#include "platform/framework/archive.h"

namespace {

constexpr DWORD kPictureSide = 16;

void Require(bool condition) {
  if (!condition) std::abort();
}

template <typename Record>
std::vector<BYTE> FormOf(Record& record) {
  std::vector<BYTE> form(record.GetSize());
  BYTE* cursor = form.data();
  Require(record.Write(cursor) == form.size() && cursor == form.data() + form.size());
  return form;
}

// Reads a heap copy of exactly the bytes' size, so that a read behind its end is seen. The bytes
// that were taken.
template <typename Record>
std::size_t Read(Record& record, std::vector<BYTE> bytes) {
  bytes.shrink_to_fit();
  BYTE* cursor = bytes.data();
  const std::size_t taken = record.Read(cursor, bytes.data() + bytes.size());
  Require(taken <= bytes.size() && cursor == bytes.data() + taken);
  return taken;
}

// What every derived rectangle is good for.
void Exercise(CMaskList& masks) {
  CRect rect;
  for (CObject* entry : masks) {
    auto* mask = static_cast<CMaskInfo*>(entry);
    const CRect macroblocks = mask->GetMBRect();
    mask->GetMaskRect({-100, 0, 2000000000, 300}, rect);
    if (mask->SetMaskRect({-100, 0, 2000000000, 300}, rect, tag_FRAMESIZE{130}, 0x8A) == 1) {
      mask->SetMove(1, 1);
    }
    mask->SetMBRect(&macroblocks, tag_FRAMESIZE{3});
    mask->SetFrameSize(tag_FRAMESIZE{macroblocks.IsEmpty() ? 2U : 136U});
  }
  CMaskList copy;
  Require((copy = masks) == 1 && copy.GetCount() == masks.GetCount());
  Require(masks.IsEmpty() || copy.IsMaskInfo(static_cast<CMaskInfo*>(masks.GetTail())) == 1);
}

template <typename Record>
void ReadAndReadBack(Record& record, Record& again, const std::vector<BYTE>& bytes) {
  const std::vector<BYTE> before = FormOf(record);
  const std::size_t taken = Read(record, bytes);
  const std::vector<BYTE> form = FormOf(record);
  if (taken == 0) {
    Require(form == before);
    return;
  }
  Require(Read(again, form) == form.size() && FormOf(again) == form);
}

void ReadArchive(std::span<const BYTE> bytes) {
  constexpr std::size_t kWordBytes = 4;
  constexpr std::size_t kMaskBytes = 20;
  CMemFile file;
  file.Write(bytes);
  file.SeekToBegin();
  CArchive load(file, CArchive::Mode::kLoad, kPictureSide);
  CMaskList masks;
  masks.Serialize(load);
  Require(kWordBytes + masks.GetCount() * kMaskBytes <= std::max(bytes.size(), kWordBytes));
  CMemFile stored;
  CArchive store(stored, CArchive::Mode::kStore);
  masks.Serialize(store);
  store.Close();
  Require(stored.GetLength() == kWordBytes + masks.GetCount() * kMaskBytes);
  Exercise(masks);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const BYTE* data, std::size_t size) {
  const SparseDisk silent;
  const std::vector<BYTE> bytes(data, data + size);
  CVideoData live({1, 2}, kPictureSide, kPictureSide),
      live_again({1, 2}, kPictureSide, kPictureSide);
  ReadAndReadBack(live, live_again, bytes);
  Exercise(*live.GetMaskList());
  CMaskList masks, masks_again;
  ReadAndReadBack(masks, masks_again, bytes);
  Exercise(masks);
  CEncodeParam settings, settings_again;
  ReadAndReadBack(settings, settings_again, bytes);
  ReadArchive(bytes);
  return 0;
}
