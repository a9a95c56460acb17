#include <gtest/gtest.h>

#include <array>

#include "platform/framework/archive.h"
#include "platform/framework/error_report.h"
#include "tests/capture/mask_text.h"
#include "tests/support/recording_fixture.h"

namespace {

constexpr tag_FRAMESIZE kPal{130};  // 352 x 288

TEST(MaskInfo, DrawnMasksBecomeThousandthsAndMacroblocksOfTheBoardsPictures) {
  constexpr CRect kWindow = {0, 0, 352, 288};
  constexpr CRect kMask = {88, 72, 352, 144};
  constexpr LONG kFar = 0x7FFFFFFF;
  struct Case {
    CRect window, mask;
    DWORD frame_size;
    BYTE type;
    const char* text;  // empty when refused
  };
  const Case cases[] = {
      {kWindow, kMask, 130, 0, "250 250 1000 500 = 5 4 22 9"},
      // Some boards encode wider pictures than their frame size says.
      {kWindow, kMask, 2, 6, "250 250 1000 500 = 5 3 22 7"},
      {kWindow, kMask, 2, 8, "250 250 1000 500 = 5 3 22 7"},
      {kWindow, kMask, 2, 0x8A, "250 250 1000 500 = 5 3 22 7"},
      {kWindow, kMask, 2, 7, "250 250 1000 500 = 5 3 20 7"},
      {kWindow, kMask, 3, 10, "250 250 1000 500 = 11 3 44 7"},
      {kWindow, kMask, 3, 6, "250 250 1000 500 = 10 3 40 7"},
      // Rounded toward 0, then down; turned over, outside the picture, beside a window's origin.
      {{0, 0, 300, 300}, {1, 2, -1, -2}, 130, 0, "3 6 -3 -6 = 0 0 268435 268435"},
      {{10, 20, 310, 320}, {30, 30, 60, 60}, 130, 0, "100 100 200 200 = 2 1 4 3"},
      {{0, 0, kFar, kFar}, {0, 0, kFar, kFar / 2}, 130, 0, "0 0 1000 499 = 0 0 22 8"},
      {kWindow, kMask, 9, 0, "250 250 1000 500 = 0 0 0 0"},  // of an unknown size
      {kWindow, {88, 72, 88, 144}, 130, 0, ""},
      {kWindow, {88, 72, 176, 72}, 130, 0, ""},
      {{5, 0, 5, 288}, kMask, 130, 0, ""},
      {{0, 5, 352, 5}, kMask, 130, 0, ""},
  };
  for (const Case& c : cases) {
    CMaskInfo mask;
    mask.SetFlag(3);
    const bool is_taken = *c.text != '\0';
    EXPECT_EQ(mask.SetMaskRect(c.window, c.mask, tag_FRAMESIZE{c.frame_size}, c.type), is_taken);
    EXPECT_EQ(TextOf(mask), is_taken ? c.text : "0 0 0 0 = 0 0 0 0 moves alarm") << int{c.type};
    EXPECT_EQ(mask.GetType(), c.type);
  }
  CMaskInfo mask;
  CRect rect;
  mask.SetMaskRect({0, 0, 1000, 1000}, {-333, 250, 999, 500}, kPal, 0);
  EXPECT_EQ(mask.GetMaskRect({100, 1000, 110, 1007}, rect), 1);
  EXPECT_EQ(TextOf(rect), "97 1001 109 1003");
  mask.GetMaskRect({0, 0, 2000000000, 0}, rect);
  EXPECT_EQ(TextOf(rect), "-666000000 0 1998000000 0");
}

TEST(MaskInfo, TakesMacroblocksThatLeaveTheLastColumnAndRowFree) {
  struct Case {
    CRect macroblocks;
    DWORD frame_size;
    const char* text;  // empty when refused
    int is_valid;
  };
  const Case cases[] = {
      {{0, 0, 21, 17}, 130, "0 0 954 944 = 0 0 21 17", 1},
      {{20, 15, 21, 17}, 130, "909 833 954 944 = 20 15 21 17", 0},
      {{19, 16, 21, 17}, 130, "863 888 954 944 = 19 16 21 17", 0},
      {{2, 0, 21, 14}, 2, "90 0 954 933 = 2 0 21 14", 1},  // 352 wide on this board
      {{-1, 0, 1, 2}, 130, "12201566 0 45 111 = -1 0 1 2", 1},
      {{0, 0, 22, 17}, 130, "", 0},
      {{0, 0, 21, 18}, 130, "", 0},
      {{5, 0, 5, 17}, 130, "", 0},
      {{0, 9, 21, 8}, 130, "", 0},
      {{0, 0, 1, 1}, 9, "", 0},
  };
  for (const Case& c : cases) {
    CMaskInfo mask;
    mask.SetStatus(0x00060000);
    const bool is_taken = *c.text != '\0';
    EXPECT_EQ(mask.SetMBRect(&c.macroblocks, tag_FRAMESIZE{c.frame_size}), is_taken);
    EXPECT_EQ(TextOf(mask), is_taken ? c.text : "0 0 0 0 = 0 0 0 0");
    EXPECT_EQ(mask.IsValid(), c.is_valid) << c.text;
  }
  CMaskInfo mask;
  BYTE bytes[4];
  EXPECT_EQ(mask.SetMBRect(nullptr, kPal) + mask.GetMBRect(nullptr), 0);
  mask.SetMBRect(&cases[4].macroblocks, kPal);
  EXPECT_EQ(mask.GetMBRect(bytes), 1);
  EXPECT_EQ(std::string(bytes, bytes + 4), Hex("ff 00 01 02"));
  // Only another frame size derives the macroblocks anew.
  mask.SetFrameSize(kPal);
  EXPECT_EQ(TextOf(mask.GetMBRect()), "-1 0 1 2");
  EXPECT_EQ(mask.SetFrameSize(tag_FRAMESIZE{131}), 1);
  EXPECT_EQ(TextOf(mask.GetMBRect()), "268433 0 1 1");
}

TEST(MaskInfo, AlarmsOnEveryReportThatCompletesTheCount) {
  CMaskInfo mask;
  std::string seen;
  // Of each report whether there was motion, and the count.
  for (const auto& [moved, count] : {std::pair(1, 3U),
                                     {1, 3},
                                     {1, 3},
                                     {1, 3},
                                     {1, 3},
                                     {0, 3},
                                     {1, 3},
                                     {1, 3},
                                     {7, 2},
                                     {1, 0},
                                     {1, 0xFFFFFFFF}}) {
    mask.SetMove(moved, count);
    seen += std::to_string(mask.IsMove() + mask.IsAlarm()) + ' ';
  }
  EXPECT_EQ(seen, "1 1 3 1 1 0 1 1 3 3 1 ");
  mask.SetFlag(0xFE);  // adds alarm, keeps motion
  EXPECT_EQ(mask.IsMove() + mask.IsAlarm(), 3);
  CMaskInfo copy;
  copy.SetStatus(0xFF0000);
  copy = mask;
  EXPECT_EQ(copy.GetType() + copy.IsMove() + copy.IsAlarm(), 0);
  EXPECT_EQ(copy.GetVer(), 1U);
  mask.ClrStatus(1);  // keeps that bit
  EXPECT_EQ(mask.IsMove() + mask.IsAlarm() + static_cast<int>(mask.GetVer()), 1);
}

class MaskList : public testing::Test {
 protected:
  MaskList() {
    m_list.AddTail(nullptr);
    m_list.AddMaskInfo(NewMask(100));
    m_list.AddMaskInfo(NewMask(-2));
    static_cast<CMaskInfo*>(m_list.GetTail())->SetFlag(3);
    zebx::SetErrorSink([this](const std::exception&) { ++m_reports; });
  }
  ~MaskList() override { zebx::SetErrorSink({}); }

  static std::string ArchiveFormOf(CObject& object) {
    CMemFile file;
    CArchive archive(file, CArchive::Mode::kStore);
    object.Serialize(archive);
    archive.Close();
    object.Serialize(archive);  // is reported
    return {file.GetBytes().begin(), file.GetBytes().end()};
  }
  static void Load(CObject& object, const std::string& form) {
    CMemFile file;
    file.Write({reinterpret_cast<const BYTE*>(form.data()), form.size()});
    file.SeekToBegin();
    CArchive archive(file, CArchive::Mode::kLoad);
    object.Serialize(archive);
  }

  CMaskList m_list;
  int m_reports = 0;
};

TEST_F(MaskList, OwnsMasksThatDifferAndLeavesEqualOnesToTheCaller) {
  const std::unique_ptr<CMaskInfo> equal(NewMask(100)), other(NewMask(1));
  EXPECT_TRUE(*equal != *other);
  EXPECT_EQ(m_list.AddMaskInfo(equal.get()) + 2 * m_list.AddMaskInfo(nullptr), 1);
  EXPECT_EQ(m_list.IsMaskInfo(equal.get()), 1);
  EXPECT_EQ(m_list.IsMaskInfo(other.get()) + m_list.IsMaskInfo(nullptr), 0);
  CMaskList copy;
  copy.AddMaskInfo(NewMask(7));
  EXPECT_EQ(copy = m_list, 1);
  EXPECT_EQ(LeftsOf(copy), "100 -2 ");
  EXPECT_EQ(copy.IsAlarm(), 0);
  const CMaskList& itself = m_list;
  EXPECT_EQ(m_list = itself, 1);
  EXPECT_EQ(LeftsOf(m_list), "- 100 -2 ");
  EXPECT_EQ(m_list.IsAlarm() + m_list.DeleteAllMask(), 2);
  EXPECT_TRUE(m_list.IsEmpty() && m_list.IsKindOf(RUNTIME_CLASS(CObList)));
}

TEST_F(MaskList, HasAByteFormWithEveryBitOfItsMasksAndReadsAllOrNothing) {
  const std::string form =
      Hex("02000000 64000000 fa000000 f4010000 f4010000 00000310 82000000"
          "         feffffff fa000000 f4010000 f4010000 03000310 82000000");
  EXPECT_EQ(BufferFormOf(m_list, m_list.GetSize()), form);
  CMaskList read;
  for (std::size_t size = 0; size < form.size(); ++size) {
    read.AddMaskInfo(NewMask(7));
    EXPECT_EQ(ReadBufferForm(read, form.substr(0, size)), 0U) << size;
    EXPECT_TRUE(read.IsEmpty());
  }
  EXPECT_EQ(ReadBufferForm(read, Little(0xFFFFFFFF) + form), 0U);
  std::string both = form + form;
  auto* cursor = reinterpret_cast<BYTE*>(both.data());
  EXPECT_EQ(read.Read(cursor), form.size());
  EXPECT_EQ(reinterpret_cast<char*>(cursor), both.data() + form.size());
  EXPECT_EQ(BufferFormOf(read, read.GetSize()), form);
  EXPECT_EQ(TextOf(static_cast<CMaskInfo&>(*read.GetHead())), "100 250 500 500 = 2 4 11 9");
  CMaskInfo mask;
  EXPECT_EQ(ReadBufferForm(mask, form.substr(4, 23)), 0U);
  EXPECT_EQ(m_reports, 0);
}

TEST_F(MaskList, HasAnArchiveFormWithoutMotionThatKeepsWhatItLoadedWhole) {
  const std::string form =
      Hex("02000000 64000310 fa000000 f4010000 f4010000 82000000"
          "         feff0310 fa000000 f4010000 f4010000 82000000");
  EXPECT_EQ(ArchiveFormOf(m_list), form);
  EXPECT_EQ(m_reports, 1);
  for (std::size_t size = 0; size <= form.size(); ++size) {
    m_reports = 0;
    Load(m_list, form.substr(0, size));
    // Of a side below 0 only the low 16 bits come back.
    EXPECT_EQ(LeftsOf(m_list), size < 24 ? "" : size < 44 ? "100 " : "100 65534 ") << size;
    EXPECT_EQ(m_reports, size < 44 ? 1 : 0) << size;
  }
  CMaskInfo mask;
  mask.SetMaskRect({0, 0, 2, 2}, {0, 0, 2, 2}, kPal, 3);
  mask.SetMove(1, 2);
  Load(mask, form.substr(4, 19));
  EXPECT_EQ(TextOf(mask), "0 0 1000 1000 = 0 0 22 18 moves");
  Load(mask, form.substr(4, 20));  // the frame size is the same: the macroblocks stay
  mask.SetMove(1, 2);              // counted anew
  EXPECT_EQ(TextOf(mask), "100 250 500 500 = 0 0 22 18 moves");
  EXPECT_EQ(ArchiveFormOf(mask), form.substr(4, 20));
  EXPECT_EQ(m_reports, 2);
}

}  // namespace
