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
#include <functional>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "platform/framework/mem_file.h"
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
  constexpr UINT kKeep = kCreate | CFile::kModeNoTruncate;
  EXPECT_EQ(CauseOfOpening(m_path, kRead), Cause::kFileNotFound);
  for (const UINT flags : {kCreate, kKeep, kRead, kCreate}) {
    const bool keeps = flags != kCreate;
    CFile file;
    ASSERT_EQ(file.Open(m_path, flags), 1);
    EXPECT_EQ(ReadText(file, 10), keeps ? "first" : "");
    if (!keeps) file.Write(Bytes("first"));
  }
  EXPECT_EQ(CFile().Open(m_directory.File("other"), kKeep), 1);
}

TEST_F(FileTest, ReadsAndWritesAtAPositionOfItsOwn) {
  CFile file;
  ASSERT_EQ(file.Open(m_path, kCreate), 1);
  file.Write(Bytes("0123456789"));
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
  const auto x = Bytes("x");
  for (unsigned i = 0; i < kWrites; ++i) {
    file.WritePieces({Bytes("head"), {}, Bytes("video"), x, x, x, x, x});
  }
  const auto after = WriteSystemCalls();
  EXPECT_EQ(Thrown([&] { file.WritePieces({x, x, x, x, x, x, x, x, x}); }), Cause::kGeneric);
  EXPECT_EQ(file.GetPosition(), kWrites * 14U);
  EXPECT_EQ(ReadWholeFile(m_path).substr(0, 18), "headvideoxxxxxhead");
  if (!before) GTEST_SKIP() << "this kernel does not count system calls";
  EXPECT_LT(*after - *before, 2 * kWrites);  // sanitizers make a few of their own
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
  file.Write(Bytes("c"));
  EXPECT_EQ(ReadWholeFile(m_path), "abc123456");
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
  EXPECT_EQ(CauseOfOpening(m_directory.Path().string(), kCreate), Cause::kAccessDenied);
  EXPECT_EQ(CauseOfOpening("q:\\file", kRead), Cause::kBadPath);
  WriteWholeFile(m_path, "");
  EXPECT_EQ(CauseOfOpening(m_path + "/below", kRead), Cause::kBadPath);
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

TEST_F(FileTest, ThrowsForEveryUseWithoutAFileAndForWhatTheDiskRefuses) {
  FaultyFileSystem disk;
  disk.FailCall(FaultyFileSystem::kOpen, 1);
  EXPECT_EQ(CauseOfOpening(m_path, kCreate), Cause::kHardIo);
  std::array<BYTE, 1> into{};
  for (const bool open : {false, true}) {
    CFile file;
    disk.Heal();
    EXPECT_EQ(open && file.Open(m_path, kCreate) == 1, open);
    const std::function<void()> uses[] = {
        [&] { file.Read(into); },  [&] { file.WritePieces({into, into}); },
        [&] { file.GetLength(); }, [&] { file.SetLength(0); },
        [&] { file.SeekToEnd(); }, [&] { file.Close(); }};
    for (const auto& use : uses) {
      disk.FailCall(FaultyFileSystem::kAnyCall, 1);
      EXPECT_EQ(Thrown(use), open ? Cause::kHardIo : Cause::kInvalidFile);
      EXPECT_EQ(file.GetPosition(), 0U);
    }
    EXPECT_FALSE(file.IsOpen());
  }
}

std::string BytesOf(const CMemFile& file) {
  return {file.GetBytes().begin(), file.GetBytes().end()};
}

TEST(CMemFile, GrowsOverwritesFillsWithZerosAndReadsShortAtItsEnd) {
  CMemFile file;
  file.WritePieces({Bytes("abc"), {}, Bytes("def")});
  file.Seek(2);
  file.Write(Bytes("XY"));
  EXPECT_EQ(ReadText(file, 8), "ef");
  EXPECT_EQ(ReadText(file, 8), "");
  file.Seek(8);
  file.Write(Bytes("a"));
  file.SetLength(10);
  EXPECT_EQ(BytesOf(file), std::string("abXYef\0\0a\0", 10));
  file.SetLength(1);
  EXPECT_EQ(file.GetPosition(), 9U);
  EXPECT_EQ(ReadText(file, 8), "");
}

TEST(CMemFile, StaysAsItWasWhenThereIsNoMemory) {
  CMemFile file;
  file.Write(Bytes("abc"));
  constexpr auto kFarAway = std::numeric_limits<ULONGLONG>::max();
  EXPECT_THROW(file.SetLength(kFarAway), std::bad_alloc);
  for (const ULONGLONG position : {kFarAway, kFarAway - 1, kFarAway / 2}) {
    file.Seek(position);
    EXPECT_THROW(file.WritePieces({Bytes("a"), Bytes("bc")}), std::bad_alloc);
    EXPECT_EQ(file.GetPosition(), position);
  }
  EXPECT_EQ(BytesOf(file), "abc");
}

TEST(CFileException, SaysWhatHappenedToWhichFile) {
  const CFileException error(Cause::kAccessDenied, EACCES, "d:\\x");
  EXPECT_STREQ(error.what(), "d:\\x: access is denied (Permission denied)");
}

}  // namespace
