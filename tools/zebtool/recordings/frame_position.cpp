#include "tools/zebtool/recordings/frame_position.h"

#include <limits>
#include <utility>

#include "record/zeb_file.h"
#include "tools/zebtool/console/command_line.h"
#include "tools/zebtool/console/text.h"

namespace zebtool {
namespace {

constexpr DWORD kMaxNumber = std::numeric_limits<int>::max();

}  // namespace

std::string NameOf(const FramePosition& position) {
  return std::to_string(position.block) + ':' + std::to_string(position.index);
}

std::optional<FramePosition> ParseFramePosition(const std::string& text) {
  const std::size_t colon = text.find(':');
  const auto block = ParseNumber(text.substr(0, colon));
  const auto index =
      colon == std::string::npos ? std::optional<DWORD>(0) : ParseNumber(text.substr(colon + 1));
  if (!block || !index || *block > kMaxNumber || *index > kMaxNumber) return std::nullopt;
  return FramePosition{static_cast<int>(*block), static_cast<int>(*index)};
}

void AddFrameOption(const Command& command, const std::string& name,
                    std::optional<FramePosition>& position, const std::string& help) {
  command.Option(name, "BLOCK[:INDEX]", position, ParseFramePosition, "BLOCK or BLOCK:INDEX", help);
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

Moment::Moment(std::string text) : m_text(std::move(text)) {}

std::optional<Moment> Moment::Parse(const std::string& text) {
  const CTime day_with_every_hour(2024, 1, 10, 0, 0, 0);
  if (!ParseMomentMs(text, day_with_every_hour)) return std::nullopt;
  return Moment(text);
}

LONGLONG Moment::MsFrom(CTime begin) const {
  const auto ms = ParseMomentMs(m_text, begin);
  if (!ms) throw UsageError("the day of the recording has no '" + m_text + "'");
  return *ms;
}

std::optional<Place> ParsePlace(const std::string& text) {
  if (const auto position = ParseFramePosition(text)) return *position;
  if (const auto moment = Moment::Parse(text)) return *moment;
  return std::nullopt;
}

void AddMomentOption(const Command& command, const std::string& name, std::optional<Moment>& moment,
                     const std::string& help) {
  command.Option(name, "TIME", moment, Moment::Parse,
                 R"("YYYY-MM-DD HH:MM:SS", "HH:MM:SS" or "+SECONDS")", help);
}

void ExplainMoments(const Command& command) {
  command.Explain(
      "TIME is \"YYYY-MM-DD HH:MM:SS\", \"HH:MM:SS\" on the day of the recording's beginning, or "
      "\"+SECONDS\" from its beginning, with up to three decimals.");
}

}  // namespace zebtool
