// zebtool snapshot: one picture of a recording, with where and when it was taken.
#include <algorithm>
#include <optional>

#include "platform/framework/file.h"
#include "record/zeb_frame_data.h"
#include "recovery/recording_check.h"
#include "tools/zebtool/byte_streams.h"
#include "tools/zebtool/frame_position.h"
#include "tools/zebtool/picture_decoder.h"
#include "tools/zebtool/picture_sizes.h"
#include "tools/zebtool/recording_file.h"
#include "tools/zebtool/snapshot_file.h"
#include "tools/zebtool/subcommands.h"
#include "tools/zebtool/text.h"

using namespace zebx;

namespace zebtool {
namespace {

const std::string kHelp =
    "usage: zebtool snapshot FILE OUT.bmp [--at TIME | --frame BLOCK[:INDEX]]\n"
    "\n"
    "Decodes one picture of a recording, in the size in which it is shown, into a snapshot: a BMP\n"
    "file with the board's, camera's and host's names and the picture's time behind it. \".bmp\" "
    "is\n"
    "added to another name.\n"
    "\n"
    "  --at TIME              the picture that was to be seen then\n"
    "  --frame BLOCK[:INDEX]  this one, counted from 0; default 0:0\n"
    "\n" +
    std::string(kMomentHelp) +
    "\n"
    "Where the camera had no signal, or the frame cannot be decoded, there is no picture, and the\n"
    "exit status is 1.\n";

// The last picture stays on the screen so long.
constexpr LONGLONG kLastPictureMs = 1000;
constexpr DWORD kBgrxPixelBytes = 4;

// Finds the frame of a position or a moment, and the I-frame that decoding has to begin with.
class FrameFinder final : public zebx::CheckVisitor {
 public:
  FrameFinder(FramePosition position, std::optional<LONGLONG> moment_ms)
      : m_wanted(position), m_moment_ms(moment_ms) {}

  void OnHeader(const CZebFileInfo& info) override { m_begin_stamp = info.GetBeginTimeStamp(); }
  void OnFrame(const zebx::CheckedFrame& frame) override {
    if (!frame.finished) return;
    m_largest.m_video_bytes = std::max(m_largest.m_video_bytes, frame.header.m_video_bytes);
    m_largest.m_speech_bytes = std::max(m_largest.m_speech_bytes, frame.header.m_speech_bytes);
    m_last_ms = frame.header.m_time_stamp - m_begin_stamp;
    if (m_passed || IsBehindWanted(frame)) {
      m_passed = true;
      return;
    }
    m_found = FramePosition{frame.block, frame.index};
    if (frame.index == 0 || frame.header.IsIFrame()) m_key_index = frame.index;
  }

  // Nothing when the moment lies before or behind the recording.
  std::optional<FramePosition> Found() const {
    if (m_moment_ms && *m_moment_ms > m_last_ms + kLastPictureMs) return std::nullopt;
    return m_found;
  }
  // In the same block.
  int KeyIndex() const { return m_key_index; }
  // The sizes of the largest frame.
  const FrameHeader& Largest() const { return m_largest; }

 private:
  bool IsBehindWanted(const zebx::CheckedFrame& frame) const {
    if (m_moment_ms) return m_last_ms > *m_moment_ms;
    return frame.block > m_wanted.block ||
           (frame.block == m_wanted.block && frame.index > m_wanted.index);
  }

  FramePosition m_wanted;
  std::optional<LONGLONG> m_moment_ms;
  DWORD m_begin_stamp = 0;
  LONGLONG m_last_ms = 0;  // of the frame walked over last, from the beginning
  bool m_passed = false;
  std::optional<FramePosition> m_found;
  int m_key_index = 0;
  FrameHeader m_largest;
};

std::string NameOf(const FramePosition& frame) {
  return std::to_string(frame.block) + ':' + std::to_string(frame.index);
}

// The picture as 32-bit rows, the top one first. The frame is left in `data`.
std::vector<BYTE> DecodeFrame(CZebFile& recording, const FrameFinder& finder,
                              const FramePosition& frame, PictureSize size, CZebFrameData& data) {
  data.Reserve(finder.Largest());
  PictureDecoder decoder(static_cast<int>(size.width), static_cast<int>(size.height));
  auto result = PictureDecoder::Result::kDamaged;
  for (int index = finder.KeyIndex(); index <= frame.index; ++index) {
    if (recording.ReadOneFrame(&data, frame.block, index) == 0) break;
    result = decoder.Decode(data);
  }
  if (result == PictureDecoder::Result::kNoSignal) {
    throw JobError("there is no picture: the camera had no signal at frame " + NameOf(frame));
  }
  if (result == PictureDecoder::Result::kDamaged) {
    throw JobError("frame " + NameOf(frame) + " cannot be decoded; 'zebtool verify' tells more");
  }
  return decoder.BgrxPicture();
}

void Describe(CImage& image, const CZebFileInfo& info, CTime time) {
  image.SetBoardName(info.GetBoardName());
  image.SetCameraName(info.GetCameraName());
  image.SetHostName(info.GetHostName());
  image.SetGmt(info.GetGmt());
  image.SetTimeStamp(time.GetTime());
}

int RunSnapshot(Arguments arguments, Console& console) {
  const Options options({"snapshot", {{"--at"}, {"--frame"}}, {"FILE", "OUT.bmp"}, 2}, arguments);
  if (options.Has("--at") && options.Has("--frame")) options.Fail("--at or --frame, not both");
  const auto wanted = ReadFramePosition(options, "--frame").value_or(FramePosition());
  const std::string& input = options.Positionals()[0];
  const std::string output = SnapshotPath(options.Positionals()[1]);
  RefuseSameFile(input, output);

  CZebFile recording;
  OpenRecording(recording, input);
  RequireFrame(recording, wanted);
  const PictureSize size = ShowSizeOf(recording);
  if (size.width == 0) {
    throw JobError("the recording's frame size " + std::to_string(recording.GetFrameSize()) +
                   " does not exist; 'zebtool salvage' repairs its header");
  }
  FrameFinder finder(wanted, ReadMomentMs(options, "--at", recording.GetBeginTime()));
  CFile raw;
  OpenRecording(raw, input);
  zebx::CheckRecording(raw, finder);
  const auto frame = finder.Found();
  if (!frame) {
    throw JobError("the recording has no picture of that moment; it begins at " +
                   FormatTime(recording.GetBeginTime()) + " and ends at " +
                   FormatTime(recording.GetEndTime()));
  }

  CZebFrameData data;
  const std::vector<BYTE> rows = DecodeFrame(recording, finder, *frame, size, data);
  CImage image;
  // The last row comes first in a snapshot.
  const int pitch = -static_cast<int>(size.width * kBgrxPixelBytes);
  image.FillRawImage(rows.data(), size.width, size.height, pitch, kBgrxPixelBytes, 0);
  const CTime time = recording.GetTime(data.GetTimeStamp());
  Describe(image, recording, time);
  SaveSnapshot(image, output, console);
  console.out << output << ": frame " << NameOf(*frame) << " of " << FormatTime(time) << ", "
              << size.width << " x " << size.height << '\n';
  return kExitGood;
}

}  // namespace

const Subcommand kSnapshotCommand = {"snapshot", "decode one picture into a BMP snapshot", kHelp,
                                     RunSnapshot};

}  // namespace zebtool
