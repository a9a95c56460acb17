#include "platform/framework/archive.h"

#include <gtest/gtest.h>

#include <optional>
#include <utility>

#include "platform/framework/file.h"
#include "tests/support/bytes.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/temp_dir.h"

namespace {

using Cause = CFileException::Cause;

class ArchiveTest : public testing::Test {
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
    try {
      CArchive(m_file, CArchive::Mode::kLoad, buffer_bytes) >> text;
    } catch (const CFileException& failure) {
      return failure.GetCause();
    }
    return std::nullopt;
  }

  TempDir m_directory;
  const std::string m_path = m_directory.File("file");
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
