// Files, files in memory, and archives in them.
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

#include "platform/framework/archive.h"
#include "platform/framework/file_system.h"
#include "platform/framework/mem_file.h"
#include "tests/support/bytes.h"
#include "tests/support/faulty_file_system.h"
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

class ArchiveTest : public FileTest {
 protected:
  void OpenForStoring() {
    ASSERT_EQ(m_file.Open(m_path, CFile::kModeCreate | CFile::kModeWrite), 1);
  }
  void OpenForLoading(const std::string& bytes) {
    WriteWholeFile(m_path, bytes);
    if (m_file.IsOpen()) m_file.Close();
    ASSERT_EQ(m_file.Open(m_path, CFile::kModeRead), 1);
  }
  // What loading a text throws; nothing when it does not.
  std::optional<Cause> LoadText(CString& text, std::size_t buffer_bytes = 4096) {
    return Thrown([&] { CArchive(m_file, CArchive::Mode::kLoad, buffer_bytes) >> text; });
  }

  CFile m_file;
};

TEST_F(ArchiveTest, WidensTheLengthOfStringsWhereItMustAndLoadsNoneThatIsCut) {
  const std::pair<std::size_t, std::string> cases[] = {
      {254, Hex("fe")},
      {255, Hex("ff ff00")},
      {0xFFFD, Hex("ff fdff")},
      {0xFFFE, Hex("ff ffff feff0000")},
      {0x10000, Hex("ff ffff 00000100")},
  };
  for (const auto& [length, prefix] : cases) {
    const CString text(length, 'x');
    for (const std::size_t buffer_bytes : {1000U, 1U << 20}) {
      OpenForStoring();
      CArchive archive(m_file, CArchive::Mode::kStore, buffer_bytes);
      archive << text;
      archive.Close();
      EXPECT_TRUE(ReadWholeFile(m_path) == prefix + text) << length;
      OpenForLoading("??" + prefix + text);
      m_file.Seek(2);
      CString loaded = "before";
      EXPECT_EQ(LoadText(loaded, buffer_bytes), std::nullopt);
      EXPECT_TRUE(loaded == text) << length;
      for (const std::size_t bytes :
           {prefix.size() - 1, prefix.size(), prefix.size() + length - 1}) {
        OpenForLoading((prefix + text).substr(0, bytes));
        EXPECT_EQ(LoadText(loaded, buffer_bytes), Cause::kGeneric) << bytes;
        EXPECT_TRUE(loaded == text) << "as before";
      }
      m_file.Close();
    }
  }
}

TEST_F(ArchiveTest, RefusesWideTextAndLengthsThatTheFileCannotHold) {
  FaultyFileSystem disk;
  CString text;
  for (const auto& length : {Hex("ff feff"), Hex("ff ffff ffffffff")}) {
    OpenForLoading(length + std::string(70000, 'x'));
    disk.FailCall(FaultyFileSystem::kRead, 2);  // not even tried
    EXPECT_EQ(LoadText(text), Cause::kGeneric);
  }
  m_file.Close();
}

TEST_F(ArchiveTest, TriesAgainFromWhereItBelongsAfterTheDiskRefused) {
  FaultyFileSystem disk;
  OpenForStoring();
  CArchive(m_file, CArchive::Mode::kStore, 8) << DWORD{1} << DWORD{2} << DWORD{3};
  EXPECT_EQ(m_file.GetPosition(), 8U) << "what was not closed is dropped";
  CArchive archive(m_file, CArchive::Mode::kStore);
  archive << CString(20, 'x');
  disk.FillDiskAfter(10);
  EXPECT_THROW(archive.Close(), CFileException);
  disk.Heal();
  archive.Close();
  const std::string stored = ReadWholeFile(m_path).substr(8);
  EXPECT_EQ(stored, '\x14' + std::string(20, 'x'));

  OpenForLoading(stored);
  CArchive loading(m_file, CArchive::Mode::kLoad, 4);
  DWORD value = 0;
  loading >> value;
  disk.FailCall(FaultyFileSystem::kRead, 1);
  EXPECT_THROW(loading >> value, CFileException);
  loading >> value;
  EXPECT_EQ(value, 0x78787878U) << "what follows, and not the old bytes of the buffer";
  m_file.Close();
}

}  // namespace
