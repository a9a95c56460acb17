// From a recording back to pictures: which frames, from where, and what becomes of frames that
// cannot be decoded.
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
    double error = 0;
    for (std::size_t at = 0; at < kWidth * kHeight; ++at) {
      error += std::pow(static_cast<BYTE>(wanted[at]) - static_cast<BYTE>(got[at]), 2);
    }
    EXPECT_LT(std::sqrt(error / (kWidth * kHeight)), 8) << i;
  }
  const std::pair<const char*, std::size_t> cases[] = {
      {"0:1", 1}, {"0:17", 17}, {"1", 18}, {"1:5", 23}};
  for (const auto& [from, first] : cases) {
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

}  // namespace
