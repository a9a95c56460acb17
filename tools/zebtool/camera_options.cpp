#include "tools/zebtool/camera_options.h"

#include "capture/picture_formats.h"
#include "tools/zebtool/text.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr DWORD kMaxGop = 1000;
constexpr DWORD kMaxEncoderType = 15;
constexpr DWORD kMaxIndex = 255;
constexpr DWORD kMaxFrameSize = 136;

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

void ReadNames(const Options& options, CZebFileInfo& header) {
  header.SetBoardName(options.Text("--board-name").value_or(""));
  header.SetCameraName(options.Text("--camera-name").value_or(""));
  const auto index = [&](std::string_view name) {
    return static_cast<WORD>(options.Number(name, 0, kMaxIndex).value_or(0));
  };
  header.SetCameraID({index("--board"), index("--camera")});
}

}  // namespace

std::vector<OptionSpec> WithCameraOptions(std::vector<OptionSpec> own) {
  own.insert(own.end(), {{"--audio"},
                         {"--frame-size"},
                         {"--gop"},
                         {"--quantiser"},
                         {"--encoder-type"},
                         {"--begin"},
                         {"--board-name"},
                         {"--camera-name"},
                         {"--board"},
                         {"--camera"}});
  return own;
}

CameraSettings ReadCameraOptions(const Options& options) {
  CameraSettings settings;
  settings.video = options.Positionals()[0];
  settings.audio = options.Text("--audio");
  settings.frame_size = options.Number("--frame-size", 0, kMaxFrameSize);
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
  ReadNames(options, settings.header);
  return settings;
}

}  // namespace zebtool
