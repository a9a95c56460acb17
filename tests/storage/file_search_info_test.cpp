#include "storage/file_search_info.h"

#include <gtest/gtest.h>

#include "tests/support/recording_fixture.h"

namespace {

using Names = std::vector<CString>;

// A search on host "h" that found the files 0, 1, 2 ...
void Fill(CFileSearchInfo& info, int headers) {
  info.GetSearchParam()->SetHostName("h");
  for (int i = 0; i < headers; ++i) {
    info.Append(std::make_unique<CZebFileInfo>(MakeInfo(std::to_string(i))));
  }
}

Names NamesIn(const CFileSearchInfo& info) {
  Names names;
  for (const CObject* entry : info) {
    names.push_back(entry != nullptr ? static_cast<const CZebFileInfo*>(entry)->GetFileName()
                                     : "null");
  }
  return names;
}

std::string FlatForm(const CFileSearchInfo& info, int& start, int& count) {
  std::string form(info.GetSize(start, count), '\0');
  auto* const begin = reinterpret_cast<BYTE*>(form.data());
  BYTE* cursor = begin;
  EXPECT_EQ(info.Write(cursor, start, count), form.size());
  EXPECT_EQ(cursor, begin + form.size());
  return form;
}

DWORD ReadFlatForm(CFileSearchInfo& info, std::string form, int& start, int& count) {
  auto* cursor = reinterpret_cast<BYTE*>(form.data());
  return info.Read(cursor, cursor + form.size(), start, count);
}

class FileSearchInfo : public testing::Test {
 protected:
  CSearchParam m_none;
  CFileSearchInfo m_info{&m_none};
};

TEST_F(FileSearchInfo, CopiesItsCriteria) {
  m_info.GetSearchParam()->SetDate(5);
  DWORD date = 0;
  EXPECT_EQ(m_none.GetDate(date), 0);
  CFileSearchInfo same(m_info.GetSearchParam());
  const CFileSearchInfo without(nullptr);
  EXPECT_EQ(same == m_info, 1);
  EXPECT_EQ(m_info == m_none, 0);
  EXPECT_EQ(without == m_info, 0);
  EXPECT_EQ(m_info == without, 0);
}

TEST_F(FileSearchInfo, WritesASliceBehindItsCriteria) {
  Fill(m_info, 3);
  int start = 1, count = 1;
  const CZebFileInfo second = MakeInfo("1");
  EXPECT_EQ(FlatForm(m_info, start, count), Little(kSearchHostName) + "\x01h" + Little(1) +
                                                Little(1) +
                                                BufferFormOf(second, second.GetSizeForWrite()));
}

TEST_F(FileSearchInfo, CutsTheSliceToTheHeadersThereAre) {
  struct Case {
    int m_headers, m_start, m_count, m_written_start, m_written_count;
  };
  for (const Case& slice : {Case{10, 8, 5, 8, 2},
                            {10, 12, 5, 0, 0},
                            {10, 10, 1, 0, 0},
                            {10, 0, 10, 0, 10},
                            {10, 9, 0, 9, 0},
                            {0, 3, 4, 0, 0},
                            {10, -1, 2, 0, 0},
                            {2, 0, -1, 0, -1}}) {
    CFileSearchInfo info(&m_none);
    Fill(info, slice.m_headers);
    int start = slice.m_start, count = slice.m_count;
    const std::string form = FlatForm(info, start, count);
    EXPECT_EQ(start, slice.m_written_start);
    EXPECT_EQ(count, slice.m_written_count);
    EXPECT_EQ(form.substr(6, 8),
              Little(static_cast<DWORD>(start)) + Little(static_cast<DWORD>(count)));

    CFileSearchInfo read(nullptr);
    int read_start = 77, read_count = 77;
    EXPECT_EQ(ReadFlatForm(read, form, read_start, read_count), form.size());
    EXPECT_EQ(read_start, start);
    EXPECT_EQ(read_count, count);
    Names expected;
    for (int i = 0; i < count; ++i) expected.push_back(std::to_string(start + i));
    EXPECT_EQ(NamesIn(read), expected);
    EXPECT_EQ(read == info, 1);
  }
}

TEST_F(FileSearchInfo, ReservesRoomForTextsOfAnyLength) {
  CZebFileInfo header = MakeInfo(std::string(700, 'f'));
  header.SetBoardName(std::string(501, 'b'));
  m_info.Append(std::make_unique<CZebFileInfo>(header));
  int start = 0, count = 1;
  const std::string form = FlatForm(m_info, start, count);  // compares size and bytes written
  CFileSearchInfo read(nullptr);
  EXPECT_EQ(ReadFlatForm(read, form, start, count), form.size());
  EXPECT_EQ(NamesIn(read), Names{header.GetFileName()});
}

TEST_F(FileSearchInfo, ReadsBehindWhatItHolds) {
  Fill(m_info, 2);
  int start = 0, count = 2;
  const std::string form = FlatForm(m_info, start, count);
  ReadFlatForm(m_info, form, start, count);
  EXPECT_EQ(NamesIn(m_info), (Names{"0", "1", "0", "1"}));
}

TEST_F(FileSearchInfo, KeepsWhatIsWholeOfABufferCutAnywhere) {
  Fill(m_info, 2);
  int start = 0, count = 2;
  const std::string form = FlatForm(m_info, start, count);
  int one = 1;
  const std::size_t first_end = FlatForm(m_info, start, one).size();
  for (std::size_t bytes = 0; bytes < form.size(); ++bytes) {
    CFileSearchInfo read(nullptr);
    EXPECT_EQ(ReadFlatForm(read, form.substr(0, bytes), start, count), 0U) << bytes;
    EXPECT_EQ(read.GetCount(), bytes < first_end ? 0U : 1U) << bytes;
  }
  std::string endless = form;
  endless.replace(10, 4, Little(0x7FFFFFFF));
  CFileSearchInfo read(nullptr);
  EXPECT_EQ(ReadFlatForm(read, endless, start, count), 0U);
  EXPECT_EQ(read.GetCount(), 2U);
}

TEST_F(FileSearchInfo, WritesNothingWithoutCriteria) {
  const CFileSearchInfo without(nullptr);
  BYTE byte = 7;
  BYTE* cursor = &byte;
  int start = 1, count = 1;
  EXPECT_EQ(without.Write(cursor, start, count), 0U);
  EXPECT_EQ(cursor, &byte);
}

TEST_F(FileSearchInfo, AppendsCopies) {
  Fill(m_info, 2);
  {
    CFileSearchInfo other(&m_none);
    Fill(other, 1);
    m_info += other;
  }
  EXPECT_EQ(NamesIn(m_info), (Names{"0", "1", "0"}));
  m_info += m_info;
  EXPECT_EQ(m_info.GetCount(), 6U);
  m_info.Reset();
  EXPECT_TRUE(m_info.IsEmpty());
  EXPECT_EQ(m_info.GetSearchParam()->IsSearch(kSearchHostName), 1);
}

TEST_F(FileSearchInfo, LeavesNullEntriesWhenAssignedIntoAFilledListAndCopesWithThem) {
  Fill(m_info, 2);
  CFileSearchInfo other(&m_none);
  other.GetSearchParam()->SetDate(9);
  Fill(other, 3);
  m_info = other;
  EXPECT_EQ(NamesIn(m_info), (Names{"null", "null", "0", "1", "2"}));
  EXPECT_EQ(m_info == other, 1);

  CFileSearchInfo copy(nullptr);
  copy = m_info;
  EXPECT_EQ(NamesIn(copy), (Names{"0", "1", "2"}));
  EXPECT_EQ(copy == other, 1);
  int start = 1, count = 9;
  const std::string form = FlatForm(m_info, start, count);
  EXPECT_EQ(count, 2);
  CFileSearchInfo read(nullptr);
  ReadFlatForm(read, form, start, count);
  EXPECT_EQ(NamesIn(read), (Names{"1", "2"}));
  m_info.Reset();
  EXPECT_TRUE(m_info.IsEmpty());
}

}  // namespace
