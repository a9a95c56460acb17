// What a recording consists of: its header and its frames.
#include <gtest/gtest.h>

#include <array>
#include <tuple>

#include "tests/support/counted_memory.h"
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
  EXPECT_EQ(BufferFormOf(info, info.GetSizeForWrite()), std::string(42, '\0'));
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

TEST(ZebFileInfo, TimesAreLocalHoursOffAndStampsThatMayWrapOnce) {
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
  CZebFileInfo info;
  info.SetBeginTime(CTime(1000));
  info.SetBeginTimeStamp(0xFFFFFF00);
  EXPECT_EQ(info.GetTime(0xFFFFFF00U + 1999).GetTime(), 1001U);
  EXPECT_EQ(info.GetTime(0xFFFFFEFF).GetTime(), 1000U + 4294967U);
}

TEST(ZebFileInfo, RT8PortRecordingsHaveSizesOfTheirOwn) {
  for (const auto& [frame_size, width, height] :
       {std::array{3, 640, 480}, {7, 704, 480}, {131, 704, 576}, {135, 704, 576}, {2, 9, 9}}) {
    std::string form = kFileForm;
    form[12] = 4;
    form[22] = static_cast<char>(frame_size);
    CZebFileInfo info;
    info.SetWidth(9);
    info.SetHeight(9);
    EXPECT_NE(ReadFileForm(info, form), 0U);
    EXPECT_EQ(info.GetWidth() * 1000 + info.GetHeight(), width * 1000U + height);
  }
}

TEST(ZebFrameData, FormsAreByteForByteAndComeBackUnlessTheyAreCut) {
  // The speech, the form in a file and the one in a buffer.
  const std::array<std::string, 3> cases[] = {
      {"", Hex("0100 3760 04030201 03000000 414243"),
       Hex("0100 3760 04030201 03000000 414243 07 302e303066 2f73 08 302e30304b422f73")},
      {"xy", Hex("0100 37E0 04030201 03000000 02000000 414243 7879"),
       Hex("0100 37E0 04030201 03000000 414243 02000000 7879 07 302e3030662f73 08 "
           "302e30304b422f73")},
  };
  for (const auto& [speech, file_form, buffer_form] : cases) {
    CZebFrameData frame(4, 4, 16), read(4, 4, 16);
    FillFrame(frame, 1, 0x01020304, "ABC", speech);
    frame.SetVideoAlarm(1);
    frame.SetVideoLost(7);
    frame.SetIOAlarm(1);
    frame.SetAlarm();
    frame.SetRT(1);
    frame.SetEncoderType(0x11);
    frame.SetEncoderType(2);  // adds to the bits that are there
    frame.SetVoice(0);
    BYTE bytes[] = {'x', 'y'};
    EXPECT_EQ(frame.SetSpeechData(bytes, 2), 0);  // not without the flag
    frame.SetAudio(speech.empty() ? 0 : 1);
    EXPECT_EQ(frame.SetSpeechData(bytes, 2), speech.empty() ? 0 : 1);
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
    EXPECT_EQ(ReadBufferForm(frame, BufferFormOf(big, big.GetSize())) != 0, fits);
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
    EXPECT_EQ(BufferFormOf(*frame, frame->GetSize()), "");
    EXPECT_EQ(source = *frame, 1);  // reads nothing behind a buffer
  }
  FillFrame(source, 0, 1, "vid");
  EXPECT_EQ(shrunk = source, 0);  // does not fit
  EXPECT_EQ(shrunk.GetTimeStamp(), 5U);
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
