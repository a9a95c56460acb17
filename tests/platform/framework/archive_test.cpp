#include "platform/framework/archive.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/framework/file.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/temp_dir.h"

namespace {

class ArchiveTest : public testing::Test {
 protected:
  void OpenForStoring() {
    ASSERT_EQ(m_file.Open(Path(), CFile::kModeCreate | CFile::kModeWrite), 1);
  }
  void OpenForLoading(const std::string& bytes) {
    WriteWholeFile(Path(), bytes);
    if (m_file.IsOpen()) m_file.Close();
    ASSERT_EQ(m_file.Open(Path(), CFile::kModeRead), 1);
  }
  // What a string becomes in a file.
  std::string Stored(const CString& text, std::size_t buffer_bytes = 4096) {
    OpenForStoring();
    CArchive archive(m_file, CArchive::Mode::kStore, buffer_bytes);
    archive << text;
    archive.Close();
    m_file.Close();
    return ReadWholeFile(Path());
  }
  std::string Path() const { return m_directory.File("file"); }

  TempDir m_directory;
  CFile m_file;
};

template <typename Load>
CFileException::Cause CauseOf(Load load) {
  try {
    load();
  } catch (const CFileException& failure) {
    return failure.GetCause();
  }
  ADD_FAILURE() << "nothing was thrown";
  return CFileException::Cause::kDiskFull;
}

TEST_F(ArchiveTest, StoresIntegersLittleEndianAndStringsBehindTheirLength) {
  OpenForStoring();
  CArchive archive(m_file, CArchive::Mode::kStore);
  archive << DWORD{0x04030201} << LONG{-2} << CString("d:\\") << CString() << DWORD{5};
  archive.Close();
  EXPECT_EQ(ReadWholeFile(Path()), std::string("\1\2\3\4\xFE\xFF\xFF\xFF\3d:\\\0\5\0\0\0", 17));
}

TEST_F(ArchiveTest, WidensTheLengthOfStringsWhereItMust) {
  using namespace std::string_literals;
  for (const auto& [length, prefix] : std::vector<std::pair<std::size_t, std::string>>{
           {254, "\xFE"s},
           {255, "\xFF\xFF\0"s},
           {0xFFFD, "\xFF\xFD\xFF"s},
           {0xFFFE, "\xFF\xFF\xFF\xFE\xFF\0\0"s},
           {0xFFFF, "\xFF\xFF\xFF\xFF\xFF\0\0"s},
           {0x10000, "\xFF\xFF\xFF\0\0\1\0"s},
       }) {
    const CString text(length, 'x');
    for (const std::size_t buffer_bytes : {1000, 4096, 1 << 20}) {
      const std::string bytes = Stored(text, buffer_bytes);
      EXPECT_TRUE(bytes == prefix + text) << length;
      OpenForLoading(bytes);
      CString loaded;
      CArchive(m_file, CArchive::Mode::kLoad, buffer_bytes) >> loaded;
      EXPECT_TRUE(loaded == text) << length;
      m_file.Close();
    }
  }
}

TEST_F(ArchiveTest, LoadsFromThePositionOfTheFile) {
  OpenForLoading(std::string("??\7\0\0\0\1x", 8));
  m_file.Seek(2);
  CArchive archive(m_file, CArchive::Mode::kLoad);
  LONG number = 0;
  CString text;
  archive >> number >> text;
  EXPECT_EQ(number, 7);
  EXPECT_EQ(text, "x");
}

TEST_F(ArchiveTest, LoadsWhatIsWholeOfAFileCutAtAnyByte) {
  const std::string medium(300, 'm');
  OpenForStoring();
  CArchive storing(m_file, CArchive::Mode::kStore);
  storing << DWORD{1} << CString("short") << medium << LONG{-1};
  storing.Close();
  const std::string whole = ReadWholeFile(Path());
  const std::size_t ends[] = {4, 10, 313, 317};
  ASSERT_EQ(whole.size(), 317U);

  for (std::size_t cut = 0; cut <= whole.size(); ++cut) {
    OpenForLoading(whole.substr(0, cut));
    CArchive archive(m_file, CArchive::Mode::kLoad, cut % 17);
    DWORD first = 77;
    CString second = "as before";
    CString third = "as before";
    LONG fourth = 77;
    bool threw = false;
    try {
      archive >> first >> second >> third >> fourth;
    } catch (const CFileException& failure) {
      threw = true;
      EXPECT_EQ(failure.GetCause(), CFileException::Cause::kGeneric);
      EXPECT_EQ(failure.GetPath(), Path());
    }
    EXPECT_EQ(threw, cut < whole.size()) << cut;
    EXPECT_EQ(first, cut < ends[0] ? 77U : 1U) << cut;
    EXPECT_EQ(second, cut < ends[1] ? "as before" : "short") << cut;
    EXPECT_EQ(third, cut < ends[2] ? "as before" : medium) << cut;
    EXPECT_EQ(fourth, cut < ends[3] ? 77 : -1) << cut;
  }
}

TEST_F(ArchiveTest, TakesNoMemoryForLengthsThatTheFileCannotHold) {
  OpenForLoading(std::string("\xFF\xFF\xFF\xFF\xFF\xFF\xFFxxxx", 11));
  CString text;
  EXPECT_EQ(CauseOf([&] { CArchive(m_file, CArchive::Mode::kLoad) >> text; }),
            CFileException::Cause::kGeneric);
  EXPECT_LT(text.capacity(), 100U);
}

TEST_F(ArchiveTest, RefusesTheMarkOfWideText) {
  OpenForLoading("\xFF\xFE\xFF" + std::string(70000, 'x'));
  CString text;
  EXPECT_EQ(CauseOf([&] { CArchive(m_file, CArchive::Mode::kLoad) >> text; }),
            CFileException::Cause::kGeneric);
}

TEST_F(ArchiveTest, RefusesTheOtherDirectionAndWorkAfterClosing) {
  OpenForLoading("xxxx");
  CArchive loading(m_file, CArchive::Mode::kLoad);
  DWORD value = 0;
  EXPECT_EQ(CauseOf([&] { loading << value; }), CFileException::Cause::kInvalidFile);
  loading.Close();
  EXPECT_EQ(CauseOf([&] { loading >> value; }), CFileException::Cause::kInvalidFile);
}

TEST_F(ArchiveTest, WritesOnlyWhatIsClosedOrOverflows) {
  OpenForStoring();
  {
    CArchive dropped(m_file, CArchive::Mode::kStore, 8);
    dropped << DWORD{1} << DWORD{2} << DWORD{3};
  }
  EXPECT_EQ(m_file.GetLength(), 8U);
}

TEST_F(ArchiveTest, PassesOnWhatTheDiskReports) {
  FaultyFileSystem disk;
  OpenForStoring();
  disk.FillDiskAfter(10);
  CArchive archive(m_file, CArchive::Mode::kStore);
  archive << CString(20, 'x');
  EXPECT_EQ(CauseOf([&] { archive.Close(); }), CFileException::Cause::kDiskFull);
  disk.Heal();
  archive.Close();  // the whole buffer once more, from where it belongs
  EXPECT_EQ(ReadWholeFile(Path()), '\x14' + std::string(20, 'x'));

  OpenForLoading(ReadWholeFile(Path()));
  disk.FailCall(FaultyFileSystem::kRead, 1);
  CString text;
  EXPECT_EQ(CauseOf([&] { CArchive(m_file, CArchive::Mode::kLoad) >> text; }),
            CFileException::Cause::kHardIo);
  m_file.Close();
}

}  // namespace
