// Snapshots of recordings and of face files: the right picture, upright and in its colours, with
// its trailer.
#include <gtest/gtest.h>

#include "image/image.h"
#include "tests/tools/tool_fixture.h"

using namespace zebx;

namespace {

using namespace std::string_literals;

// Grey pictures whose brightness tells their number, the upper half blue.
std::string NumberedPictures(int count, int width, int height) {
  std::string video =
      "YUV4MPEG2 W" + std::to_string(width) + " H" + std::to_string(height) + " F5:1 C420jpeg\n";
  const auto half = static_cast<std::size_t>(width * height / 8);  // of a colour plane
  for (int number = 0; number < count; ++number) {
    video += "FRAME\n" + std::string(static_cast<std::size_t>(width * height),
                                     static_cast<char>(60 + 10 * number));
    video += std::string(half, '\xB4') + std::string(half, '\x80') + std::string(2 * half, '\x80');
  }
  return video;
}

class ZebtoolSnapshot : public testing::Test {
 protected:
  ZebtoolSnapshot() {
    WriteWholeFile(m_dir.File("in.y4m"), NumberedPictures(12, 176, 144));
    const ToolRun run = RunTool({"import", m_dir.File("in.y4m"), m_recording, "--gop", "4",
                                 "--begin", "2024-05-01 08:30:00", "--camera-name", "gate",
                                 "--board-name", "b", "--host", "h"});
    EXPECT_EQ(run.status, 0) << run.err;
  }

  ToolRun Take(const std::vector<std::string>& options) {
    std::vector<std::string> arguments = {"snapshot", m_recording, m_dir.File("out")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return RunTool(arguments);
  }
  // The number of the picture that was taken; -1 for none.
  int Taken(const std::vector<std::string>& options) {
    std::filesystem::remove(m_dir.File("out.bmp"));
    const ToolRun run = Take(options);
    if (run.status != 0) return -1;
    CImage image;
    EXPECT_EQ(image.LoadImageAs(kImageBmp, m_dir.File("out.bmp")), 1);
    // The first row is the bottom one, which is grey: (luma - 16) * 255 / 219.
    const int luma = 16 + image.GetRawImage()[0] * 219 / 255;
    return (luma - 60 + 5) / 10;
  }

  TempDir m_dir;
  const std::string m_recording = m_dir.File("in.zebz");
};

TEST_F(ZebtoolSnapshot, IsThePictureOfTheFrameOrTheMoment) {
  EXPECT_EQ(Taken({}), 0);
  EXPECT_EQ(Taken({"--frame", "0:7"}), 7);
  EXPECT_EQ(Taken({"--frame", "0:12"}), -1);
  const std::pair<const char*, int> cases[] = {{"+0.999", 4},
                                               {"+1", 5},
                                               {"2024-05-01 08:30:03", 11},  // still to be seen
                                               {"08:30:04", -1},
                                               {"08:29:59", -1}};
  for (const auto& [time, number] : cases) EXPECT_EQ(Taken({"--at", time}), number) << time;
}

TEST_F(ZebtoolSnapshot, IsUprightInItsColoursWithItsTrailer) {
  ASSERT_EQ(Take({"--at", "+1.5"}).status, 0);
  CImage image;
  ASSERT_EQ(image.LoadImageAs(kImageBmp, m_dir.File("out.bmp")), 1);
  ASSERT_EQ(image.GetImageWidth() * image.GetImageHeight(), 176U * 144);
  const BYTE* bottom = image.GetRawImage();
  const BYTE* top = bottom + 143 * 176 * 3;
  EXPECT_NEAR(bottom[0], bottom[2], 6);
  EXPECT_GT(top[0], top[2] + 60);  // blue comes first
  EXPECT_EQ(image.GetCameraName() + image.GetBoardName() + image.GetHostName(), "gatebh");
  EXPECT_EQ(image.GetTimeStamp(), CTime(2024, 5, 1, 8, 30, 1).GetTime());

  auto frames = MakeFrames(1);
  frames[0].flags |= kFrameVideoLost;
  WriteWholeFile(m_recording, MakeRecording(frames));
  ExpectFailure(Take({"--force"}), "no signal");
}

class ZebtoolFace : public testing::Test {
 protected:
  TempDir m_dir;
  const std::string m_path = m_dir.File("x.face");
  const std::string m_out = m_dir.File("faces");
};

TEST_F(ZebtoolFace, ListsAndExtractsEveryFaceWithItsTime) {
  MakeFaces(m_path, 3);
  const std::string json = RunTool({"face", m_path, "list", "--json"}).out;
  EXPECT_EQ(JsonNumber(json.substr(json.find("\"index\": 2")), "time_seconds"),
            kTestBeginSeconds + 2);

  ASSERT_EQ(RunTool({"face", m_path, "extract", m_out, "--index", "1"}).status, 0);
  EXPECT_FALSE(std::filesystem::exists(m_out + "/face0000.bmp"));
  ASSERT_EQ(RunTool({"face", m_path, "extract", m_out, "--force"}).status, 0);
  CImage image;
  ASSERT_EQ(image.LoadImageAs(kImageBmp, m_out + "/face0002.bmp"), 1);
  EXPECT_EQ(image.GetRawImage()[100 * 120 * 3 - 1], 20);
  EXPECT_EQ(image.GetTimeStamp(), kTestBeginSeconds + 2);
  EXPECT_EQ(image.GetCameraName(), "gate");

  EXPECT_EQ(RunTool({"face", m_path, "extract", m_out, "--index", "3"}).status, 1);
  WriteWholeFile(m_path, "no faces in here");
  ExpectFailure(RunTool({"face", m_path, "list"}), "is no face file");
}

// Rows of a snapshot are not padded; viewers expect padding that only other widths go without.
TEST_F(ZebtoolFace, SizesThatNoViewerTakesGrow) {
  const std::string header =
      "FACE\0\0\0\0\x2A\0\0\0\3\0\0\0\2\0\0\0\0\0\1\0\0\0\0\0\0\0"s + std::string(12, '\0');
  WriteWholeFile(m_path, header + "\7\0\0\0abcdef"s);
  ASSERT_EQ(RunTool({"face", m_path, "extract", m_out}).status, 0);
  CImage image;
  ASSERT_EQ(image.LoadImageAs(kImageBmp, m_out + "/face0000.bmp"), 1);
  ASSERT_EQ(image.GetImageWidth() * image.GetImageHeight(), 4U * 4);
  const std::string pixels(image.GetRawImage(), image.GetRawImage() + 4 * 4 * 3);
  EXPECT_EQ(pixels.substr(0, 24), "aaabbbccc\0\0\0dddeeefff\0\0\0"s);
}

}  // namespace
