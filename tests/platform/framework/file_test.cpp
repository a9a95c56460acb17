#include "platform/framework/file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

#include "platform/os/drives.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/temp_dir.h"

namespace {

using Cause = CFileException::Cause;

constexpr UINT kCreate = CFile::kModeCreate | CFile::kModeReadWrite | CFile::kShareDenyNone;
constexpr UINT kRead = CFile::kModeRead | CFile::kShareDenyNone;

std::span<const BYTE> Bytes(std::string_view text) {
  return {reinterpret_cast<const BYTE*>(text.data()), text.size()};
}

std::string ReadText(CFile& file, std::size_t count) {
  std::string text(count, '\0');
  text.resize(file.Read({reinterpret_cast<BYTE*>(text.data()), count}));
  return text;
}

// What the operation throws; nothing when it does not.
template <class Operation>
std::optional<Cause> Thrown(Operation operation) {
  try {
    operation();
  } catch (const CFileException& error) {
    return error.GetCause();
  }
  return std::nullopt;
}

// Write system calls of this process so far; nothing where the kernel does not count them.
std::optional<ULONGLONG> WriteSystemCalls() {
  std::ifstream counters("/proc/self/io");
  std::string name;
  ULONGLONG value = 0;
  while (counters >> name >> value) {
    if (name == "syscw:") return value;
  }
  return std::nullopt;
}

class FileTest : public testing::Test {
 protected:
  static Cause CauseOfOpening(const std::string& path, UINT flags) {
    CFile file;
    CFileException error(Cause::kGeneric, 0, "");
    EXPECT_EQ(file.Open(path, flags, &error), 0) << path;
    EXPECT_FALSE(file.IsOpen());
    return error.GetCause();
  }

  TempDir m_directory;
  std::string m_path = m_directory.File("file");
};

TEST_F(FileTest, CreatesEmptiesOrKeepsAsTheFlagsSay) {
  EXPECT_EQ(CauseOfOpening(m_path, kRead), Cause::kFileNotFound);
  CFile file;
  ASSERT_EQ(file.Open(m_path, kCreate), 1);
  file.Write(Bytes("first"));
  file.Close();
  ASSERT_EQ(file.Open(m_path, kCreate | CFile::kModeNoTruncate), 1);
  EXPECT_EQ(file.GetPosition(), 0U);
  EXPECT_EQ(ReadText(file, 10), "first");
  file.Close();
  ASSERT_EQ(file.Open(m_path, kCreate), 1);
  EXPECT_EQ(file.GetLength(), 0U);
  file.Close();
  ASSERT_EQ(file.Open(m_directory.File("other"), kCreate | CFile::kModeNoTruncate), 1);
  EXPECT_TRUE(std::filesystem::exists(m_directory.File("other")));
}

TEST_F(FileTest, ReadsAndWritesAtAPositionOfItsOwn) {
  CFile file;
  ASSERT_EQ(file.Open(m_path, kCreate), 1);
  file.Write(Bytes("0123456789"));
  EXPECT_EQ(file.GetPosition(), 10U);
  EXPECT_EQ(ReadText(file, 1), "");
  file.Seek(8);
  EXPECT_EQ(ReadText(file, 5), "89");
  EXPECT_EQ(file.GetPosition(), 10U);
  file.Seek(12);
  file.Write(Bytes("x"));
  EXPECT_EQ(ReadWholeFile(m_path), std::string("0123456789\0\0x", 13));
  file.SetLength(3);
  EXPECT_EQ(file.GetPosition(), 13U);
  EXPECT_EQ(file.SeekToEnd(), 3U);
  file.SeekToBegin();
  EXPECT_EQ(ReadText(file, 9), "012");
}

TEST_F(FileTest, GathersPiecesInOneSystemCall) {
  CFile file;
  ASSERT_EQ(file.Open(m_path, kCreate), 1);
  constexpr unsigned kWrites = 100;
  const auto before = WriteSystemCalls();
  for (unsigned i = 0; i < kWrites; ++i) {
    file.WritePieces({Bytes("head"), {}, Bytes("video"), Bytes("speech")});
  }
  const auto after = WriteSystemCalls();
  EXPECT_EQ(file.GetPosition(), kWrites * 15U);
  EXPECT_EQ(ReadWholeFile(m_path).substr(0, 19), "headvideospeechhead");
  if (!before) GTEST_SKIP() << "this kernel does not count system calls";
  EXPECT_LT(*after - *before, 2 * kWrites);  // sanitizers make a few of their own
}

TEST_F(FileTest, RefusesMorePiecesThanOneCallTakes) {
  CFile file;
  ASSERT_EQ(file.Open(m_path, kCreate), 1);
  const auto x = Bytes("x");
  file.WritePieces({x, x, x, x, x, x, x, x});
  EXPECT_EQ(Thrown([&] { file.WritePieces({x, x, x, x, x, x, x, x, x}); }), Cause::kGeneric);
  EXPECT_EQ(file.GetLength(), 8U);
  EXPECT_EQ(file.GetPosition(), 8U);
}

TEST_F(FileTest, ResumesAShortWriteAndKeepsItsPositionWhenTheDiskIsFull) {
  CFile file;
  ASSERT_EQ(file.Open(m_path, kCreate), 1);
  file.Write(Bytes("ab"));
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
  const rlimit tight{9, limit.rlim_max};
  const auto old_handler = std::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
  const auto cause = Thrown([&] { file.WritePieces({Bytes("0123"), Bytes("4567")}); });
  setrlimit(RLIMIT_FSIZE, &limit);
  EXPECT_EQ(std::signal(SIGXFSZ, old_handler), SIG_IGN);

  EXPECT_EQ(cause, Cause::kDiskFull);
  EXPECT_EQ(file.GetPosition(), 2U);
  EXPECT_EQ(ReadWholeFile(m_path), "ab0123456");
  file.WritePieces({Bytes("0123"), Bytes("4567")});
  EXPECT_EQ(ReadWholeFile(m_path), "ab01234567");
}

TEST_F(FileTest, SharesOnlyWhenBothSidesDo) {
  WriteWholeFile(m_path, "bytes");
  constexpr UINT kExclusive = CFile::kModeReadWrite | CFile::kShareExclusive;
  {
    CFile writer;
    CFile reader;
    ASSERT_EQ(writer.Open(m_path, kCreate | CFile::kModeNoTruncate), 1);
    ASSERT_EQ(reader.Open(m_path, kRead), 1);
    EXPECT_EQ(CauseOfOpening(m_path, kExclusive), Cause::kSharingViolation);
  }
  CFile alone;
  ASSERT_EQ(alone.Open(m_path, kExclusive), 1);
  EXPECT_EQ(CauseOfOpening(m_path, kRead), Cause::kSharingViolation);
  EXPECT_EQ(CauseOfOpening(m_path, kCreate), Cause::kSharingViolation);
  EXPECT_EQ(ReadWholeFile(m_path), "bytes");  // refused before it was emptied
}

TEST_F(FileTest, RefusesWhatIsNoRegularFileWithoutWaiting) {
  const std::string pipe = m_directory.File("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0666), 0);
  EXPECT_EQ(CauseOfOpening(pipe, kRead), Cause::kAccessDenied);
  EXPECT_EQ(CauseOfOpening(m_directory.Path().string(), kRead), Cause::kAccessDenied);
  EXPECT_EQ(CauseOfOpening(m_directory.Path().string(), kCreate), Cause::kAccessDenied);
  EXPECT_EQ(CauseOfOpening("q:\\file", kRead), Cause::kBadPath);
  WriteWholeFile(m_path, "");
  EXPECT_EQ(CauseOfOpening(m_path + "/below", kRead), Cause::kBadPath);
}

TEST_F(FileTest, OpensAFileThatHasNoNameLeft) {
  WriteWholeFile(m_path, "bytes");
  const int descriptor = open(m_path.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_GE(descriptor, 0);
  std::filesystem::remove(m_path);
  CFile file;
  EXPECT_EQ(file.Open("/proc/self/fd/" + std::to_string(descriptor), kRead), 1);
  EXPECT_EQ(ReadText(file, 10), "bytes");
  close(descriptor);
}

TEST_F(FileTest, KnowsItsAbsolutePathAndOneFileUnderTwoNames) {
  os::MountDrive('d', m_directory.Path().string(), os::DriveKind::kFixed);
  CFile file;
  ASSERT_EQ(file.Open("d:x\\..\\File", kCreate), 1);
  EXPECT_EQ(file.GetFilePath(), "d:\\File");
  EXPECT_TRUE(CurrentFileSystem().IsSameFile("D:\\file", m_directory.File("File")));
  WriteWholeFile(m_directory.File("copy"), "");
  EXPECT_FALSE(CurrentFileSystem().IsSameFile("d:\\copy", "d:\\file"));
  EXPECT_FALSE(CurrentFileSystem().IsSameFile("d:\\none", "d:\\none"));
  os::UnmountDrive('d');
  EXPECT_FALSE(CurrentFileSystem().IsSameFile("d:\\file", "d:\\file"));
}

TEST_F(FileTest, ThrowsForEveryUseWithoutAFile) {
  CFile file;
  std::array<BYTE, 1> into{};
  EXPECT_EQ(Thrown([&] { file.Read(into); }), Cause::kInvalidFile);
  EXPECT_EQ(Thrown([&] { file.Write(into); }), Cause::kInvalidFile);
  EXPECT_EQ(Thrown([&] { file.GetLength(); }), Cause::kInvalidFile);
  EXPECT_EQ(Thrown([&] { file.SetLength(0); }), Cause::kInvalidFile);
  EXPECT_EQ(Thrown([&] { file.SeekToEnd(); }), Cause::kInvalidFile);
  EXPECT_EQ(Thrown([&] { file.Close(); }), Cause::kInvalidFile);
}

TEST_F(FileTest, PassesOnWhatTheDiskReports) {
  FaultyFileSystem disk;
  CFile file;
  disk.FailCall(FaultyFileSystem::kOpen, 1, 1, Cause::kTooManyOpenFiles);
  EXPECT_EQ(CauseOfOpening(m_path, kCreate), Cause::kTooManyOpenFiles);
  ASSERT_EQ(file.Open(m_path, kCreate), 1);

  disk.FailCall(FaultyFileSystem::kWrite, 2);
  disk.WriteShortBeforeFailing(3);
  file.Write(Bytes("ab"));
  EXPECT_EQ(Thrown([&] { file.WritePieces({Bytes("cd"), Bytes("ef")}); }), Cause::kHardIo);
  EXPECT_EQ(file.GetPosition(), 2U);
  EXPECT_EQ(ReadWholeFile(m_path), "abcde");
  file.Write(Bytes("CDEF"));

  disk.FillDiskAfter(1);
  EXPECT_EQ(Thrown([&] { file.Write(Bytes("gh")); }), Cause::kDiskFull);
  EXPECT_EQ(Thrown([&] { file.Write(Bytes("i")); }), Cause::kDiskFull);
  EXPECT_EQ(ReadWholeFile(m_path), "abCDEFg");

  disk.Heal();
  disk.FailCall(FaultyFileSystem::kAnyCall, 1, FaultyFileSystem::kForever);
  file.SeekToBegin();
  std::array<BYTE, 1> into{};
  EXPECT_EQ(Thrown([&] { file.Read(into); }), Cause::kHardIo);
  EXPECT_EQ(file.GetPosition(), 0U);
  EXPECT_EQ(Thrown([&] { file.GetLength(); }), Cause::kHardIo);
  EXPECT_EQ(Thrown([&] { file.SetLength(0); }), Cause::kHardIo);
  EXPECT_EQ(Thrown([&] { file.Close(); }), Cause::kHardIo);
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(disk.Calls(FaultyFileSystem::kWrite), 5U);
  EXPECT_EQ(disk.Failures(), 8U);
}

TEST(CFileException, SaysWhatHappenedToWhichFile) {
  const CFileException error(Cause::kAccessDenied, EACCES, "d:\\x");
  EXPECT_STREQ(error.what(), "d:\\x: access is denied (Permission denied)");
  EXPECT_STREQ(CFileException(Cause::kInvalidFile, 0, "").what(), "no file is open");
}

}  // namespace
