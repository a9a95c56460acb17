// Frames and recordings with known contents, and a reader of recordings that shares no code with
// the library's.
#pragma once

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "platform/framework/mem_file.h"
#include "record/zeb_file.h"
#include "record/zeb_frame_data.h"
#include "tests/support/bytes.h"
#include "tests/support/scoped_time_zone.h"

struct TestFrame {
  WORD type = 0;
  WORD flags = 0;
  DWORD time_stamp = 0;
  std::string video;
  std::string speech;
  bool operator==(const TestFrame&) const = default;
  friend void PrintTo(const TestFrame& frame, std::ostream* out) { *out << frame.time_stamp; }
};

inline void Fill(CZebFrameData& data, const TestFrame& frame) {
  data.SetFrameType(frame.type);
  data.SetFlag(frame.flags);
  data.SetTimeStamp(frame.time_stamp);
  std::copy(frame.video.begin(), frame.video.end(), data.GetVideoBuf());
  data.SetVideoLength(static_cast<DWORD>(frame.video.size()));
  std::copy(frame.speech.begin(), frame.speech.end(), data.GetSpeechBuf());
  data.SetSpeechDataLen(static_cast<DWORD>(frame.speech.size()));
}
inline void FillFrame(CZebFrameData& data, WORD type, DWORD time_stamp, const std::string& video,
                      const std::string& speech = {}) {
  Fill(data, {type, speech.empty() ? WORD{0} : WORD{zebx::kFrameVoice}, time_stamp, video, speech});
}

// The buffer form of a frame or a header of `size` bytes, and reading one back, with the answer.
template <typename Record>
std::string BufferFormOf(Record& record, DWORD size) {
  std::string form(size, '\0');
  auto* cursor = reinterpret_cast<BYTE*>(form.data());
  form.resize(record.Write(cursor));
  return form;
}
template <typename Record>
DWORD ReadBufferForm(Record& record, std::string form) {
  auto* cursor = reinterpret_cast<BYTE*>(form.data());
  return record.Read(cursor, cursor + form.size());
}

// The file form, and reading one back, with the answer.
template <typename Record>
std::string FileFormOf(Record& record) {
  CMemFile file;
  record.Write(&file);
  return {file.GetBytes().begin(), file.GetBytes().end()};
}
template <typename Record>
DWORD ReadFileForm(Record& record, const std::string& form) {
  CMemFile file;
  file.Write({reinterpret_cast<const BYTE*>(form.data()), form.size()});
  file.SeekToBegin();
  return static_cast<DWORD>(record.Read(&file));
}

inline std::string VideoOf(const CZebFrameData& frame) {
  return {frame.GetVideoBuf(), frame.GetVideoBuf() + frame.GetVideoLength()};
}

inline CZebFileInfo MakeInfo(const std::string& path) {
  CZebFileInfo info;
  info.SetFileName(path);
  info.SetCameraID({1, 2});
  info.SetFrameSize(tag_FRAMESIZE{2});
  info.SetCameraName("cam");
  info.SetBoardName("brd");
  info.SetHostName("host");
  return info;
}

// A run of frames: an I-frame every `m_gop`, the frame's number as its video bytes.
struct FrameRun {
  int m_frames = 0;
  int m_gop = 25;
  BYTE m_encoder_type = 0;
  int m_first_number = 0;
  DWORD m_first_stamp = 1000;
  DWORD m_step_ms = 1;
};

// The bytes of frame `number`; their count varies with it.
inline std::string NumberedVideo(int number) {
  return "picture " + std::to_string(number);
}

// Offers the frames as live ones and returns the numbers of those that were written.
inline std::vector<int> WriteRun(CZebFile& file, const FrameRun& run) {
  CZebFrameData frame(64, 64, 64);
  std::vector<int> written;
  for (int i = 0; i < run.m_frames; ++i) {
    const int number = run.m_first_number + i;
    FillFrame(frame, i % run.m_gop == 0 ? 0 : 1,
              run.m_first_stamp + static_cast<DWORD>(i) * run.m_step_ms, NumberedVideo(number));
    frame.SetEncoderType(run.m_encoder_type);
    if (file.WriteOneFrame(&frame) == zebx::kFrameWritten) written.push_back(number);
  }
  return written;
}

// The bytes of a finished recording without names: one block per count, the last one the
// terminating block; frame n has the time stamp 1000 + 40 n and is the n-th of the file.
inline std::string RawRecording(const std::vector<int>& frames_of_blocks) {
  std::string bytes = Hex("5842455A 00000000 34000000 00000000 00000000 02010200") +
                      Little(1000000000) + Little(1000000060) + Little(1000) + Little(0) +
                      std::string(12, '\0');
  DWORD previous = 0xFFFFFFFF;
  int number = 0;
  for (std::size_t block = 0; block < frames_of_blocks.size(); ++block) {
    const auto offset = static_cast<DWORD>(bytes.size());
    const auto stamp = static_cast<DWORD>(1000 + 40 * number);
    std::string frames;
    for (int i = 0; i < frames_of_blocks[block]; ++i, ++number) {
      const std::string video = NumberedVideo(number);
      frames += Little(i == 0 ? 0 : 1, 2) + Little(0, 2) +
                Little(static_cast<DWORD>(1000 + 40 * number)) + Little(video.size()) + video;
    }
    const bool is_last = block + 1 == frames_of_blocks.size();
    bytes += Little(previous) + Little(is_last ? 0xFFFFFFFF : offset + 16 + frames.size()) +
             Little(static_cast<DWORD>(frames_of_blocks[block])) + Little(stamp) + frames;
    previous = offset;
  }
  return bytes;
}

// What ParseRecording finds.
struct ParsedRecording {
  std::string m_fault;   // empty when every byte is where it belongs
  std::string m_header;  // begin time - end time, begin stamp, gmt, flags
  std::string m_blocks;  // frames@stamp of every block
  std::vector<std::string> m_videos;
};

// Walks over a finished recording and checks the header size, the chain in both directions, the
// frames of every block and that nothing lies behind the last block, which has no frames.
inline ParsedRecording ParseRecording(const std::string& bytes) {
  ParsedRecording parsed;
  const auto number = [&](std::size_t offset) { return DwordAt(bytes, offset); };
  const auto text = [&](std::size_t offset) { return std::to_string(number(offset)); };
  const auto fault = [&](const std::string& what, std::size_t offset) {
    parsed.m_blocks = parsed.m_fault = what + " at " + std::to_string(offset);
    return parsed;
  };
  std::size_t offset = 40;
  for (int name = 0; name < 3; ++name) offset += 4 + number(offset);
  if (bytes.substr(0, 4) != "XBEZ" || number(8) != offset) return fault("header size", 8);
  parsed.m_header = text(24) + "-" + text(28) + ", stamp " + text(32) + ", gmt " + text(36) +
                    ", flags " + text(12);

  DWORD previous = zebx::kNoBlock;
  while (true) {
    if (offset + 16 > bytes.size()) return fault("no block header", offset);
    if (number(offset) != previous) return fault("previous block", offset);
    const DWORD next = number(offset + 4);
    const DWORD frames = number(offset + 8);
    parsed.m_blocks +=
        (previous == zebx::kNoBlock ? "" : " ") + text(offset + 8) + "@" + text(offset + 12);
    std::size_t at = offset + 16;
    for (DWORD i = 0; i < frames; ++i) {
      const DWORD type_and_flags = number(at);
      const bool voiced = type_and_flags >> 31 != 0;
      const std::size_t header_bytes = voiced ? 16 : 12;
      if (i == 0 && (type_and_flags & 0xFFFF) != 0) return fault("no I-frame", at);
      const std::size_t video_bytes = number(at + 8);
      const std::size_t end = at + header_bytes + video_bytes + (voiced ? number(at + 12) : 0);
      if (end > bytes.size()) return fault("frame cut off", at);
      parsed.m_videos.push_back(bytes.substr(at + header_bytes, video_bytes));
      at = end;
    }
    if (frames == 0 && next == zebx::kNoBlock) {
      return at == bytes.size() ? parsed : fault("bytes behind the end", at);
    }
    if (next != at) return fault("next block", offset + 4);
    previous = static_cast<DWORD>(offset);
    offset = next;
  }
}

inline std::vector<std::string> NumberedVideos(const std::vector<int>& numbers) {
  std::vector<std::string> videos(numbers.size());
  std::ranges::transform(numbers, videos.begin(), NumberedVideo);
  return videos;
}

// What the library reads of a recording in order; empty exactly when it does not open.
inline std::vector<TestFrame> ReadFrames(const std::string& path) {
  CZebFileInfo info = MakeInfo(path);
  CZebFile file;
  std::vector<TestFrame> frames;
  if (file.Open(&info, kZebFileRead) == 0) return frames;
  CZebFrameData data;
  while (file.ReadOneFrame(&data, -1, 0) == 1) {
    frames.push_back({data.GetFrameType(), data.GetFlag(), data.GetTimeStamp(), VideoOf(data), {}});
    frames.back().speech.assign(data.GetSpeechBuf(), data.GetSpeechBuf() + data.GetSpeechLength());
  }
  return frames;
}
inline std::vector<std::string> ReadVideos(const std::string& path) {
  std::vector<std::string> videos;
  for (const TestFrame& frame : ReadFrames(path)) videos.push_back(frame.video);
  return videos;
}
