// What the tool makes of a recording: pictures again, also of frames that cannot be decoded; what
// it tells of damage and of what salvage made of it; clips.
#include <gtest/gtest.h>

#include "tests/tools/tool_fixture.h"

using namespace zebx;

namespace {

constexpr int kWidth = 176;
constexpr int kHeight = 144;
constexpr int kFrames = 24;
constexpr std::size_t kPictureBytes = kWidth * kHeight * 3 / 2;

class Export : public testing::Test {
 protected:
  // Groups of 2 and encoder type 2: blocks of 18 frames and 6.
  Export() {
    const ToolRun run =
        RunTool({"import", "-", m_path, "--gop", "2", "--encoder-type", "2", "--frame-size", "128"},
                MakeY4m(kWidth, kHeight, kFrames));
    EXPECT_EQ(run.status, 0) << run.err;
  }

  std::vector<std::string> Pictures(std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"export", m_path, "-"});
    m_run = RunTool(options);
    std::vector<std::string> pictures;
    for (std::size_t at = m_run.out.find('\n') + 1; at < m_run.out.size(); at += kPictureBytes) {
      EXPECT_EQ(m_run.out.substr(at, 6), "FRAME\n");
      at += 6;
      pictures.push_back(m_run.out.substr(at, kPictureBytes));
    }
    return pictures;
  }
  TempDir m_dir;
  const std::string m_path = m_dir.File("made.zebz");
  ToolRun m_run;
};

TEST_F(Export, GivesThePicturesBackFromWhereverItStarts) {
  const auto all = Pictures();
  ASSERT_EQ(m_run.status, 0) << m_run.err;
  EXPECT_TRUE(Contains(m_run.out, "YUV4MPEG2 W176 H144 F25:1 Ip A1:1 C420jpeg\n"));
  ASSERT_EQ(all.size(), kFrames + 0U);
  for (int i = 0; i < kFrames; ++i) {
    const std::string wanted = MakePicture(kWidth, kHeight, i);
    const std::string& got = all[static_cast<std::size_t>(i)];
    for (std::size_t at = 0; at < kWidth * kHeight; at += 50) {
      EXPECT_NEAR(static_cast<BYTE>(wanted[at]), static_cast<BYTE>(got[at]), 32) << i;
    }
  }
  for (const auto& [from, first] :
       {std::pair("0:1", 1U), {"0:17", 17U}, {"1", 18U}, {"1:5", 23U}}) {
    const auto some = Pictures({"--from", from, "--frames", "4"});
    ASSERT_EQ(some.size(), std::min<std::size_t>(4, kFrames - first)) << from;
    EXPECT_TRUE(std::equal(some.begin(), some.end(), all.begin() + static_cast<int>(first)))
        << from;
  }
}

TEST_F(Export, FrameWithoutAPictureRepeatsTheLastGoodOne) {
  const auto all = Pictures();
  std::string bytes = ReadWholeFile(m_path);
  const auto ends = FrameEnds(bytes, ReadFrames(m_path));
  // A camera without a signal is no failure, a frame that cannot be decoded is one.
  bytes[ends[6] + 2] |= kFrameVideoLost;
  WriteWholeFile(m_path, bytes);
  auto pictures = Pictures();
  EXPECT_EQ(m_run.status, 0) << m_run.err;
  EXPECT_TRUE(Contains(m_run.err, "1 frame without a signal")) << m_run.err;
  EXPECT_EQ(pictures[7], all[6]);
  bytes[ends[4] + 12 + 20] ^= 0x55;
  WriteWholeFile(m_path, bytes);
  pictures = Pictures();
  EXPECT_EQ(m_run.status, 1);
  EXPECT_TRUE(Contains(m_run.err, "the first one 0:5")) << m_run.err;
  ASSERT_EQ(pictures.size(), all.size());
  EXPECT_EQ(pictures[5], all[4]);
  EXPECT_EQ(pictures[6], all[6]);
}

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
      {{"salvage", "broken", "s3", "--json"}, 0, R"("saved_frames": 43)"},
      {{"salvage", "broken", "s4"}, 0, "time stamp of the frame at " + std::to_string(ends[20])},
  };
  for (const auto& [arguments, status, said] : cases) {
    const ToolRun run = RunTool(arguments);
    EXPECT_EQ(run.status, status) << run.err;
    EXPECT_TRUE(Contains(run.out, said)) << run.out;
  }
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
