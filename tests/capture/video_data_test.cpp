#include "capture/video_data.h"

#include "capture/encode_param.h"
#include "tests/capture/settings_fixture.h"
#include "tests/support/counted_memory.h"
#include "tests/support/memory_file_system.h"

namespace {

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
  ExpectBufferForm(*data, *read, form);
  const std::string endless = std::string(form).replace(38, 4, Little(0xFFFFFFFF));
  EXPECT_EQ(ReadBufferForm(*read, endless), 0U);
  read->CreateBuffer(2, 2);
  std::string bytes = form;
  auto* cursor = reinterpret_cast<BYTE*>(bytes.data());
  EXPECT_EQ(read->Read(cursor), 0U) << "the video does not fit, and no masks are looked for";
}

TEST(VideoData, AssignmentTakesFrameAndYuvAndNothingElse) {
  const auto data = MakeData(1, 100), target = MakeData(2, 7);
  data->SetBlockIndex(5);
  data->SetFrameIndex(6);
  data->SetYUV(8);
  data->GetEncodeParam()->SetQuarity(1);
  EXPECT_EQ(*target = *data, 1);
  EXPECT_EQ(FormOf(*target), FormOf(*MakeData(1, 7)));
  EXPECT_EQ(target->GetBlockIndex() + target->GetFrameIndex() + target->IsYUV(), 19);
  EXPECT_EQ(*target->GetEncodeParam() == CEncodeParam(), 1);
  target->CreateBuffer(2, 2);
  data->SetYUV(0);
  EXPECT_EQ(*target = *data, 0);
  EXPECT_EQ(target->IsYUV(), 8);
}

// Refuses memory from that allocation on, once; whether the operation answered 0 or threw.
template <typename Operation>
bool FailsWithout(int allocation, const Operation& operation) {
  counted_memory::calls_left = allocation;
  bool has_failed = true;
  try {
    has_failed = operation() == 0;
  } catch (const std::bad_alloc&) {
  }
  counted_memory::calls_left = -1;
  return has_failed;
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
  const auto is_finished = [](const char* name) {
    CZebFileInfo info = MakeInfo(name);
    return CZebFile().Open(&info, kZebFileRead) == 1;
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
  const auto refused = std::make_unique<CZebFile>();  // stays the caller's
  EXPECT_TRUE(FailsWithout(0, [&] { return copy->SetFile(refused.get()); }));
  EXPECT_FALSE(is_finished("a"));
  // What is held can be finished without memory for anything new.
  EXPECT_FALSE(FailsWithout(0, [&] { return copy->SetFile(nullptr); }));
  EXPECT_TRUE(is_finished("a"));
  EXPECT_EQ(LeftsOf(*copy->GetMaskList()), "100 ");
}

TEST(VideoData, MemoryThatRunsOutIsReportedOnceAndChangesNothing) {
  Reports reports;
  const auto source = MakeData(1, 100), target = MakeData(2, 7);
  source->GetMaskList()->AddMaskInfo(NewMask(200));
  // With a text that needs memory.
  ReadBufferForm(*source, Hex("0000 0000 00000000 00000000") + '\x20' + std::string(32, 't') +
                              '\0' + FormOf(*source).substr(38));
  std::string form = FormOf(*source);
  const std::string before = FormOf(*target);
  int call = 0;
  auto* const begin = reinterpret_cast<BYTE*>(form.data());
  BYTE* cursor = begin;
  for (; FailsWithout(call, [&] { return target->Read(cursor); }); ++call) {
    EXPECT_EQ(cursor, begin);
    ASSERT_EQ(FormOf(*target), before) << call;
  }
  EXPECT_EQ(call, 5);  // two masks with their entries, one text
  EXPECT_EQ(FormOf(*target), form);
  EXPECT_EQ(reports.m_count, call);
}

}  // namespace
