#include "record/zeb_frame_data.h"

#include <gtest/gtest.h>

#include <array>

#include "tests/support/expect_forms.h"

namespace {

std::string BufferForm(const CZebFrameData& frame) {
  return BufferFormOf(frame, frame.GetSize());
}

TEST(ZebFrameData, FormsAreByteForByteAndComeBackUnlessTheyAreCut) {
  // The speech, the form in a file and the one in a buffer.
  const std::array<std::string, 3> cases[] = {
      {"", Hex("0100 2200 04030201 03000000 414243"),
       Hex("0100 2200 04030201 03000000 414243 07 302e303066 2f73 08 302e30304b422f73")},
      {"xy", Hex("0100 2280 04030201 03000000 02000000 414243 7879"),
       Hex("0100 2280 04030201 03000000 414243 02000000 7879 07 302e3030662f73 08 "
           "302e30304b422f73")},
  };
  for (const auto& [speech, file_form, buffer_form] : cases) {
    CZebFrameData frame(4, 4, 16), read(4, 4, 16);
    FillFrame(frame, 1, 0x01020304, "ABC", speech);
    frame.SetVideoAlarm(1);
    frame.SetEncoderType(2);
    FillFrame(read, 7, 7, "old");
    ExpectForms(frame, read, file_form, buffer_form, 1);
  }
}

TEST(ZebFrameData, FramesBeyondTheBuffersAreRefusedAndSteppedOver) {
  const struct {
    std::string m_video, m_speech;
    bool m_fits;
  } cases[] = {{std::string(33, 'v'), "", false},   // the record below holds 32
               {"v", std::string(17, 's'), false},  // ... and 16 of speech
               {"fits", "", true}};
  CZebFrameData big(8, 8, 64);
  CMemFile file;
  for (const auto& [video, speech, fits] : cases) {
    FillFrame(big, 0, 1, video, speech);
    big.Write(&file);
  }
  file.SeekToBegin();
  CZebFrameData frame(4, 4, 16);
  for (const auto& [video, speech, fits] : cases) {
    FillFrame(frame, 0, 1, "old", "old");
    EXPECT_EQ(frame.Read(&file), fits ? 1 : 0);
    EXPECT_EQ(VideoOf(frame), fits ? video : "");
    EXPECT_EQ(frame.GetSpeechLength(), 0U);
    FillFrame(big, 0, 1, video, speech);
    EXPECT_EQ(ReadBufferForm(frame, BufferForm(big)) != 0, fits);
  }
  // A length that leads out of the file is not followed.
  file.SetLength(20);
  file.SeekToBegin();
  EXPECT_EQ(frame.Read(&file), 0);
  EXPECT_EQ(file.GetPosition(), 12U);
}

TEST(ZebFrameData, TextsAreCutAt255AndEmptyOnesKeepTheOld) {
  const std::string fixed = Hex("0000 0000 00000000 00000000");
  CZebFrameData frame;
  EXPECT_EQ(ReadBufferForm(frame, fixed + '\xff' + std::string(255, 'r') + '\0'), 269U);
  EXPECT_EQ(frame.GetFrameRate(), std::string(255, 'r'));
  EXPECT_EQ(BufferForm(frame).size(), 12U + 2U + 255U + 8U);
}

TEST(ZebFrameData, MissingBuffersFailBehindWhatStandsBeforeThem) {
  CZebFrameData source, no_video(0, 0, 16), no_speech(4, 4, 0);
  FillFrame(source, 0, 5, "vid", "sp");
  EXPECT_EQ(no_video = source, 1);
  EXPECT_EQ(FileFormOf(no_video).size(), 16U);
  EXPECT_EQ(no_speech = source, 1);
  EXPECT_EQ(FileFormOf(no_speech).size(), 19U);
}

TEST(ZebFrameData, AssignmentNeverPromisesMoreThanTheBuffersHold) {
  CZebFrameData big(16, 16, 64), small(4, 4, 16);
  FillFrame(small, 1, 2, "old");
  for (const bool speech_is_big : {true, false}) {
    FillFrame(big, 0, 1, std::string(speech_is_big ? 32 : 33, 'v'),
              std::string(speech_is_big ? 17 : 16, 's'));
    EXPECT_EQ(small = big, 0);
    EXPECT_EQ(VideoOf(small), "old");
  }
  CZebFrameData empty(0, 0, 0);  // keeps lengths without bytes, and passes them on
  FillFrame(big, 0, 1, std::string(33, 'v'), std::string(17, 's'));
  EXPECT_EQ(empty = big, 1);
  EXPECT_EQ(small = empty, 1);
  EXPECT_EQ(small.GetVideoLength() + small.GetSpeechLength(), 0U);
}

TEST(ZebFrameData, FlagsAnswerTheirBits) {
  CZebFrameData frame;
  frame.SetVideoLost(7);
  frame.SetIOAlarm(1);
  frame.SetAlarm();
  frame.SetRT(1);
  frame.SetAudio(1);
  frame.SetEncoderType(0x11);
  frame.SetEncoderType(2);  // adds to the bits that are there
  EXPECT_EQ(frame.GetFlag(), 0xE035);
  EXPECT_EQ(frame.IsRT(), 0x4000);
  frame.SetVoice(0);
  frame.SetRT(0);
  EXPECT_EQ(frame.GetFlag(), 0x2035);
  BYTE speech[] = {1, 2, 3};
  EXPECT_EQ(frame.SetSpeechData(speech, 2), 0);  // not without the flag
  frame.SetVoice(1);
  EXPECT_EQ(frame.SetSpeechData(speech, 3), 1);
  EXPECT_EQ(frame.GetSpeechLength(), 3U);
}

TEST(ZebFrameData, RateTextsFollowThePeriod) {
  const struct {
    int m_frames;  // in all, the last one after `m_elapsed_ms`
    DWORD m_elapsed_ms;
    WORD m_last_type, m_flags;
    const char *m_frame_rate, *m_code_rate;
  } cases[] = {
      {26, 1000, 0, 0, "26f/s", "0.10KB/s"},      {31, 1000, 0, 0, "30f/s", "0.10KB/s"},
      {11, 10, 1, 0, "30f/s", "0.00KB/s"},      // no I-frame: no new code rate
      {10, 1000, 0, 0, "0.00f/s", "0.10KB/s"},  // too few frames for a frame rate
      {12, 1201, 0, 0, "10f/s", "0.8KB/s"},     // a started frame counts, no zero padding
      {20, 0, 0, 0, "0.00f/s", "0.00KB/s"},     // no time has passed
      {26, 1000, 0, 0x8000, "26f/s", "0.20KB/s"}, {26, 1000, 0, 0x0001, "26f/s", "0.0KB/s"},
  };
  for (const auto& rates : cases) {
    SCOPED_TRACE(std::to_string(rates.m_frames) + " in " + std::to_string(rates.m_elapsed_ms));
    CZebFrameData frame;
    frame.SetTimeStamp(0xFFFFFF00);  // the stamps wrap within the period
    frame.ResetCodeStatus();
    for (int i = 1; i <= rates.m_frames; ++i) {
      const bool last = i == rates.m_frames;
      frame.SetFlag(rates.m_flags);
      frame.SetVideoLength(100);
      frame.SetFrameType(last ? rates.m_last_type : 1);
      if (last) frame.SetTimeStamp(0xFFFFFF00 + rates.m_elapsed_ms);
      frame.CalcuCodeStatus();
    }
    EXPECT_EQ(frame.GetFrameRate(), rates.m_frame_rate);
    EXPECT_EQ(frame.GetCodeRate(), rates.m_code_rate);
  }
}

}  // namespace
