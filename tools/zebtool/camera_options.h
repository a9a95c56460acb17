// The options that describe a camera: its video and sound, how they are compressed, and its names.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/noxcodec/software/video_encoder.h"
#include "record/zeb_file_info.h"
#include "tools/zebtool/options.h"

namespace zebtool {

struct CameraSettings {
  std::string video;
  std::optional<std::string> audio;
  std::optional<DWORD> frame_size;
  CTime begin;
  BYTE encoder_type = 0;
  zebx::noxcodec::VideoEncoderSettings encoder;
  CZebFileInfo header;
};

// The lines about these options for a subcommand's help.
inline constexpr std::string_view kCameraHelp =
    "  --audio SPEECH.wav       sound (PCM, 8 or 16 bits, one or two channels, any rate)\n"
    "  --frame-size N           0 to 8 (NTSC) or 128 to 136 (PAL); default: the lowest one with "
    "the\n"
    "                           video's size, those of the standard of its rate first, else 130\n"
    "  --gop N                  frames from one I-frame to the next, 1 to 1000; default 25\n"
    "  --quantiser I,P          coarseness of I-frames and of the others, 1 to 31; default 6,8\n"
    "  --encoder-type N         0 to 15; default 0\n"
    "  --begin \"YYYY-MM-DD HH:MM:SS\"   local time of the first frame; default: now\n"
    "  --board-name NAME --camera-name NAME   default: empty\n"
    "  --board N --camera N     0 to 255; default 0\n";

// All but --host, which belongs to the recorder.
std::vector<OptionSpec> WithCameraOptions(std::vector<OptionSpec> own);
// The first positional argument is the video. Throws UsageError.
CameraSettings ReadCameraOptions(const Options& options);

}  // namespace zebtool
