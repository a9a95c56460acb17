// What the tool tells of damaged recordings and of what recovery made of them.
#include <gtest/gtest.h>

#include "tests/support/test_drive.h"
#include "tests/tools/tool_fixture.h"
#include "tools/zebtool/disks/store_repair.h"

namespace {

class BrokenRecording : public testing::Test {
 protected:
  MemoryFileSystem m_disk;
  const std::vector<TestFrame> m_frames = MakeFrames(44);  // blocks of 18, 20 and 6
  const std::string m_whole = MakeRecording(m_frames);
  const std::vector<std::size_t> m_ends = FrameEnds(m_whole, m_frames);
};

TEST_F(BrokenRecording, VerifyAndInfoSayWhatIsWrongAndWhere) {
  struct {
    std::string bytes;
    const char* line;
    const char* json;
  } const cases[] = {
      {m_whole, "r: whole, 44 frames in 3 blocks", R"("state": "whole")"},
      {"x" + m_whole.substr(1), "damage at 0 (0x0): the file does not begin with XBEZ", "no-magic"},
      {m_whole.substr(0, 700), "are no whole frame\n  'zebtool salvage'", R"("what": "cut-block")"},
      {MakeRecording(m_frames, false), "it holds 6 whole frames", R"("state": "unfinished")"},
      {std::string(m_whole).replace(m_ends[2] + 7, 1, "\xFF"), " ms before the frame ahead of it",
       R"("what": "stamp-goes-back")"},
  };
  for (const auto& one : cases) {
    m_disk.Put("r", one.bytes);
    const int status = one.bytes == m_whole ? 0 : 1;
    const ToolRun verified = RunTool({"verify", "r"});
    EXPECT_EQ(verified.status, status);
    EXPECT_TRUE(Contains(verified.out, one.line)) << verified.out;
    EXPECT_TRUE(Contains(RunTool({"verify", "r", "--json"}).out, one.json));
    EXPECT_EQ(RunTool({"info", "r", "--blocks", "--frames"}).status, status);
    EXPECT_TRUE(Contains(RunTool({"info", "r", "--json"}).out, one.json));
    const ToolRun exported = RunTool({"export", "r", "-", "--frames", "2"});
    EXPECT_EQ(exported.status, 1);  // the bytes are no video
    EXPECT_FALSE(exported.err.empty());
  }
}

TEST_F(BrokenRecording, SalvageTellsWhatItSavedLostAndRestored) {
  std::string broken = m_whole;
  broken.replace(0, 4, "gone").replace(m_ends[4], 12, 12, 'x');
  broken[m_ends[20] + 7] = '\x40';
  m_disk.Put("r", broken);
  const ToolRun told = RunTool({"salvage", "r", "saved"});
  EXPECT_EQ(told.status, 0) << told.err;
  for (const std::string& line :
       {std::string("saved: 43 frames in 3 blocks"),
        std::string("header     the header is damaged"),
        "lost       19 bytes at " + std::to_string(m_ends[4]),
        "restored   the time stamp of the frame at " + std::to_string(m_ends[20])}) {
    EXPECT_TRUE(Contains(told.out, line)) << told.out;
  }
  const ToolRun refused = RunTool({"salvage", "r", "saved", "--json"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_TRUE(Contains(refused.err, "--force")) << refused.err;
  const ToolRun json = RunTool({"salvage", "r", "saved", "--json", "--force"});
  EXPECT_EQ(JsonNumber(json.out, "saved_frames"), 43);
  EXPECT_EQ(JsonNumber(json.out, "restored_frames"), 1);
  EXPECT_EQ(JsonNumber(json.out, "hole_bytes"), 19);

  m_disk.Put("r", "no recording");
  EXPECT_EQ(RunTool({"salvage", "r", "other"}).status, 1);
  EXPECT_FALSE(m_disk.Has("other"));
  EXPECT_EQ(RunTool({"salvage", "r", "r", "--force"}).status, 1);
}

TEST_F(BrokenRecording, StoreRepairFinishesAndNamesWhatIsLeft) {
  const TestDrive drive;
  m_disk.Put("d:\\d20240501\\a.zebz", MakeRecording(m_frames, false));
  m_disk.Put("d:\\d20240501\\b.zebz", "damaged");
  std::istringstream in;
  std::ostringstream out;
  zebtool::Console console{in, out, out};
  EXPECT_EQ(zebtool::RepairDirectories({"d:\\"}, false, console), 1);
  EXPECT_TRUE(Contains(out.str(), "1 finished, 0 whole already")) << out.str();
  EXPECT_TRUE(Contains(out.str(), "44 frames, 6 of them regained")) << out.str();
  EXPECT_EQ(zebtool::RepairDirectories({"d:\\d20240501"}, true, console), 1);
  EXPECT_EQ(JsonNumber(out.str(), "whole"), 1);
  EXPECT_EQ(JsonNumber(out.str(), "damaged"), 1);
}

}  // namespace
