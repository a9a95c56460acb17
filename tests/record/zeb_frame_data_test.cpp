#include "record/zeb_frame_data.h"

#include <gtest/gtest.h>

#include "tests/support/recording_fixture.h"

namespace {

std::string BufferForm(const CZebFrameData& frame) {
  return BufferFormOf(frame, frame.GetSize());
}

struct Form {
  const char* m_name;
  std::string m_speech;
  std::string m_file_form;
  std::string m_buffer_form;
};

const Form kForms[] = {
    {"silent", "", Hex("0100 2200 04030201 03000000 414243"),
     Hex("0100 2200 04030201 03000000 414243 07 302e303066 2f73 08 302e30304b422f73")},
    {"voiced", "xy", Hex("0100 2280 04030201 03000000 02000000 414243 7879"),
     Hex("0100 2280 04030201 03000000 414243 02000000 7879 07 302e3030662f73 08 302e30304b422f73")},
};

TEST(ZebFrameData, FormsAreByteForByteAndComeBack) {
  for (const Form& form : kForms) {
    SCOPED_TRACE(form.m_name);
    CZebFrameData frame(4, 4, 16);
    FillFrame(frame, 1, 0x01020304, "ABC", form.m_speech);
    frame.SetVideoAlarm(1);
    frame.SetEncoderType(2);
    CMemFile file;
    EXPECT_EQ(frame.Write(&file), form.m_file_form.size());
    EXPECT_EQ(BytesOf(file), form.m_file_form);
    EXPECT_EQ(BufferForm(frame), form.m_buffer_form);

    file.SeekToBegin();
    CZebFrameData from_file(4, 4, 16);
    EXPECT_EQ(from_file.Read(&file), 1);
    EXPECT_EQ(file.GetPosition(), form.m_file_form.size());
    EXPECT_EQ(BufferForm(from_file), form.m_buffer_form);
    CZebFrameData from_buffer(4, 4, 16);
    EXPECT_EQ(ReadBufferForm(from_buffer, form.m_buffer_form), form.m_buffer_form.size());
    EXPECT_EQ(BufferForm(from_buffer), form.m_buffer_form);
  }
}

TEST(ZebFrameData, FormsCutAnywhereAreRefused) {
  for (const Form& form : kForms) {
    for (std::size_t size = 0; size < form.m_buffer_form.size(); ++size) {
      SCOPED_TRACE(std::string(form.m_name) + " cut to " + std::to_string(size));
      CZebFrameData frame(4, 4, 16);
      FillFrame(frame, 7, 7, "old");
      const std::string before = BufferForm(frame);
      EXPECT_EQ(ReadBufferForm(frame, form.m_buffer_form.substr(0, size)), 0U);
      EXPECT_EQ(BufferForm(frame), before);
      if (size >= form.m_file_form.size()) continue;
      CMemFile file;
      Put(file, form.m_file_form.substr(0, size));
      file.SeekToBegin();
      EXPECT_EQ(frame.Read(&file), 0);
      EXPECT_EQ(frame.GetVideoLength() + frame.GetSpeechLength(), 0U);
    }
  }
}

TEST(ZebFrameData, FramesBeyondTheBuffersAreRefusedAndSteppedOver) {
  CZebFrameData big(8, 8, 64);
  CMemFile file;
  FillFrame(big, 0, 1, std::string(33, 'v'));  // the record below holds 32
  big.Write(&file);
  const std::string big_video = BufferForm(big);
  FillFrame(big, 0, 2, "v", std::string(17, 's'));  // ... and 16 of speech
  big.Write(&file);
  const std::string big_speech = BufferForm(big);
  FillFrame(big, 0, 3, "fits");
  big.Write(&file);

  file.SeekToBegin();
  CZebFrameData frame(4, 4, 16);
  EXPECT_EQ(frame.Read(&file), 0);
  EXPECT_EQ(frame.GetVideoLength(), 0U);
  EXPECT_EQ(frame.Read(&file), 0);
  EXPECT_EQ(frame.GetSpeechLength(), 0U);
  EXPECT_EQ(frame.Read(&file), 1);
  EXPECT_EQ(VideoOf(frame), "fits");
  EXPECT_EQ(ReadBufferForm(frame, big_video), 0U);
  EXPECT_EQ(ReadBufferForm(frame, big_speech), 0U);
  EXPECT_EQ(VideoOf(frame), "fits");
}

TEST(ZebFrameData, TextsAreCutAt255AndEmptyOnesKeepTheOld) {
  const std::string fixed = Hex("0000 0000 00000000 00000000");
  CZebFrameData frame;
  EXPECT_EQ(ReadBufferForm(frame, fixed + '\xff' + std::string(255, 'r') + '\0'), 269U);
  EXPECT_EQ(frame.GetFrameRate(), std::string(255, 'r'));
  EXPECT_EQ(frame.GetCodeRate(), "0.00KB/s");
  EXPECT_EQ(frame.GetSize(), 12U + 2U + 255U + 8U);
  EXPECT_EQ(BufferForm(frame).size(), frame.GetSize());
}

TEST(ZebFrameData, MissingBuffersFailBehindWhatStandsBeforeThem) {
  CZebFrameData source;
  FillFrame(source, 0, 5, "vid", "sp");
  struct {
    CZebFrameData m_frame;
    std::size_t m_bytes_written;
  } cases[] = {{CZebFrameData(0, 0, 16), 16}, {CZebFrameData(4, 4, 0), 19}};
  for (auto& [frame, bytes_written] : cases) {
    EXPECT_EQ(frame = source, 1);
    EXPECT_EQ(frame.GetVideoLength(), 3U);
    CMemFile file;
    EXPECT_EQ(frame.Write(&file), 0U);
    EXPECT_EQ(file.GetLength(), bytes_written);
  }
  EXPECT_EQ(source.Write(static_cast<CFile*>(nullptr)), 0U);
  EXPECT_EQ(source.Read(static_cast<CFile*>(nullptr)), 0);
}

TEST(ZebFrameData, AssignmentNeverPromisesMoreThanTheBuffersHold) {
  CZebFrameData big(16, 16, 64);
  FillFrame(big, 0, 1, std::string(300, 'v'), std::string(40, 's'));
  CZebFrameData small(4, 4, 16);
  FillFrame(small, 1, 2, "old");
  EXPECT_EQ(small = big, 0);
  EXPECT_EQ(VideoOf(small), "old");

  CZebFrameData empty(0, 0, 0);  // keeps lengths without bytes, and passes them on
  EXPECT_EQ(empty = big, 1);
  EXPECT_EQ(small = empty, 1);
  EXPECT_LE(small.GetVideoLength(), 32U);
  EXPECT_LE(small.GetSpeechLength(), 16U);
  BufferForm(small);
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
  EXPECT_EQ(frame.GetEncoderType(), 3);
  EXPECT_EQ(frame.IsRT(), 0x4000);
  frame.SetVoice(0);
  frame.SetRT(0);
  EXPECT_EQ(frame.GetFlag(), 0x2035);
}

struct Rates {
  int m_frames;  // in all, the last one after `elapsed_ms`
  DWORD m_elapsed_ms;
  WORD m_last_type, m_flags;
  const char *m_frame_rate, *m_code_rate;
};

TEST(ZebFrameData, RateTextsFollowThePeriod) {
  const Rates cases[] = {
      {26, 1000, 0, 0, "26f/s", "0.10KB/s"},      {31, 1000, 0, 0, "30f/s", "0.10KB/s"},
      {11, 10, 1, 0, "30f/s", "0.00KB/s"},      // no I-frame: no new code rate
      {10, 1000, 0, 0, "0.00f/s", "0.10KB/s"},  // too few frames for a frame rate
      {12, 1201, 0, 0, "10f/s", "0.8KB/s"},     // a started frame counts, no zero padding
      {20, 0, 0, 0, "0.00f/s", "0.00KB/s"},     // no time has passed
      {26, 1000, 0, 0x8000, "26f/s", "0.20KB/s"}, {26, 1000, 0, 0x0001, "26f/s", "0.0KB/s"},
  };
  for (const Rates& rates : cases) {
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
    const bool new_period = rates.m_last_type == 0 && rates.m_elapsed_ms != 0;
    EXPECT_EQ(frame.GetFrameIndex(), new_period ? 0 : rates.m_frames);
  }
}

}  // namespace
