// Recordings of invented frames as bytes, small enough to try damage at every one of them.
#pragma once

#include <string>
#include <vector>

#include "platform/os/clock.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/recording_fixture.h"

inline constexpr DWORD kTestBeginSeconds = 1714552200;
inline constexpr DWORD kTestFirstStamp = 5000;

// I-frames at every `gop`-th place, 40 ms apart; every third frame has speech. Bytes are spread so
// that they look like neither headers nor each other. Encoder type 2 makes blocks of ten I-frames,
// the first one of nine.
inline std::vector<TestFrame> MakeFrames(int count, int gop = 2, std::size_t video_bytes = 5) {
  std::vector<TestFrame> frames;
  DWORD seed = 1;
  const auto random_bytes = [&](std::size_t length) {
    std::string bytes(length, '\0');
    for (char& byte : bytes) {
      seed = seed * 1664525 + 1013904223;
      byte = static_cast<char>(0x80 | seed >> 24);
    }
    return bytes;
  };
  for (int number = 0; number < count; ++number) {
    TestFrame& frame = frames.emplace_back();
    frame.type = number % gop == 0 ? zebx::kIFrame : 1;
    frame.flags = zebx::kFrameRT | (zebx::kEncoderTypeRT8Port << 4) |
                  (number % 3 == 0 ? zebx::kFrameVoice : 0);
    frame.time_stamp = kTestFirstStamp + static_cast<DWORD>(number) * 40;
    frame.video = random_bytes(video_bytes + static_cast<std::size_t>(number % 3));
    if (number % 3 == 0) frame.speech = random_bytes(2);
  }
  return frames;
}

// The bytes of a recording of `frames`, finished or as a dead writer leaves it.
inline std::string MakeRecording(const std::vector<TestFrame>& frames, bool finished = true) {
  const MemoryFileSystem disk;
  os::SteppedClock clock(kTestBeginSeconds, kTestFirstStamp);
  CZebFileInfo info = MakeInfo("made");
  CZebFile file;
  file.Open(&info, kZebFileWrite);
  CZebFrameData data;
  for (const TestFrame& frame : frames) {
    clock.MoveTo(frame.time_stamp - kTestFirstStamp);
    Fill(data, frame);
    file.WriteOneFrame(&data);
  }
  if (finished) file.Close();
  return disk.Get("made");
}

// Where the block headers of an intact recording stand, the terminating one included.
inline std::vector<std::size_t> BlockOffsets(const std::string& recording) {
  std::vector<std::size_t> offsets;
  for (DWORD at = DwordAt(recording, 8); at != zebx::kNoBlock; at = DwordAt(recording, at + 4)) {
    offsets.push_back(at);
  }
  return offsets;
}

// Where each frame of an intact recording ends.
inline std::vector<std::size_t> FrameEnds(const std::string& recording,
                                          const std::vector<TestFrame>& frames) {
  std::vector<std::size_t> ends;
  const std::vector<std::size_t> blocks = BlockOffsets(recording);
  std::size_t block = 0;
  std::size_t end = blocks[0];
  for (const TestFrame& frame : frames) {
    if (block < blocks.size() && end == blocks[block]) {
      end += zebx::kBlockHeaderBytes;
      ++block;
    }
    end += (frame.flags & zebx::kFrameVoice) != 0 ? zebx::kVoicedFrameHeaderBytes
                                                  : zebx::kFrameHeaderBytes;
    ends.push_back(end += frame.video.size() + frame.speech.size());
  }
  return ends;
}
