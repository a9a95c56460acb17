// Encoder settings and colours.
#include <gtest/gtest.h>

#include <array>

#include "capture/encode_param.h"
#include "capture/video_color.h"
#include "platform/framework/archive.h"
#include "platform/framework/error_report.h"
#include "platform/zebdev/channels.h"
#include "tests/support/recording_fixture.h"

namespace {

// A device library of this test, in place of the virtual devices: what it was asked for.
DWORD g_device_type = 0;
int g_answer = 0;

}  // namespace

int noxdevGetDefaultColor(DWORD device_type, tag_DEVCOLOR* color, int is_ntsc) {
  g_device_type = device_type;
  *color = {is_ntsc, 0x10002, 3, -4};
  return g_answer;
}

namespace {

// Limits the settings.
std::string WrittenFormOf(CEncodeParam& param) {
  std::string form(CEncodeParam::GetSize(), '\0');
  auto* cursor = reinterpret_cast<BYTE*>(form.data());
  EXPECT_EQ(param.Write(cursor), form.size());
  EXPECT_EQ(reinterpret_cast<char*>(cursor), form.data() + form.size());
  return form;
}

TEST(EncodeParam, LimitsWhatIsSetAndComparesAllOfIt) {
  CEncodeParam param;
  const CEncodeParam fresh;
  for (void (*change)(CEncodeParam&) :
       {+[](CEncodeParam& p) { p.SetQuarity(11); }, +[](CEncodeParam& p) { p.SetMoveSen(17); },
        +[](CEncodeParam& p) { p.SetAlarmFrameNum(1000); },
        +[](CEncodeParam& p) { p.EnableAudio(-1); }}) {
    CEncodeParam changed = fresh;
    change(changed);
    EXPECT_EQ(changed == fresh, 0);
    change(param);
  }
  EXPECT_EQ(fresh.IsVideoEncode() + fresh.IsAudioEncode() + fresh.IsVideoLostCheck(), 1 + 0 + 4);
  EXPECT_EQ(WrittenFormOf(param), Hex("0a10e807"));
  EXPECT_EQ(param.GetAlarmFrameNum(), 1000U);
}

TEST(EncodeParam, MapsItsStepsToTheScalesOfTheEncoder) {
  // The first and last quality of a range; quantisers, threshold of the bit stream.
  const std::array<DWORD, 5> ranges[] = {{0, 1, 12, 12, 150},
                                         {2, 3, 10, 10, 250},
                                         {4, 6, 8, 8, 300},
                                         {7, 8, 6, 6, 450},
                                         {9, 10, 4, 6, 500}};
  CEncodeParam param;
  for (const auto& [first, last, qi, qp, threshold] : ranges) {
    for (DWORD quality = first; quality <= last; ++quality) {
      param.SetQuarity(quality);
      EXPECT_EQ((std::array{param.GetQi(), param.GetQp(), param.GetBitStreamThreshold()}),
                (std::array{qi, qp, threshold}));
      EXPECT_EQ(param.GetMotionDetectSen(), 5376 - 256 * quality);
    }
  }
  EXPECT_EQ(param.GetAlarmDetectSen(), 4096U);
}

TEST(EncodeParam, IsLimitedAfterItWasWritten) {
  CEncodeParam param;
  std::string form = Hex("1412c8fe");
  EXPECT_EQ(ReadBufferForm(param, form.substr(0, 3)), 0U);
  auto* cursor = reinterpret_cast<BYTE*>(form.data());
  EXPECT_EQ(param.Read(cursor), 4U);
  EXPECT_EQ(reinterpret_cast<char*>(cursor), form.data() + 4);
  EXPECT_EQ(WrittenFormOf(param), form);
  EXPECT_EQ(WrittenFormOf(param), Hex("0a10c8fe"));
}

std::string TextOf(const CVideoColor& color) {
  std::string text;
  for (DWORD i = 0; i < 5; ++i) {
    text += std::to_string(color.GetValue(tag_VCLR{i})) + '/' +
            std::to_string(color.GetDefault(tag_VCLR{i})) + ' ';
  }
  return text;
}

TEST(VideoColor, TakesTheDefaultsOfItsTypeAndStandardInTheDevicesOrder) {
  for (const auto& [type, bit] : {std::pair(0, 1U), {1, 2}, {0x8B, 0x800}, {12, 1}, {0xFF, 1}}) {
    EXPECT_EQ(TextOf(CVideoColor(static_cast<BYTE>(type), tag_VIDEOSTANDARD{7})),
              "0/0 2/2 -4/-4 3/3 0/0 ");
    EXPECT_EQ(g_device_type, bit) << type;
  }
  CVideoColor ntsc(11, kVideoStandardNtsc), pal(2, kVideoStandardPal);
  EXPECT_EQ(TextOf(ntsc), "1/1 2/2 -4/-4 3/3 0/0 ");
  pal.SetValue(7, tag_VCLR{1});
  ntsc = pal;  // but for the defaults
  EXPECT_EQ(TextOf(ntsc), "0/1 7/2 -4/-4 3/3 0/0 ");
  g_answer = 1;
  ntsc.GetDefaultColor();
  g_answer = 0;
  EXPECT_EQ(g_device_type, 4U);
  EXPECT_EQ(TextOf(ntsc), "0/0 7/0 -4/0 3/0 0/0 ");
  ntsc.Reset(kVideoStandardNtsc);
  EXPECT_EQ(TextOf(ntsc), "1/1 2/2 -4/-4 3/3 0/0 ");
}

TEST(VideoColor, LimitsEachComponent) {
  CVideoColor color(0, kVideoStandardPal);
  DWORD number = 0;
  for (const auto& [least, most] : {std::pair(0, 255), {0, 127}, {-128, 127}, {0, 127}, {0, 0}}) {
    const tag_VCLR component{number++};
    for (const int value : {-32768, -1, 1, 32767}) {
      color.SetValue(static_cast<std::int16_t>(value), component);
      EXPECT_EQ(color.GetValue(component), std::clamp(value, least, most)) << number;
    }
  }
}

TEST(VideoColor, HasOneFormInBytesAndArchivesAndLimitsNothingThatItReads) {
  CVideoColor color(0, kVideoStandardPal);
  const std::string form = Hex("ff7f 00ff 0080 ffff");
  EXPECT_EQ(ReadBufferForm(color, form.substr(0, 7)), 0U);
  EXPECT_EQ(TextOf(color), "0/0 2/2 -4/-4 3/3 0/0 ");
  EXPECT_EQ(ReadBufferForm(color, form), 8U);
  EXPECT_EQ(TextOf(color), "32767/0 -256/2 -32768/-4 -1/3 0/0 ");
  EXPECT_EQ(BufferFormOf(color, CVideoColor::GetSize()), form);
  CMemFile file;
  CArchive store(file, CArchive::Mode::kStore);
  CObject& object = color;
  object.Serialize(store);
  store.Close();
  EXPECT_EQ(std::string(file.GetBytes().begin(), file.GetBytes().end()), form);
  int reports = 0;
  zebx::SetErrorSink([&reports](const std::exception&) { ++reports; });
  // Bytes that are left of the archive, and what the colour is then.
  for (const auto& [bytes, text] :
       {std::pair(8U, "32767/0 -256/0 -32768/0 -1/0 0/0 "), {5U, "32767/0 -256/0 0/0 0/0 0/0 "}}) {
    g_answer = 1;
    color.Reset(kVideoStandardPal);
    g_answer = 0;
    file.SetLength(bytes);
    file.SeekToBegin();
    CArchive load(file, CArchive::Mode::kLoad);
    object.Serialize(load);
    EXPECT_EQ(TextOf(color), text);
    EXPECT_EQ(reports, bytes == 8U ? 0 : 1);
  }
  zebx::SetErrorSink({});
}

}  // namespace
