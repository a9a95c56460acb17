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
  noxcodec::VideoEncoderSettings encoder;
  CZebFileInfo header;
};

// The lines about these options for a subcommand's help.
extern const std::string_view kCameraHelp;

// All but --host, which belongs to the recorder.
std::vector<OptionSpec> WithCameraOptions(std::vector<OptionSpec> own);
// The first positional argument is the video. Throws UsageError.
CameraSettings ReadCameraOptions(const Options& options);

}  // namespace zebtool
