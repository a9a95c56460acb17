// zebtool import: real video and sound become a recording.
#include <chrono>
#include <optional>
#include <utility>

#include "capture/picture_formats.h"
#include "platform/noxcodec/software/picture_scaler.h"
#include "platform/noxcodec/software/speech_encoder.h"
#include "platform/noxcodec/software/video_encoder.h"
#include "record/zeb_frame_data.h"
#include "tools/zebtool/byte_streams.h"
#include "tools/zebtool/json_writer.h"
#include "tools/zebtool/options.h"
#include "tools/zebtool/progress.h"
#include "tools/zebtool/recording_writer.h"
#include "tools/zebtool/speech_source.h"
#include "tools/zebtool/subcommands.h"
#include "tools/zebtool/text.h"
#include "tools/zebtool/y4m.h"

namespace zebtool {
namespace {

constexpr std::string_view kHelp =
    "usage: zebtool import VIDEO.y4m|- OUT.zebz [options]\n"
    "\n"
    "Compresses 4:2:0 video of any size, scaled to the frame size, into a recording.\n"
    "\n"
    "  --audio SPEECH.wav       sound (PCM, 8 or 16 bits, one or two channels, any rate)\n"
    "  --frame-size N           0 to 8 (NTSC) or 128 to 136 (PAL); default: the lowest one with "
    "the\n"
    "                           video's size, those of the standard of its rate first, else 130\n"
    "  --gop N                  frames from one I-frame to the next, 1 to 1000; default 25\n"
    "  --quantiser I,P          coarseness of I-frames and of the others, 1 to 31; default 6,8\n"
    "  --encoder-type N         0 to 15; default 0\n"
    "  --begin \"YYYY-MM-DD HH:MM:SS\"   local time of the first frame; default: now\n"
    "  --host NAME --board-name NAME --camera-name NAME   default: empty\n"
    "  --board N --camera N     0 to 255; default 0\n"
    "  --json                   the report as JSON\n"
    "\n"
    "An input that ends inside a picture, or a full disk, ends the recording there: what was\n"
    "written stays, and the exit status is 1.\n";

constexpr DWORD kMaxGop = 1000;
constexpr DWORD kMaxEncoderType = 15;
constexpr DWORD kMaxIndex = 255;
constexpr DWORD kUsualFrameSize = 130;
constexpr DWORD kFirstPal = 128;
constexpr DWORD kSizesPerStandard = 9;
constexpr WORD kTypeBits = 0xFF;

struct Settings {
  std::string input;
  std::string output;
  std::optional<std::string> audio;
  std::optional<DWORD> frame_size;
  CTime begin;
  BYTE encoder_type = 0;
  noxcodec::VideoEncoderSettings encoder;
  CZebFileInfo header;
  bool json = false;
};

void ReadQuantiser(const Options& options, noxcodec::VideoEncoderSettings& encoder) {
  const auto text = options.Text("--quantiser");
  if (!text) return;
  const auto parse = [](std::string_view part) {
    const auto number = ParseNumber(part);
    return number && *number >= noxcodec::kMinQuantiser && *number <= noxcodec::kMaxQuantiser
               ? static_cast<int>(*number)
               : 0;
  };
  const std::size_t comma = text->find(',');
  encoder.quantiser_i = parse(text->substr(0, comma));
  encoder.quantiser_p = comma == std::string::npos ? 0 : parse(text->substr(comma + 1));
  if (encoder.quantiser_i == 0 || encoder.quantiser_p == 0) {
    options.Fail("--quantiser takes two numbers from 1 to 31 such as 6,8, not '" + *text + "'");
  }
}

Settings ReadSettings(Arguments arguments) {
  const Options options({"import",
                         {{"--audio"},
                          {"--frame-size"},
                          {"--gop"},
                          {"--quantiser"},
                          {"--encoder-type"},
                          {"--begin"},
                          {"--host"},
                          {"--board-name"},
                          {"--camera-name"},
                          {"--board"},
                          {"--camera"},
                          {"--json", OptionSpec::Kind::kFlag}},
                         {"VIDEO.y4m", "OUT.zebz"},
                         2},
                        arguments);
  Settings settings;
  settings.input = options.Positionals()[0];
  settings.output = options.Positionals()[1];
  settings.audio = options.Text("--audio");
  settings.json = options.Has("--json");
  settings.frame_size = options.Number("--frame-size", 0, kFirstPal + kSizesPerStandard - 1);
  if (settings.frame_size && zebxGetVideoStd(*settings.frame_size) == kNoVideoStandard) {
    options.Fail("--frame-size takes 0 to 8 or 128 to 136");
  }
  settings.encoder.gop_length =
      static_cast<int>(options.Number("--gop", 1, kMaxGop)
                           .value_or(static_cast<DWORD>(settings.encoder.gop_length)));
  ReadQuantiser(options, settings.encoder);
  settings.encoder_type =
      static_cast<BYTE>(options.Number("--encoder-type", 0, kMaxEncoderType).value_or(0));
  settings.begin = CTime::GetCurrentTime();
  if (const auto begin = options.Text("--begin")) {
    const auto time = ParseTime(*begin);
    if (!time) options.Fail("--begin takes \"YYYY-MM-DD HH:MM:SS\", not '" + *begin + "'");
    settings.begin = *time;
  }
  settings.header.SetHostName(options.Text("--host").value_or(""));
  settings.header.SetBoardName(options.Text("--board-name").value_or(""));
  settings.header.SetCameraName(options.Text("--camera-name").value_or(""));
  const auto index = [&](std::string_view name) {
    return static_cast<WORD>(options.Number(name, 0, kMaxIndex).value_or(0));
  };
  settings.header.SetCameraID({index("--board"), index("--camera")});
  return settings;
}

// Rates of NTSC lie at 30, its halves and doubles; everything else counts as PAL.
bool IsNtscRate(const FrameRate& rate) {
  const double per_second = rate.PerSecond();
  for (const double ntsc : {60.0, 30.0, 15.0, 7.5}) {
    if (per_second > ntsc * 0.99 && per_second < ntsc * 1.01) return true;
  }
  return false;
}

DWORD ChooseFrameSize(const Y4mHeader& video) {
  const bool ntsc_first = IsNtscRate(video.rate);
  for (const DWORD first : {ntsc_first ? 0 : kFirstPal, ntsc_first ? kFirstPal : 0}) {
    for (DWORD frame_size = first; frame_size < first + kSizesPerStandard; ++frame_size) {
      DWORD width = 0;
      DWORD height = 0;
      zebxGetEncodeSize(frame_size, &width, &height);
      if (static_cast<int>(width) == video.width && static_cast<int>(height) == video.height) {
        return frame_size;
      }
    }
  }
  return kUsualFrameSize;
}

// The sound, cut so that every frame gets exactly the samples of its own time.
class SoundCutter {
 public:
  SoundCutter(const std::string& path, const FrameRate& rate, Console& console)
      : m_input(path, console), m_reader(m_input), m_source(m_reader), m_rate(rate) {}

  // The packet of frame `number`; empty when the sound has ended. Valid until the next call.
  std::span<const BYTE> PacketOf(ULONGLONG number) {
    m_samples.resize(static_cast<std::size_t>(Begin(number + 1) - Begin(number)));
    const std::size_t count = m_source.Read(m_samples);
    if (count == 0) return {};
    return m_encoder.Encode(std::span(m_samples).first(count));
  }

 private:
  // Packets hold even numbers of samples, so frames share them out in pairs.
  ULONGLONG Begin(ULONGLONG number) const { return 2 * m_rate.Begin(number, kSpeechRate / 2); }

  InputStream m_input;
  WavReader m_reader;
  SpeechSource m_source;
  noxcodec::SpeechEncoder m_encoder;
  FrameRate m_rate;
  std::vector<std::int16_t> m_samples;
};

// What the live path does with a packet of the device.
void FillFrame(CZebFrameData& frame, const noxcodec::VideoEncoder::Packet& video,
               std::span<const BYTE> speech, DWORD time_stamp, BYTE encoder_type) {
  FrameHeader sizes;
  sizes.m_video_bytes = static_cast<DWORD>(video.data.size());
  sizes.m_speech_bytes = static_cast<DWORD>(speech.size());
  frame.Reserve(sizes);
  frame.Reset();
  frame.SetFrameType(static_cast<WORD>(video.frame_type & kTypeBits));
  frame.SetEncoderType(encoder_type);
  frame.SetRT(1);
  frame.SetVideoLost(0);
  frame.SetAudio(speech.empty() ? 0 : 1);
  frame.SetTimeStamp(time_stamp);
  frame.SetVideoLength(sizes.m_video_bytes);
  std::copy(video.data.begin(), video.data.end(), frame.GetVideoBuf());
  if (speech.empty()) return;
  frame.SetSpeechDataLen(sizes.m_speech_bytes);
  std::copy(speech.begin(), speech.end(), frame.GetSpeechBuf());
}

struct Report {
  ULONGLONG frames = 0;
  ULONGLONG i_frames = 0;
  ULONGLONG voiced_frames = 0;
  ULONGLONG raw_bytes = 0;
  double seconds = 0;  // of work
};

class Importer {
 public:
  Importer(Settings settings, Console& console)
      : m_settings(std::move(settings)),
        m_console(console),
        m_input(m_settings.input, console),
        m_video(m_input) {
    if (m_settings.audio) m_sound.emplace(*m_settings.audio, m_video.Header().rate, console);
    ChooseSizes();
  }

  int Run() {
    const DWORD first_stamp = os::GetTickCount();
    RecordingWriter writer(m_settings.header, m_settings.output, m_settings.begin, first_stamp);
    std::string trouble;
    try {
      Encode(writer, first_stamp);
    } catch (const JobError& error) {
      trouble = error.what();
    }
    writer.Finish();
    if (m_report.frames == 0)
      throw JobError(trouble.empty() ? "the video has no pictures" : trouble);
    Print(writer.Files());
    if (trouble.empty()) return kExitGood;
    throw JobError(trouble + "; the " + Plural(m_report.frames, "frame") + " before it are kept");
  }

 private:
  void ChooseSizes() {
    const DWORD frame_size = m_settings.frame_size.value_or(ChooseFrameSize(m_video.Header()));
    DWORD width = 0;
    DWORD height = 0;
    zebxGetEncodeSize(frame_size, &width, &height);
    m_settings.header.SetFrameSize(tag_FRAMESIZE{frame_size});
    m_settings.encoder.width = static_cast<int>(width);
    m_settings.encoder.height = static_cast<int>(height);
  }

  void Encode(RecordingWriter& writer, DWORD first_stamp) {
    const auto start = std::chrono::steady_clock::now();
    const Y4mHeader& video = m_video.Header();
    noxcodec::VideoEncoder encoder(m_settings.encoder);
    noxcodec::Picture source(video.width, video.height);
    noxcodec::Picture scaled(m_settings.encoder.width, m_settings.encoder.height);
    CZebFrameData frame;
    Progress progress(m_console, "import");
    while (m_video.ReadPicture(source)) {
      noxcodec::ScalePicture(source.View(), scaled);
      const auto stamp =
          first_stamp + static_cast<DWORD>(video.rate.Begin(m_report.frames, kMsPerSecond));
      const auto speech = m_sound ? m_sound->PacketOf(m_report.frames) : std::span<const BYTE>();
      const auto fill = [&](bool force_key) {
        FillFrame(frame, encoder.Encode(scaled.View(), force_key), speech, stamp,
                  m_settings.encoder_type);
      };
      fill(false);
      if (!writer.Append(frame)) {
        // A further file has begun, which wants an I-frame first.
        fill(true);
        writer.Append(frame);
      }
      Count(frame);
      progress.Show(m_report.frames);
    }
    m_report.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }

  void Count(const CZebFrameData& frame) {
    ++m_report.frames;
    if (frame.IsIFrame()) ++m_report.i_frames;
    if (frame.IsVoice() != 0) ++m_report.voiced_frames;
    m_report.raw_bytes += RawPictureBytes(m_settings.encoder.width, m_settings.encoder.height);
  }

  void Print(const std::vector<WrittenFile>& files) {
    ULONGLONG bytes = 0;
    for (const WrittenFile& file : files) bytes += file.bytes;
    const double ratio = static_cast<double>(m_report.raw_bytes) / static_cast<double>(bytes);
    const double speed = static_cast<double>(m_report.frames) / std::max(m_report.seconds, 1e-3);
    if (m_settings.json) {
      PrintJson(files, ratio, speed);
      return;
    }
    std::ostream& out = m_console.out;
    for (const WrittenFile& file : files) {
      out << file.path << ": " << Plural(file.frames, "frame") << " in "
          << Plural(static_cast<ULONGLONG>(file.blocks), "block") << ", "
          << Plural(file.bytes, "byte") << '\n';
    }
    out << "  pictures   " << m_settings.encoder.width << " x " << m_settings.encoder.height
        << " at " << m_video.Header().rate.ToText() << "/s, frame size "
        << m_settings.header.GetFrameSize() << ", " << Plural(m_report.i_frames, "I-frame") << ", "
        << FormatCount(m_report.voiced_frames) << " with speech\n"
        << "  ratio      " << FormatDecimals(ratio, 1) << " : 1 of "
        << Plural(m_report.raw_bytes, "raw byte") << ", " << FormatCount(bytes / m_report.frames)
        << " bytes a frame\n"
        << "  speed      " << FormatDecimals(speed, 0) << " frames/s\n";
  }

  void PrintJson(const std::vector<WrittenFile>& files, double ratio, double speed) {
    JsonWriter json(m_console.out);
    json.BeginObject();
    json.BeginArray("files");
    for (const WrittenFile& file : files) {
      json.BeginObject();
      json.Value("path", file.path);
      json.Value("frames", file.frames);
      json.Value("blocks", file.blocks);
      json.Value("bytes", file.bytes);
      json.EndObject();
    }
    json.EndArray();
    json.Value("width", m_settings.encoder.width);
    json.Value("height", m_settings.encoder.height);
    json.Value("frame_size", DWORD{m_settings.header.GetFrameSize()});
    json.Value("rate", m_video.Header().rate.PerSecond());
    json.Value("frames", m_report.frames);
    json.Value("i_frames", m_report.i_frames);
    json.Value("voiced_frames", m_report.voiced_frames);
    json.Value("raw_bytes", m_report.raw_bytes);
    json.Value("ratio", ratio);
    json.Value("frames_per_second", speed);
    json.EndObject();
  }

  Settings m_settings;
  Console& m_console;
  InputStream m_input;
  Y4mReader m_video;
  std::optional<SoundCutter> m_sound;
  Report m_report;
};

int RunImport(Arguments arguments, Console& console) {
  Settings settings = ReadSettings(arguments);
  if (settings.input != kStandardStream) RefuseSameFile(settings.input, settings.output);
  if (settings.audio) RefuseSameFile(*settings.audio, settings.output);
  return Importer(std::move(settings), console).Run();
}

}  // namespace

const Subcommand kImportCommand = {"import", "compress Y4M video and WAV sound into a recording",
                                   kHelp, RunImport};

}  // namespace zebtool
