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
    const std::string back = m_dir.File("back.wav");
    EXPECT_EQ(RunTool({"export", m_path, "/dev/null", "--wav", back, "--force"}).status, 0);
    return ReadSound(back);
  }

  TempDir m_dir;
  const std::string m_sound = m_dir.File("sound");
  const std::string m_path = m_dir.File("made.zebz");
};

TEST_F(Import, FlagsTimesAndHeaderAreThoseOfALiveRecording) {
  const ToolRun run =
      Run(MakeY4m(176, 144, 30, "10:1"),
          {"--begin", "2024-05-01 08:30:00", "--gop", "10", "--encoder-type", "3", "--host", "rec",
           "--board-name", "front", "--camera-name", "gate", "--board", "2", "--camera", "5"});
  ASSERT_EQ(run.status, 0) << run.err;
  const std::string bytes = ReadWholeFile(m_path);
  EXPECT_EQ(bytes.substr(20, 4), Hex("05028000"));
  EXPECT_EQ(bytes.substr(40, 24), Little(4) + "gate" + Little(5) + "front" + Little(3) + "rec");
  const CTime begin(2024, 5, 1, 8, 30, 0);
  EXPECT_EQ(bytes.substr(24, 8), Little(begin.GetTime()) + Little((begin + 2).GetTime()));
  const auto frames = ReadFrames(m_path);
  ASSERT_EQ(frames.size(), 30U);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    EXPECT_EQ(frames[i].time_stamp, frames[0].time_stamp + 100 * i);
    EXPECT_EQ(frames[i].flags, kFrameRT | 3 << 4);
    EXPECT_EQ(frames[i].type == kIFrame, i % 10 == 0);
  }
}

TEST_F(Import, AnySizeIsScaledToTheFrameSize) {
  const struct {
    int width, height;
    const char* rate;
    std::vector<std::string> options;
    int frame_size;
  } cases[] = {
      {160, 128, "30000:1001", {}, 4},
      {1, 1, "15:1", {}, 130},
      {353, 289, "25:1", {"--frame-size", "128"}, 128},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.width);
    std::filesystem::remove(m_path);
    const ToolRun run = Run(MakeY4m(one.width, one.height, 2, one.rate), one.options);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(JsonNumber(RunTool({"info", m_path, "--json"}).out, "frame_size"), one.frame_size);
  }
}

TEST_F(Import, SharesSoundOutAmongStampsThatDoNotDrift) {
  const auto tone = MakeTone(9001, 440);
  WriteSound(m_sound, tone);
  const auto back = SoundBack(45, "30000:1001");
  // 9001 samples last 33 frames and a part of the 34th; the others have no speech.
  const auto frames = ReadFrames(m_path);
  ASSERT_EQ(frames.size(), 45U);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    EXPECT_EQ((frames[i].flags & kFrameVoice) != 0, i < 34) << i;
    EXPECT_EQ(frames[i].time_stamp - frames[0].time_stamp, i * 1001 / 30);
  }
  ASSERT_NEAR(static_cast<double>(back.size()), 45 * 8008 / 30.0, 16);  // stamps are whole ms
  EXPECT_LT(NoiseOf(tone, back, 0, tone.size()), 900);
  EXPECT_EQ(std::count(back.begin() + 9002, back.end(), 0), std::ssize(back) - 9002);
}

TEST_F(Import, SoundOfOtherRatesChannelsAndFilesKeepsItsPitch) {
  const struct {
    int rate, channels, format;
  } cases[] = {{4000, 2, SF_FORMAT_WAV | SF_FORMAT_PCM_U8},
               {48000, 2, SF_FORMAT_WAV | SF_FORMAT_FLOAT},
               {44100, 1, SF_FORMAT_FLAC | SF_FORMAT_PCM_24},
               {16000, 2, SF_FORMAT_OGG | SF_FORMAT_VORBIS},
               {48000, 6, SF_FORMAT_FLAC | SF_FORMAT_PCM_16}};
  for (const auto& one : cases) {
    SCOPED_TRACE(one.rate * one.channels);
    std::vector<std::int16_t> samples;
    int number = 0;
    for (const std::int16_t tone : MakeTone(static_cast<std::size_t>(one.rate), 500, one.rate)) {
      // A whistle above 4 kHz must not come back as another sound.
      const int whistle = one.rate < 48000 ? 0 : number++ % 4 < 2 ? 2000 : -2000;
      samples.insert(samples.end(), static_cast<std::size_t>(one.channels),
                     static_cast<std::int16_t>(tone + whistle));
    }
    WriteSound(m_sound, samples, one.rate, one.channels, one.format);
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
  const struct {
    std::string video, sound;
    const char* text;
  } cases[] = {
      {MakeY4m(0, 16, 0), sound, "no picture size"},
      {MakeY4m(16, 16, 1, "4294967295:4294967294"), sound, "frame rate"},
      {MakeY4m(16, 16, 1, "25:1", " C420p10"), sound, "C420p10"},
      {start, sound, "no pictures"},
      {start, "RIFFxxxxAVI ", "is no sound file"},
      {start, slow_sound, "10 samples a second"},
  };
  for (const auto& one : cases) {
    WriteWholeFile(m_sound, one.sound);
    const ToolRun run = Run(one.video, {"--audio", m_sound});
    EXPECT_EQ(run.status, 1) << one.text;
    EXPECT_TRUE(Contains(run.err, one.text)) << run.err;
    EXPECT_FALSE(std::filesystem::exists(m_path)) << one.text;
  }
}

TEST_F(Import, VideoThatEndsEarlyKeepsWhatWasThere) {
  const std::string video = MakeY4m(16, 16, 5);
  const ToolRun run = Run(video.substr(0, video.size() - 1));
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(Contains(run.err, "4 frames before it are kept")) << run.err;
  EXPECT_EQ(ReadFrames(m_path).size(), 4U);
}

TEST_F(Import, FullDiskKeepsTheFramesBeforeAndSaysSo) {
  FaultyFileSystem disk;
  disk.FillDiskAfter(2500);
  const ToolRun run = Run(MakeY4m(176, 144, 60), {"--gop", "1"});
  disk.Heal();
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(
      Contains(run.err, "made.part.zebz', which 'zebtool salvage' makes whole: the disk is full"))
      << run.err;
  EXPECT_FALSE(std::filesystem::exists(m_path));
  const std::string part = m_dir.File("made.part.zebz");
  EXPECT_EQ(RunTool({"salvage", part, m_dir.File("saved.zebz")}).status, 0);
  EXPECT_EQ(RunTool({"verify", m_dir.File("saved.zebz")}).status, 0);
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
  huge.SetVideoLength(CZebFile::kMaxFileBytes);
  huge.SetFrameType(1);
  huge.SetTimeStamp(frames[1].time_stamp);
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
