#include "image/dib_obj.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/os/graphics/bitmap_resources.h"
#include "platform/os/graphics/graphics.h"
#include "tests/support/canvas.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/temp_dir.h"

namespace {

using namespace std::string_literals;

// 3 * 2 pixels of 4 bits with the two colours red and green: header, colours, rows.
const std::string kHeader =
    "\x28\0\0\0\3\0\0\0\2\0\0\0\1\0\4\0"
    "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\2\0\0\0\0\0\0\0"s;
const std::string kColors = "\0\0\xFF\0\0\xFF\0\0"s;
const std::string kRows =
    "\x00\x10\0\0"    // bottom: red red green
    "\x11\x00\0\0"s;  // top: green green red
const std::string kDib = kHeader + kColors + kRows;
const std::string kFileHeader = "BM\x46\0\0\0\0\0\0\0\x3E\0\0\0"s;
const std::string kFile = kFileHeader + kDib;

std::string DataOf(const CDibObj& dib) {
  return {dib.GetData(), dib.GetData() + dib.GetDataSize()};
}

std::string WithByte(std::string bytes, std::size_t at, char value) {
  bytes[at] = value;
  return bytes;
}

class DibObj : public testing::Test {
 protected:
  int Load(const std::string& bytes) {
    WriteWholeFile(m_path, bytes);
    return m_dib.LoadBmp(m_path);
  }

  TempDir m_dir;
  const std::string m_path = m_dir.File("picture.bmp");
  CDibObj m_dib;
};

TEST_F(DibObj, LoadsAndSavesAFileByteForByte) {
  ASSERT_EQ(Load(kFile), 1);
  EXPECT_EQ(m_dib.GetWidthBytes(), 4U);
  EXPECT_EQ(DataOf(m_dib), kRows);
  WriteWholeFile(m_path, std::string(1000, 'x'));
  ASSERT_EQ(m_dib.SaveBmp(m_path), 1);
  EXPECT_EQ(ReadWholeFile(m_path), kFile);

  const std::string gap = "\x11\x11\x11\x11";
  ASSERT_EQ(Load(WithByte(kFileHeader, 10, '\x42') + kHeader + kColors + gap + kRows), 1);
  EXPECT_EQ(DataOf(m_dib), gap + kRows.substr(0, 4)) << "rows follow the colours at once";
}

TEST_F(DibObj, TurnsRowsThatComeFromTheTopDown) {
  ASSERT_EQ(Load(std::string(kFileHeader + kHeader).replace(14 + 8, 4, "\xFE\xFF\xFF\xFF") +
                 kColors + kRows.substr(4) + kRows.substr(0, 4)),
            1);
  EXPECT_EQ(m_dib.GetHeight(), 2U);
  ASSERT_EQ(m_dib.SaveBmp(m_path), 1);
  EXPECT_EQ(ReadWholeFile(m_path), kFile);
}

TEST_F(DibObj, IsLeftEmptyByWhatIsNoWholePicture) {
  const std::string files[] = {
      WithByte(kFile, 0, 'b'),
      kFile.substr(0, 53),
      kFile.substr(0, kFile.size() - 1),
      WithByte(kFile, 14 + 7, '\x40'),                       // width: its bits wrap
      std::string(kFile).replace(14 + 8, 4, "\0\0\0\x80"s),  // height: has no positive
      std::string(kFile).replace(14 + 8, 9, "\xFE\xFF\xFF\xFF\1\0\4\0\1"s),  // top down, compressed
      WithByte(kFile, 14 + 11, '\x40'),   // height: rows wrap to 0 bytes
      WithByte(kFile, 14 + 35, '\xFF')};  // colours
  for (const std::string& file : files) {
    ASSERT_EQ(Load(kFile), 1);
    EXPECT_EQ(Load(file), 0) << testing::PrintToString(file);
    EXPECT_EQ(m_dib.IsEmpty(), 1);
  }
  os::RegisterBitmapResource(0x65, {reinterpret_cast<const BYTE*>(kDib.data()), kDib.size() - 1});
  EXPECT_EQ(m_dib.LoadBmp(0x65U), 0);
}

TEST_F(DibObj, TakesADiskErrorForAFailure) {
  FaultyFileSystem disk;
  ASSERT_EQ(Load(kFile), 1);
  disk.FailCall(FaultyFileSystem::kWrite, 1);
  EXPECT_EQ(m_dib.SaveBmp(m_dir.File("copy.bmp")), 0);
  disk.FailCall(FaultyFileSystem::kRead, 2);
  EXPECT_EQ(m_dib.LoadBmp(m_path), 0);
  EXPECT_EQ(m_dib.IsEmpty(), 1);
  disk.OverstateLengths(1);
  EXPECT_EQ(Load(kFile.substr(0, kFile.size() - 1)), 0) << "cut while it is read";
}

TEST_F(DibObj, ConvertsTo24BitsAtAnotherSizeOrNotAtAll) {
  ASSERT_EQ(Load(WithByte(kFile, 14 + 16, 2)), 1);
  EXPECT_EQ(m_dib.ConvertFormat(3, 2, 24), 0) << "compressed";
  ASSERT_EQ(Load(kFile), 1);
  EXPECT_EQ(m_dib.ConvertFormat(3, 2, 32), 0);
  EXPECT_EQ(m_dib.ConvertFormat(3, 0xFFFFFFFF, 24), 0);
  EXPECT_EQ(m_dib.ConvertFormat(0x7FFFFFFF, 0x7FFFFFFF, 24), 0);
  ASSERT_EQ(m_dib.ConvertFormat(3, 4, 24), 1);
  const std::string bottom = "\0\0\xFF\0\0\xFF\0\xFF\0\0\0\0"s;
  const std::string top = "\0\xFF\0\0\xFF\0\0\0\xFF\0\0\0"s;
  ASSERT_EQ(m_dib.SaveBmp(m_path), 1);
  const std::string header = "\x28\0\0\0\3\0\0\0\4\0\0\0\1\0\x18\0\0\0\0\0\x30\0\0\0"s;
  EXPECT_EQ(ReadWholeFile(m_path), "BM\x66\0\0\0\0\0\0\0\x36\0\0\0"s + header +
                                       std::string(16, '\0') + bottom + bottom + top + top);
}

TEST_F(DibObj, DrawsAllOrPartOfItself) {
  constexpr DWORD kGreen = 0x00FF00;
  ASSERT_EQ(Load(kFile), 1);
  HBITMAP bitmap = m_dib.CreateBitmap();
  Colors words(6);
  EXPECT_EQ(os::GetBitmapPixels(bitmap, words), 1);
  EXPECT_EQ(words[2], 0xFF0000U) << "blue comes first in a bitmap";
  os::DeleteObject(bitmap);
  const Canvas canvas(3, 32, 2);
  EXPECT_EQ(m_dib.Display(canvas.m_dc, 1, 1, os::kSrcCopy), 1);
  EXPECT_EQ(canvas.Pixels(), (Colors{0, 0, 0, 0, kGreen, kGreen}));
  // The right-hand pixel of the bottom row onto everything.
  EXPECT_EQ(m_dib.Display(canvas.m_dc, CRect{0, 0, 3, 2}, CRect{2, 0, 3, 1}, os::kSrcCopy), 1);
  EXPECT_EQ(canvas.Pixels(), Colors(6, kGreen));
}

}  // namespace
