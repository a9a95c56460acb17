#include "tools/zebtool/recordings/camera_options.h"

#include "capture/picture_formats.h"
#include "tools/zebtool/console/command_line.h"
#include "tools/zebtool/console/text.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr Bounds kGop = {1, 1000};
constexpr Bounds kEncoderType = {0, 15};
constexpr Bounds kIndex = {0, 255};

std::optional<DWORD> ParseFrameSize(const std::string& text) {
  const auto number = ParseNumber(text);
  return number && zebxGetVideoStd(*number) != kNoVideoStandard ? number : std::nullopt;
}

std::optional<std::pair<int, int>> ParseQuantisers(const std::string& text) {
  const auto parse = [](std::string_view part) {
    const auto number = ParseNumber(part);
    return number && *number >= noxcodec::kMinQuantiser && *number <= noxcodec::kMaxQuantiser
               ? static_cast<int>(*number)
               : 0;
  };
  const std::size_t comma = text.find(',');
  if (comma == std::string::npos) return std::nullopt;
  const std::pair quantisers(parse(text.substr(0, comma)), parse(text.substr(comma + 1)));
  if (quantisers.first == 0 || quantisers.second == 0) return std::nullopt;
  return quantisers;
}

}  // namespace

void AddCameraOptions(const Command& command, CameraOptions& options) {
  command.Argument("VIDEO.y4m", options.video, "4:2:0 video of any size; '-' reads a pipe");
  command.Heading("camera");
  command.Option("--audio", "SOUND", options.audio,
                 "WAV, FLAC, OGG and other sound files, of any rate and number of channels; '-' "
                 "reads a pipe");
  command.Option("--frame-size", "N", options.frame_size, ParseFrameSize, "0 to 8 or 128 to 136",
                 "0 to 8 (NTSC) or 128 to 136 (PAL); default: the lowest one with the video's "
                 "size, those of the standard of its rate first, else 130");
  command.Option("--gop", "N", options.gop, kGop,
                 "frames from one I-frame to the next, 1 to 1000; default 25");
  command.Option("--quantiser", "I,P", options.quantisers, ParseQuantisers,
                 "two numbers from 1 to 31 such as 6,8",
                 "coarseness of I-frames and of the others, 1 to 31; default 6,8");
  command.Option("--encoder-type", "N", options.encoder_type, kEncoderType, "0 to 15; default 0");
  command.Option("--begin", "TIME", options.begin, ParseTime, kTimeForm,
                 "local time of the first frame, \"YYYY-MM-DD HH:MM:SS\"; default: now");
  command.Option("--board-name", "NAME", options.board_name, "default: empty");
  command.Option("--camera-name", "NAME", options.camera_name, "default: empty");
  command.Option("--board", "N", options.board, kIndex, "0 to 255; default 0");
  command.Option("--camera", "N", options.camera, kIndex, "0 to 255; default 0");
}

CameraSettings SettingsOf(const CameraOptions& options, const std::string& host) {
  CameraSettings settings;
  settings.video = options.video;
  settings.audio = options.audio;
  settings.frame_size = options.frame_size;
  settings.begin = options.begin.value_or(CTime::GetCurrentTime());
  settings.encoder_type = static_cast<BYTE>(options.encoder_type.value_or(0));
  if (options.gop) settings.encoder.gop_length = static_cast<int>(*options.gop);
  if (options.quantisers) {
    settings.encoder.quantiser_i = options.quantisers->first;
    settings.encoder.quantiser_p = options.quantisers->second;
  }
  settings.header.SetBoardName(options.board_name);
  settings.header.SetCameraName(options.camera_name);
  settings.header.SetHostName(host);
  settings.header.SetCameraID({static_cast<WORD>(options.board.value_or(0)),
                               static_cast<WORD>(options.camera.value_or(0))});
  return settings;
}

}  // namespace zebtool
