#include "storage/search_param.h"

#include <gtest/gtest.h>

#include "tests/support/recording_fixture.h"

namespace {

CSearchParam FullCriteria() {
  CSearchParam criteria;
  criteria.SetSearch(kSearchAlarm);
  criteria.SetHostName("rec");
  criteria.SetDbsName("Z(d:\\)");
  criteria.SetBoardName("board");
  criteria.SetCameraName("gate");
  criteria.SetDate(0x01020304);
  criteria.SetFrameSize(tag_FRAMESIZE{131});
  criteria.SetTimeBegin(CTime(0x99));
  criteria.SetBeginTime(CTime(0x11121314));
  criteria.SetEndTime(CTime(0x21222324));
  criteria.SetCameraID({3, 0x0405});
  return criteria;
}

std::string FlatForm(const CSearchParam& criteria) {
  return BufferFormOf(criteria, criteria.GetSize());
}

TEST(SearchParam, AnswersWhatWasSetAndNothingElse) {
  CSearchParam criteria;
  CString text = "kept";
  CTime time(7);
  tag_ZEBCAMERAID camera{1, 2};
  EXPECT_EQ(criteria.GetHostName(text) + criteria.GetCameraName(text), 0);
  EXPECT_EQ(criteria.GetTimeBegin(time) + criteria.GetCameraID(camera), 0);
  EXPECT_EQ(text, "kept");
  EXPECT_EQ(camera, (tag_ZEBCAMERAID{1, 2}));

  // The begin of a range and the moment share their value, not their flag.
  criteria.SetTimeBegin(CTime(50));
  EXPECT_EQ(criteria.GetBeginTime(time), 0);
  criteria.SetBeginTime(CTime(60));
  EXPECT_EQ(criteria.GetTimeBegin(time), 1);
  EXPECT_EQ(time, CTime(60));

  criteria.SetSearch(kSearchLog);
  EXPECT_EQ(criteria.IsSearch(kSearchLog | kSearchTimeBegin), 1);
  EXPECT_EQ(criteria.IsSearch(kSearchLog | kSearchClip), 0);
  criteria.Reset();
  EXPECT_EQ(criteria.IsSearch(kSearchLog), 0);
  EXPECT_EQ(criteria.GetTimeBegin(time), 0);
}

TEST(SearchParam, HasAFlatFormWithoutBoardCameraNameAndFrameSize) {
  const std::string flat = FlatForm(FullCriteria());
  EXPECT_EQ(flat, Little(0x130FF) + "\x03rec" + "\x06Z(d:\\)" + Hex("0300 0504") +
                      Little(0x01020304) + Little(0x11121314) + Little(0x11121314) +
                      Little(0x21222324));

  CSearchParam read;
  read.SetCameraName("own");
  EXPECT_EQ(ReadBufferForm(read, flat), flat.size());
  CString name = "?";
  tag_FRAMESIZE frame_size{};
  EXPECT_EQ(read.GetBoardName(name), 1);
  EXPECT_EQ(name, "");
  EXPECT_EQ(read.GetCameraName(name), 1);
  EXPECT_EQ(name, "own");
  EXPECT_EQ(read.GetFrameSize(frame_size), 1);
  EXPECT_EQ(frame_size, 255U);
  EXPECT_EQ(FlatForm(read), flat);

  // A host name stands there although none was set.
  EXPECT_EQ(FlatForm(CSearchParam()), Little(0) + '\0');
}

TEST(SearchParam, CutsTextsToOneByteOfLengthAndAtAZero) {
  for (const auto& [length, kept] : {std::pair{255, 255}, {256, 0}, {300, 44}}) {
    CSearchParam criteria;
    criteria.SetHostName(CString(static_cast<std::size_t>(length), 'h'));
    const std::string expected(static_cast<std::size_t>(kept), 'h');
    EXPECT_EQ(FlatForm(criteria), Little(1) + static_cast<char>(kept) + expected);
  }
  CSearchParam criteria;
  const std::string flat = Little(kSearchHostName) + Hex("04 61 62 00 63");
  EXPECT_EQ(ReadBufferForm(criteria, flat), flat.size());
  CString host;
  criteria.GetHostName(host);
  EXPECT_EQ(host, "ab");
}

TEST(SearchParam, StaysAsItWasWhenTheBufferEndsFirst) {
  const std::string flat = FlatForm(FullCriteria());
  CSearchParam before;
  before.SetHostName("before");
  for (std::size_t bytes = 0; bytes < flat.size(); ++bytes) {
    CSearchParam criteria = before;
    EXPECT_EQ(ReadBufferForm(criteria, flat.substr(0, bytes)), 0U) << bytes;
    EXPECT_EQ(criteria == before, 1) << bytes;
  }
}

TEST(SearchParam, ComparesWhatIsSetButForTheBeginOfARange) {
  EXPECT_EQ(FullCriteria() == FullCriteria(), 1);
  using Change = void (*)(CSearchParam&);
  const Change differences[] = {
      [](CSearchParam& criteria) { criteria.SetSearch(kSearchFace); },
      [](CSearchParam& criteria) { criteria.SetHostName("Rec"); },
      [](CSearchParam& criteria) { criteria.SetDbsName("Z(e:\\)"); },
      [](CSearchParam& criteria) { criteria.SetBoardName(""); },
      [](CSearchParam& criteria) { criteria.SetCameraName("Gate"); },
      [](CSearchParam& criteria) { criteria.SetDate(1); },
      [](CSearchParam& criteria) { criteria.SetFrameSize(tag_FRAMESIZE{3}); },
      [](CSearchParam& criteria) { criteria.SetTimeBegin(CTime(1)); },
      [](CSearchParam& criteria) { criteria.SetEndTime(CTime(1)); },
      [](CSearchParam& criteria) {
        criteria.SetCameraID({3, 0x0404});
      },
      [](CSearchParam& criteria) {
        criteria.SetCameraID({4, 0x0405});
      },
  };
  for (const Change& change : differences) {
    CSearchParam changed = FullCriteria();
    change(changed);
    EXPECT_EQ(changed == FullCriteria(), 0) << &change - differences;
  }

  CSearchParam one, other;
  one.SetBeginTime(CTime(1));
  other.SetBeginTime(CTime(2));
  EXPECT_EQ(one == other, 1);
  one.SetSearch(kSearchComparesBeginTime);
  other.SetSearch(kSearchComparesBeginTime);
  EXPECT_EQ(one == other, 0);
}

}  // namespace
