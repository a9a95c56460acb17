// From a recording back to pictures and sound: which frames, from where, in step, and what becomes
// of frames that cannot be decoded.
#include <gtest/gtest.h>

#include "tests/tools/test_media.h"
#include "tests/tools/test_recording.h"
#include "tests/tools/tool_run.h"

namespace {

constexpr int kWidth = 176;
constexpr int kHeight = 144;
constexpr int kFrames = 24;
constexpr std::size_t kPictureBytes = kWidth * kHeight * 3 / 2;

class Export : public testing::Test {
 protected:
  // Groups of 2 and encoder type 2: blocks of 18 frames and 6.
  Export() {
    WriteWholeFile(m_dir.File("sound.wav"), MakeWav(MakeTone(kFrames * 320, 440)));
    const ToolRun run = RunTool({"import", "-", m_path, "--gop", "2", "--encoder-type", "2",
                                 "--frame-size", "128", "--audio", m_dir.File("sound.wav")},
                                MakeY4m(kWidth, kHeight, kFrames));
    EXPECT_EQ(run.status, 0) << run.err;
  }

  ToolRun Run(std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"export", m_path, "-"});
    return RunTool(options);
  }

  static std::vector<std::string> PicturesOf(const std::string& video) {
    std::vector<std::string> pictures;
    for (std::size_t at = video.find('\n') + 1; at < video.size(); at += kPictureBytes) {
      EXPECT_EQ(video.substr(at, 6), "FRAME\n");
      at += 6;
      pictures.push_back(video.substr(at, kPictureBytes));
    }
    return pictures;
  }

  static double Psnr(const std::string& a, const std::string& b) {
    double error = 0;
    for (std::size_t i = 0; i < kWidth * kHeight; ++i) {
      error += std::pow(static_cast<unsigned char>(a[i]) - static_cast<unsigned char>(b[i]), 2);
    }
    return 10 * std::log10(255.0 * 255 * kWidth * kHeight / error);
  }

  TempDir m_dir;
  const std::string m_path = m_dir.File("made.zebz");
};

TEST_F(Export, GivesThePicturesBackInOrder) {
  const ToolRun run = Run();
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out.substr(0, run.out.find('\n')), "YUV4MPEG2 W176 H144 F25:1 Ip A1:1 C420jpeg");
  const auto pictures = PicturesOf(run.out);
  ASSERT_EQ(pictures.size(), kFrames + 0U);
  for (int i = 0; i < kFrames; ++i) {
    EXPECT_GT(Psnr(pictures[static_cast<std::size_t>(i)], MakePicture(kWidth, kHeight, i)), 30);
  }
}

TEST_F(Export, StartInsideAGroupGivesTheSamePicturesAsFromTheBeginning) {
  const auto all = PicturesOf(Run().out);
  const struct {
    const char* from;
    std::size_t first;
  } cases[] = {{"0", 0}, {"0:1", 1}, {"0:17", 17}, {"1", 18}, {"1:5", 23}};
  for (const auto& one : cases) {
    const auto some = PicturesOf(Run({"--from", one.from, "--frames", "4"}).out);
    ASSERT_EQ(some.size(), std::min<std::size_t>(4, kFrames - one.first)) << one.from;
    for (std::size_t i = 0; i < some.size(); ++i) EXPECT_EQ(some[i], all[one.first + i]);
  }
}

TEST_F(Export, DamagedFrameRepeatsTheLastGoodPicture) {
  const auto all = PicturesOf(Run().out);
  std::string bytes = ReadWholeFile(m_path);
  const auto frames = ReadFrames(m_path);
  const auto ends = FrameEnds(bytes, frames);
  for (std::size_t at = ends[4] + 20; at < ends[5] - 90; ++at) bytes[at] ^= 0x55;
  bytes[ends[5] - 88 - 1] ^= 0x55;
  WriteWholeFile(m_path, bytes);
  const ToolRun run = Run();
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(Contains(run.err, "1 frame could not be decoded")) << run.err;
  EXPECT_TRUE(Contains(run.err, "the first one 0:5")) << run.err;
  const auto pictures = PicturesOf(run.out);
  ASSERT_EQ(pictures.size(), all.size());
  EXPECT_EQ(pictures[5], all[4]);
  EXPECT_EQ(pictures[6], all[6]);
}

TEST_F(Export, FramesWithoutASignalRepeatThePictureAndAreNoFailure) {
  std::string bytes = ReadWholeFile(m_path);
  const auto ends = FrameEnds(bytes, ReadFrames(m_path));
  bytes[ends[6] + 2] |= kFrameVideoLost;
  WriteWholeFile(m_path, bytes);
  const ToolRun run = Run();
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(Contains(run.err, "1 frame without a signal")) << run.err;
  const auto pictures = PicturesOf(run.out);
  EXPECT_EQ(pictures[7], pictures[6]);
}

TEST_F(Export, SilenceKeepsSoundInStepWhereFramesHaveNone) {
  // The sound of frames 5 to 9 is dropped, as by a player's switch.
  const auto frames = ReadFrames(m_path);
  std::vector<TestFrame> muted = frames;
  for (std::size_t i = 5; i < 10; ++i) {
    muted[i].flags &= static_cast<WORD>(~kFrameVoice);
    muted[i].speech.clear();
    muted[i].time_stamp -= frames[0].time_stamp - kTestFirstStamp;
  }
  for (std::size_t i = 0; i < muted.size(); ++i) {
    muted[i].time_stamp = kTestFirstStamp + static_cast<DWORD>(i) * 40;
  }
  WriteWholeFile(m_path, MakeRecording(muted));
  const std::string wav = m_dir.File("back.wav");
  ASSERT_EQ(Run({"--wav", wav}).status, 0);
  const auto back = SamplesOf(ReadWholeFile(wav));
  const auto tone = MakeTone(kFrames * 320, 440);
  ASSERT_EQ(back.size(), tone.size());
  for (std::size_t i = 5 * 320; i < 10 * 320; ++i) ASSERT_EQ(back[i], 0);
  double error = 0;
  for (std::size_t i = 10 * 320; i < back.size(); ++i) error += std::pow(back[i] - tone[i], 2);
  EXPECT_LT(std::sqrt(error / (14 * 320)), 900);
}

}  // namespace
