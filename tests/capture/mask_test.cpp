#include <array>
#include <memory>

#include "tests/capture/settings_fixture.h"

namespace {

constexpr tag_FRAMESIZE kPal{130};  // 352 x 288

TEST(MaskInfo, DrawnMasksBecomeThousandthsAndMacroblocksOfTheBoardsPictures) {
  const auto drawn = [](const CRect& window, const CRect& rect, DWORD frame_size, BYTE type) {
    CMaskInfo mask;
    mask.SetMaskRect({0, 0, 1, 1}, {0, 0, 1, 1}, tag_FRAMESIZE{frame_size}, 0);
    mask.SetFlag(3);
    const int is_taken = mask.SetMaskRect(window, rect, tag_FRAMESIZE{frame_size}, type);
    return (is_taken == 0 ? "refused " : "") + TextOf(mask);
  };
  constexpr CRect kWindow = {0, 0, 352, 288}, kMask = {88, 72, 352, 144};
  EXPECT_EQ(drawn(kWindow, kMask, 130, 0), "250 250 1000 500 = 5 4 22 9");
  EXPECT_EQ(drawn(kWindow, kMask, 9, 0), "250 250 1000 500 = 0 0 0 0") << "of an unknown size";
  // Some boards encode wider pictures than their frame size says.
  EXPECT_EQ(drawn(kWindow, kMask, 2, 6), "250 250 1000 500 = 5 3 22 7");
  EXPECT_EQ(drawn(kWindow, kMask, 3, 0x8A), "250 250 1000 500 = 11 3 44 7");
  EXPECT_EQ(drawn(kWindow, kMask, 3, 6), "250 250 1000 500 = 10 3 40 7");
  // Rounded toward 0, then down; turned over, outside the picture, beside a window's origin.
  EXPECT_EQ(drawn({10, 20, 310, 320}, {1, 2, -1, -2}, 130, 0), "3 6 -3 -6 = 0 0 268435 268435");
  constexpr LONG kFar = 0x7FFFFFFF;
  EXPECT_EQ(drawn({0, 0, kFar, kFar}, {0, 0, kFar, kFar / 2}, 130, 0), "0 0 1000 499 = 0 0 22 8");
  for (const auto& [window, mask] :
       {std::pair(kWindow, CRect{88, 72, 88, 144}), {{0, 5, 352, 5}, kMask}}) {
    EXPECT_EQ(drawn(window, mask, 130, 0), "refused 0 0 1000 1000 = 0 0 22 18 moves alarm");
  }
  CMaskInfo mask;
  CRect rect;
  mask.SetMaskRect({0, 0, 1000, 1000}, {-333, 250, 999, 500}, kPal, 0);
  EXPECT_EQ(mask.GetMaskRect({100, 1000, 110, 1007}, rect), 1);
  EXPECT_EQ(TextOf(rect), "97 1001 109 1003");
  mask.ClrStatus(0);  // without a version
  mask.SetMaskRect(kWindow, kMask, tag_FRAMESIZE{2}, 6);
  EXPECT_EQ(TextOf(mask), "250 250 1000 500 = 5 3 20 7");
}

TEST(MaskInfo, TakesMacroblocksThatLeaveTheLastColumnAndRowFree) {
  CMaskInfo mask;
  const auto placed = [&mask](const CRect& rect, DWORD frame_size) {
    mask = CMaskInfo();
    mask.SetStatus(0x00060000);
    if (mask.SetMBRect(&rect, tag_FRAMESIZE{frame_size}) == 0) return "refused " + TextOf(mask);
    return TextOf(mask) + (mask.IsValid() != 0 ? " valid" : "");
  };
  for (const CRect& rect : {CRect{0, 0, 22, 17}, {0, 0, 21, 18}, {5, 0, 5, 17}})
    EXPECT_EQ(placed(rect, 130), "refused 0 0 0 0 = 0 0 0 0");
  EXPECT_EQ(placed({0, 0, 21, 17}, 130), "0 0 954 944 = 0 0 21 17 valid");
  EXPECT_EQ(placed({20, 15, 21, 17}, 130), "909 833 954 944 = 20 15 21 17");
  EXPECT_EQ(placed({-1, 0, 1, 2}, 130), "12201566 0 45 111 = -1 0 1 2 valid");
  BYTE bytes[4];
  EXPECT_EQ(mask.GetMBRect(bytes), 1);
  EXPECT_EQ(std::string(bytes, bytes + 4), Hex("ff 00 01 02"));
  // Only another frame size derives the macroblocks anew.
  mask.SetFrameSize(kPal);
  EXPECT_EQ(TextOf(mask.GetMBRect()), "-1 0 1 2");
  mask.SetFrameSize(tag_FRAMESIZE{131});
  EXPECT_EQ(TextOf(mask.GetMBRect()), "268433 0 1 1");
}

TEST(MaskInfo, AlarmsOnEveryReportThatCompletesTheCount) {
  CMaskInfo mask;
  std::string seen;
  constexpr int kMoved[] = {1, 1, 1, 1, 1, 0, 1, 1, 7, 1, 1};
  constexpr DWORD kCounts[] = {3, 3, 3, 3, 3, 3, 3, 3, 2, 0, 0xFFFFFFFF};
  for (std::size_t i = 0; i < std::size(kMoved); ++i) {
    mask.SetMove(kMoved[i], kCounts[i]);
    seen += std::to_string(mask.IsMove() + mask.IsAlarm()) + ' ';
  }
  EXPECT_EQ(seen, "1 1 3 1 1 0 1 1 3 3 1 ");
  mask.SetFlag(0xFE);  // adds alarm, keeps motion
  EXPECT_EQ(FormOf(mask).substr(16, 4), Hex("03000010"));
  mask.ClrStatus(1);  // keeps that bit
  EXPECT_EQ(FormOf(mask).substr(16, 4), Hex("01000000"));
}

class MaskList : public testing::Test {
 protected:
  MaskList() {
    m_list.AddTail(nullptr);
    m_list.AddMaskInfo(NewMask(100));
    m_list.AddMaskInfo(NewMask(-2));
    static_cast<CMaskInfo*>(m_list.GetTail())->SetFlag(3);
  }

  CMaskList m_list;
  Reports m_reports;
};

TEST_F(MaskList, OwnsMasksThatDifferAndLeavesEqualOnesToTheCaller) {
  const std::unique_ptr<CMaskInfo> equal(NewMask(100)), other(NewMask(1));
  EXPECT_EQ(m_list.AddMaskInfo(equal.get()) + 2 * m_list.AddMaskInfo(nullptr), 1);
  EXPECT_EQ(m_list.IsMaskInfo(other.get()) + m_list.IsMaskInfo(nullptr), 0);
  CMaskList copy;
  copy.AddMaskInfo(NewMask(7));
  EXPECT_EQ(copy = m_list, 1);
  EXPECT_EQ(TextOf(static_cast<CMaskInfo&>(*copy.GetHead())), "100 250 500 500 = 2 4 11 9");
  EXPECT_EQ(copy.IsAlarm(), 0);
  const CMaskList& itself = m_list;
  EXPECT_EQ(m_list = itself, 1);
  EXPECT_EQ(LeftsOf(m_list), "- 100 -2 ");
  EXPECT_EQ(m_list.IsAlarm(), 1);
}

TEST_F(MaskList, HasAByteFormWithEveryBitOfItsMasksAndReadsAllOrNothing) {
  const std::string form =
      Hex("02000000 64000000 fa000000 f4010000 f4010000 00000310 82000000"
          "         feffffff fa000000 f4010000 f4010000 03000310 82000000");
  CMaskList read;
  ExpectBufferForm(m_list, read, form);
  EXPECT_EQ(ReadBufferForm(read, Little(0x0AAAAAAB) + form),
            0U);  // times 24 it is 8 more than 2^32
  EXPECT_TRUE(read.IsEmpty());
}

TEST_F(MaskList, HasAnArchiveFormWithoutMotionThatKeepsWhatItLoadedWhole) {
  const std::string form =
      Hex("02000000 64000310 fa000000 f4010000 f4010000 82000000"
          "         feff0310 fa000000 f4010000 f4010000 82000000");
  EXPECT_EQ(ArchiveFormOf(m_list), form);
  for (std::size_t size = 0; size <= form.size(); ++size) {
    m_reports.m_count = 0;
    LoadArchive(m_list, form.substr(0, size));
    // Of a side below 0 only the low 16 bits come back.
    EXPECT_EQ(LeftsOf(m_list), size < 24 ? "" : size < 44 ? "100 " : "100 65534 ") << size;
    EXPECT_EQ(m_reports.m_count, size < 44 ? 1 : 0) << size;
  }
  CMaskInfo mask;
  mask.SetMaskRect({0, 0, 2, 2}, {0, 0, 2, 2}, kPal, 0xFF);
  mask.SetMove(1, 2);
  LoadArchive(mask, form.substr(4, 19));
  EXPECT_EQ(TextOf(mask), "0 0 1000 1000 = 0 0 22 18 moves");
  LoadArchive(mask, form.substr(4, 20));  // the frame size is the same: the macroblocks stay
  mask.SetMove(1, 2);                     // counted anew
  EXPECT_EQ(TextOf(mask), "100 250 500 500 = 0 0 22 18 moves");
  EXPECT_EQ(ArchiveFormOf(mask), form.substr(4, 20));
  EXPECT_EQ(m_reports.m_count, 1);
}

}  // namespace
