#include "storage/file_search_info.h"
#include "tests/support/disk_fixture.h"

using namespace zebx;

namespace {

constexpr int kValues = 11;

// Criteria of every value, with one of them (counted from 0) another.
CSearchParam Criteria(int changed = -1) {
  int value = 0;
  const auto is_changed = [&] { return value++ == changed; };
  CSearchParam criteria;
  criteria.SetTimeBegin(CTime(0x99));
  criteria.SetBeginTime(CTime(is_changed() ? 1 : 0x11121314));
  criteria.SetSearch(is_changed() ? kSearchFace : kSearchAlarm);
  criteria.SetHostName(is_changed() ? "Rec" : "rec");
  criteria.SetDbsName(is_changed() ? "Z(e:\\)" : "Z(d:\\)");
  criteria.SetBoardName(is_changed() ? "" : "board");
  criteria.SetCameraName(is_changed() ? "Gate" : "gate");
  criteria.SetDate(is_changed() ? 1 : 0x01020304);
  criteria.SetFrameSize(tag_FRAMESIZE{is_changed() ? 3U : 131U});
  criteria.SetEndTime(CTime(is_changed() ? 1 : 0x21222324));
  criteria.SetCameraID({static_cast<WORD>(is_changed() ? 4 : 3), 0x0405});
  if (is_changed()) criteria.SetCameraID({3, 0x0404});
  return criteria;
}

std::string FlatForm(const CSearchParam& criteria) {
  return BufferFormOf(criteria, criteria.GetSize());
}

TEST(SearchParam, ComparesWhatIsSetButForTheBeginOfARange) {
  EXPECT_EQ(Criteria() == Criteria(), 1);
  for (int changed = 0; changed < kValues; ++changed) {
    EXPECT_EQ(Criteria(changed) == Criteria(), 0) << changed;
  }
  CSearchParam one, other;
  one.SetBeginTime(CTime(1));
  other.SetBeginTime(CTime(2));
  EXPECT_EQ(one == other, 1);
  one.SetSearch(kSearchComparesBeginTime);
  other.SetSearch(kSearchComparesBeginTime);
  EXPECT_EQ(one == other, 0);
}

TEST(SearchParam, HasAFlatFormWithoutBoardCameraNameAndFrameSize) {
  const std::string flat = FlatForm(Criteria());
  EXPECT_EQ(flat, Little(0x130FF) + "\x03rec" + "\x06Z(d:\\)" + Hex("0300 0504") +
                      Little(0x01020304) + Little(0x11121314) + Little(0x11121314) +
                      Little(0x21222324));
  CSearchParam read;
  read.SetCameraName("own");
  const std::string before = FlatForm(read);
  for (std::size_t bytes = 0; bytes < flat.size(); ++bytes) {
    EXPECT_EQ(ReadBufferForm(read, flat.substr(0, bytes)), 0U) << bytes;
    EXPECT_EQ(FlatForm(read), before) << bytes;
  }
  EXPECT_EQ(ReadBufferForm(read, flat), flat.size());
  EXPECT_EQ(FlatForm(read), flat);
  CString camera;
  EXPECT_EQ(Words({read.GetCameraName(camera), camera}), "1 own");

  // Texts are cut to one byte of length and at a zero.
  EXPECT_EQ(FlatForm(CSearchParam()), Little(0) + '\0');  // a host name, although none was set
  CSearchParam criteria;
  criteria.SetHostName(CString(300, 'h'));
  EXPECT_EQ(FlatForm(criteria), Little(kSearchHostName) + Little(44, 1) + CString(44, 'h'));
  EXPECT_EQ(ReadBufferForm(criteria, Little(kSearchHostName) + Hex("04 61 62 00 63")), 9U);
  EXPECT_EQ(FlatForm(criteria), Little(kSearchHostName) + "\x02" + "ab");
}

// A search that found `headers` files, called 0, 1, 2 ... behind a long path.
class FileSearchInfo : public testing::Test {
 protected:
  static void Fill(CFileSearchInfo& info, int headers) {
    for (int i = 0; i < headers; ++i) {
      auto header = std::make_unique<CZebFileInfo>(MakeInfo(CString(600, '/') + std::to_string(i)));
      header->SetBoardName(CString(500, 'b'));
      header->SetCameraName(CString(501, 'c'));
      info.Append(std::move(header));
    }
  }
  // The names found, and - for null.
  static std::string NamesIn(const CFileSearchInfo& info) {
    std::string names;
    for (const CObject* entry : info) {
      names +=
          entry != nullptr ? static_cast<const CZebFileInfo*>(entry)->GetFileName().back() : '-';
    }
    return names;
  }
  static std::string FlatForm(const CFileSearchInfo& info, int& start, int& count) {
    std::string form(info.GetSize(start, count), '\0');
    auto* cursor = reinterpret_cast<BYTE*>(form.data());
    EXPECT_EQ(info.Write(cursor, start, count), form.size());
    EXPECT_EQ(reinterpret_cast<char*>(cursor), form.data() + form.size());
    return form;
  }
  static DWORD ReadFlatForm(CFileSearchInfo& info, std::string form, int& start, int& count) {
    auto* cursor = reinterpret_cast<BYTE*>(form.data());
    return info.Read(cursor, cursor + form.size(), start, count);
  }

  CSearchParam m_criteria = Criteria();
  CFileSearchInfo m_info{&m_criteria};
  CFileSearchInfo m_without{nullptr};
};

TEST_F(FileSearchInfo, CutsTheSliceToTheHeadersThereAre) {
  Fill(m_info, 5);
  // Of each slice the start, the count and the headers that are written.
  for (const auto& [from, at_most, written] : {std::tuple(3, 5, "3 2 34"),
                                               {5, 1, "0 0 "},
                                               {2, 0, "2 0 "},
                                               {-1, 2, "0 0 "},
                                               {0, -1, "0 -1 "}}) {
    int start = from, count = at_most, read_start = 77, read_count = 77;
    const std::string form = FlatForm(m_info, start, count);
    EXPECT_EQ(form.substr(0, m_criteria.GetSize() + 8), ::FlatForm(m_criteria) +
                                                            Little(static_cast<DWORD>(start)) +
                                                            Little(static_cast<DWORD>(count)));
    CFileSearchInfo read(nullptr);
    EXPECT_EQ(ReadFlatForm(read, form, read_start, read_count), form.size());
    EXPECT_EQ(Words({start, count, NamesIn(read)}), written);
    EXPECT_EQ(Words({read_start, read_count}), Words({start, count}));
  }
}

TEST_F(FileSearchInfo, KeepsWhatIsWholeOfABufferCutAnywhere) {
  Fill(m_info, 2);
  int start = 0, count = 2, one = 1;
  const std::string form = FlatForm(m_info, start, count);
  const std::size_t first_end = FlatForm(m_info, start, one).size();
  const std::size_t slice_end = m_criteria.GetSize() + 8;
  for (std::size_t bytes = 0; bytes < form.size(); ++bytes) {
    CFileSearchInfo read(nullptr);
    start = count = 77;
    ASSERT_EQ(Words({ReadFlatForm(read, form.substr(0, bytes), start, count), NamesIn(read)}),
              bytes < first_end ? "0 " : "0 0");
    ASSERT_EQ(Words({start, count}), bytes < slice_end ? "77 77" : "0 2");
  }
  std::string endless = form;
  endless.replace(m_criteria.GetSize() + 4, 4, Little(0x7FFFFFFF));
  EXPECT_EQ(ReadFlatForm(m_info, endless, start, count), 0U);
  EXPECT_EQ(NamesIn(m_info), "0101");
}

TEST_F(FileSearchInfo, TakesCopiesAndLeavesNullEntriesWhereItWasFilled) {
  Fill(m_without, 2);
  Fill(m_info, 1);
  m_info += m_info;
  m_without = m_info;
  m_info.Reset();
  EXPECT_EQ(NamesIn(m_without), "--00");
  EXPECT_EQ(m_without == m_info, 1);
  int start = 1, count = 9;
  ReadFlatForm(m_info, FlatForm(m_without, start, count), start, count);
  EXPECT_EQ(Words({count, NamesIn(m_info)}), "1 0");
}

}  // namespace
