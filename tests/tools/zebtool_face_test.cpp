// Face files by command line: the list, the pictures, and files that are damaged.
#include <gtest/gtest.h>

#include "image/image.h"
#include "record/mox_file.h"
#include "tests/tools/tool_fixture.h"

namespace {

using namespace std::string_literals;

class ZebtoolFace : public testing::Test {
 protected:
  void WriteFaces(int count) {
    CMoxFile faces;
    faces.SetCameraName("gate");
    ASSERT_EQ(faces.Open(m_path.c_str(), 1), 1);
    for (int face = 0; face < count; ++face) {
      const std::vector<BYTE> picture(100 * 120, static_cast<BYTE>(10 * face));
      faces.Write(picture.data(), kTestBeginSeconds + static_cast<DWORD>(face));
    }
    faces.Close();
  }

  TempDir m_dir;
  const std::string m_path = m_dir.File("x.face");
  const std::string m_out = m_dir.File("faces");
};

TEST_F(ZebtoolFace, ListsAndExtractsEveryFaceWithItsTime) {
  WriteFaces(3);
  const ToolRun list = RunTool({"face", m_path, "list"});
  EXPECT_TRUE(Contains(list.out, "3 faces of 100 x 120")) << list.out;
  const std::string json = RunTool({"face", m_path, "list", "--json"}).out;
  EXPECT_EQ(JsonNumber(json.substr(json.find("\"index\": 2")), "time_seconds"),
            kTestBeginSeconds + 2);

  ASSERT_EQ(RunTool({"face", m_path, "extract", m_out, "--index", "1"}).status, 0);
  EXPECT_FALSE(std::filesystem::exists(m_out + "/face0000.bmp"));
  ASSERT_EQ(RunTool({"face", m_path, "extract", m_out}).status, 0);
  CImage image;
  ASSERT_EQ(image.LoadImageAs(kImageBmp, m_out + "/face0002.bmp"), 1);
  EXPECT_EQ(image.GetRawImage()[100 * 120 * 3 - 1], 20);
  EXPECT_EQ(image.GetTimeStamp(), kTestBeginSeconds + 2);
  EXPECT_EQ(image.GetCameraName(), "gate");
}

// Rows of a snapshot are not padded; viewers expect padding that only other widths go without.
TEST_F(ZebtoolFace, SizesThatNoViewerTakesGrow) {
  const std::string header =
      "FACE\0\0\0\0\x2A\0\0\0\3\0\0\0\2\0\0\0\0\0\1\0\0\0\0\0\0\0"s + std::string(12, '\0');
  WriteWholeFile(m_path, header + "\7\0\0\0abcdef"s);
  ASSERT_EQ(RunTool({"face", m_path, "extract", m_out}).status, 0);
  CImage image;
  ASSERT_EQ(image.LoadImageAs(kImageBmp, m_out + "/face0000.bmp"), 1);
  ASSERT_EQ(image.GetImageWidth(), 4U);
  ASSERT_EQ(image.GetImageHeight(), 4U);
  const std::string pixels(image.GetRawImage(), image.GetRawImage() + 4 * 4 * 3);
  EXPECT_EQ(pixels.substr(0, 24), "aaabbbccc\0\0\0dddeeefff\0\0\0"s);
}

TEST_F(ZebtoolFace, DamageIsSaidAndEverythingElseComes) {
  WriteWholeFile(m_path, "no faces in here");
  const ToolRun run = RunTool({"face", m_path, "list"});
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(Contains(run.err, "is no face file")) << run.err;

  WriteFaces(2);
  WriteWholeFile(m_path, ReadWholeFile(m_path).substr(0, 15000));  // inside the second one
  EXPECT_TRUE(Contains(RunTool({"face", m_path, "list"}).out, "1 face of"));
  EXPECT_EQ(RunTool({"face", m_path, "extract", m_out, "--index", "1"}).status, 1);
}

}  // namespace
