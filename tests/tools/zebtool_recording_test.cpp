// What the tool tells of damaged recordings and of what salvage made of them, and which frames
// clips hold.
#include <gtest/gtest.h>

#include "tests/tools/tool_fixture.h"

namespace {

TEST(BrokenRecording, IsToldOfInTextAndInJson) {
  const auto frames = MakeFrames(44);  // blocks of 18, 20 and 6
  const std::string whole = MakeRecording(frames);
  const std::vector<std::size_t> ends = FrameEnds(whole, frames);
  std::string broken = whole;
  broken.replace(0, 4, "gone").replace(ends[4], 12, 12, 'x');
  broken[ends[20] + 7] = '\x40';
  MemoryFileSystem disk;
  disk.Put("whole", whole);
  disk.Put("open", MakeRecording(frames, false));
  disk.Put("broken", broken);
  const std::tuple<std::vector<std::string>, int, std::string> cases[] = {
      {{"verify", "whole", "--json"}, 0, R"("state": "whole")"},
      {{"verify", "open"}, 1, "it holds 6 whole frames"},
      {{"info", "open", "--json"}, 1, R"("state": "unfinished")"},
      {{"verify", "broken"}, 1, "damage at 0 (0x0): the file does not begin with XBEZ"},
      {{"verify", "broken", "--json"}, 1, R"("what": "no-magic")"},
      {{"info", "broken", "--blocks", "--frames"}, 1, ""},
      {{"salvage", "broken", "s1"}, 0, "header     the header is damaged"},
      {{"salvage", "broken", "s2"}, 0, "lost       19 bytes at " + std::to_string(ends[4])},
      {{"salvage", "broken", "s3"}, 0, "time stamp of the frame at " + std::to_string(ends[20])},
  };
  for (const auto& [arguments, status, said] : cases) {
    const ToolRun run = RunTool(arguments);
    EXPECT_EQ(run.status, status) << run.err;
    EXPECT_TRUE(Contains(run.out, said)) << run.out;
  }
  const std::string json = RunTool({"salvage", "broken", "saved", "--json"}).out;
  EXPECT_EQ(JsonNumber(json, "saved_frames"), 43);
  EXPECT_EQ(JsonNumber(json, "restored_frames"), 1);
  EXPECT_EQ(JsonNumber(json, "hole_bytes"), 19);
}

TEST(Clip, HoldsTheFramesOfATimeOrOfBlocks) {
  const CTime begin(kTestBeginSeconds);
  using Options = std::vector<std::string>;
  const std::tuple<std::string, Options, std::ptrdiff_t, std::ptrdiff_t> cases[] = {
      // From the block around the one time to the last frame not after the other.
      {"whole", {"--from", "+0", "--to", "+100"}, 0, 99},
      {"whole", {"--from", "+0.719", "--to", "+0.8"}, 0, 20},
      {"whole", {"--from", "+0.72", "--to", "+0.839"}, 18, 20},
      {"whole", {"--to", "+0"}, 0, 0},
      // A time of day means the recording's day.
      {"whole", {"--from", (begin + 1).Format("%T"), "--to", (begin + 3).Format("%F %T")}, 18, 75},
      {"whole", {"--from-block", "1", "--to-block", "2", "--to-index", "3"}, 18, 40},
      {"whole", {"--from-block", "4"}, 78, 99},
      {"in work", {"--from", "+0"}, 0, 97},  // its closed blocks
  };
  MemoryFileSystem disk;
  const auto frames = MakeFrames(100);  // 40 ms apart, in blocks of 18, 20, 20, 20, 20 and 2
  disk.Put("whole", MakeRecording(frames));
  disk.Put("in work", MakeRecording(frames, false));
  for (const auto& [source, options, first, last] : cases) {
    Options arguments = {"clip", source, "clip", "--force"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    EXPECT_EQ(RunTool(arguments).status, 0);
    EXPECT_EQ(ReadFrames("clip"), std::vector(frames.begin() + first, frames.begin() + last + 1))
        << testing::PrintToString(options);
  }
}

}  // namespace
