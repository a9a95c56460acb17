#include "image/image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <numeric>
#include <string>
#include <vector>

#include "platform/framework/file_exception.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/temp_dir.h"

namespace {

using namespace std::string_literals;

constexpr auto kUnknownFormat = ImageFormat{5};

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

// 3 * 1 pixels and the headers before them.
const std::string kPixels = "\1\2\3\4\5\6\7\x8\x9";
const std::string kPicture =
    "BM\x3F\0\0\0\0\0\0\0\x36\0\0\0"
    "\x28\0\0\0\3\0\0\0\1\0\0\0\1\0\x18\0"
    "\0\0\0\0\x9\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"s +
    kPixels;
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
};

TEST_F(Snapshot, IsWrittenByteForByteWithUnpaddedRowsAndATrailer) {
  CImage image;
  Fill(image, 3, 1);
  EXPECT_EQ(Save(image), kPicture) << "nothing set, no trailer";
  image.SetTimeStamp(0x11223344);
  image.SetBoardName("Board");
  image.SetCameraName("Gate");
  image.SetHostName("pc");
  image.SetGmt(-1);
  EXPECT_EQ(Save(image), kPicture + kTrailer);
}

TEST_F(Snapshot, GivesBackItsPictureAndFields) {
  CImage image;
  Fill(image, 352, 288);
  image.SetTimeStamp(77);
  image.SetCameraName(std::string(255, 'c'));
  image.SetGmt(8);
  const std::string file = Save(image);
  CImage loaded;
  ASSERT_EQ(Load(loaded, file), 1);
  EXPECT_EQ(loaded.GetImageWidth(), 352U);
  EXPECT_EQ(loaded.GetImageHeight(), 288U);
  EXPECT_EQ(loaded.GetLength(), file.size());
  EXPECT_EQ(loaded.GetTimeStamp(), 77U);
  EXPECT_EQ(loaded.GetCameraName(), std::string(255, 'c'));
  EXPECT_EQ(loaded.GetGmt(), 8);
  EXPECT_EQ(Save(loaded), file);
}

TEST_F(Snapshot, TakesHostNameAndGmtAsOneField) {
  CImage image;
  Fill(image, 4, 4);
  image.SetGmt(5);
  const std::string file = Save(image);
  EXPECT_EQ(file.substr(file.size() - 7), "\x8\0\0\5\0\0\0"s);
  image.SetHostName("old");
  ASSERT_EQ(Load(image, file), 1);
  EXPECT_EQ(image.GetHostName(), "");
  EXPECT_EQ(image.GetGmt(), 5);
}

TEST_F(Snapshot, LosesItsTrailerInTheRoundedSizesOfAnOddPicture) {
  CImage image;
  Fill(image, 350, 288);
  image.SetBoardName("Board");
  const std::string file = Save(image);
  ASSERT_EQ(Load(image, file), 1);
  EXPECT_EQ(image.GetBoardName(), "");
  EXPECT_EQ(RawBytes(image, 352 * 288 * 3).substr(0, file.size() - 54), file.substr(54));
  EXPECT_EQ(Save(image), file.substr(0, 54 + 350 * 288 * 3));

  // A trailer beyond that distance is found at the wrong place: 48 bytes are read for 3 pixels.
  CImage small;
  ASSERT_EQ(Load(small, kPicture + std::string(48 - 9, 'x') + "\1\5\0\0\0"s), 1);
  EXPECT_EQ(small.GetTimeStamp(), 5U);
}

TEST_F(Snapshot, KeepsTheFieldsBeforeAFaultInTheTrailer) {
  CImage image;
  Fill(image, 4, 4);
  const std::string picture = Save(image);
  const auto load = [&](const std::string& trailer) {
    image.SetBoardName("from before");
    image.SetTimeStamp(9);
    EXPECT_EQ(Load(image, picture + trailer), 1);
  };
  for (std::size_t cut = 0; cut < kTrailer.size(); ++cut) {
    load(kTrailer.substr(0, cut));
    EXPECT_EQ(image.GetTimeStamp(), cut >= 5 ? 0x11223344U : 0U) << cut;
    EXPECT_EQ(image.GetBoardName(), cut >= 12 ? "Board" : "") << cut;
    EXPECT_EQ(image.GetCameraName(), cut >= 18 ? "Gate" : "") << cut;
    EXPECT_EQ(image.GetHostName(), cut >= 22 ? "pc" : "") << cut;
    EXPECT_EQ(image.GetGmt(), 0) << cut;
  }
  load("\6\0\1"s + std::string(256, 'n') + "\4\0Gate"s);
  EXPECT_EQ(image.GetBoardName(), "") << "a name of 256 bytes";
  EXPECT_EQ(image.GetCameraName(), "");
}

TEST_F(Snapshot, LeavesThePictureAloneWhenAFileHoldsNone) {
  const auto with = [](std::size_t at, char value) {
    std::string file = kPicture;
    file[at] = value;
    return file;
  };
  CImage fresh;
  EXPECT_EQ(Load(fresh, kPicture.substr(0, 53)), 0);
  EXPECT_EQ(fresh.GetImageWidth(), 0U);
  for (const std::string& file : {with(28, 8), with(30, 1), with(18, 4), with(21, '\x7F'),
                                  with(25, '\xFF'), kPicture.substr(0, kPicture.size() - 1)}) {
    CImage image;
    EXPECT_EQ(Load(image, file), 0);
    EXPECT_NE(image.GetImageWidth(), 0U);
    EXPECT_EQ(image.GetRawImage(), nullptr);

    Fill(image, 1, 1);
    const std::string before = Save(image);
    EXPECT_EQ(Load(image, file), 1) << "one from before is held";
    EXPECT_EQ(RawBytes(image, 3), "\1\2\3");
    WriteWholeFile(m_path, before);
    EXPECT_EQ(image.SaveImageAs(kImageBmp, m_path), 1);
    EXPECT_EQ(ReadWholeFile(m_path), before) << "sizes beyond the picture write nothing";
  }
  CImage typeless;
  EXPECT_EQ(Load(typeless, with(0, 'x')), 1) << "the type is not looked at";
}

TEST_F(Snapshot, AddsItsExtensionUnlessItIsThereExactly) {
  CImage image;
  Fill(image, 1, 1);
  for (const char* name : {"a.BMP", "a", "bmp"}) {
    EXPECT_EQ(image.SaveImageAs(kImageBmp, m_dir.File(name)), 1);
    EXPECT_TRUE(std::filesystem::exists(m_dir.File(name + ".bmp"s)));
    EXPECT_FALSE(std::filesystem::exists(m_dir.File(name)));
  }
  const auto here = std::filesystem::current_path();
  std::filesystem::current_path(m_dir.Path());
  EXPECT_EQ(image.SaveImageAs(kImageBmp, ""), 1);
  std::filesystem::current_path(here);
  EXPECT_TRUE(std::filesystem::exists(m_dir.File("capture.bmp")));
}

TEST_F(Snapshot, AcceptsFormatsItDoesNotKnowHowToWrite) {
  CImage image;
  EXPECT_EQ(image.SaveImageAs(kImageBmp, m_path), 0) << "no picture";
  EXPECT_EQ(image.LoadImageAs(kImageJpg, m_path), 0);
  Fill(image, 1, 1);
  for (const ImageFormat format : {kImageJpg, kImageReserved}) {
    EXPECT_EQ(image.SaveImageAs(format, m_path), 1);
    EXPECT_EQ(image.LoadImageAs(format, m_path), 1);
  }
  EXPECT_EQ(image.SaveImageAs(kUnknownFormat, m_path), 0);
  EXPECT_EQ(image.LoadImageAs(kUnknownFormat, m_path), 0);
  EXPECT_FALSE(std::filesystem::exists(m_path));
  EXPECT_EQ(image.SaveImageAs(kImageBmp, m_dir.File("no/place.bmp")), 1) << "not created, not told";
  EXPECT_EQ(image.LoadImageAs(kImageBmp, m_dir.File("missing.bmp")), 1) << "held from before";
}

TEST_F(Snapshot, ThrowsWhenTheDiskRefusesTheBytes) {
  CImage image;
  Fill(image, 4, 4);
  FaultyFileSystem disk;
  disk.FillDiskAfter(60);
  EXPECT_THROW(image.SaveImageAs(kImageBmp, m_path), CFileException);
}

TEST(Image, CopiesShareThePictureAndOutliveEachOther) {
  CImage copy;
  {
    CImage image;
    Fill(image, 2, 2);
    image.SetBoardName("Board");
    copy = image;
    EXPECT_EQ(copy.GetRawImage(), image.GetRawImage());
    Fill(image, 1, 1);
    EXPECT_NE(copy.GetRawImage(), image.GetRawImage());
  }
  EXPECT_EQ(copy.GetRawImage()[11], 12);
  EXPECT_EQ(copy.GetBoardName(), "Board");
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
  EXPECT_EQ(image.GetImageWidth(), 1U) << "a refused pixel size changes nothing";
  EXPECT_EQ(image.FillRawImage(source, 0xFFFFFFFF, 0xFFFFFFFF, 9, 3, 1), 0);
  EXPECT_EQ(image.GetRawImage(), nullptr);
}

TEST(FillRawImage, ZoomsWithTheMeansOfNeighboursAndTheOddLastPixel) {
  const BYTE source[] = {10, 20, 30, 13, 40, 50, 31, 41, 51, 62, 72, 83};
  CImage image;
  ASSERT_EQ(image.FillRawImage(source, 2, 2, 6, 3, 1), 1);
  EXPECT_EQ(image.GetImageWidth(), 4U);
  EXPECT_EQ(image.GetImageHeight(), 4U);
  const std::vector<int> expected = {
      10, 20, 30, 11, 30, 40, 13, 40, 50, 13, 40, 50,  //
      20, 30, 40, 29, 43, 53, 37, 37, 56, 56, 66, 66,
  };
  const BYTE* const raw = image.GetRawImage();
  EXPECT_EQ(std::vector<int>(raw, raw + 24), expected);
  EXPECT_TRUE(std::all_of(raw + 24, raw + 48, [](BYTE byte) { return byte == 0; }))
      << "the last two rows are never written";
  EXPECT_EQ(image.FillRawImage(source, 4, 1, 12, 3, 1), 1);
  EXPECT_EQ(image.FillRawImage(source, 0, 2, 0, 3, 1), 1);
  EXPECT_EQ(image.FillRawImage(source, 2, 0, -6, 3, 1), 1);
}

TEST(FillRawImage, TakesNoMoreThanTheSizeFromAPictureRecord) {
  CImage image;
  Fill(image, 1, 1);
  int record = 0;
  auto* const rgb_image = reinterpret_cast<tag_RGBIMAGE*>(&record);
  EXPECT_EQ(image.FillRawImage(nullptr, tag_FRAMESIZE{130}), 0);
  EXPECT_EQ(image.FillRawImage(rgb_image, tag_FRAMESIZE{9}), 0);
  EXPECT_EQ(image.GetImageWidth(), 1U);
  EXPECT_EQ(image.FillRawImage(rgb_image, tag_FRAMESIZE{131}), 1);
  EXPECT_EQ(image.GetImageWidth(), 704U);
  EXPECT_EQ(image.GetImageHeight(), 576U);
  EXPECT_EQ(RawBytes(image, 3), "\1\2\3");
}

}  // namespace
