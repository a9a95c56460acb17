// The subcommands of zebtool, each in the source named after it.
#pragma once

#include <string_view>

#include "tools/zebtool/console.h"

namespace zebtool {

struct Subcommand {
  std::string_view name;
  std::string_view summary;  // one line for the list of subcommands
  std::string_view help;     // ends with a line break
  // An ExitStatus. Throws UsageError, JobError and whatever the library throws.
  int (*run)(Arguments arguments, Console& console);
};

extern const Subcommand kImportCommand;
extern const Subcommand kInfoCommand;
extern const Subcommand kVerifyCommand;
extern const Subcommand kExportCommand;
extern const Subcommand kClipCommand;
extern const Subcommand kSalvageCommand;
extern const Subcommand kStoreCommand;
extern const Subcommand kRecordCommand;
extern const Subcommand kSearchCommand;
extern const Subcommand kSnapshotCommand;
extern const Subcommand kFaceCommand;
extern const Subcommand kDemoCommand;

// Runs a whole command line, the program's name left out: finds the subcommand, answers the calls
// for help, and turns every failure into one line on the error stream. Returns an ExitStatus.
int RunZebtool(Arguments arguments, Console& console);

}  // namespace zebtool
