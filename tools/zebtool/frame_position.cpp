#include "tools/zebtool/frame_position.h"

#include <limits>

#include "record/zeb_file.h"
#include "tools/zebtool/text.h"

namespace zebtool {
namespace {

constexpr DWORD kMaxNumber = std::numeric_limits<int>::max();

std::optional<FramePosition> ParseFramePosition(std::string_view text) {
  const std::size_t colon = text.find(':');
  const auto block = ParseNumber(text.substr(0, colon));
  const auto index = colon == std::string_view::npos ? std::optional<DWORD>(0)
                                                     : ParseNumber(text.substr(colon + 1));
  if (!block || !index || *block > kMaxNumber || *index > kMaxNumber) return std::nullopt;
  return FramePosition{static_cast<int>(*block), static_cast<int>(*index)};
}

}  // namespace

std::optional<FramePosition> ReadFramePosition(const Options& options, std::string_view name) {
  const auto text = options.Text(name);
  if (!text) return std::nullopt;
  const auto position = ParseFramePosition(*text);
  if (!position) {
    options.Fail(std::string(name) + " takes BLOCK or BLOCK:INDEX, not '" + *text + "'");
  }
  return position;
}

void RequireFrame(const CZebFile& recording, const FramePosition& position) {
  const int blocks = recording.GetTotalBlock();
  if (position.block >= blocks) {
    throw JobError("there is no block " + std::to_string(position.block) + ": the recording has " +
                   Plural(static_cast<ULONGLONG>(blocks), "block"));
  }
  const int frames = recording.GetFrameNumOfBlock(position.block);
  if (position.index >= frames) {
    throw JobError("there is no frame " + std::to_string(position.index) + " in block " +
                   std::to_string(position.block) + ", which has " +
                   Plural(static_cast<ULONGLONG>(frames), "frame"));
  }
}

std::optional<LONGLONG> ReadMomentMs(const Options& options, std::string_view name, CTime begin) {
  const auto text = options.Text(name);
  if (!text) return std::nullopt;
  const auto ms = ParseMomentMs(*text, begin);
  if (!ms) {
    options.Fail(std::string(name) +
                 R"( takes "YYYY-MM-DD HH:MM:SS", "HH:MM:SS" or "+SECONDS", not ')" + *text + "'");
  }
  return ms;
}

}  // namespace zebtool
