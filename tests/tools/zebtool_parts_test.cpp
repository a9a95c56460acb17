// The tool's own parts: numbers and moments as text, rates, JSON.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tools/zebtool/console/json_text.h"
#include "tools/zebtool/console/text.h"
#include "tools/zebtool/media/frame_rate.h"

namespace zebtool {
namespace {

TEST(Text, MomentsAreTakenInThreeFormsAndNoOther) {
  const CTime begin(2024, 5, 1, 8, 30, 0);
  EXPECT_EQ(ParseMomentMs("2024-05-01 08:31:00", begin), 60000);
  EXPECT_EQ(ParseMomentMs("08:29:59", begin), -1000);
  EXPECT_EQ(ParseMomentMs("+1.5", begin), 1500);
  EXPECT_EQ(ParseMomentMs("+0.007", begin), 7);
  for (const char* text : {"", "+", "+1.", "+1.2345", "-1", "8:30:00", "24:00:00", "2024-05-01",
                           "2024-04-31 00:00:00", "1969-01-01 00:00:00", "+99999999999"}) {
    EXPECT_EQ(ParseMomentMs(text, begin), std::nullopt) << text;
  }
}

TEST(JsonText, TakesWhateverNamesHold) {
  EXPECT_EQ(JsonText({{"a\"\n\x7F\xC3\xBC", Json::array({"\xFF", 1})}}),
            "{\n  \"a\\\"\\n\x7F\xC3\xBC\": [\n    \"\xC3\xBF\",\n    1\n  ]\n}");
}

TEST(FrameRate, WellKnownRatesAreFoundBehindWholeMilliseconds) {
  constexpr ULONGLONG kFrames = 1000;
  for (const FrameRate& rate : {FrameRate{25, 1}, {30, 1}, {30000, 1001}, {25, 2}, {1, 1}}) {
    const FrameRate found = RateOfIntervals(rate.Begin(kFrames, 1000), kFrames);
    EXPECT_EQ(found.frames, rate.frames) << RateText(rate);
    EXPECT_EQ(found.seconds, rate.seconds) << RateText(rate);
  }
  EXPECT_NEAR(RateOfIntervals(1000 * 77, 1000).PerSecond(), 1000.0 / 77, 1e-9);
  EXPECT_EQ(RateOfIntervals(0, 0).frames, 25U);
}

TEST(FrameRate, LongRecordingsStayExact) {
  const FrameRate ntsc{30000, 1001};
  constexpr ULONGLONG kDayOfFrames = 2589409;  // 30000 / 1001 a second, rounded down
  EXPECT_EQ(ntsc.Begin(kDayOfFrames * 30000, 1000), kDayOfFrames * 1001 * 1000);
  const FrameRate finest{16777213, 16777216};
  EXPECT_EQ(finest.Begin(16777212, 8000), ULONGLONG{16777212} * 16777216 * 8000 / 16777213);
}

}  // namespace
}  // namespace zebtool
