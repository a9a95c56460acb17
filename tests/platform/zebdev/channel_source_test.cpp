#include "platform/zebdev/software/channel_source.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "tests/platform/noxcodec/picture_measures.h"
#include "tests/support/bytes.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/temp_dir.h"

namespace zebx::zebdev {
namespace {

using noxcodec::Picture;
using Samples = std::vector<std::int16_t>;

// Pictures of one grey each, 100 and up. An odd size, so that chroma is rounded up.
constexpr int kWidth = 5;
constexpr int kHeight = 3;
constexpr std::size_t kPictureBytes = 15 + 2 * 6;

std::string Video(int pictures, const std::string& rate,
                  const std::string& frame_line = "FRAME\n") {
  std::string bytes = "YUV4MPEG2 W5 H3 F" + rate + " Ip\n";
  for (int number = 0; number < pictures; ++number) {
    bytes += frame_line + std::string(kPictureBytes, static_cast<char>(100 + number));
  }
  return bytes;
}

// The number of the picture shown at that time, by its grey; -1 when the video is lost.
int PictureShown(ChannelSource& source, ULONGLONG time_ms, int width = kWidth,
                 int height = kHeight) {
  Picture picture(width, height);
  if (!source.DrawPicture(time_ms, picture)) return -1;
  const auto luma = picture.Plane(noxcodec::kLuma);
  const int corner = luma.Row(0)[0];
  EXPECT_EQ(luma.Row(height - 1)[width - 1], corner);
  EXPECT_EQ(picture.Plane(noxcodec::kCr).Row(0)[0], corner);
  return corner - 100;
}

TEST(FileSource, PlaysAVideoAtItsOwnPaceOverAndOver) {
  MemoryFileSystem disk;
  struct Case {
    std::string bytes;
    std::vector<std::pair<ULONGLONG, int>> shown;
  };
  const std::string cut = Video(4, "10:1");
  const Case cases[] = {
      {Video(3, "25:1"), {{0, 0}, {39, 0}, {40, 1}, {80, 2}, {119, 2}, {120, 0}, {1000000, 1}}},
      // Slower than the channel and faster; times that skip pictures, also before the end was seen.
      {Video(2, "1:2"), {{0, 0}, {1999, 0}, {2000, 1}, {2001, 1}, {4000, 0}, {6500, 1}}},
      {Video(5, "30000:1001", "FRAME Ixyz\n"), {{0, 0}, {33, 0}, {34, 1}, {200, 0}, {100100, 0}}},
      {Video(7, "25:1"), {{ULONGLONG{40} * 7000000003, 3}, {ULONGLONG{40} * 7000000004, 4}}},
      // What lies behind damage is not played.
      {cut.substr(0, cut.size() - 1), {{0, 0}, {200, 2}, {300, 0}, {700, 1}}},
      {cut.substr(0, cut.size() - kPictureBytes - 1), {{200, 2}, {300, 0}}},
      {Video(2, "10:1") + Video(2, "10:1"), {{100, 1}, {200, 0}, {500, 1}}},
  };
  for (const Case& one : cases) {
    disk.Put("v", one.bytes);
    CString fault = "left over";
    const auto source = OpenFileSource("v", "", &fault);
    ASSERT_NE(source, nullptr) << fault;
    EXPECT_EQ(fault, "");
    int before = -1;
    for (const auto& [time_ms, number] : one.shown) {
      EXPECT_EQ(PictureShown(*source, time_ms), number) << one.bytes.substr(0, 20) << time_ms;
      EXPECT_TRUE(std::exchange(before, number) == number || !source->IsRepeated()) << time_ms;
    }
    for (int again = 0; again < 2; ++again) {
      EXPECT_EQ(PictureShown(*source, one.shown.front().first, 352, 288), one.shown.front().second);
    }
    EXPECT_TRUE(source->IsRepeated());
  }
}

TEST(FileSource, AFileThatShrinksOrFailsWhilePlayedIsNoDisaster) {
  MemoryFileSystem memory;
  memory.Put("v", Video(5, "10:1"));
  FaultyFileSystem disk;
  const auto source = OpenFileSource("v", "", nullptr);
  EXPECT_EQ(PictureShown(*source, 400), 4);
  EXPECT_EQ(PictureShown(*source, 500), 0);
  CFile file;
  ASSERT_EQ(file.Open("v", CFile::kModeReadWrite | CFile::kShareDenyNone), 1);
  file.SetLength(Video(3, "10:1").size() + 2);
  EXPECT_EQ(PictureShown(*source, 900), 0);  // picture 9 of a video of three
  disk.FailCall(FaultyFileSystem::kRead, 2);
  EXPECT_EQ(PictureShown(*source, 1000), -1);
  EXPECT_EQ(PictureShown(*source, 1000), 1);
  file.SetLength(0);
  EXPECT_EQ(PictureShown(*source, 1100), -1);
  file.Write({reinterpret_cast<const BYTE*>(Video(2, "10:1").data()), Video(2, "10:1").size()});
  EXPECT_EQ(PictureShown(*source, 1300), 1);
}

TEST(FileSource, VideosThatCannotBePlayedAreRefusedWithAReason) {
  const TempDir directory;
  const std::string path = directory.File("v");
  ASSERT_EQ(mkfifo(directory.File("pipe").c_str(), 0600), 0);
  const auto fault_of = [](const std::string& video) {
    CString fault;
    EXPECT_EQ(OpenFileSource(video, "", &fault), nullptr) << video;
    EXPECT_EQ(OpenFileSource(video, "", nullptr), nullptr) << video;
    return fault;
  };
  EXPECT_NE(fault_of(directory.File("pipe")), "");
  EXPECT_NE(fault_of(path), "");
  const std::pair<std::string, const char*> cases[] = {
      {"", "header line"},
      {"YUV4MPEG2 W5 H3", "header line"},
      {"YUV4MPEG2 W5 H3" + std::string(2000, ' ') + "\n", "header line"},
      {"YUV4MPEG2 H3\nFRAME\n", "picture size"},
      {"YUV4MPEG2 W16384 H16384\nFRAME\n", "picture size"},
      {"YUV4MPEG2 W5 H3 F0:0 C422\n", "C422"},
      {"YUV4MPEG2 W5 H3 F1:61\n", "frame rate"},
      {"YUV4MPEG2 W5 H3 F25\n", "F25"},
      {"YUV4MPEG2 W8192 H8192\nFRAME\n", "first picture"},
      {Video(0, "25:1") + "FRAM\n" + std::string(kPictureBytes, 'x'), "first picture"},
  };
  for (const auto& [bytes, reason] : cases) {
    WriteWholeFile(path, bytes);
    EXPECT_NE(fault_of(path).find(reason), std::string::npos) << fault_of(path) << bytes;
  }
}

std::string Chunk(const std::string& id, const std::string& bytes) {
  return id + Little(bytes.size()) + bytes + std::string(bytes.size() % 2, '\0');
}

std::string Wav(const std::string& chunks) {
  return Chunk("RIFF", "WAVE" + chunks);
}

std::string Format(WORD kind, WORD channels, DWORD rate, WORD bits) {
  return Chunk("fmt ", Little(kind, 2) + Little(channels, 2) + Little(rate) + Little(0) +
                           Little(0, 2) + Little(bits, 2));
}

std::string Values(const Samples& samples) {
  std::string bytes;
  for (const std::int16_t sample : samples) bytes += Little(static_cast<WORD>(sample), 2);
  return bytes;
}

TEST(FileSource, SoundOfAnyRateAndWidthIsPlayedOverAndOver) {
  MemoryFileSystem disk;
  disk.Put("v", Video(1, "25:1"));
  const std::string extensible =
      Chunk("fmt ", Format(0xFFFE, 1, 8000, 16).substr(8) + Little(22, 2) + Little(16, 2) +
                        Little(4) + Little(1, 2) + std::string(14, '\0'));
  const std::string list = Chunk("LIST", "odd");
  const std::string mono = Format(1, 1, 8000, 16);
  Samples ramp(20000);
  for (std::size_t i = 0; i < ramp.size(); ++i) ramp[i] = static_cast<std::int16_t>(i);
  const std::pair<std::string, Samples> cases[] = {
      {mono + Chunk("data", Values({1, -2, 3})), {1, -2, 3, 1, -2, 3, 1}},
      {list + extensible + list + Chunk("data", Values({1, -2})), {1, -2, 1}},
      {Format(1, 1, 8000, 8) + Chunk("data", Hex("00 80 ff")), {-32768, 0, 32512, -32768}},
      {Format(1, 2, 8000, 16) + Chunk("data", Values({10, 20, -32768, -32768})), {15, -32768, 15}},
      // Between the last sample and the first lies what is between any two.
      {Format(1, 1, 4000, 16) + Chunk("data", Values({0, 100})), {0, 50, 100, 50, 0, 50}},
      {Format(1, 1, 3000, 16) + Chunk("data", Values({0, 800})), {0, 300, 600, 700, 400, 100, 200}},
      {Format(1, 1, 44100, 16) + Chunk("data", Values(ramp)), {0, 5, 11, 16, 22, 27}},
      {Format(1, 1, 768000, 16) + Chunk("data", Values({5})), {5, 5, 5}},
      // A writer that did not finish; a file that was cut.
      {mono + "data" + Little(0xFFFFFFFF) + Values({7, 8}), {7, 8, 7}},
      {mono + "data" + Little(100) + Values({7, 8}), {7, 8, 7}},
  };
  for (const auto& [chunks, heard] : cases) {
    disk.Put("w", Wav(chunks));
    CString fault;
    const auto source = OpenFileSource("v", "w", &fault);
    EXPECT_EQ(fault, "");
    Samples samples(heard.size());
    EXPECT_TRUE(source->ReadSound(std::span(samples).first(2)));
    EXPECT_TRUE(source->ReadSound(std::span(samples).subspan(2)));
    EXPECT_EQ(samples, heard) << chunks.size();
  }

  // Longer than what is in memory at a time; a read that fails is no end, but an empty file is.
  disk.Put("w", Wav(mono + Chunk("data", Values(ramp))));
  FaultyFileSystem faults;
  const auto source = OpenFileSource("v", "w", nullptr);
  Samples samples(ramp.size() + 6000);
  faults.FailCall(FaultyFileSystem::kRead, 1);
  EXPECT_TRUE(source->ReadSound(samples));
  EXPECT_EQ(samples, Samples(samples.size())) << "silence";
  EXPECT_TRUE(source->ReadSound(samples));
  for (std::size_t i = 0; i < samples.size(); ++i) ASSERT_EQ(samples[i], ramp[i % ramp.size()]);
  CFile file;
  ASSERT_EQ(file.Open("w", CFile::kModeReadWrite | CFile::kShareDenyNone), 1);
  file.SetLength(0);
  EXPECT_TRUE(source->ReadSound(samples));
  EXPECT_FALSE(source->ReadSound(samples));
}

TEST(FileSource, SoundThatCannotBePlayedIsLeftOutAndSaid) {
  MemoryFileSystem disk;
  disk.Put("v", Video(1, "25:1"));
  const std::string data = Chunk("data", Values({1, 2, 3}));
  std::string endless;
  for (int chunk = 0; chunk < 1100; ++chunk) endless += Chunk("junk", "");
  const std::string mono = Format(1, 1, 8000, 16);
  const std::string chunks[] = {data,
                                mono,
                                mono + Chunk("data", "x"),
                                Format(3, 1, 8000, 32) + data,
                                Format(1, 1, 0, 16) + data,
                                Format(1, 1, 4000000000, 16) + data,
                                Format(0xFFFE, 1, 8000, 16) + data,
                                Chunk("fmt ", "short") + data,
                                "junk" + Little(0xFFFFFFFF) + data,
                                endless + mono + data};
  for (const std::string& bytes : chunks) {
    disk.Put("w", Wav(bytes));
    CString fault;
    const auto source = OpenFileSource("v", "w", &fault);
    ASSERT_NE(source, nullptr);
    EXPECT_NE(fault, "") << bytes;
    Samples samples(3);
    EXPECT_FALSE(source->ReadSound(samples));
    EXPECT_EQ(PictureShown(*source, 0), 0);
  }
}

TEST(StreetSource, StreetsOfOtherSeedsDifferAndTheSameOneComesAgain) {
  Picture picture(176, 144), again(176, 144), other(176, 144);
  const auto street = MakeStreetSource(3);
  ASSERT_TRUE(street->DrawPicture(1000, picture));
  ASSERT_TRUE(MakeStreetSource(3)->DrawPicture(1039, again));
  ASSERT_TRUE(MakeStreetSource(4)->DrawPicture(1000, other));
  const auto luma = [](const Picture& of) { return of.Plane(noxcodec::kLuma); };
  EXPECT_EQ(Psnr(luma(picture), luma(again)), 99);
  EXPECT_LT(Psnr(luma(picture), luma(other)), 20);
  ASSERT_TRUE(street->DrawPicture(5000, other));
  EXPECT_LT(Psnr(luma(picture), luma(other)), 40);

  Samples hum(8000);
  EXPECT_TRUE(street->ReadSound(hum));
  EXPECT_GT(std::ranges::max(hum), 50);
}

// Skin is redder than anything else at that place of the street.
TEST(StreetSource, KnowsWhereFacesAre) {
  const auto street = MakeStreetSource(1);
  EXPECT_TRUE(street->Faces().empty());
  Picture picture(704, 240);
  ASSERT_TRUE(street->DrawPicture(39000, picture));
  ASSERT_FALSE(street->Faces().empty());
  const auto nearest = street->Faces().front();
  const auto reds = picture.Plane(noxcodec::kCr);
  const DWORD y = (nearest.m_top + nearest.m_height * 2 / 3) / 2;
  EXPECT_GT(reds.Row(static_cast<int>(y))[(nearest.m_left + nearest.m_width / 2) / 2], 138);
}

TEST(FrameSource, GivesFramesOverAndOverAndIFramesOnRequest) {
  const auto frame = [](BYTE type, BYTE number) { return CompressedFrame{type, 2, {number}}; };
  const auto source =
      MakeFrameSource({frame(0, 10), frame(1, 11), frame(1, 12), frame(0, 13), frame(1, 14)});
  CompressedFrame got;
  std::string numbers;
  for (const char request : std::string("..I..I.")) {
    ASSERT_TRUE(source->IsCompressed() && source->ReadFrame(0, request == 'I', got));
    numbers += std::to_string(got.m_video.at(0)) + " ";
  }
  EXPECT_EQ(numbers, "10 11 13 14 10 13 14 ");
  EXPECT_FALSE(MakeFrameSource({})->ReadFrame(0, false, got));
  EXPECT_FALSE(MakeFrameSource({frame(1, 1)})->ReadFrame(0, true, got));
}

}  // namespace
}  // namespace zebx::zebdev
