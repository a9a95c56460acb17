// From video and sound to a recording: sizes, rates, stamps, sound packets, bad input, full files.
#include <gtest/gtest.h>

#include "tests/support/faulty_file_system.h"
#include "tests/tools/test_media.h"
#include "tests/tools/test_recording.h"
#include "tests/tools/tool_run.h"
#include "tools/zebtool/recording_writer.h"

namespace {

class Import : public testing::Test {
 protected:
  ToolRun Run(const std::string& video, std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"import", "-", m_path});
    return RunTool(options, video);
  }
  std::string Info() { return RunTool({"info", m_path, "--json"}).out; }

  TempDir m_dir;
  const std::string m_path = m_dir.File("made.zebz");
};

TEST_F(Import, FlagsTimesAndHeaderAreThoseOfALiveRecording) {
  const ToolRun run =
      Run(MakeY4m(176, 144, 30, "10:1"),
          {"--begin", "2024-05-01 08:30:00", "--gop", "10", "--encoder-type", "3", "--host", "rec",
           "--board-name", "front", "--camera-name", "gate", "--board", "2", "--camera", "5"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(Contains(run.out, "30 frames in 1 block")) << run.out;
  EXPECT_EQ(RunTool({"verify", m_path}).status, 0) << RunTool({"verify", m_path}).out;
  CZebFileInfo info;
  ASSERT_EQ(info.Create(m_path), 1);
  EXPECT_EQ(info.GetFrameSize(), 128U);
  EXPECT_EQ(info.GetCameraName(), "gate");
  EXPECT_EQ(info.GetBoardName(), "front");
  EXPECT_EQ(info.GetHostName(), "rec");
  EXPECT_EQ(info.GetCameraID().m_board, 2);
  EXPECT_EQ(info.GetCameraID().m_camera, 5);
  EXPECT_EQ(info.GetBeginTime().Format("%Y-%m-%d %H:%M:%S"), "2024-05-01 08:30:00");
  EXPECT_EQ(info.GetEndTime().Format("%H:%M:%S"), "08:30:02");
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
    int frame_size, encode_width;
  } cases[] = {
      {352, 288, "25:1", {}, 130, 352},
      {320, 240, "25:1", {}, 2, 320},
      {160, 128, "30000:1001", {}, 4, 160},
      {720, 288, "25:1", {}, 136, 720},
      {33, 17, "25:1", {}, 130, 352},
      {1, 1, "15:1", {}, 130, 352},
      {353, 289, "25:1", {"--frame-size", "128"}, 128, 176},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(std::to_string(one.width) + " x " + std::to_string(one.height));
    const ToolRun run = Run(MakeY4m(one.width, one.height, 2, one.rate), one.options);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(JsonNumber(Info(), "frame_size"), one.frame_size);
    EXPECT_EQ(JsonNumber(Info(), "encode_width"), one.encode_width);
    EXPECT_EQ(RunTool({"export", m_path, m_dir.File("back.y4m")}).status, 0);
  }
}

TEST_F(Import, StampsOfABrokenRateDoNotDrift) {
  ASSERT_EQ(Run(MakeY4m(16, 16, 301, "30000:1001"), {"--frame-size", "128"}).status, 0);
  const auto frames = ReadFrames(m_path);
  ASSERT_EQ(frames.size(), 301U);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    EXPECT_EQ(frames[i].time_stamp - frames[0].time_stamp, i * 1001 / 30);
  }
}

TEST_F(Import, SoundIsSharedOutAmongFramesToTheSample) {
  const std::string wav = m_dir.File("sound.wav");
  WriteWholeFile(wav, MakeWav(MakeTone(9001, 440)));
  ASSERT_EQ(Run(MakeY4m(16, 16, 45, "30000:1001"), {"--frame-size", "128", "--audio", wav}).status,
            0);
  // 9001 samples last 33 frames and a part of the 34th; the others have no speech.
  const auto frames = ReadFrames(m_path);
  ASSERT_EQ(frames.size(), 45U);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    EXPECT_EQ((frames[i].flags & kFrameVoice) != 0, i < 34) << i;
  }
  ASSERT_EQ(
      RunTool({"export", m_path, m_dir.File("back.y4m"), "--wav", m_dir.File("back.wav")}).status,
      0);
  const auto back = SamplesOf(ReadWholeFile(m_dir.File("back.wav")));
  const auto tone = MakeTone(9001, 440);
  ASSERT_NEAR(static_cast<double>(back.size()), 45 * 8008 / 30.0, 16);  // stamps are whole ms
  double error = 0;
  double power = 0;
  for (std::size_t i = 0; i < tone.size(); ++i) {
    error += std::pow(back[i] - tone[i], 2);
    power += std::pow(tone[i], 2);
  }
  EXPECT_GT(10 * std::log10(power / error), 15);
  for (std::size_t i = 9002; i < back.size(); ++i) ASSERT_EQ(back[i], 0);
}

TEST_F(Import, SoundOfOtherRatesAndTwoChannelsKeepsItsPitch) {
  for (const unsigned long rate : {4000UL, 11025UL, 44100UL, 48000UL}) {
    SCOPED_TRACE(rate);
    const auto tone = MakeTone(rate, 500, static_cast<double>(rate));
    std::vector<std::int16_t> stereo;
    for (const std::int16_t sample : tone) stereo.insert(stereo.end(), {sample, sample});
    const std::string wav = m_dir.File("sound.wav");
    WriteWholeFile(wav, MakeWav(stereo, rate, 2));
    ASSERT_EQ(Run(MakeY4m(16, 16, 25), {"--frame-size", "128", "--audio", wav}).status, 0);
    ASSERT_EQ(RunTool({"export", m_path, m_dir.File("b.y4m"), "--wav", m_dir.File("b.wav")}).status,
              0);
    const auto back = SamplesOf(ReadWholeFile(m_dir.File("b.wav")));
    const auto expected = MakeTone(8000, 500);
    ASSERT_EQ(back.size(), 8000U);
    double error = 0;
    for (std::size_t i = 200; i < 7800; ++i) error += std::pow(back[i] - expected[i], 2);
    EXPECT_LT(std::sqrt(error / 7600), 900);
  }
}

TEST_F(Import, BadVideoIsRefusedByName) {
  const std::string good = MakeY4m(16, 16, 3);
  const struct {
    std::string video;
    const char* text;
  } cases[] = {
      {"", "no Y4M video"},
      {"RIFF....", "no Y4M video"},
      {"YUV4MPEG2 W16 H16", "does not end"},
      {"YUV4MPEG2 " + std::string(5000, 'X'), "does not end"},
      {MakeY4m(0, 16, 0), "no picture size"},
      {MakeY4m(20000, 16, 0), "no picture size"},
      {MakeY4m(16384, 16384, 0), "no picture size"},
      {"YUV4MPEG2 W-16 H16 F25:1\n", "no picture size"},
      {MakeY4m(16, 16, 1, "25:0"), "no fraction"},
      {MakeY4m(16, 16, 1, "x"), "no fraction"},
      {MakeY4m(16, 16, 1, "1001:1"), "frame rate"},
      {MakeY4m(16, 16, 1, "1:61"), "frame rate"},
      {MakeY4m(16, 16, 1, "4294967295:4294967294"), "frame rate"},
      {MakeY4m(16, 16, 1, "25:1", " C444"), "C444"},
      {MakeY4m(16, 16, 1, "25:1", " C420p10"), "C420p10"},
      {MakeY4m(16, 16, 0), "no pictures"},
      {MakeY4m(16, 16, 0) + "FRAM", "does not begin with FRAME"},
      {MakeY4m(16, 16, 0) + "FRAMES\n" + MakePicture(16, 16, 0), "does not begin with FRAME"},
      {good.substr(0, 100), "ends inside picture 0"},
  };
  for (const auto& one : cases) {
    const ToolRun run = Run(one.video);
    EXPECT_EQ(run.status, 1) << one.text;
    EXPECT_TRUE(Contains(run.err, one.text)) << run.err;
    EXPECT_FALSE(std::filesystem::exists(m_path)) << one.text;
  }
}

TEST_F(Import, VideoThatEndsEarlyKeepsWhatWasThere) {
  const std::string video = MakeY4m(16, 16, 5);
  const ToolRun run = Run(video.substr(0, video.size() - 1));
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(Contains(run.err, "ends inside picture 4")) << run.err;
  EXPECT_TRUE(Contains(run.err, "4 frames before it are kept")) << run.err;
  EXPECT_EQ(RunTool({"verify", m_path}).status, 0);
  EXPECT_EQ(ReadFrames(m_path).size(), 4U);
}

TEST_F(Import, BadSoundIsRefusedByName) {
  const std::string good = MakeWav(MakeTone(100, 440));
  std::string adpcm = good;
  adpcm[20] = 2;
  std::string deep = good;
  deep[34] = 24;
  const struct {
    std::string wav;
    const char* text;
  } cases[] = {
      {"", "no WAV"},
      {"RIFFxxxxAVI ", "no WAV"},
      {good.substr(0, 30), "cut off"},
      {adpcm, "only PCM"},
      {deep, "only PCM"},
      {good.substr(0, 36), "holds no sound"},
      {MakeWav({}, 8000, 3), "only PCM"},
      {MakeWav({}, 10, 1), "10 samples a second"},
  };
  const std::string wav = m_dir.File("sound.wav");
  for (const auto& one : cases) {
    WriteWholeFile(wav, one.wav);
    const ToolRun run = Run(MakeY4m(16, 16, 2), {"--audio", wav});
    EXPECT_EQ(run.status, 1) << one.text;
    EXPECT_TRUE(Contains(run.err, one.text)) << run.err;
  }
}

TEST_F(Import, FullDiskKeepsTheFramesBeforeAndSaysSo) {
  FaultyFileSystem disk;
  disk.FillDiskAfter(2500);
  const ToolRun run = Run(MakeY4m(176, 144, 60), {"--gop", "1"});
  disk.Heal();
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(Contains(run.err, "disk is full")) << run.err;
  EXPECT_TRUE(Contains(run.err, m_path)) << run.err;
  EXPECT_EQ(RunTool({"salvage", m_path, m_dir.File("saved.zebz")}).status, 0);
  EXPECT_EQ(RunTool({"verify", m_dir.File("saved.zebz")}).status, 0);
}

// Takes large writes without the disk: the file only grows to their length.
class HollowFileSystem final : public FileSystem {
 public:
  HollowFileSystem() { SetFileSystem(this); }
  ~HollowFileSystem() override { SetFileSystem(nullptr); }
  HollowFileSystem(const HollowFileSystem&) = delete;
  HollowFileSystem& operator=(const HollowFileSystem&) = delete;

  std::unique_ptr<FileHandle> Open(const CString& path, const FileOpenMode& mode) override {
    return std::make_unique<Handle>(NativeFileSystem().Open(path, mode));
  }
  CString FullPath(const CString& path) override { return NativeFileSystem().FullPath(path); }
  bool IsSameFile(const CString& path, const CString& other) override {
    return NativeFileSystem().IsSameFile(path, other);
  }

 private:
  class Handle final : public FileHandle {
   public:
    explicit Handle(std::unique_ptr<FileHandle> native) : m_native(std::move(native)) {}
    std::size_t ReadAt(ULONGLONG offset, std::span<BYTE> into) override {
      return m_native->ReadAt(offset, into);
    }
    void WriteAt(ULONGLONG offset, std::span<const std::span<const BYTE>> pieces) override {
      ULONGLONG bytes = 0;
      for (const auto& piece : pieces) bytes += piece.size();
      if (bytes < 1000000) {
        m_native->WriteAt(offset, pieces);
      } else {
        m_native->Resize(offset + bytes);
      }
    }
    ULONGLONG Length() override { return m_native->Length(); }
    void Resize(ULONGLONG length) override { m_native->Resize(length); }
    void Close() override { m_native->Close(); }

   private:
    std::unique_ptr<FileHandle> m_native;
  };
};

TEST(RecordingWriter, FullRecordingGoesOnInAFurtherFileFromTheNextIFrame) {
  const TempDir dir;
  const HollowFileSystem hollow;
  const auto frames = MakeFrames(6, 3);
  zebtool::RecordingWriter writer(TestHeader(""), dir.File("long.zebz"), CTime(kTestBeginSeconds),
                                  kTestFirstStamp);
  CZebFrameData data;
  Fill(data, frames[0]);
  ASSERT_TRUE(writer.Append(data));
  CZebFrameData huge(1, 1, 16);
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
