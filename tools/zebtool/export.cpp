// zebtool export: the pictures and the sound of a recording, decoded.
#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <optional>
#include <vector>

#include "platform/noxcodec/noxcodec.h"
#include "record/zeb_frame_data.h"
#include "recovery/recording_check.h"
#include "tools/zebtool/byte_streams.h"
#include "tools/zebtool/frame_position.h"
#include "tools/zebtool/options.h"
#include "tools/zebtool/picture_decoder.h"
#include "tools/zebtool/picture_sizes.h"
#include "tools/zebtool/progress.h"
#include "tools/zebtool/recording_file.h"
#include "tools/zebtool/sound_track.h"
#include "tools/zebtool/subcommands.h"
#include "tools/zebtool/text.h"
#include "tools/zebtool/y4m.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr std::string_view kHelp =
    "usage: zebtool export FILE OUT.y4m|- [options]\n"
    "\n"
    "Decodes a recording into uncompressed 4:2:0 video.\n"
    "\n"
    "  --wav OUT.wav         the sound, in step with the pictures\n"
    "  --from BLOCK[:INDEX]  the first frame, counted from 0; default 0:0\n"
    "  --frames N            at most so many frames; default: all\n"
    "\n"
    "A frame that cannot be decoded, or was recorded without a signal, repeats the last good\n"
    "picture, so that pictures and sound stay in step. Frames that cannot be decoded are reported\n"
    "and make the exit status 1. An output that could not be written whole is removed.\n";

constexpr DWORD kMaxFrames = std::numeric_limits<int>::max();
// Enough to tell well-known rates apart.
constexpr ULONGLONG kMostIntervals = 10000;
constexpr LONG kMaxIntervalMs = 60 * 1000;

struct Settings {
  std::string input;
  std::string output;
  std::optional<std::string> wav;
  FramePosition from;
  ULONGLONG frames = std::numeric_limits<ULONGLONG>::max();
};

Settings ReadSettings(Arguments arguments) {
  const Options options({"export", {{"--wav"}, {"--from"}, {"--frames"}}, {"FILE", "OUT.y4m"}, 2},
                        arguments);
  Settings settings;
  settings.input = options.Positionals()[0];
  settings.output = options.Positionals()[1];
  settings.wav = options.Text("--wav");
  if (settings.wav == kStandardStream) options.Fail("--wav takes a file, not '-'");
  settings.from = ReadFramePosition(options, "--from").value_or(FramePosition());
  if (const auto frames = options.Number("--frames", 1, kMaxFrames)) settings.frames = *frames;
  return settings;
}

// What has to be known of the frames before the first one is decoded.
class FrameSurvey final : public zebx::CheckVisitor {
 public:
  explicit FrameSurvey(const FramePosition& from) : m_from(from) {}

  void OnFrame(const zebx::CheckedFrame& frame) override {
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
  Exporter(Settings settings, Console& console)
      : m_settings(std::move(settings)), m_console(console), m_survey(m_settings.from) {
    OpenRecording(m_recording, m_settings.input);
    RequireFrame(m_recording, m_settings.from);
    CFile raw;
    OpenRecording(raw, m_settings.input);
    zebx::CheckRecording(raw, m_survey);
    m_frame.Reserve(m_survey.Largest());
  }

  int Run() {
    const Y4mHeader header = MakeHeader();
    PictureDecoder decoder(header.width, header.height);
    OutputStream video(m_settings.output, m_console);
    Y4mWriter writer(video, header);
    std::optional<OutputStream> sound_file;
    if (m_settings.wav) {
      sound_file.emplace(*m_settings.wav, m_console);
      m_sound.emplace(*sound_file, m_recording.IsRT8Port() != 0);
    }
    SeekToKey(decoder);
    WriteFrames(decoder, writer, header.rate);
    video.Finish();
    if (sound_file) sound_file->Finish();
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
    FramePosition at{m_settings.from.block, m_survey.KeyIndex()};
    int seek_block = at.block;
    for (; at.index < m_settings.from.index; ++at.index, seek_block = -1) {
      m_recording.ReadOneFrame(&m_frame, seek_block, at.index);
      decoder.Decode(m_frame);
    }
    m_next_block = seek_block;
  }

  void WriteFrames(PictureDecoder& decoder, Y4mWriter& writer, const FrameRate& rate) {
    Progress progress(m_console, "export");
    while (m_frames < m_settings.frames &&
           m_recording.ReadOneFrame(&m_frame, m_next_block, m_settings.from.index) != 0) {
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
        << " x " << header.height << " at " << header.rate.ToText() << "/s\n";
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

  Settings m_settings;
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

int RunExport(Arguments arguments, Console& console) {
  Settings settings = ReadSettings(arguments);
  if (settings.output != kStandardStream) RefuseSameFile(settings.input, settings.output);
  if (settings.wav) RefuseSameFile(settings.input, *settings.wav);
  if (settings.wav && settings.wav == settings.output) {
    throw UsageError("export: video and sound cannot go into one file");
  }
  return Exporter(std::move(settings), console).Run();
}

}  // namespace

const Subcommand kExportCommand = {"export", "decode a recording into Y4M video and WAV sound",
                                   kHelp, RunExport};

}  // namespace zebtool
