#include "capture/video_data.h"

#include <gtest/gtest.h>

#include "capture/encode_param.h"
#include "platform/framework/error_report.h"
#include "tests/capture/mask_text.h"
#include "tests/support/counted_memory.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/recording_fixture.h"

namespace {

std::string FormOf(const CVideoData& data) {
  return BufferFormOf(data, data.GetSize());
}

// A frame with speech and a mask with that left side.
std::unique_ptr<CVideoData> MakeData(DWORD time_stamp, LONG left) {
  auto data = std::make_unique<CVideoData>(tag_ZEBCAMERAID{3, 4}, 4, 4);
  FillFrame(*data, 0, time_stamp, "vid", "sp");
  data->GetMaskList()->AddMaskInfo(NewMask(left));
  return data;
}

TEST(VideoData, FormIsAFrameAndItsMasksAndComesBackWholeOrNotAtAll) {
  const auto data = MakeData(1, 100), read = MakeData(2, 7);
  const std::string form =
      Hex("0000 0080 01000000 03000000 766964 02000000 7370 07 302e3030662f73 08 302e30304b422f73"
          "01000000 64000000 fa000000 f4010000 f4010000 00000310 82000000");
  EXPECT_EQ(FormOf(*data), form);
  const std::string before = FormOf(*read);
  for (std::size_t size = 0; size < form.size(); ++size) {
    ASSERT_EQ(ReadBufferForm(*read, form.substr(0, size)), 0U) << size;
    ASSERT_EQ(FormOf(*read), before) << size;
  }
  std::string endless = form;
  endless.replace(38, 4, Little(0xFFFFFFFF));
  EXPECT_EQ(ReadBufferForm(*read, endless), 0U);
  data->SetSpeechDataLen(65537);
  EXPECT_EQ(FormOf(*data), "");  // more than there is
  data->SetSpeechDataLen(2);

  std::string bytes = form + form;
  auto* cursor = reinterpret_cast<BYTE*>(bytes.data());
  CZebFrameData& record = *read;
  EXPECT_EQ(record.Read(cursor), form.size());
  EXPECT_EQ(reinterpret_cast<char*>(cursor), bytes.data() + form.size());
  EXPECT_EQ(FormOf(*read), form);
  read->CreateBuffer(2, 2);
  cursor = reinterpret_cast<BYTE*>(bytes.data());
  EXPECT_EQ(read->Read(cursor), 0U);  // neither does the video fit, nor are masks looked for
  EXPECT_EQ(reinterpret_cast<char*>(cursor), bytes.data());
}

TEST(VideoData, AssignmentTakesFrameAndYuvAndNothingElse) {
  const auto data = MakeData(1, 100), target = MakeData(2, 7);
  data->SetBlockIndex(5);
  data->SetFrameIndex(6);
  data->SetYUV(8);
  data->EnablePostProcess(0);
  data->GetEncodeParam()->SetQuarity(1);
  data->GetCameraID()->m_board = 9;
  data->SetSize(1, 1);
  EXPECT_EQ(*target = *data, 1);
  EXPECT_EQ(VideoOf(*target) + std::to_string(target->GetTimeStamp()), "vid1");
  EXPECT_EQ(target->GetBlockIndex() + target->GetFrameIndex() + target->IsYUV(), 19);
  EXPECT_EQ(LeftsOf(*target->GetMaskList()), "7 ");
  EXPECT_EQ(target->IsPostProcess(), 1);
  EXPECT_EQ(*target->GetEncodeParam() == CEncodeParam(), 1);
  EXPECT_EQ(target->GetCameraID()->m_board, 3);
  target->CreateBuffer(2, 2);
  data->SetYUV(0);
  EXPECT_EQ(*target = *data, 0);
  EXPECT_EQ(target->IsYUV(), 8);
}

TEST(VideoData, CopiesShareWhatTheyHoldAndTheLastOneFinishesTheFile) {
  MemoryFileSystem disk;
  const auto open = [](const char* name) {
    CZebFileInfo info = MakeInfo(name);
    auto* file = new CZebFile;
    EXPECT_EQ(file->Open(&info, kZebFileWrite), 1);
    WriteRun(*file, {1});
    return file;
  };
  const auto is_finished = [&disk](const char* name) {
    CZebFileInfo info = MakeInfo(name);
    CZebFile file;
    return disk.Has(name) && file.Open(&info, kZebFileRead) == 1;
  };
  auto data = MakeData(1, 100);
  data->EnablePostProcess(0);
  EXPECT_EQ(data->SetFile(open("a")), 1);
  EXPECT_EQ(data->SetFile(data->GetFile()), 1);
  auto copy = std::make_unique<CVideoData>(*data);
  EXPECT_TRUE(copy->GetFile() == data->GetFile() && copy->GetMaskList() == data->GetMaskList());
  EXPECT_TRUE(copy->GetEncodeParam() == data->GetEncodeParam() &&
              copy->GetCameraID() == data->GetCameraID());
  EXPECT_EQ(copy->IsPostProcess(), 0);
  data->SetFile(open("b"));
  EXPECT_FALSE(is_finished("a"));
  data.reset();
  EXPECT_TRUE(is_finished("b"));
  EXPECT_EQ(copy->SetFile(nullptr), 1);
  EXPECT_TRUE(is_finished("a"));
  EXPECT_EQ(LeftsOf(*copy->GetMaskList()), "100 ");
}

TEST(VideoData, MemoryThatRunsOutIsReportedOnceAndChangesNothing) {
  int reports = 0;
  zebx::SetErrorSink([&reports](const std::exception&) { ++reports; });
  const auto source = MakeData(1, 100), target = MakeData(2, 7);
  source->GetMaskList()->AddMaskInfo(NewMask(200));
  ReadBufferForm(*source, Hex("0000 0000 00000000 00000000") + '\x20' + std::string(32, 't') +
                              '\0' + FormOf(*source).substr(38));
  std::string form = FormOf(*source);
  const std::string before = FormOf(*target);
  CMaskList copy;
  copy.AddMaskInfo(NewMask(7));
  const auto fails = [&reports](int calls, const auto& operation) {
    reports = 0;
    counted_memory::calls_left = calls;
    const bool has_failed = operation() == 0;
    counted_memory::calls_left = -1;
    EXPECT_EQ(reports, has_failed ? 1 : 0);
    return has_failed;
  };
  int call = 0;
  auto* cursor = reinterpret_cast<BYTE*>(form.data());
  for (; fails(call, [&] { return target->Read(cursor); }); ++call) {
    EXPECT_EQ(reinterpret_cast<char*>(cursor), form.data());
    ASSERT_EQ(FormOf(*target), before) << call;
  }
  EXPECT_EQ(call, 5);  // two masks with their entries, one text
  EXPECT_EQ(FormOf(*target), form);
  for (call = 0; fails(call, [&] { return copy = *source->GetMaskList(); }); ++call) {
    EXPECT_EQ(LeftsOf(copy), "7 ");
  }
  EXPECT_EQ(LeftsOf(copy), "100 200 ");
  const auto file = std::make_unique<CZebFile>();  // stays so when it is refused
  counted_memory::calls_left = 0;
  EXPECT_THROW(target->SetFile(file.get()), std::bad_alloc);
  counted_memory::calls_left = -1;
  zebx::SetErrorSink({});
}

}  // namespace
