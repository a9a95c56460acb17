// The streams a subcommand talks through, and how a subcommand ends.
#pragma once

#include <istream>
#include <optional>
#include <ostream>
#include <span>
#include <stdexcept>
#include <string>

namespace zebtool {

enum ExitStatus : int {
  kExitGood = 0,
  kExitBad = 1,    // the job failed, or the file is bad
  kExitUsage = 2,  // the command line is wrong
};

// Borrowed streams, so that subcommands run inside tests as they do in a shell.
struct Console {
  std::istream& in;
  std::ostream& out;
  std::ostream& err;
  bool show_progress = false;    // the error stream is a terminal
  std::optional<int> keys = {};  // a terminal's descriptor: its keys are for the subcommand
};

using Arguments = std::span<const std::string>;

// Ends a subcommand with kExitUsage; the text says what to write instead.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Ends a subcommand with kExitBad; the text says what is wrong and what to do.
class JobError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace zebtool
