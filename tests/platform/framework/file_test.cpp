#include "platform/framework/file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <functional>
#include <limits>
#include <new>
#include <optional>
#include <string_view>

#include "platform/framework/file_system.h"
#include "platform/framework/mem_file.h"
#include "tests/support/test_drive.h"

using namespace zebx;

static bool disk_takes_nothing = false;

// The system call as the library reaches it, and one of a disk that answers 0 for ever.
extern "C" ssize_t pwritev(int descriptor, const iovec* vectors, int count, off_t offset) {
  if (disk_takes_nothing) return 0;
  return syscall(SYS_pwritev, descriptor, vectors, count, offset, 0);
}

namespace {

using Cause = CFileException::Cause;

constexpr UINT kCreate = CFile::kModeCreate | CFile::kModeReadWrite | CFile::kShareDenyNone;
constexpr UINT kKeep = kCreate | CFile::kModeNoTruncate;
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
std::optional<Cause> Thrown(const std::function<void()>& operation) {
  try {
    operation();
  } catch (const CFileException& error) {
    return error.GetCause();
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

  const TestDrive m_drive;
  const std::string m_path = m_drive.File("File");
};

TEST_F(FileTest, CreatesEmptiesOrKeepsAsTheFlagsSay) {
  EXPECT_EQ(CauseOfOpening(m_path, kRead), Cause::kFileNotFound);
  for (const UINT flags : {kCreate, kKeep, kRead, kCreate}) {
    const bool keeps = flags != kCreate;
    CFile file;
    ASSERT_EQ(file.Open("d:x\\..\\File", flags), 1);
    EXPECT_EQ(file.GetFilePath(), "d:\\File");
    EXPECT_EQ(ReadText(file, 10), keeps ? "first" : "");
    if (!keeps) file.Write(Bytes("first"));
  }
  EXPECT_EQ(CFile().Open("d:\\FILE", kKeep), 1);  // no second one
  EXPECT_FALSE(m_drive.Has("FILE"));
  EXPECT_TRUE(CurrentFileSystem().IsSameFile("D:\\file", m_path));
  EXPECT_FALSE(CurrentFileSystem().IsSameFile("d:\\none", "d:\\none"));
}

// Both kinds of file go the same road.
TEST_F(FileTest, ReadsAndWritesAtAPositionOfItsOwn) {
  CFile disk_file;
  CMemFile memory_file;
  ASSERT_EQ(disk_file.Open(m_path, kCreate), 1);
  for (CFile* file : {&disk_file, static_cast<CFile*>(&memory_file)}) {
    file->WritePieces({Bytes("012"), {}, Bytes("3456789")});
    EXPECT_EQ(ReadText(*file, 1), "");
    file->Seek(8);
    EXPECT_EQ(ReadText(*file, 5), "89");
    EXPECT_EQ(file->GetPosition(), 10U);
    file->Seek(2);
    file->Write(Bytes("XY"));
    file->Seek(12);
    file->Write(Bytes("x"));
    file->SetLength(14);
    file->SeekToBegin();
    EXPECT_EQ(ReadText(*file, 99), std::string("01XY456789\0\0x\0", 14));
    file->SetLength(3);
    EXPECT_EQ(ReadText(*file, 1), "");
    EXPECT_EQ(file->GetPosition(), 14U);
    EXPECT_EQ(file->SeekToEnd(), 3U);
  }
  EXPECT_EQ(ReadWholeFile(m_path), "01X");
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
  disk_takes_nothing = true;
  EXPECT_EQ(Thrown([&] { file.Write(Bytes("x")); }), Cause::kHardIo);
  disk_takes_nothing = false;
  const auto x = Bytes("x");
  EXPECT_EQ(Thrown([&] { file.WritePieces({x, x, x, x, x, x, x, x, x}); }), Cause::kGeneric);
  file.WritePieces({x, x, x, x, x, x, x, x});
  EXPECT_EQ(ReadWholeFile(m_path), "abxxxxxxxx");
}

TEST_F(FileTest, ReservesAheadWithoutAChangeOfLengthAndGivesBackAtTheEnd) {
  const auto bytes_on_disk = [&] {
    struct stat status {};
    EXPECT_EQ(stat(m_path.c_str(), &status), 0);
    EXPECT_EQ(status.st_size, 3);
    return status.st_blocks * 512;
  };
  constexpr ULONGLONG kStep = 1 << 20;
  CFile file;
  for (const bool dies : {false, true}) {
    ASSERT_EQ(file.Open(m_path, kCreate), 1);
    file.Write(Bytes("ab"));
    file.ReserveAhead(kStep);
    file.Write(Bytes("c"));
    EXPECT_GT(bytes_on_disk(), 1000000);
    file.Close();
    if (dies) {
      NativeFileSystem().Open(m_path, {.m_read = true, .m_write = true})->Reserve(3, kStep);
      EXPECT_GT(bytes_on_disk(), 1000000);
      ASSERT_EQ(file.Open(m_path, CFile::kModeReadWrite), 1);
      file.GiveBackReserve();
    }
    EXPECT_LT(bytes_on_disk(), 100000);
  }
}

TEST_F(FileTest, SharesOnlyWhenBothSidesDoAndRefusesWhatIsNoRegularFile) {
  WriteWholeFile(m_path, "bytes");
  constexpr UINT kExclusive = CFile::kModeReadWrite | CFile::kShareExclusive;
  {
    CFile reader;
    ASSERT_EQ(reader.Open(m_path, kRead), 1);
    EXPECT_EQ(CauseOfOpening(m_path, kExclusive), Cause::kSharingViolation);
  }
  CFile alone;
  ASSERT_EQ(alone.Open(m_path, kExclusive), 1);
  EXPECT_EQ(CauseOfOpening(m_path, kCreate), Cause::kSharingViolation);
  EXPECT_EQ(ReadWholeFile(m_path), "bytes");  // refused before it was emptied

  ASSERT_EQ(mkfifo(m_drive.File("pipe").c_str(), 0666), 0);
  EXPECT_EQ(CauseOfOpening(m_drive.File("pipe"), kRead), Cause::kAccessDenied);
  EXPECT_EQ(CauseOfOpening(m_drive.Root(), kCreate), Cause::kAccessDenied);
  EXPECT_EQ(CauseOfOpening("q:\\file", kRead), Cause::kBadPath);
}

TEST(CMemFile, StaysAsItWasWhenThereIsNoMemory) {
  CMemFile file;
  file.Write(Bytes("abc"));
  constexpr auto kFarAway = std::numeric_limits<ULONGLONG>::max();
  EXPECT_THROW(file.SetLength(kFarAway), std::bad_alloc);
  file.Seek(kFarAway);
  EXPECT_THROW(file.WritePieces({Bytes("a"), Bytes("bc")}), std::bad_alloc);
  EXPECT_EQ(file.GetPosition(), kFarAway);
  EXPECT_EQ(file.GetLength(), 3U);
}

}  // namespace
