// What `zebtool play` is asked to do.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/framework/types.h"
#include "tools/zebtool/recordings/frame_position.h"

namespace zebtool {

class Command;

enum class Step { kNext, kPrevious };

struct SecondsOfPlaying {
  DWORD seconds;
};
// "end", a place, or so many seconds of playing.
struct ToTheEnd {};
using PlayLimit = std::variant<ToTheEnd, Place, SecondsOfPlaying>;

struct PlayOptions {
  std::vector<std::string> files;
  std::optional<int> speed;
  std::optional<Place> from;
  std::optional<Place> pause_at;
  std::optional<PlayLimit> until;
  std::optional<std::vector<Step>> steps;
  std::optional<std::string> sound;
  std::optional<std::string> frames_directory;
  std::optional<std::string> sheet;
  std::optional<DWORD> pictures;
  bool has_no_captions = false;
  bool json = false;
  bool replaces = false;
};

inline constexpr std::size_t kMostPanes = 4;
inline constexpr int kFastest = 16;  // and, with a minus sign, slowest

void AddPlayOptions(const Command& command, PlayOptions& options);
// Throws UsageError for what does not go together.
void CheckOptions(const PlayOptions& options);

// How many pictures a sheet has at most.
std::size_t PicturesOf(const PlayOptions& options);

}  // namespace zebtool
