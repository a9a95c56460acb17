#include "record/mox_file.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/framework/error_report.h"
#include "platform/framework/file_exception.h"
#include "platform/os/clock.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/temp_dir.h"

namespace {

using namespace std::string_literals;

constexpr DWORD kNow = 0x11223344;
constexpr std::size_t kPictureBytes = 100 * 120;

// A file of 2 * 1 pixels from board 1, camera 2.
const std::string kHeader =
    "FACE\0\0\0\0\x32\0\0\0\2\0\0\0\1\0\0\0\1\2"
    "\x44\x33\x22\x11\xFF\xFF\xFF\xFF"
    "\2\0\0\0pc\2\0\0\0B1\4\0\0\0Gate"s;

std::vector<BYTE> Picture(BYTE value) {
  return std::vector<BYTE>(kPictureBytes, value);
}

class MoxFile : public testing::Test {
 protected:
  int OpenToRead(const std::string& bytes) {
    WriteWholeFile(m_path, bytes);
    return m_file.Open(m_path.c_str(), 0);
  }
  // What Read finds: the first byte of the picture and the time.
  std::optional<std::pair<int, DWORD>> ReadFace(int index) {
    std::vector<BYTE> picture(kPictureBytes);
    DWORD time = 0;
    if (m_file.Read(picture.data(), &time, index) == 0) return std::nullopt;
    return std::pair(int{picture[0]}, time);
  }

  const os::SteppedClock m_clock{kNow, 0};
  TempDir m_dir;
  const std::string m_path = m_dir.File("x.face");
  CMoxFile m_file;
};

using Face = std::pair<int, DWORD>;

TEST_F(MoxFile, IsWrittenByteForByte) {
  m_file.SetBoardIndex(1);
  m_file.SetCameraIndex(2);
  m_file.SetHostName("pc");
  m_file.SetBoardName(nullptr);
  m_file.SetCameraName("Gate");
  m_file.SetGmt(-1);
  ASSERT_EQ(m_file.Open(m_path.c_str(), 1), 1);
  EXPECT_EQ(m_file.GetStartTime(), kNow);
  EXPECT_EQ(m_file.GetEndTime(), kNow);
  ASSERT_EQ(m_file.Write(Picture('a').data(), 0x01020304), 1);
  ASSERT_EQ(m_file.Write(Picture('b').data(), 5), 1);
  EXPECT_EQ(m_file.GetTotalFaceNum(), 2U);
  EXPECT_EQ(m_file.GetCurrentIndex(), 2U);
  EXPECT_EQ(m_file.GetEndTime(), 5U);
  EXPECT_EQ(m_file.GetTickCount(), 5U);
  m_file.Close();
  EXPECT_EQ(ReadWholeFile(m_path),
            "FACE\0\0\0\0\x30\0\0\0\x64\0\0\0\x78\0\0\0\1\2"
            "\x44\x33\x22\x11\xFF\xFF\xFF\xFF"
            "\2\0\0\0pc\0\0\0\0\4\0\0\0Gate"s +
                "\4\3\2\1" + std::string(kPictureBytes, 'a') + "\5\0\0\0"s +
                std::string(kPictureBytes, 'b'));
}

TEST_F(MoxFile, IsReadByIndexAndStaysAtTheFaceReadLast) {
  ASSERT_EQ(OpenToRead(kHeader + "\1\0\0\0ab\2\0\0\0cd\3\0\0\0ef\4\0\0\0x"s), 1);
  EXPECT_EQ(m_file.GetImageSize(), (CSize{2, 1}));
  EXPECT_EQ(m_file.GetBoardIndex(), 1);
  EXPECT_EQ(m_file.GetCameraIndex(), 2);
  EXPECT_EQ(m_file.GetHostName(), "pc");
  EXPECT_EQ(m_file.GetBoardName(), "B1");
  EXPECT_EQ(m_file.GetCameraName(), "Gate");
  EXPECT_EQ(m_file.GetGmt(), -1);
  EXPECT_EQ(m_file.GetStartTime(), kNow);
  EXPECT_EQ(m_file.GetEndTime(), 3U);
  EXPECT_EQ(m_file.GetTotalFaceNum(), 3U) << "a partial record is not counted";
  EXPECT_EQ(ReadFace(-1), Face('a', 1));
  EXPECT_EQ(ReadFace(2), Face('e', 3));
  EXPECT_EQ(ReadFace(-1), Face('e', 3));
  EXPECT_EQ(m_file.GetTickCount(), 3U);
  EXPECT_EQ(ReadFace(3), std::nullopt);
  EXPECT_EQ(ReadFace(-1), std::nullopt) << "behind the last face";
  EXPECT_EQ(ReadFace(-2), std::nullopt);
  EXPECT_EQ(ReadFace(0), Face('a', 1));
  EXPECT_EQ(m_file.Read(nullptr, nullptr, 0), 0);
  std::vector<BYTE> picture(1);
  EXPECT_EQ(m_file.Read(std::span(picture), nullptr, 0), 0) << "does not fit";
  EXPECT_EQ(m_file.Write(picture.data(), 1), 0) << "open for reading";
}

TEST_F(MoxFile, TellsOfAFileWithoutFacesThatItEndsWhenItStarts) {
  ASSERT_EQ(OpenToRead(kHeader), 1);
  EXPECT_EQ(m_file.GetTotalFaceNum(), 0U);
  EXPECT_EQ(m_file.GetEndTime(), kNow);
  EXPECT_EQ(ReadFace(0), std::nullopt);
}

TEST_F(MoxFile, AnswersOneForAnyFileButKeepsNoneWithoutAHeader) {
  ASSERT_EQ(OpenToRead(kHeader + "\1\0\0\0ab"s), 1);
  const auto with = [](std::size_t at, char value) {
    std::string bytes = kHeader;
    bytes[at] = value;
    return bytes;
  };
  for (const std::string& bytes :
       {""s, "no face file"s, with(3, 'X'), with(4, 1), with(33, '\x7F'), with(33, '\xFF'),
        kHeader.substr(0, kHeader.size() - 1), with(45, '\x10') + std::string(1000, 'x')}) {
    EXPECT_EQ(OpenToRead(bytes), 1);
    EXPECT_EQ(m_file.GetTotalFaceNum(), 1U) << "as it was";
    EXPECT_EQ(m_file.GetHostName(), "pc");
    EXPECT_EQ(ReadFace(0), std::nullopt);
  }
  EXPECT_EQ(m_file.Open(m_dir.File("missing").c_str(), 0), 0);
  EXPECT_EQ(m_file.Open(m_dir.File("no/place").c_str(), 1), 0);
  EXPECT_EQ(m_file.Open(nullptr, 0), 0);
  EXPECT_EQ(m_file.Write(Picture(0).data(), 1), 0);
}

TEST_F(MoxFile, GivesUpOnAHeaderThatIsCutWhileItIsRead) {
  FaultyFileSystem disk;
  disk.OverstateLengths(1000);
  std::string bytes = kHeader;
  bytes[43] = '\2';  // 512 characters more of the camera's name
  EXPECT_EQ(OpenToRead(bytes + std::string(300, 'x')), 1);
  EXPECT_EQ(m_file.GetHostName(), "");
}

TEST_F(MoxFile, ReadsNamesOfAnyLength) {
  m_file.SetBoardName(std::string(5000, 'n').c_str());
  m_file.SetCameraName(std::string(300, 'c').c_str());
  ASSERT_EQ(m_file.Open(m_path.c_str(), 1), 1);
  m_file.Write(Picture(1).data(), 8);
  CMoxFile reader;
  ASSERT_EQ(reader.Open(m_path.c_str(), 0), 1);
  EXPECT_EQ(reader.GetBoardName(), std::string(5000, 'n'));
  EXPECT_EQ(reader.GetCameraName(), std::string(300, 'c'));
  EXPECT_EQ(reader.GetTotalFaceNum(), 1U);
  EXPECT_EQ(reader.GetEndTime(), 8U);
}

TEST_F(MoxFile, CountsNoFacesWhereSizesAndOffsetsLeadNowhere) {
  const auto open = [this](std::size_t at, const std::string& bytes) {
    std::string file = kHeader + "\1\0\0\0ab"s;
    file.replace(at, bytes.size(), bytes);
    EXPECT_EQ(OpenToRead(file), 1);
  };
  open(8, "\xFF\xFF\xFF\xFF");  // header size
  EXPECT_EQ(m_file.GetTotalFaceNum(), 0U);
  open(12, std::string(8, '\xFF'));  // width and height
  EXPECT_EQ(m_file.GetTotalFaceNum(), 0U);
  open(12, "\0\0\0\0"s);  // no pixels: times alone
  EXPECT_EQ(m_file.GetTotalFaceNum(), 1U);
  EXPECT_EQ(m_file.GetEndTime(), 1U);
}

TEST_F(MoxFile, ForgetsItsTimesButNotItsCameraWhenClosed) {
  ASSERT_EQ(OpenToRead(kHeader + "\1\0\0\0ab"s), 1);
  ReadFace(0);
  EXPECT_EQ(m_file.Close(), 1);
  EXPECT_EQ(m_file.Close(), 1);
  EXPECT_EQ(m_file.GetTotalFaceNum(), 0U);
  EXPECT_EQ(m_file.GetStartTime(), 0U);
  EXPECT_EQ(m_file.GetEndTime(), 0U);
  EXPECT_EQ(m_file.GetTickCount(), 0U);
  EXPECT_EQ(m_file.GetGmt(), 0);
  EXPECT_EQ(m_file.GetCameraName(), "Gate");
  EXPECT_EQ(m_file.GetImageSize(), (CSize{2, 1}));
  EXPECT_EQ(ReadFace(0), std::nullopt);
}

TEST_F(MoxFile, SharesItsOpenFileWithCopies) {
  ASSERT_EQ(m_file.Open(m_path.c_str(), 1), 1);
  {
    CMoxFile copy(m_file);
    ASSERT_EQ(copy.Write(Picture('a').data(), 1), 1);
    copy.Close();
  }
  ASSERT_EQ(m_file.Write(Picture('b').data(), 2), 1) << "behind what the copy wrote";
  m_file.Close();
  m_file.Open(m_path.c_str(), 0);
  EXPECT_EQ(m_file.GetTotalFaceNum(), 2U);
  EXPECT_EQ(ReadFace(1), Face('b', 2));
}

TEST_F(MoxFile, ThrowsWhenTheDiskFailsAndGoesOnBehindTheLastWholeFace) {
  FaultyFileSystem disk;
  m_file.Open(m_path.c_str(), 1);
  disk.FillDiskAfter(5000);
  EXPECT_THROW(m_file.Write(Picture('a').data(), 1), CFileException);
  EXPECT_EQ(m_file.GetTotalFaceNum(), 0U);
  disk.Heal();
  ASSERT_EQ(m_file.Write(Picture('b').data(), 2), 1);
  m_file.Close();
  disk.FillDiskAfter(0);
  CMoxFile full;
  EXPECT_THROW(full.Open(m_dir.File("y.face").c_str(), 1), CFileException);
  EXPECT_EQ(full.Write(Picture('a').data(), 1), 0);
  disk.Heal();
  m_file.Open(m_path.c_str(), 0);
  EXPECT_EQ(m_file.GetTotalFaceNum(), 1U);
  EXPECT_EQ(ReadFace(0), Face('b', 2));
  m_file.Close();
}

TEST_F(MoxFile, TellsOfBytesLostAtClosingHoweverItLetsGoOfItsFile) {
  FaultyFileSystem disk;
  int reports = 0;
  SetErrorSink([&reports](const std::exception&) { ++reports; });
  const auto lose = [&](auto let_go) {
    auto file = std::make_unique<CMoxFile>();
    file->Open(m_path.c_str(), 1);
    disk.FailCall(FaultyFileSystem::kClose, 1);
    let_go(file);
  };
  lose([](auto& file) { EXPECT_THROW(file->Close(), CFileException); });
  lose([&](auto& file) { EXPECT_THROW(file->Open(m_path.c_str(), 0), CFileException); });
  EXPECT_EQ(reports, 0);
  lose([](auto& file) { *file = CMoxFile(); });
  EXPECT_EQ(reports, 1);
  lose([](auto& file) { file.reset(); });
  EXPECT_EQ(reports, 2);
  SetErrorSink({});
}

}  // namespace
