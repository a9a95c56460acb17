// The options that describe a camera: its video and sound, how they are compressed, and its names.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "platform/framework/time.h"
#include "platform/noxcodec/software/video_encoder.h"
#include "record/zeb_file_info.h"

namespace zebtool {

class Command;

// As a command line gives them.
struct CameraOptions {
  std::string video;
  std::optional<std::string> audio;
  std::optional<DWORD> frame_size;
  std::optional<DWORD> gop;
  std::optional<std::pair<int, int>> quantisers;  // of I-frames and of the others
  std::optional<DWORD> encoder_type;
  std::optional<CTime> begin;
  std::string board_name;
  std::string camera_name;
  std::optional<DWORD> board;
  std::optional<DWORD> camera;
};

// Adds the video as the next positional argument and everything else as options.
void AddCameraOptions(const Command& command, CameraOptions& options);

// With every default in its place.
struct CameraSettings {
  std::string video;
  std::optional<std::string> audio;
  std::optional<DWORD> frame_size;
  CTime begin;
  BYTE encoder_type = 0;
  zebx::noxcodec::VideoEncoderSettings encoder;
  CZebFileInfo header;
};

CameraSettings SettingsOf(const CameraOptions& options, const std::string& host);

}  // namespace zebtool
