#include "record/zeb_file_info.h"

#include <gtest/gtest.h>

#include <array>
#include <tuple>

#include "tests/support/expect_forms.h"

namespace {

const std::string kFileForm = Hex(
    "5842455a 00000000 3e000000 03000000 00000000 02 01 02 00 00ca9a3b 3cca9a3b 78563412 10000000"
    "03000000 63616d 03000000 627264 04000000 686f7374");
const std::string kBufferForm =
    Hex("02 01 40010000 f0000000 00ca9a3b 3cca9a3b 39300000 03000000 63616d 03000000 627264"
        "02000000 6670 04000000 686f7374 10000000");

CZebFileInfo GoldenInfo() {
  CZebFileInfo info = MakeInfo("fp");
  info.SetRemote(5);
  info.SetClip(1);
  info.SetBeginTime(CTime(1000000000));
  info.SetGmt(16);
  info.SetEndTime(CTime(1000000060));
  info.SetBeginTimeStamp(0x12345678);
  info.SetLength(12345);
  return info;
}

std::string BufferForm(const CZebFileInfo& info) {
  return BufferFormOf(info, info.GetSizeForWrite());
}

TEST(ZebFileInfo, FormsAreByteForByteAndComeBackUnlessTheyAreCut) {
  CZebFileInfo info = GoldenInfo();
  CZebFileInfo read = MakeInfo("read");
  ExpectForms(info, read, kFileForm, kBufferForm, static_cast<DWORD>(kFileForm.size()));
}

TEST(ZebFileInfo, AFreshHeaderIs52BytesAndEmptyTextsEmptyTheRecord) {
  CZebFileInfo fresh;
  EXPECT_EQ(FileFormOf(fresh),
            Hex("5842455a 00000000 34000000 00000000 00000000 9f000000") + std::string(28, '\0'));
  CZebFileInfo info = GoldenInfo();
  EXPECT_EQ(ReadBufferForm(info, std::string(42, '\0')), 42U);
  EXPECT_EQ(BufferForm(info), std::string(42, '\0'));
}

TEST(ZebFileInfo, TextsAreCutAt500AndLongerOnesAreNoHeader) {
  CZebFileInfo info;
  info.SetCameraName(std::string(600, 'c'));
  std::string form = FileFormOf(info);
  EXPECT_EQ(form.substr(40, 8), Little(500) + "cccc");
  CZebFileInfo read;
  EXPECT_EQ(ReadFileForm(read, form), 552U);
  EXPECT_EQ(read.GetCameraName(), std::string(500, 'c'));
  form.replace(40, 4, Little(501) + "c");
  EXPECT_EQ(ReadFileForm(read, form), 0U);
  EXPECT_EQ(ReadFileForm(read, "x" + kFileForm.substr(1)), 0U);
}

TEST(ZebFileInfo, GmtIsTheHourDifferenceOfTheMoment) {
  const std::tuple<const char*, DWORD, int> cases[] = {
      {"CST-8", 1000000000, 16},
      {"IST-5:30", 1000000000, 18},               // only the hours are looked at: 01 - 07
      {"EST5EDT,M3.2.0,M11.1.0", 1000000000, 4},  // summer
      {"EST5EDT,M3.2.0,M11.1.0", 1010000000, 5},
  };
  for (const auto& [zone, moment, gmt] : cases) {
    const ScopedTimeZone scoped(zone);
    CZebFileInfo info;
    info.SetBeginTime(CTime(moment));
    EXPECT_EQ(info.GetGmt(), gmt) << zone;
  }
}

TEST(ZebFileInfo, TimeOfAStampTruncatesAndSurvivesOneWrap) {
  CZebFileInfo info;
  info.SetBeginTime(CTime(1000));
  info.SetBeginTimeStamp(0xFFFFFF00);
  EXPECT_EQ(info.GetTime(0xFFFFFF00U + 1999).GetTime(), 1001U);
  EXPECT_EQ(info.GetTime(0xFFFFFEFF).GetTime(), 1000U + 4294967U);
}

TEST(ZebFileInfo, RT8PortRecordingsHaveSizesOfTheirOwn) {
  const std::array<DWORD, 3> cases[] = {
      {3, 640, 480}, {7, 704, 480}, {131, 704, 576}, {135, 704, 576}, {2, 9, 9}};
  for (const auto& [frame_size, width, height] : cases) {
    std::string form = kFileForm;
    form[12] = 4;
    form[22] = static_cast<char>(frame_size);
    CZebFileInfo info;
    info.SetWidth(9);
    info.SetHeight(9);
    EXPECT_NE(ReadFileForm(info, form), 0U);
    EXPECT_EQ(std::pair(info.GetWidth(), info.GetHeight()), std::pair(width, height));
  }
}

}  // namespace
