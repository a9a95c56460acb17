// The watermark's picture and the restoring of lost surfaces.
#include <algorithm>
#include <array>
#include <numeric>
#include <span>

#include "image/dib_obj.h"
#include "platform/framework/byte_order.h"
#include "platform/noxdisplay/software/display_control.h"
#include "tests/capture/library_fixture.h"
#include "tests/support/temp_dir.h"

namespace {

constexpr DWORD kWidth = 3;
constexpr DWORD kHeight = 2;
constexpr std::size_t kFileHeaderBytes = 14;
constexpr std::size_t kHeaderBytes = 40;
constexpr std::size_t kDataBytes = kHeight * 12;  // three pixels of 24 bits and their padding

// The file's pixel rows, all bytes different.
std::array<BYTE, kDataBytes> Rows() {
  std::array<BYTE, kDataBytes> rows;
  std::iota(rows.begin(), rows.end(), BYTE{1});
  return rows;
}

void Load(CDibObj& picture) {
  std::array<BYTE, kFileHeaderBytes + kHeaderBytes + kDataBytes> file = {'B', 'M'};
  ByteWriter header(std::span<BYTE>(file).subspan(kFileHeaderBytes));
  header.Put<DWORD>(kHeaderBytes);
  header.Put<DWORD>(kWidth);
  header.Put<DWORD>(kHeight);
  header.Put<WORD>(1);
  header.Put<WORD>(24);
  const auto rows = Rows();
  std::copy(rows.begin(), rows.end(), file.end() - kDataBytes);
  const TempDir directory;
  const CString path = directory.File("mark.bmp");
  WriteWholeFile(path, {reinterpret_cast<const char*>(file.data()), file.size()});
  ASSERT_EQ(picture.LoadBmp(path), 1);
}

class ZebxDisplay : public CaptureLibrary {};

TEST_F(ZebxDisplay, GivesTheWatermarksPaddedRowsAndSizeToTheDisplay) {
  CDibObj picture;
  Load(picture);
  EXPECT_EQ(zebxSetWaterMark(&picture), 1);
  const auto watermark = noxdisplay::CurrentWatermark();
  ASSERT_TRUE(watermark.has_value());
  EXPECT_EQ(watermark->m_width, kWidth);
  EXPECT_EQ(watermark->m_height, kHeight);
  const auto rows = Rows();
  EXPECT_EQ(watermark->m_pixels, std::vector<BYTE>(rows.begin(), rows.end()));

  EXPECT_EQ(zebxSetWaterMark(nullptr), 0);
  const CDibObj empty;
  EXPECT_EQ(zebxSetWaterMark(&empty), 0);
  EXPECT_EQ(noxdisplay::CurrentWatermark()->m_pixels, watermark->m_pixels);
}

TEST_F(ZebxDisplay, LetsEveryDeviceDrawAgainOnceTheSurfacesAreRestored) {
  InitializeWith({MakeVirtualDevice(0x001, 4), MakeVirtualDevice(0x040, 8)});
  EXPECT_EQ(zebxCheckDrawSurface(), 0);
  EXPECT_TRUE(zebdev::TakeJournal().empty());

  // A device that cannot does not keep the others from it.
  zebdev::FailCall(zebdev::Function::kRestore, 1);
  noxdisplay::LoseSurfaces();
  EXPECT_EQ(zebxCheckDrawSurface(), 1);
  const Lines expected = {"noxdevRestore 0 failed", "noxdevRestore 1"};
  EXPECT_EQ(zebdev::TakeJournal(), expected);
  EXPECT_EQ(zebxCheckDrawSurface(), 0);

  zebxCloseZebx();
  zebdev::TakeJournal();
  noxdisplay::LoseSurfaces();
  EXPECT_EQ(zebxCheckDrawSurface(), 1);
  EXPECT_TRUE(zebdev::TakeJournal().empty());
}

}  // namespace
