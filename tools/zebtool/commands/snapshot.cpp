// zebtool snapshot: one picture of a recording, with where and when it was taken.
#include <algorithm>
#include <memory>
#include <optional>

#include "platform/framework/file.h"
#include "record/zeb_frame_data.h"
#include "recovery/recording_check.h"
#include "tools/zebtool/commands/commands.h"
#include "tools/zebtool/console/command_line.h"
#include "tools/zebtool/console/text.h"
#include "tools/zebtool/files/host_paths.h"
#include "tools/zebtool/media/picture_decoder.h"
#include "tools/zebtool/media/picture_sizes.h"
#include "tools/zebtool/recordings/frame_position.h"
#include "tools/zebtool/recordings/recording_file.h"
#include "tools/zebtool/recordings/snapshot_file.h"

using namespace zebx;

namespace zebtool {
namespace {

// The last picture stays on the screen so long.
constexpr LONGLONG kLastPictureMs = 1000;
constexpr DWORD kBgrxPixelBytes = 4;

struct Settings {
  std::string input;
  std::string output;
  std::optional<Moment> at;
  std::optional<FramePosition> frame;
  bool force = false;
};

// Finds the frame of a position or a moment, and the I-frame that decoding has to begin with.
class FrameFinder final : public CheckVisitor {
 public:
  FrameFinder(FramePosition position, std::optional<LONGLONG> moment_ms)
      : m_wanted(position), m_moment_ms(moment_ms) {}

  void OnHeader(const CZebFileInfo& info) override { m_begin_stamp = info.GetBeginTimeStamp(); }
  void OnFrame(const CheckedFrame& frame) override {
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
  bool IsBehindWanted(const CheckedFrame& frame) const {
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

// The frame's number, and what decoding it needs to know.
FramePosition FindFrame(const CZebFile& recording, const Settings& settings, FrameFinder& finder) {
  CFile raw;
  OpenRecording(raw, settings.input);
  CheckRecording(raw, finder);
  const auto frame = finder.Found();
  if (!frame) {
    throw JobError("the recording has no picture of that moment; it begins at " +
                   FormatTime(recording.GetBeginTime()) + " and ends at " +
                   FormatTime(recording.GetEndTime()));
  }
  return *frame;
}

int Snapshot(const Settings& settings, Console& console) {
  if (settings.at && settings.frame) throw UsageError("--at or --frame, not both");
  const FramePosition wanted = settings.frame.value_or(FramePosition());
  const std::string output = SnapshotPath(settings.output);
  RefuseSameFile(settings.input, output);
  CheckOutput(output, Existing{settings.force});

  CZebFile recording;
  OpenRecording(recording, settings.input);
  RequireFrame(recording, wanted);
  const PictureSize size = ShowSizeOf(recording);
  if (size.width == 0) {
    throw JobError("the recording's frame size " + std::to_string(recording.GetFrameSize()) +
                   " does not exist; 'zebtool salvage' repairs its header");
  }
  std::optional<LONGLONG> moment_ms;
  if (settings.at) moment_ms = settings.at->MsFrom(recording.GetBeginTime());
  FrameFinder finder(wanted, moment_ms);
  const FramePosition frame = FindFrame(recording, settings, finder);

  CZebFrameData data;
  const std::vector<BYTE> rows = DecodeFrame(recording, finder, frame, size, data);
  CImage image;
  // The last row comes first in a snapshot.
  const int pitch = -static_cast<int>(size.width * kBgrxPixelBytes);
  image.FillRawImage(rows.data(), size.width, size.height, pitch, kBgrxPixelBytes, 0);
  const CTime time = recording.GetTime(data.GetTimeStamp());
  Describe(image, recording, time);
  SaveSnapshot(image, output, Existing{settings.force});
  console.out << output << ": frame " << NameOf(frame) << " of " << FormatTime(time) << ", "
              << size.width << " x " << size.height << '\n';
  return kExitGood;
}

}  // namespace

void AddSnapshot(const Command& root) {
  const auto settings = std::make_shared<Settings>();
  const Command command = root.Sub("snapshot", "decode one picture into a BMP or PNG file");
  command.Usage({"FILE OUT.bmp|OUT.png [--at TIME | --frame BLOCK[:INDEX]]"});
  command.Describe(
      "Decodes one picture of a recording, in the size in which it is shown, into a snapshot: a "
      "BMP file with the board's, camera's and host's names and the picture's time behind it, or "
      "a PNG file without them. \".bmp\" is added to another name.");
  command.Argument("FILE", settings->input);
  command.Argument("OUT.bmp", settings->output);
  AddMomentOption(command, "--at", settings->at, "the picture that was to be seen then");
  AddFrameOption(command, "--frame", settings->frame, "this one, counted from 0; default 0:0");
  AddForceOption(command, settings->force);
  ExplainMoments(command);
  command.Explain(
      "Where the camera had no signal, or the frame cannot be decoded, there is no picture, and "
      "the exit status is 1.");
  command.Does([settings](Console& console) { return Snapshot(*settings, console); });
}

}  // namespace zebtool
