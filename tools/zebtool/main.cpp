// The program zebtool: the process's streams, signals and drives around RunZebtool.
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "platform/os/files/drives.h"
#include "tools/zebtool/commands/commands.h"

int main(int count, char** values) {
  // A reader of our output that goes away shows as a failed write, which is reported.
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  std::ios::sync_with_stdio(false);
  zebtool::Console console{std::cin, std::cout, std::cerr, isatty(STDERR_FILENO) != 0};
  // In the background a terminal's keys are the shell's.
  if (tcgetpgrp(STDIN_FILENO) == getpgrp()) console.keys = STDIN_FILENO;

  const char* drives = std::getenv("ZEBX_DRIVES");
  if (drives != nullptr && os::MountDrives(drives) == 0) {
    std::cerr << "zebtool: ZEBX_DRIVES is not of the form \"d=/srv/video1;e=/mnt/nas:network\"\n";
    return zebtool::kExitUsage;
  }
  const std::vector<std::string> arguments(values + 1, values + count);
  return zebtool::RunZebtool(arguments, console);
}
