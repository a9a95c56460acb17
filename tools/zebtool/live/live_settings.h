// What a command line says about live cameras, with every default in its place.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/framework/geometry.h"
#include "platform/zebdev/software/virtual_device_plan.h"
#include "tools/zebtool/disks/database_session.h"

namespace zebtool {

class Command;

// As the command line gives them. Cameras are numbered from 1 over all boards.
struct LiveOptions {
  std::optional<std::vector<zebx::zebdev::VirtualDevice>> devices;
  std::string device_directory;
  std::optional<DWORD> frame_size;
  std::optional<DWORD> speed;
  std::optional<DWORD> quality;
  std::optional<DWORD> sensitivity;
  std::optional<DWORD> alarm_frames;
  bool is_silent = false;
  std::map<DWORD, std::string> names;
  // In percent of the picture's width and height; those of number 0 are for every camera.
  std::map<DWORD, std::vector<CRect>> masks;

  std::optional<DWORD> seconds;
  std::optional<std::string> sheet;
  bool replaces_sheet = false;
  bool json = false;

  DatabaseOptions database;
  bool records = false;
  bool records_alarms = false;
  std::optional<DWORD> minutes;
};

// The options of a subcommand. What cannot be asked together is refused by CheckOptions.
void AddLiveOptions(const Command& command, LiveOptions& options);
// Throws UsageError.
void CheckOptions(const LiveOptions& options);

inline constexpr CRect kWholeInPercent = {0, 0, 100, 100};

std::string NameOf(const LiveOptions& options, DWORD number);
// The masks of a camera: its own and those of all. With alarms and without any mask, one over the
// whole picture, as only masks see motion.
std::vector<CRect> MasksOf(const LiveOptions& options, DWORD number);

}  // namespace zebtool
