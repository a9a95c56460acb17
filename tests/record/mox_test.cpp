// Faces: files of them, and pictures of one.
#include "record/mox_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

#include "platform/framework/error_report.h"
#include "platform/framework/file_exception.h"
#include "platform/os/clock.h"
#include "platform/os/graphics/graphics.h"
#include "record/mox_face.h"
#include "tests/support/bytes.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/temp_dir.h"
#include "tests/support/window_fixture.h"

using namespace zebx;

namespace {

using namespace std::string_literals;

constexpr DWORD kNow = 0x11223344;
constexpr std::size_t kPictureBytes = 100 * 120;

// A file of 2 * 1 pixels from board 1, camera 2.
const std::string kHeader =
    "FACE\0\0\0\0\x32\0\0\0\2\0\0\0\1\0\0\0\1\2"
    "\x44\x33\x22\x11\xFF\xFF\xFF\xFF"
    "\2\0\0\0pc\2\0\0\0B1\4\0\0\0Gate"s;
const std::string kFile = kHeader + "\1\0\0\0ab\2\0\0\0cd\3\0\0\0ef"s;

using Face = std::pair<int, DWORD>;

class MoxFile : public testing::Test {
 protected:
  int Open(int write) { return m_file.Open(m_path.c_str(), write); }
  int OpenToRead(const std::string& bytes) {
    WriteWholeFile(m_path, bytes);
    return Open(0);
  }
  int OpenToReadWith(std::string bytes, std::size_t at, const std::string& replacement) {
    return OpenToRead(bytes.replace(at, replacement.size(), replacement));
  }
  // Writes a picture of one grey.
  static int WriteFace(CMoxFile& file, BYTE grey, DWORD time) {
    return file.Write(std::vector<BYTE>(kPictureBytes, grey).data(), time);
  }
  // What Read finds: the first byte of the picture and the time.
  std::optional<Face> ReadFace(int index) {
    std::vector<BYTE> picture(kPictureBytes);
    DWORD time = 0;
    if (m_file.Read(picture.data(), &time, index) == 0) return std::nullopt;
    return Face(picture[0], time);
  }

  const os::SteppedClock m_clock{kNow, 0};
  TempDir m_dir;
  const std::string m_path = m_dir.File("x.face");
  CMoxFile m_file;
};

TEST_F(MoxFile, IsWrittenByteForByteAndReadBackWithNamesOfAnyLength) {
  const std::string long_name(5000, 'n');
  m_file.SetBoardIndex(1);
  m_file.SetCameraIndex(2);
  m_file.SetHostName("pc");
  m_file.SetBoardName(nullptr);
  m_file.SetCameraName(long_name.c_str());
  m_file.SetGmt(-1);
  ASSERT_EQ(Open(1), 1);
  EXPECT_EQ(m_file.GetEndTime(), kNow);
  {
    CMoxFile copy(m_file);  // shares the open file
    ASSERT_EQ(WriteFace(copy, 'a', 0x01020304), 1);
    m_file = copy;
    copy.Close();
  }
  ASSERT_EQ(WriteFace(m_file, 'b', 5), 1);
  EXPECT_EQ(m_file.GetTotalFaceNum(), 2U);
  EXPECT_EQ(m_file.GetEndTime(), 5U);
  EXPECT_EQ(ReadFace(0), std::nullopt) << "open for writing";
  m_file.Close();
  EXPECT_EQ(ReadWholeFile(m_path), "FACE\0\0\0\0"s + Little(44 + 5000) +
                                       "\x64\0\0\0\x78\0\0\0\1\2"
                                       "\x44\x33\x22\x11\xFF\xFF\xFF\xFF"
                                       "\2\0\0\0pc\0\0\0\0"s +
                                       Little(5000) + long_name + "\4\3\2\1" +
                                       std::string(kPictureBytes, 'a') + "\5\0\0\0"s +
                                       std::string(kPictureBytes, 'b'));
  ASSERT_EQ(Open(0), 1);
  EXPECT_EQ(m_file.GetCameraName(), long_name);
  EXPECT_EQ(ReadFace(1), Face('b', 5));
}

TEST_F(MoxFile, IsReadByIndexAndStaysAtTheFaceReadLast) {
  ASSERT_EQ(OpenToRead(kFile + "\4\0\0\0x"s), 1);
  EXPECT_EQ(m_file.GetHostName() + m_file.GetBoardName() + m_file.GetCameraName(), "pcB1Gate");
  EXPECT_EQ(m_file.GetEndTime(), 3U);
  EXPECT_EQ(m_file.GetTotalFaceNum(), 3U) << "a partial record is not counted";
  EXPECT_EQ(ReadFace(-1), Face('a', 1));
  EXPECT_EQ(ReadFace(2), Face('e', 3));
  EXPECT_EQ(ReadFace(-1), Face('e', 3));
  EXPECT_EQ(ReadFace(3), std::nullopt);
  EXPECT_EQ(ReadFace(-1), std::nullopt) << "behind the last face";
  std::vector<BYTE> picture(1);
  EXPECT_EQ(m_file.Read(std::span(picture), nullptr, 0), 0) << "does not fit";
  EXPECT_EQ(m_file.Write(picture.data(), 1), 0) << "open for reading";

  EXPECT_EQ(m_file.Close() & m_file.Close(), 1);
  EXPECT_EQ(m_file.GetTotalFaceNum(), 0U);
}

TEST_F(MoxFile, AnswersOneForAnyFileButKeepsNoneWithoutAHeader) {
  ASSERT_EQ(OpenToRead(kFile), 1);
  EXPECT_EQ(OpenToRead(kHeader.substr(0, kHeader.size() - 1)), 1);
  EXPECT_EQ(ReadFace(0), std::nullopt);
  // Magic, version, and lengths of names that lead beyond the end.
  for (const auto& [at, byte] :
       {std::pair(3U, "X"), {4U, "\1"}, {33U, "\x7F"}, {33U, "\xFF"}, {45U, "\x10"}}) {
    EXPECT_EQ(OpenToReadWith(kFile, at, byte), 1) << at;
    EXPECT_EQ(ReadFace(0), std::nullopt) << at;
  }
  EXPECT_EQ(m_file.GetTotalFaceNum(), 3U) << "as it was";
  EXPECT_EQ(m_file.Open(m_dir.File("missing").c_str(), 0), 0);

  FaultyFileSystem disk;
  disk.OverstateLengths(1000);
  EXPECT_EQ(OpenToReadWith(kHeader + std::string(300, 'x'), 43, "\2"), 1);
  EXPECT_EQ(ReadFace(0), std::nullopt) << "cut while its header is read";
  disk.OverstateLengths(0);

  WriteWholeFile(m_path, std::string(kHeader).replace(33, 1, "\6"));  // a name of 96 MB
  std::filesystem::resize_file(m_path, 0x7FFFFFFF);
  EXPECT_EQ(Open(0), 1);
  EXPECT_EQ(m_file.GetHostName(), "pc") << "there is a hole in place of the name";

  // Sizes and offsets that lead nowhere.
  OpenToRead(kHeader);
  EXPECT_EQ(m_file.GetTotalFaceNum(), 0U);
  EXPECT_EQ(m_file.GetEndTime(), kNow) << "a file without faces ends when it starts";
  for (const std::size_t header_size_or_sizes : {8U, 12U}) {
    OpenToReadWith(kFile, header_size_or_sizes, std::string(8, '\xFF'));
    EXPECT_EQ(m_file.GetTotalFaceNum(), 0U);
  }
  OpenToReadWith(kFile, 12, Little(0));  // no pixels: times alone
  EXPECT_EQ(m_file.GetTotalFaceNum(), 4U);
  m_file.Close();
}

TEST_F(MoxFile, TellsOfAFailingDiskAndGoesOnBehindTheLastWholeFace) {
  FaultyFileSystem disk;
  Open(1);
  disk.FillDiskAfter(5000);
  EXPECT_THROW(WriteFace(m_file, 'a', 1), CFileException);
  EXPECT_EQ(m_file.GetTotalFaceNum(), 0U);
  disk.Heal();
  ASSERT_EQ(WriteFace(m_file, 'b', 2), 1);
  disk.FillDiskAfter(0);
  CMoxFile full;
  EXPECT_THROW(full.Open(m_dir.File("y.face").c_str(), 1), CFileException);
  EXPECT_FALSE(std::filesystem::exists(m_dir.File("y.face")));
  disk.Heal();
  Open(0);
  EXPECT_EQ(m_file.GetTotalFaceNum(), 1U);
  EXPECT_EQ(ReadFace(0), Face('b', 2));
  m_file.Close();

  // Bytes lost at closing, however it lets go of its file.
  int reports = 0;
  SetErrorSink([&reports](const std::exception&) { ++reports; });
  for (const bool closes : {true, false}) {
    CMoxFile file;
    file.Open(m_path.c_str(), 1);
    disk.FailCall(FaultyFileSystem::kClose, 1);
    if (closes) {
      EXPECT_THROW(file.Close(), CFileException);
    }
  }
  EXPECT_EQ(reports, 1);
}

constexpr tag_ZEBCAMERAID kCamera = {3, 2};

// A device record of 3 * 2 pixels, face point (0x102, 5), index 7.
const std::vector<BYTE> kRecord = {9, 9, 9, 9, 3, 0, 2, 0, 2, 1, 5,
                                   0, 7, 0, 9, 9, 1, 2, 3, 4, 5, 255};

// Its luminance, whose bytes the grey picture has three times each.
std::vector<int> PixelsOf(const CMoxFace& face) {
  const auto count =
      static_cast<std::size_t>(face.GetSize().cx) * static_cast<std::size_t>(face.GetSize().cy);
  for (std::size_t i = 0; i < 3 * count; ++i) {
    EXPECT_EQ(face.GetFace()[i], face.GetYBuf()[i / 3]) << i;
  }
  return {face.GetYBuf(), face.GetYBuf() + count};
}

void ExpectNoPicture(const CMoxFace& face) {
  EXPECT_EQ(face.GetFace(), nullptr);
  EXPECT_EQ(face.GetYBuf(), nullptr);
}

TEST(MoxFace, IsMadeOfAWholeDeviceRecord) {
  CMoxFace face;
  ASSERT_EQ(face.Create(&kCamera, kRecord.data(), CTime(1000)), 1);
  EXPECT_EQ(face.GetSize(), (CSize{3, 2}));
  EXPECT_EQ(face.GetFacePoint(), (CPoint{0x102, 5}));
  EXPECT_EQ(face.GetDetectIndex(), 7);
  EXPECT_EQ(PixelsOf(face), (std::vector<int>{1, 2, 3, 4, 5, 255}));

  const auto create = [&](std::vector<BYTE> record) {
    face.Create(&kCamera, kRecord.data(), CTime(1));
    record.shrink_to_fit();
    return face.Create(nullptr, record.data(), record.data() + record.size(), CTime(2));
  };
  EXPECT_EQ(create(kRecord), 1);
  EXPECT_EQ(face.GetCameraID(), kCamera) << "null camera leaves the one before";
  std::vector<BYTE> no_rows = kRecord;
  no_rows[6] = 0;
  EXPECT_EQ(create(no_rows), 0);
  ExpectNoPicture(face);
  for (const std::ptrdiff_t bytes : {15, 21}) {
    EXPECT_EQ(create({kRecord.begin(), kRecord.begin() + bytes}), 0) << bytes;
    ExpectNoPicture(face);
  }
}

TEST(MoxFace, IsCutOutBottomUpInsideTheRowsWithAWidthOfWholeWords) {
  // 8 * 3 pixels in rows of 16 bytes, counting up from 0.
  std::vector<BYTE> picture(16 * 3);
  std::iota(picture.begin(), picture.end(), BYTE{0});
  CMoxFace face;
  const auto cut = [&](const CRect& rect, const CPoint* point = nullptr) {
    return face.Create(&kCamera, picture.data(), {8, 3}, rect, CTime(5), point);
  };
  const CPoint point = {4, 1};
  ASSERT_EQ(cut({2, 1, 6, 3}, &point), 1);
  EXPECT_EQ(face.GetSize(), (CSize{4, 2}));
  EXPECT_EQ(PixelsOf(face), (std::vector<int>{34, 35, 36, 37, 18, 19, 20, 21}));
  ASSERT_EQ(cut({12, 2, 17, 3}), 1);
  EXPECT_EQ(PixelsOf(face), (std::vector<int>{44, 45, 46, 47}));
  EXPECT_EQ(face.GetFacePoint(), point) << "null point leaves the one before";

  constexpr LONG kMax = std::numeric_limits<LONG>::max();
  constexpr LONG kMin = std::numeric_limits<LONG>::min();
  for (const CRect& rect :
       {CRect{0, 0, 3, 3}, CRect{-1, 0, 4, 2}, CRect{0, -1, 4, 2}, CRect{13, 0, 17, 2},
        CRect{0, 0, 4, 4}, CRect{kMin, kMin, kMax, kMax}, CRect{4, 2, 0, 0}}) {
    EXPECT_EQ(cut(rect), 0);
    ExpectNoPicture(face);
  }
}

using MoxFaceOnScreen = WindowTest;

TEST_F(MoxFaceOnScreen, IsDrawnIntoAWindow) {
  HWND window = Make(AddParameters, nullptr, {0, 0, 4, 4});
  CMoxFace face;
  EXPECT_EQ(face.Show(window, {0, 0, 3, 2}), 0) << "no picture";
  face.Create(nullptr, kRecord.data(), CTime());
  ASSERT_EQ(face.Show(window, {1, 2, 4, 4}), 1);
  HDC dc = os::GetDC(window);
  EXPECT_EQ(os::GetPixel(dc, 1, 2), 0x040404U) << "the last row on top";
  EXPECT_EQ(os::GetPixel(dc, 3, 3), 0x030303U);
  os::ReleaseDC(window, dc);
  os::DestroyWindow(window);
  EXPECT_EQ(face.Show(window, {0, 0, 3, 2}), 0);
}

}  // namespace
