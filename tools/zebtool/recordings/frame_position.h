// Places in a recording as options name them: by block and frame, or by a moment.
#pragma once

#include <optional>
#include <string>
#include <tuple>
#include <variant>

#include "platform/framework/time.h"
#include "platform/framework/types.h"

class CZebFile;

namespace zebtool {

class Command;

struct FramePosition {
  int block = 0;
  int index = 0;  // in its block

  bool operator<(const FramePosition& other) const {
    return std::tie(block, index) < std::tie(other.block, other.index);
  }
};

// "3:12"
std::string NameOf(const FramePosition& position);
// BLOCK or BLOCK:INDEX; nothing for another text.
std::optional<FramePosition> ParseFramePosition(const std::string& text);

// Adds an option that takes BLOCK or BLOCK:INDEX, both counted from 0.
void AddFrameOption(const Command& command, const std::string& name,
                    std::optional<FramePosition>& position, const std::string& help);
// Throws JobError unless the recording has that frame.
void RequireFrame(const CZebFile& recording, const FramePosition& position);

// A moment of a recording, which has a place in time only once it is known when that begins.
class Moment {
 public:
  // Nothing for a text of another form than kMomentForm says.
  static std::optional<Moment> Parse(const std::string& text);
  // In milliseconds from `begin`, negative before it. Throws UsageError for an hour that the day of
  // the beginning does not have.
  LONGLONG MsFrom(CTime begin) const;

 private:
  explicit Moment(std::string text);

  std::string m_text;
};

// Adds an option that takes a moment, TIME in the help.
void AddMomentOption(const Command& command, const std::string& name, std::optional<Moment>& moment,
                     const std::string& help);
// A place in a recording by frame or by moment, "3:12" or "08:30:05".
using Place = std::variant<FramePosition, Moment>;
std::optional<Place> ParsePlace(const std::string& text);

// Says in the help what TIME is.
void ExplainMoments(const Command& command);

}  // namespace zebtool
