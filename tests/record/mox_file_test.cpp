#include "record/mox_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/framework/error_report.h"
#include "platform/framework/file_exception.h"
#include "platform/os/clock.h"
#include "tests/support/bytes.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/temp_dir.h"

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
  const std::pair<std::size_t, std::string> faults[] = {
      {3, "X"}, {4, "\1"}, {33, "\x7F"}, {33, "\xFF"}, {45, "\x10"}};
  for (const auto& [at, byte] : faults) {
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
}

TEST_F(MoxFile, CountsNoFacesWhereSizesAndOffsetsLeadNowhere) {
  OpenToRead(kHeader);
  EXPECT_EQ(m_file.GetTotalFaceNum(), 0U);
  EXPECT_EQ(m_file.GetEndTime(), kNow) << "a file without faces ends when it starts";
  for (const std::size_t header_size_or_sizes : {8U, 12U}) {
    OpenToReadWith(kFile, header_size_or_sizes, std::string(8, '\xFF'));
    EXPECT_EQ(m_file.GetTotalFaceNum(), 0U);
  }
  OpenToReadWith(kFile, 12, Little(0));  // no pixels: times alone
  EXPECT_EQ(m_file.GetTotalFaceNum(), 4U);
}

TEST_F(MoxFile, ThrowsWhenTheDiskFailsAndGoesOnBehindTheLastWholeFace) {
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
}

TEST_F(MoxFile, TellsOfBytesLostAtClosingHoweverItLetsGoOfItsFile) {
  FaultyFileSystem disk;
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
  SetErrorSink({});
}

}  // namespace
