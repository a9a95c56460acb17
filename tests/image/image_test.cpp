#include "image/image.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <numeric>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"

namespace {

using namespace std::string_literals;

// A picture whose bytes count up from 1.
void Fill(CImage& image, DWORD width, DWORD height) {
  const std::size_t bytes = std::size_t{width} * height * 3;
  auto* const pixels = new BYTE[bytes];
  std::iota(pixels, pixels + bytes, BYTE{1});
  EXPECT_EQ(image.CreateImage(pixels, width, height), 1);
}

std::string RawBytes(const CImage& image, std::size_t count) {
  return {image.GetRawImage(), image.GetRawImage() + count};
}

// The snapshot of Fill(4, 1) and, behind it, a trailer with everything.
const std::string kPicture =
    "BM\x42\0\0\0\0\0\0\0\x36\0\0\0"
    "\x28\0\0\0\4\0\0\0\1\0\0\0\1\0\x18\0"
    "\0\0\0\0\xC\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
    "\1\2\3\4\5\6\7\x8\x9\xA\xB\xC"s;
// What a reader takes for that picture: a height that is a multiple of 4 as well.
const std::string kRounding(3 * 4 * 3, 'x');
const std::string kTrailer =
    "\x0F\x44\x33\x22\x11"
    "\5\0Board"
    "\4\0Gate"
    "\2\0pc\xFF\xFF\xFF\xFF"s;

class Snapshot : public testing::Test {
 protected:
  int Load(CImage& image, const std::string& bytes) {
    WriteWholeFile(m_path, bytes);
    return image.LoadImageAs(kImageBmp, m_path);
  }
  std::string Save(CImage& image) {
    EXPECT_EQ(image.SaveImageAs(kImageBmp, m_path), 1);
    return ReadWholeFile(m_path);
  }

  TempDir m_dir;
  const std::string m_path = m_dir.File("shot.bmp");
  CImage m_image;
};

TEST_F(Snapshot, IsWrittenByteForByteAndReadBack) {
  Fill(m_image, 4, 1);
  EXPECT_EQ(Save(m_image), kPicture) << "nothing set, no trailer";
  m_image.SetGmt(-1);
  EXPECT_EQ(Save(m_image), kPicture + "\x8\0\0\xFF\xFF\xFF\xFF"s) << "with the host name";
  m_image.SetTimeStamp(0x11223344);
  m_image.SetBoardName("Board");
  m_image.SetCameraName("Gate");
  m_image.SetHostName("pc");
  EXPECT_EQ(Save(m_image), kPicture + kTrailer);

  Fill(m_image, 352, 288);
  m_image.SetCameraName(std::string(255, 'c'));
  const std::string file = Save(m_image);
  CImage loaded;
  ASSERT_EQ(Load(loaded, file), 1);
  EXPECT_EQ(loaded.GetLength(), file.size());
  EXPECT_EQ(Save(loaded), file);
}

TEST_F(Snapshot, IsWrittenUnpaddedAndLosesItsTrailerInTheRoundedSizesOfReading) {
  Fill(m_image, 350, 288);
  m_image.SetBoardName("Board");
  const std::string file = Save(m_image);
  const std::size_t headers_and_pixels = 54 + 350 * 288 * 3;
  EXPECT_EQ(file.size(), headers_and_pixels + 8);
  ASSERT_EQ(Load(m_image, file), 1);
  EXPECT_EQ(m_image.GetBoardName(), "");
  EXPECT_EQ(Save(m_image), file.substr(0, headers_and_pixels));
}

TEST_F(Snapshot, KeepsTheFieldsBeforeAFaultInTheTrailer) {
  const auto load = [&](const std::string& trailer) {
    m_image.SetBoardName("from before");
    m_image.SetTimeStamp(9);
    EXPECT_EQ(Load(m_image, kPicture + kRounding + trailer), 1);
  };
  for (std::size_t cut = 0; cut <= kTrailer.size(); ++cut) {
    load(kTrailer.substr(0, cut));
    EXPECT_EQ(m_image.GetTimeStamp(), cut >= 5 ? 0x11223344U : 0U) << cut;
    EXPECT_EQ(m_image.GetBoardName(), cut >= 12 ? "Board" : "") << cut;
    EXPECT_EQ(m_image.GetCameraName(), cut >= 18 ? "Gate" : "") << cut;
    EXPECT_EQ(m_image.GetHostName(), cut >= 22 ? "pc" : "") << cut;
    EXPECT_EQ(m_image.GetGmt(), cut == kTrailer.size() ? -1 : 0) << cut;
  }
  load("\6\0\1"s + std::string(256, 'n') + "\4\0Gate"s);
  EXPECT_EQ(m_image.GetBoardName() + m_image.GetCameraName(), "") << "a name of 256 bytes";
}

TEST_F(Snapshot, LeavesThePictureAloneWhenAFileHoldsNone) {
  const auto with = [](std::size_t at, char value) {
    return std::string(kPicture).replace(at, 1, 1, value);
  };
  EXPECT_EQ(Load(m_image, kPicture.substr(0, 53)), 0);
  // Bit count, compression, sizes, and a missing byte.
  for (const std::string& file : {with(28, 8), with(30, 1), with(18, 5), with(21, '\x7F'),
                                  with(25, '\xFF'), kPicture.substr(0, kPicture.size() - 1)}) {
    CImage image;
    EXPECT_EQ(Load(image, file), 0);
    EXPECT_NE(image.GetImageWidth(), 0U) << "what the file claims";
    Fill(image, 1, 1);
    EXPECT_EQ(Load(image, file), 1) << "one from before is held";
    EXPECT_EQ(image.GetImageWidth() + image.GetImageHeight(), 2U) << "with its sizes";
    EXPECT_EQ(RawBytes(image, 3), "\1\2\3");
  }
  EXPECT_EQ(Load(m_image, with(0, 'x')), 1) << "the type is not looked at";
  // Rows that come from the top down are turned.
  const std::string row = "abcdefghijkl";
  ASSERT_EQ(Load(m_image, (kPicture + row).replace(22, 4, "\xFE\xFF\xFF\xFF")), 1);
  EXPECT_EQ(RawBytes(m_image, 24), row + kPicture.substr(54));
}

TEST_F(Snapshot, IsSavedInOneFormatUnderANameWithItsExtension) {
  EXPECT_EQ(m_image.SaveImageAs(kImageBmp, m_path), 0) << "no picture";
  Fill(m_image, 1, 1);
  EXPECT_EQ(m_image.SaveImageAs(kImageJpg, m_path), 1);
  EXPECT_TRUE(std::filesystem::is_empty(m_dir.Path()));
  EXPECT_EQ(m_image.SaveImageAs(kImageBmp, m_dir.File("a.BMP")), 1);
  EXPECT_TRUE(std::filesystem::exists(m_dir.File("a.BMP.bmp")));
}

TEST(FillRawImage, CopiesRowsOfThreeOrFourBytesInEitherOrder) {
  // Two rows of two pixels, 9 bytes apart.
  const BYTE source[] = {1, 2, 3, 0xF, 4, 5, 6, 0xF, 0, 7, 8, 9, 0xF, 10, 11, 12, 0xF};
  CImage image;
  ASSERT_EQ(image.FillRawImage(source, 2, 2, 9, 4, 0), 1);
  EXPECT_EQ(RawBytes(image, 12), "\1\2\3\4\5\6\7\x8\x9\xA\xB\xC");
  ASSERT_EQ(image.FillRawImage(source, 2, 2, -9, 4, 0), 1);
  EXPECT_EQ(RawBytes(image, 12), "\7\x8\x9\xA\xB\xC\1\2\3\4\5\6");
  ASSERT_EQ(image.FillRawImage(source, 1, 2, 9, 3, 0), 1);
  EXPECT_EQ(RawBytes(image, 6), "\1\2\3\7\x8\x9");
  EXPECT_EQ(image.FillRawImage(source, 2, 2, 9, 2, 0), 0);
  int record = 0;
  auto* const rgb_image = reinterpret_cast<tag_RGBIMAGE*>(&record);
  EXPECT_EQ(image.FillRawImage(rgb_image, tag_FRAMESIZE{131}), 1);
  EXPECT_EQ(image.GetImageWidth(), 704U);
  EXPECT_EQ(RawBytes(image, 6), "\1\2\3\7\x8\x9") << "no more than the size comes from a record";
  TempDir dir;
  EXPECT_EQ(image.SaveImageAs(kImageBmp, dir.File("shot")), 1);
  EXPECT_FALSE(std::filesystem::exists(dir.File("shot.bmp"))) << "more than is held";
  EXPECT_EQ(image.FillRawImage(source, 0xFFFFFFFF, 0xFFFFFFFF, 9, 3, 1), 0);
  EXPECT_EQ(image.GetRawImage(), nullptr);
}

TEST(FillRawImage, TakesPixelsOfThePictureHeldAndLeavesTheOneToItsCopy) {
  CImage image;
  Fill(image, 2, 2);
  const CImage copy = image;
  EXPECT_EQ(image.FillRawImage(image.GetRawImage() + 3, 1, 2, 6, 3, 0), 1);
  EXPECT_EQ(RawBytes(image, 6), "\4\5\6\xA\xB\xC");
  EXPECT_EQ(image.CreateImage(image.GetRawImage(), 2, 1), 1);
  EXPECT_EQ(RawBytes(image, 6), "\4\5\6\xA\xB\xC");
  EXPECT_EQ(copy.GetRawImage()[11], 12);
}

TEST(FillRawImage, ZoomsWithTheMeansOfNeighboursAndTheOddLastPixel) {
  const BYTE source[] = {10, 20, 30, 13, 40, 50, 31, 41, 51, 62, 72, 83};
  CImage image;
  ASSERT_EQ(image.FillRawImage(source, 2, 2, 6, 3, 1), 1);
  std::vector<int> expected = {
      10, 20, 30, 11, 30, 40, 13, 40, 50, 13, 40, 50,  //
      20, 30, 40, 29, 43, 53, 37, 37, 56, 56, 66, 66,
  };
  expected.resize(48);  // the last two rows are never written
  const BYTE* const raw = image.GetRawImage();
  EXPECT_EQ(std::vector<int>(raw, raw + 48), expected);
}

}  // namespace
