// zebtool export: the pictures and the sound of a recording, decoded.
#include <algorithm>
#include <limits>
#include <memory>
#include <numeric>
#include <optional>
#include <vector>

#include "platform/noxcodec/noxcodec.h"
#include "record/zeb_frame_data.h"
#include "recovery/recording_check.h"
#include "tools/zebtool/commands/commands.h"
#include "tools/zebtool/console/command_line.h"
#include "tools/zebtool/console/progress.h"
#include "tools/zebtool/console/text.h"
#include "tools/zebtool/files/host_paths.h"
#include "tools/zebtool/files/input_stream.h"
#include "tools/zebtool/media/frame_rate.h"
#include "tools/zebtool/media/picture_decoder.h"
#include "tools/zebtool/media/picture_sizes.h"
#include "tools/zebtool/media/sound_track.h"
#include "tools/zebtool/media/y4m.h"
#include "tools/zebtool/recordings/frame_position.h"
#include "tools/zebtool/recordings/recording_file.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr Bounds kFrames = {1, std::numeric_limits<int>::max()};
// Enough to tell well-known rates apart.
constexpr ULONGLONG kMostIntervals = 10000;
constexpr LONG kMaxIntervalMs = 60 * 1000;

struct Settings {
  std::string input;
  std::string output;
  std::optional<std::string> wav;
  std::optional<FramePosition> from;
  std::optional<DWORD> frames;
  bool force = false;

  FramePosition From() const { return from.value_or(FramePosition()); }
};

// What has to be known of the frames before the first one is decoded.
class FrameSurvey final : public CheckVisitor {
 public:
  explicit FrameSurvey(const FramePosition& from) : m_from(from) {}

  void OnFrame(const CheckedFrame& frame) override {
    if (!frame.finished) return;
    m_largest.m_video_bytes = std::max(m_largest.m_video_bytes, frame.header.m_video_bytes);
    m_largest.m_speech_bytes = std::max(m_largest.m_speech_bytes, frame.header.m_speech_bytes);
    const auto interval = static_cast<LONG>(frame.header.m_time_stamp - m_last_stamp);
    m_last_stamp = frame.header.m_time_stamp;
    if (m_intervals.size() < kMostIntervals && m_counted++ > 0 && interval > 0 &&
        interval <= kMaxIntervalMs) {
      m_intervals.push_back(static_cast<DWORD>(interval));
    }
    if (frame.block != m_from.block || frame.index > m_from.index) return;
    if (frame.header.IsIFrame()) m_key_index = frame.index;
  }

  // The sizes of the largest frame.
  const FrameHeader& Largest() const { return m_largest; }
  // The I-frame that decoding has to begin with, in the block of the first frame.
  int KeyIndex() const { return m_key_index; }

  // Of the intervals near the median; gaps and doubled stamps do not count.
  FrameRate Rate() {
    if (m_intervals.empty()) return {};
    const auto middle = m_intervals.begin() + static_cast<std::ptrdiff_t>(m_intervals.size() / 2);
    std::nth_element(m_intervals.begin(), middle, m_intervals.end());
    const DWORD median = *middle;
    ULONGLONG span_ms = 0;
    ULONGLONG count = 0;
    for (const DWORD interval : m_intervals) {
      if (interval * 2 < median || interval > median * 2) continue;
      span_ms += interval;
      ++count;
    }
    return RateOfIntervals(span_ms, count);
  }

 private:
  FramePosition m_from;
  FrameHeader m_largest;
  int m_key_index = 0;
  DWORD m_last_stamp = 0;
  ULONGLONG m_counted = 0;
  std::vector<DWORD> m_intervals;
};

class Exporter {
 public:
  Exporter(const Settings& settings, Console& console)
      : m_settings(settings), m_console(console), m_survey(settings.From()) {
    OpenRecording(m_recording, m_settings.input);
    RequireFrame(m_recording, m_settings.From());
    CFile raw;
    OpenRecording(raw, m_settings.input);
    CheckRecording(raw, m_survey);
    m_frame.Reserve(m_survey.Largest());
  }

  int Run() {
    const Y4mHeader header = MakeHeader();
    PictureDecoder decoder(header.width, header.height);
    const Existing existing{m_settings.force};
    OutputStream video(m_settings.output, existing, m_console);
    Y4mWriter writer(video, header);
    if (m_settings.wav) m_sound.emplace(*m_settings.wav, existing, m_recording.IsRT8Port() != 0);
    SeekToKey(decoder);
    WriteFrames(decoder, writer, header.rate);
    video.Finish();
    return Report(header);
  }

 private:
  Y4mHeader MakeHeader() {
    const PictureSize encoded = EncodeSizeOf(m_recording);
    const PictureSize shown = ShowSizeOf(m_recording);
    if (encoded.width == 0) {
      throw JobError("the recording's frame size " + std::to_string(m_recording.GetFrameSize()) +
                     " does not exist; 'zebtool salvage' repairs its header");
    }
    Y4mHeader header;
    header.width = static_cast<int>(encoded.width);
    header.height = static_cast<int>(encoded.height);
    header.rate = m_survey.Rate();
    const DWORD across = shown.width * encoded.height;
    const DWORD down = shown.height * encoded.width;
    const DWORD divisor = std::gcd(across, down);
    header.pixel_width = across / divisor;
    header.pixel_height = down / divisor;
    return header;
  }

  // Decodes from the I-frame before the first frame on, so that its picture is the right one.
  void SeekToKey(PictureDecoder& decoder) {
    const FramePosition from = m_settings.From();
    FramePosition at{from.block, m_survey.KeyIndex()};
    int seek_block = at.block;
    for (; at.index < from.index; ++at.index, seek_block = -1) {
      m_recording.ReadOneFrame(&m_frame, seek_block, at.index);
      decoder.Decode(m_frame);
    }
    m_next_block = seek_block;
  }

  void WriteFrames(PictureDecoder& decoder, Y4mWriter& writer, const FrameRate& rate) {
    Progress progress(m_console, "export");
    const DWORD most = m_settings.frames.value_or(kFrames.most);
    while (m_frames < most &&
           m_recording.ReadOneFrame(&m_frame, m_next_block, m_settings.From().index) != 0) {
      m_next_block = -1;
      const DWORD stamp = m_frame.GetTimeStamp();
      const auto step = static_cast<LONG>(stamp - m_last_stamp);
      if (m_frames > 0 && step > 0) m_at_ms += static_cast<ULONGLONG>(step);
      m_last_stamp = stamp;
      Count(decoder.Decode(m_frame));
      writer.WritePicture(decoder.Picture());
      if (m_sound && !m_sound->Add(m_frame, m_at_ms)) ++m_bad_speech;
      progress.Show(++m_frames);
    }
    if (m_sound) m_sound->Finish(m_at_ms + rate.Begin(1, kMsPerSecond));
  }

  void Count(PictureDecoder::Result result) {
    if (result == PictureDecoder::Result::kNoSignal) ++m_no_signal;
    if (result == PictureDecoder::Result::kDamaged) {
      ++m_damaged;
      if (!m_first_damaged) m_first_damaged = {m_frame.GetBlockIndex(), m_frame.GetFrameIndex()};
    }
  }

  int Report(const Y4mHeader& header) {
    // The standard output may carry the video.
    std::ostream& out = m_settings.output == kStandardStream ? m_console.err : m_console.out;
    out << m_settings.output << ": " << Plural(m_frames, "picture") << " of " << header.width
        << " x " << header.height << " at " << RateText(header.rate) << "/s\n";
    if (m_settings.wav) out << *m_settings.wav << ": the sound\n";
    if (m_no_signal > 0) {
      out << "  " << Plural(m_no_signal, "frame")
          << " without a signal repeated the last picture\n";
    }
    if (m_damaged + m_bad_speech == 0) return kExitGood;
    if (m_damaged > 0) {
      m_console.err << "zebtool: " << Plural(m_damaged, "frame")
                    << " could not be decoded and repeated the last picture, the first one "
                    << m_first_damaged->block << ':' << m_first_damaged->index << '\n';
    }
    if (m_bad_speech > 0) {
      m_console.err << "zebtool: the sound of " << Plural(m_bad_speech, "frame")
                    << " could not be decoded and is silent\n";
    }
    return kExitBad;
  }

  const Settings& m_settings;
  Console& m_console;
  CZebFile m_recording;
  FrameSurvey m_survey;
  CZebFrameData m_frame;
  std::optional<SoundTrack> m_sound;
  int m_next_block = -1;  // for the next read; -1 is "the next frame"
  DWORD m_last_stamp = 0;
  ULONGLONG m_at_ms = 0;  // of the frame in hand, from the first exported one
  ULONGLONG m_frames = 0;
  ULONGLONG m_no_signal = 0;
  ULONGLONG m_damaged = 0;
  ULONGLONG m_bad_speech = 0;
  std::optional<FramePosition> m_first_damaged;
};

int Export(const Settings& settings, Console& console) {
  if (settings.wav == kStandardStream) throw UsageError("--wav takes a file, not '-'");
  if (settings.wav && settings.wav == settings.output) {
    throw UsageError("video and sound cannot go into one file");
  }
  if (settings.output != kStandardStream) RefuseSameFile(settings.input, settings.output);
  if (settings.wav) RefuseSameFile(settings.input, *settings.wav);
  return Exporter(settings, console).Run();
}

}  // namespace

void AddExport(const Command& root) {
  const auto settings = std::make_shared<Settings>();
  const Command command = root.Sub("export", "decode a recording into Y4M video and WAV sound");
  command.Usage({"FILE OUT.y4m|- [options]"});
  command.Describe("Decodes a recording into uncompressed 4:2:0 video.");
  command.Argument("FILE", settings->input);
  command.Argument("OUT.y4m", settings->output,
                   "a file, a pipe, a device such as /dev/null, or '-' for the standard output");
  command.Option("--wav", "OUT.wav", settings->wav, "the sound, in step with the pictures");
  AddFrameOption(command, "--from", settings->from, "the first frame, counted from 0; default 0:0");
  command.Option("--frames", "N", settings->frames, kFrames,
                 "at most so many frames; default: all");
  AddForceOption(command, settings->force);
  command.Explain(
      "A frame that cannot be decoded, or was recorded without a signal, repeats the last good "
      "picture, so that pictures and sound stay in step. Frames that cannot be decoded are "
      "reported and make the exit status 1. An output file that could not be written whole is "
      "removed.");
  command.Does([settings](Console& console) { return Export(*settings, console); });
}

}  // namespace zebtool
