// Encoder settings and colours.
#include "capture/encode_param.h"
#include "capture/video_color.h"
#include "platform/zebdev/channels.h"
#include "tests/capture/settings_fixture.h"

static int g_answer = 0;

// In place of the virtual devices'. The first component tells what was asked for.
int noxdevGetDefaultColor(DWORD device_type, tag_DEVCOLOR* color, int is_ntsc) {
  *color = {static_cast<LONG>(is_ntsc != 0 ? -device_type : device_type), 0x10002, -3, -4};
  return g_answer;
}

namespace {

TEST(EncodeParam, IsLimitedWhenItIsSetAndOnceItWasWritten) {
  CEncodeParam param, fresh;
  EXPECT_EQ(FormOf(fresh), Hex("05080305"));
  param.SetQuarity(11);
  param.SetMoveSen(17);
  param.SetAlarmFrameNum(1000);
  param.EnableAudio(-1);
  EXPECT_EQ(param == fresh, 0);
  EXPECT_EQ(param.IsVideoEncode() + param.IsAudioEncode() + param.IsVideoLostCheck(), 1 + 1 + 4);
  ExpectBufferForm(param, fresh, Hex("0a10e807"));
  ReadBufferForm(param, Hex("1412c8fe"));
  EXPECT_EQ(FormOf(param), Hex("1412c8fe"));
  EXPECT_EQ(FormOf(param), Hex("0a10c8fe"));
  EXPECT_EQ(param.GetQi() * 10000 + param.GetQp() * 1000 + param.GetBitStreamThreshold(), 46500U);
  EXPECT_EQ(param.GetMotionDetectSen() * 10000 + param.GetAlarmDetectSen(), 28162048U);
}

// Each component's value and default.
std::string TextOf(const CVideoColor& color) {
  std::string text;
  for (DWORD i = 0; i < 5; ++i) {
    text += std::to_string(color.GetValue(tag_VCLR{i})) + '/' +
            std::to_string(color.GetDefault(tag_VCLR{i})) + ' ';
  }
  return text;
}

TEST(VideoColor, TakesTheDefaultsOfItsTypeAndStandardInTheDevicesOrder) {
  for (const auto& [type, bit] :
       {std::pair<int, std::string>(0, "1"), {1, "2"}, {0x8B, "2048"}, {12, "1"}, {0xFF, "1"}}) {
    const CVideoColor color(static_cast<BYTE>(type), tag_VIDEOSTANDARD{7});
    EXPECT_EQ(TextOf(color), bit + '/' + bit + " 2/2 -4/-4 -3/-3 0/0 ");
  }
  CVideoColor ntsc(11, kVideoStandardNtsc), pal(2, kVideoStandardPal);
  pal.SetValue(7, tag_VCLR{1});
  ntsc = pal;  // but for the defaults
  EXPECT_EQ(TextOf(ntsc), "4/-2048 7/2 -4/-4 -3/-3 0/0 ");
  ntsc.GetDefaultColor();
  EXPECT_EQ(TextOf(ntsc), "4/4 7/2 -4/-4 -3/-3 0/0 ");
  g_answer = 1;
  ntsc.GetDefaultColor();
  g_answer = 0;
  EXPECT_EQ(TextOf(ntsc), "4/0 7/0 -4/0 -3/0 0/0 ");
  ntsc.Reset(kVideoStandardNtsc);
  EXPECT_EQ(TextOf(ntsc), "-4/-4 2/2 -4/-4 -3/-3 0/0 ");
}

TEST(VideoColor, HasOneFormInBytesAndArchivesAndLimitsNothingThatItReads) {
  const Reports reports;
  CVideoColor color(0, kVideoStandardPal), read(0, kVideoStandardPal);
  const std::string form = Hex("ff7f 00ff 0080 ffff");
  ReadBufferForm(color, form);
  EXPECT_EQ(TextOf(color), "32767/1 -256/2 -32768/-4 -1/-3 0/0 ");
  ExpectBufferForm(color, read, form);
  EXPECT_EQ(ArchiveFormOf(color), form);
  for (DWORD i = 0; i < 4; ++i) read.SetValue(color.GetValue(tag_VCLR{i}), tag_VCLR{i});
  EXPECT_EQ(TextOf(read), "255/1 0/2 -128/-4 0/-3 0/0 ") << "limited";
  EXPECT_EQ(reports.m_count, 0);
  color.Reset(kVideoStandardPal);
  LoadArchive(color, form.substr(0, 5));  // the values before the end
  EXPECT_EQ(TextOf(color), "32767/1 -256/2 -4/-4 -3/-3 0/0 ");
  EXPECT_EQ(reports.m_count, 1);
}

}  // namespace
