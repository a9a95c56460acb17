// Recordings of invented frames, small enough to try damage at every byte.
#pragma once

#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/framework/byte_order.h"
#include "platform/os/clock.h"
#include "record/block_format.h"
#include "record/zeb_file.h"
#include "record/zeb_frame_data.h"
#include "tests/support/temp_dir.h"

struct TestFrame {
  WORD type = 0;
  WORD flags = 0;
  DWORD time_stamp = 0;
  std::string video;
  std::string speech;
  bool operator==(const TestFrame&) const = default;
  friend void PrintTo(const TestFrame& frame, std::ostream* out) { *out << frame.time_stamp; }

  std::size_t FileBytes() const {
    const bool voice = (flags & kFrameVoice) != 0;
    return (voice ? kVoicedFrameHeaderBytes : kFrameHeaderBytes) + video.size() + speech.size();
  }
};

inline constexpr DWORD kTestBeginSeconds = 1714552200;
inline constexpr DWORD kTestFirstStamp = 5000;

// I-frames at every `gop`-th place, 40 ms apart; every third frame has speech. Bytes are spread so
// that they look like neither headers nor each other. Encoder type 2 makes blocks of ten I-frames,
// the first one of nine.
inline std::vector<TestFrame> MakeFrames(int count, int gop = 2, std::size_t video_bytes = 5) {
  std::vector<TestFrame> frames;
  DWORD seed = 1;
  const auto next_byte = [&] {
    seed = seed * 1664525 + 1013904223;
    return static_cast<char>(0x80 | seed >> 24);
  };
  for (int number = 0; number < count; ++number) {
    TestFrame frame;
    frame.type = number % gop == 0 ? kIFrame : 1;
    frame.flags = kFrameRT | (kEncoderTypeRT8Port << 4);
    frame.time_stamp = kTestFirstStamp + static_cast<DWORD>(number) * 40;
    for (std::size_t i = 0; i < video_bytes + static_cast<std::size_t>(number % 3); ++i) {
      frame.video += next_byte();
    }
    if (number % 3 == 0) {
      frame.flags |= kFrameVoice;
      frame.speech = {next_byte(), next_byte()};
    }
    frames.push_back(frame);
  }
  return frames;
}

inline void Fill(CZebFrameData& data, const TestFrame& frame) {
  data.Reset();
  data.SetFrameType(frame.type);
  data.SetFlag(frame.flags);
  data.SetTimeStamp(frame.time_stamp);
  data.SetVideoLength(static_cast<DWORD>(frame.video.size()));
  std::copy(frame.video.begin(), frame.video.end(), data.GetVideoBuf());
  data.SetSpeechDataLen(static_cast<DWORD>(frame.speech.size()));
  std::copy(frame.speech.begin(), frame.speech.end(), data.GetSpeechBuf());
}

inline CZebFileInfo TestHeader(const std::string& path) {
  CZebFileInfo info;
  info.SetFileName(path);
  info.SetCameraID({1, 7});
  info.SetFrameSize(tag_FRAMESIZE{128});
  info.SetCameraName("gate");
  info.SetHostName("rec");
  info.SetBeginTime(CTime(kTestBeginSeconds));
  return info;
}

// The bytes of a recording of `frames`, finished or as a dead writer leaves it.
inline std::string MakeRecording(const std::vector<TestFrame>& frames, bool finished = true) {
  const TempDir dir;
  const std::string path = dir.File("made.zebz");
  os::SteppedClock clock(kTestBeginSeconds, kTestFirstStamp);
  CZebFileInfo info = TestHeader(path);
  CZebFile file;
  if (file.Open(&info, kZebFileWrite) == 0) throw std::runtime_error("cannot create " + path);
  CZebFrameData data;
  for (const TestFrame& frame : frames) {
    clock.MoveTo(frame.time_stamp - kTestFirstStamp);
    Fill(data, frame);
    if (file.WriteOneFrame(&data) != kFrameWritten) throw std::runtime_error("cannot write");
  }
  if (finished) file.Close();
  return ReadWholeFile(path);
}

// What the library reads of a recording; nothing when it cannot be opened.
inline std::vector<TestFrame> ReadFrames(const std::string& path) {
  CZebFileInfo info;
  info.SetFileName(path);
  CZebFile file;
  std::vector<TestFrame> frames;
  if (file.Open(&info, kZebFileRead) == 0) return frames;
  CZebFrameData data;
  while (file.ReadOneFrame(&data, -1, 0) != 0) {
    TestFrame frame{data.GetFrameType(), data.GetFlag(), data.GetTimeStamp(), {}, {}};
    frame.video.assign(data.GetVideoBuf(), data.GetVideoBuf() + data.GetVideoLength());
    frame.speech.assign(data.GetSpeechBuf(), data.GetSpeechBuf() + data.GetSpeechLength());
    frames.push_back(frame);
  }
  return frames;
}

inline DWORD DwordAt(const std::string& bytes, std::size_t offset) {
  const std::vector<BYTE> copy(bytes.begin() + static_cast<std::ptrdiff_t>(offset),
                               bytes.begin() + static_cast<std::ptrdiff_t>(offset + 4));
  return ByteReader(copy).Get<DWORD>();
}

inline void PutDword(std::string& bytes, std::size_t offset, DWORD value) {
  for (int i = 0; i < 4; ++i, value >>= 8)
    bytes[offset + static_cast<std::size_t>(i)] = static_cast<char>(value & 0xFF);
}

// Where the block headers of an intact recording stand, the terminating one included.
inline std::vector<std::size_t> BlockOffsets(const std::string& recording) {
  constexpr std::size_t kHeaderSizeAt = 8;
  constexpr std::size_t kNextAt = 4;
  std::vector<std::size_t> offsets = {DwordAt(recording, kHeaderSizeAt)};
  while (DwordAt(recording, offsets.back() + kNextAt) != kNoBlock) {
    offsets.push_back(DwordAt(recording, offsets.back() + kNextAt));
  }
  return offsets;
}

// Where each frame of an intact recording ends.
inline std::vector<std::size_t> FrameEnds(const std::string& recording,
                                          const std::vector<TestFrame>& frames) {
  const std::vector<std::size_t> blocks = BlockOffsets(recording);
  std::vector<std::size_t> ends;
  std::size_t block = 0;
  std::size_t at = blocks[0] + kBlockHeaderBytes;
  for (const TestFrame& frame : frames) {
    if (block + 1 < blocks.size() && at == blocks[block + 1]) {
      at += kBlockHeaderBytes;
      ++block;
    }
    at += frame.FileBytes();
    ends.push_back(at);
  }
  return ends;
}
