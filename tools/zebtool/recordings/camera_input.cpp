#include "tools/zebtool/recordings/camera_input.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <nlohmann/json.hpp>
#include <utility>

#include "capture/picture_formats.h"
#include "platform/noxcodec/software/picture_scaler.h"
#include "platform/noxcodec/software/speech_encoder.h"
#include "tools/zebtool/console/progress.h"
#include "tools/zebtool/console/text.h"
#include "tools/zebtool/media/speech_source.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr DWORD kUsualFrameSize = 130;
constexpr WORD kTypeBits = 0xFF;

// Rates of NTSC lie at 30, its halves and doubles; everything else counts as PAL.
bool IsNtscRate(const FrameRate& rate) {
  const double per_second = rate.PerSecond();
  constexpr std::array<double, 4> kRates = {60, 30, 15, 7.5};
  return std::any_of(kRates.begin(), kRates.end(), [&](double ntsc) {
    return per_second > ntsc * 0.99 && per_second < ntsc * 1.01;
  });
}

DWORD ChooseFrameSize(const Y4mHeader& video) {
  const bool ntsc_first = IsNtscRate(video.rate);
  std::array<DWORD, 2> firsts = {kFirstPalFrameSize, kFirstNtscFrameSize};
  if (ntsc_first) std::ranges::reverse(firsts);
  for (const DWORD first : firsts) {
    for (DWORD frame_size = first; frame_size < first + kFrameSizesOfStandard; ++frame_size) {
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

}  // namespace

// The sound, cut so that every frame gets exactly the samples of its own time.
class CameraInput::Sound {
 public:
  Sound(const std::string& path, const FrameRate& rate, Console& console)
      : m_reader(path, console), m_source(m_reader), m_rate(rate) {}

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

  SoundReader m_reader;
  SpeechSource m_source;
  noxcodec::SpeechEncoder m_encoder;
  FrameRate m_rate;
  std::vector<std::int16_t> m_samples;
};

CameraInput::CameraInput(CameraSettings settings, Console& console)
    : m_settings(std::move(settings)), m_console(console) {
  OpenInputs();
  ChooseSizes();
  m_encoder = std::make_unique<noxcodec::VideoEncoder>(m_settings.encoder);
}

CameraInput::~CameraInput() = default;

void CameraInput::OpenInputs() {
  m_video.reset();  // before the stream that it reads
  m_input = std::make_unique<InputStream>(m_settings.video, m_console);
  m_video = std::make_unique<Y4mReader>(*m_input);
  m_rate = m_video->Header().rate;
  if (!m_settings.audio) return;
  m_sound = std::make_unique<Sound>(*m_settings.audio, m_rate, m_console);
}

void CameraInput::ChooseSizes() {
  const DWORD frame_size = m_settings.frame_size.value_or(ChooseFrameSize(m_video->Header()));
  DWORD width = 0;
  DWORD height = 0;
  zebxGetEncodeSize(frame_size, &width, &height);
  m_settings.header.SetFrameSize(tag_FRAMESIZE{frame_size});
  m_settings.encoder.width = static_cast<int>(width);
  m_settings.encoder.height = static_cast<int>(height);
}

std::string CameraInput::Play(RecordingWriter& writer, DWORD first_stamp, DWORD loops,
                              const std::string& label) {
  const auto start = std::chrono::steady_clock::now();
  std::string trouble;
  try {
    Progress progress(m_console, label);
    for (DWORD loop = 0; loop < loops; ++loop) {
      if (loop > 0) OpenInputs();
      PlayOnce(writer, first_stamp, progress);
    }
  } catch (const JobError& error) {
    trouble = error.what();
  }
  m_report.seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  writer.Finish();
  if (m_report.frames == 0) {
    throw JobError(trouble.empty() ? "the video has no pictures" : trouble);
  }
  if (trouble.empty()) return trouble;
  return trouble + "; the " + Plural(m_report.frames, "frame") + " before it are kept";
}

void CameraInput::PlayOnce(RecordingWriter& writer, DWORD first_stamp, Progress& progress) {
  noxcodec::Picture source(m_video->Header().width, m_video->Header().height);
  noxcodec::Picture scaled(m_settings.encoder.width, m_settings.encoder.height);
  noxcodec::PictureScaler scaler;
  while (m_video->ReadPicture(source)) {
    scaler.Scale(source.View(), scaled);
    const auto stamp =
        first_stamp + static_cast<DWORD>(m_rate.Begin(m_report.frames, kMsPerSecond));
    const auto speech = m_sound ? m_sound->PacketOf(m_report.frames) : std::span<const BYTE>();
    const auto fill = [&](bool force_key) {
      FillFrame(m_frame, m_encoder->Encode(scaled.View(), force_key), speech, stamp,
                m_settings.encoder_type);
    };
    fill(false);
    if (!writer.Append(m_frame)) {
      // A further file has begun, which wants an I-frame first.
      fill(true);
      writer.Append(m_frame);
    }
    Count();
    progress.Show(m_report.frames);
  }
}

void CameraInput::Count() {
  ++m_report.frames;
  if (m_frame.IsIFrame()) ++m_report.i_frames;
  if (m_frame.IsVoice() != 0) ++m_report.voiced_frames;
  m_report.raw_bytes += RawPictureBytes(m_settings.encoder.width, m_settings.encoder.height);
}

double CameraInput::Ratio(const std::vector<WrittenFile>& files) const {
  return static_cast<double>(m_report.raw_bytes) /
         static_cast<double>(std::max<ULONGLONG>(TotalBytes(files), 1));
}

double CameraInput::FramesPerSecond() const {
  return static_cast<double>(m_report.frames) / std::max(m_report.seconds, 1e-3);
}

void CameraInput::PrintReport(std::ostream& out, const std::vector<WrittenFile>& files) const {
  out << "  pictures   " << m_settings.encoder.width << " x " << m_settings.encoder.height << " at "
      << RateText(m_rate) << "/s, frame size " << m_settings.header.GetFrameSize() << ", "
      << Plural(m_report.i_frames, "I-frame") << ", " << FormatCount(m_report.voiced_frames)
      << " with speech\n"
      << "  ratio      " << FormatDecimals(Ratio(files), 1) << " : 1 of "
      << Plural(m_report.raw_bytes, "raw byte") << ", "
      << FormatCount(TotalBytes(files) / m_report.frames) << " bytes a frame\n"
      << "  speed      " << FormatDecimals(FramesPerSecond(), 0) << " frames/s\n";
}

void CameraInput::PutReport(Json& json, const std::vector<WrittenFile>& files) const {
  json["width"] = m_settings.encoder.width;
  json["height"] = m_settings.encoder.height;
  json["frame_size"] = DWORD{m_settings.header.GetFrameSize()};
  json["rate"] = Rounded(m_rate.PerSecond());
  json["frames"] = m_report.frames;
  json["i_frames"] = m_report.i_frames;
  json["voiced_frames"] = m_report.voiced_frames;
  json["raw_bytes"] = m_report.raw_bytes;
  json["ratio"] = Rounded(Ratio(files));
  json["frames_per_second"] = Rounded(FramesPerSecond());
}

}  // namespace zebtool
