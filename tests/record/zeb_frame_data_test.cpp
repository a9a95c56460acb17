#include "record/zeb_frame_data.h"

#include <gtest/gtest.h>

#include <array>
#include <tuple>

#include "tests/support/counted_memory.h"
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
  // The record below holds 32 bytes of video and 16 of speech.
  const std::array<std::string, 2> frames[] = {
      {std::string(33, 'v'), ""}, {"v", std::string(17, 's')}, {"fits", ""}};
  CZebFrameData big(8, 8, 64), frame(4, 4, 16);
  CMemFile file;
  for (const auto& [video, speech] : frames) {
    FillFrame(big, 0, 1, video, speech);
    big.Write(&file);
  }
  file.SeekToBegin();
  for (const auto& [video, speech] : frames) {
    const bool fits = video == "fits";
    FillFrame(frame, 0, 1, "old", "old");
    EXPECT_EQ(frame.Read(&file), fits ? 1 : 0);
    EXPECT_EQ(VideoOf(frame), fits ? video : "");
    EXPECT_EQ(frame.GetSpeechLength(), 0U);
    FillFrame(big, 0, 1, video, speech);
    EXPECT_EQ(ReadBufferForm(frame, BufferForm(big)) != 0, fits);
  }
  file.SetLength(20);  // a length that leads out of the file is not followed
  file.SeekToBegin();
  EXPECT_EQ(frame.Read(&file), 0);
  EXPECT_EQ(file.GetPosition(), 12U);
}

TEST(ZebFrameData, TextsAreCutAt255AndEmptyOnesKeepTheOld) {
  const std::string fixed = Hex("0000 0000 00000000 00000000");
  CZebFrameData frame;
  EXPECT_EQ(ReadBufferForm(frame, fixed + '\xff' + std::string(255, 'r') + '\0'), 269U);
  EXPECT_EQ(frame.GetFrameRate(), std::string(255, 'r'));
  std::array<BYTE, 300> form;
  BYTE* cursor = form.data();
  counted_memory::calls_left = 0;  // writing needs none
  const DWORD bytes = frame.Write(cursor);
  counted_memory::calls_left = -1;
  EXPECT_EQ(bytes, 12U + 2U + 255U + 8U);
}

TEST(ZebFrameData, LengthsWithoutTheirBytesFailBehindWhatStandsBeforeThem) {
  CZebFrameData source, empty(0, 0, 0), no_video(0, 0, 16), no_speech(4, 4, 0), shrunk;
  FillFrame(source, 0, 5, "vid", "sp");
  EXPECT_EQ(empty = source, 1);
  EXPECT_EQ(no_video = empty, 1);  // passes the lengths on
  EXPECT_EQ(FileFormOf(no_video).size(), 16U);
  FillFrame(no_speech, 0, 5, "vid");
  no_speech.SetVoice(1);
  no_speech.SetSpeechDataLen(2);
  EXPECT_EQ(FileFormOf(no_speech).size(), 19U);
  shrunk = source;
  shrunk.CreateBuffer(2, 2);
  EXPECT_EQ(shrunk.GetVideoLength() + shrunk.GetSpeechLength(), 5U);
  for (const CZebFrameData* frame : {&empty, &no_video, &no_speech, &shrunk}) {
    CMemFile file;
    EXPECT_EQ(frame->Write(&file), 0U);
    EXPECT_EQ(BufferForm(*frame), "");
    EXPECT_EQ(source = *frame, 1);  // reads nothing behind a buffer
  }
  FillFrame(source, 0, 1, "vid");
  EXPECT_EQ(shrunk = source, 0);  // does not fit
  EXPECT_EQ(shrunk.GetTimeStamp(), 5U);
}

TEST(ZebFrameData, FlagsAnswerTheirBits) {
  CZebFrameData frame;
  frame.SetVideoLost(7);
  frame.SetIOAlarm(1);
  frame.SetAlarm();
  frame.SetRT(1);
  frame.SetEncoderType(0x11);
  frame.SetEncoderType(2);  // adds to the bits that are there
  BYTE speech[] = {1, 2, 3};
  EXPECT_EQ(frame.SetSpeechData(speech, 2), 0);  // not without the flag
  frame.SetAudio(1);
  EXPECT_EQ(frame.SetSpeechData(speech, 3), 1);
  EXPECT_EQ(frame.GetFlag(), 0xE035);
  frame.SetVoice(0);
  EXPECT_EQ(frame.GetFlag(), 0x6035);
}

TEST(ZebFrameData, RateTextsFollowThePeriod) {
  // The frames in all, the last one after so many milliseconds; its type and flags.
  const std::tuple<int, DWORD, WORD, WORD, const char*> cases[] = {
      {26, 1000, 0, 0, "26f/s 0.10KB/s"},  {31, 1000, 0, 0x8000, "30f/s 0.20KB/s"},
      {11, 10, 1, 0, "30f/s 0.00KB/s"},     // no I-frame: no new code rate
      {10, 1000, 0, 1, "0.00f/s 0.0KB/s"},  // too few frames for a frame rate, and no video
      {12, 1201, 0, 0, "10f/s 0.8KB/s"},    // a started frame counts, no zero padding
      {20, 0, 0, 0, "0.00f/s 0.00KB/s"},    // no time has passed
  };
  for (const auto& [frames, elapsed_ms, last_type, flags, rates] : cases) {
    CZebFrameData frame;
    frame.SetTimeStamp(0xFFFFFF00);  // the stamps wrap within the period
    frame.ResetCodeStatus();
    frame.SetFlag(flags);
    frame.SetVideoLength(100);
    frame.SetFrameType(1);
    for (int i = 1; i < frames; ++i) frame.CalcuCodeStatus();
    frame.SetFrameType(last_type);
    frame.SetTimeStamp(0xFFFFFF00 + elapsed_ms);
    frame.CalcuCodeStatus();
    EXPECT_EQ(frame.GetFrameRate() + " " + frame.GetCodeRate(), rates);
  }
}

}  // namespace
