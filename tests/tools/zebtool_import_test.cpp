// From video and sound to a recording: sizes, rates, stamps, sound packets, bad input, full files.
#include <gtest/gtest.h>

#include "tests/support/faulty_file_system.h"
#include "tests/tools/sound_fixture.h"
#include "tests/tools/tool_fixture.h"
#include "tools/zebtool/recordings/recording_writer.h"

using namespace zebx;

namespace {

class Import : public testing::Test {
 protected:
  ToolRun Run(const std::string& video, std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"import", "-", m_path});
    return RunTool(options, video);
  }
  // The sound of what is imported from 16x16 pictures and the sound file.
  std::vector<std::int16_t> SoundBack(int frames, const std::string& rate) {
    const ToolRun run =
        Run(MakeY4m(16, 16, frames, rate), {"--frame-size", "128", "--audio", m_sound, "--force"});
    EXPECT_EQ(run.status, 0) << run.err;
    return ExportedSound();
  }
  std::vector<std::int16_t> ExportedSound() const {
    const std::string back = m_dir.File("back.wav");
    EXPECT_EQ(RunTool({"export", m_path, "/dev/null", "--wav", back, "--force"}).status, 0);
    return ReadSound(back);
  }

  TempDir m_dir;
  const std::string m_sound = m_dir.File("sound");
  const std::string m_path = m_dir.File("made.zebz");
};

TEST_F(Import, AnySizeIsScaledToTheFrameSize) {
  const std::pair<std::string, int> cases[] = {{MakeY4m(160, 128, 2, "30000:1001"), 4},
                                               {MakeY4m(1, 1, 2, "15:1"), 130},
                                               {MakeY4m(353, 289, 2), 130}};
  for (const auto& [video, frame_size] : cases) {
    ASSERT_EQ(Run(video, {"--force"}).status, 0);
    EXPECT_EQ(JsonNumber(RunTool({"info", m_path, "--json"}).out, "frame_size"), frame_size);
  }
}

TEST_F(Import, SharesSoundOutAmongStampsThatDoNotDrift) {
  const auto tone = MakeTone(9001, 440);
  WriteSound(m_sound, tone);
  const auto back = SoundBack(45, "30000:1001");
  // 9001 samples last 33 frames and a part of the 34th; the others have no speech.
  auto frames = ReadFrames(m_path);
  ASSERT_EQ(frames.size(), 45U);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    EXPECT_EQ(frames[i].flags, i < 34 ? kFrameRT | kFrameVoice : kFrameRT) << i;
    EXPECT_EQ(frames[i].time_stamp - frames[0].time_stamp, i * 1001 / 30);
  }
  ASSERT_NEAR(static_cast<double>(back.size()), 45 * 8008 / 30.0, 16);  // stamps are whole ms
  EXPECT_LT(NoiseOf(tone, back, 0, tone.size()), 900);
  EXPECT_EQ(std::count(back.begin() + 9002, back.end(), 0), std::ssize(back) - 9002);

  // Without the sound of frames 27 to 29, from 900.9 ms to 1001 ms, the rest stays in step.
  for (std::size_t i = 27; i < 30; ++i) {
    frames[i].flags &= static_cast<WORD>(~kFrameVoice);
    frames[i].speech.clear();
  }
  WriteWholeFile(m_path, MakeRecording(frames));
  const auto gap = ExportedSound();
  ASSERT_GE(gap.size(), tone.size());
  EXPECT_EQ(std::count(gap.begin() + 7208, gap.begin() + 8000, 0), 792);
  EXPECT_LT(NoiseOf(tone, gap, 8008, tone.size()), 900);
}

TEST_F(Import, SoundOfOtherRatesChannelsAndFilesKeepsItsPitch) {
  const std::array<int, 3> cases[] = {{4000, 2, SF_FORMAT_WAV | SF_FORMAT_PCM_U8},
                                      {48000, 6, SF_FORMAT_WAV | SF_FORMAT_FLOAT},
                                      {44100, 1, SF_FORMAT_FLAC | SF_FORMAT_PCM_24},
                                      {16000, 2, SF_FORMAT_OGG | SF_FORMAT_VORBIS}};
  for (const auto& [rate, channels, format] : cases) {
    SCOPED_TRACE(rate * channels);
    std::vector<std::int16_t> samples;
    int number = 0;
    for (const std::int16_t tone : MakeTone(static_cast<std::size_t>(rate), 500, rate)) {
      // A whistle above 4 kHz must not come back as another sound.
      const int whistle = rate < 48000 ? 0 : number++ % 4 < 2 ? 2000 : -2000;
      samples.insert(samples.end(), static_cast<std::size_t>(channels),
                     static_cast<std::int16_t>(tone + whistle));
    }
    WriteSound(m_sound, samples, rate, channels, format);
    const auto back = SoundBack(25, "25:1");
    ASSERT_EQ(back.size(), 8000U);
    EXPECT_LT(NoiseOf(MakeTone(8000, 500), back, 200, 7800), 900);
  }
}

TEST_F(Import, BadInputIsRefusedByName) {
  WriteSound(m_sound, MakeTone(100, 440));
  const std::string sound = ReadWholeFile(m_sound);
  WriteSound(m_sound, {}, 10);
  const std::string slow_sound = ReadWholeFile(m_sound);
  const std::string start = MakeY4m(16, 16, 0);
  const std::tuple<std::string, std::string, const char*> cases[] = {
      {MakeY4m(0, 16, 0), sound, "no picture size"},
      {MakeY4m(16, 16, 1, "4294967295:4294967294"), sound, "frame rate"},
      {MakeY4m(16, 16, 1, "25:1", " C420p10"), sound, "C420p10"},
      {start, sound, "no pictures"},
      {start, "RIFFxxxxAVI ", "is no sound file"},
      {start, slow_sound, "10 samples a second"},
  };
  for (const auto& [video, sound_bytes, text] : cases) {
    WriteWholeFile(m_sound, sound_bytes);
    ExpectFailure(Run(video, {"--audio", m_sound}), text);
    EXPECT_FALSE(std::filesystem::exists(m_path)) << text;
  }
  // Of video that ends early the frames before are kept.
  const std::string video = MakeY4m(16, 16, 5);
  ExpectFailure(Run(video.substr(0, video.size() - 1)), "4 frames before it are kept");
  EXPECT_EQ(ReadFrames(m_path).size(), 4U);
}

TEST_F(Import, FullDiskKeepsTheFramesBeforeAndSaysSo) {
  FaultyFileSystem disk;
  disk.FillDiskAfter(2500);
  ExpectFailure(Run(MakeY4m(176, 144, 60), {"--gop", "1"}),
                "made.part.zebz', which 'zebtool salvage' makes whole: the disk is full");
  disk.Heal();
  EXPECT_FALSE(std::filesystem::exists(m_path));
  EXPECT_EQ(RunTool({"salvage", m_dir.File("made.part.zebz"), m_path}).status, 0);
  EXPECT_EQ(RunTool({"verify", m_path}).status, 0);
}

TEST(RecordingWriter, FullRecordingGoesOnInAFurtherFileFromTheNextIFrame) {
  const TempDir dir;
  FaultyFileSystem disk;
  disk.SkipWritesFrom(1000000);
  const auto frames = MakeFrames(6, 3);
  zebtool::RecordingWriter writer(MakeInfo(""), dir.File("long.zebz"), zebtool::Existing::kRefuse,
                                  CTime(kTestBeginSeconds), kTestFirstStamp);
  CZebFrameData data;
  Fill(data, frames[0]);
  ASSERT_TRUE(writer.Append(data));
  CZebFrameData huge;
  huge.CreateBuffer(CZebFile::kMaxFileBytes, 16);
  Fill(huge, frames[1]);
  huge.SetVideoLength(CZebFile::kMaxFileBytes);
  ASSERT_TRUE(writer.Append(huge));
  Fill(data, frames[2]);
  EXPECT_FALSE(writer.Append(data));  // no I-frame
  Fill(data, frames[3]);
  EXPECT_TRUE(writer.Append(data));
  writer.Finish();
  ASSERT_EQ(writer.Files().size(), 2U);
  EXPECT_EQ(writer.Files()[0].frames, 2U);
  EXPECT_EQ(writer.Files()[1].path, dir.File("long_2.zebz"));
  EXPECT_EQ(ReadFrames(dir.File("long_2.zebz")), std::vector<TestFrame>{frames[3]});
}

}  // namespace
