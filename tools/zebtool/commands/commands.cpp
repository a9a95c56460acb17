#include "tools/zebtool/commands/commands.h"

#include "tools/zebtool/console/command_line.h"

namespace zebtool {

int RunZebtool(Arguments arguments, Console& console) {
  CommandLine line("zebtool", ZEBTOOL_VERSION);
  const Command root = line.Root();
  root.Describe("Makes, inspects, cuts and repairs recordings (.zebz), and keeps them on disks.");
  root.Explain(
      "'zebtool help SUBCOMMAND' and 'zebtool SUBCOMMAND --help' tell what a subcommand takes, "
      "'zebtool --version' tells the version.\n"
      "Exit status: 0 good, 1 the job failed or the file is bad, 2 wrong usage.\n"
      "Paths with drive letters (d:\\dvr\\x.zebz) follow the environment variable ZEBX_DRIVES, for "
      "example \"d=/srv/video1;e=/mnt/nas:network\".");
  // In the order of the list.
  AddImport(root);
  AddInfo(root);
  AddVerify(root);
  AddExport(root);
  AddClip(root);
  AddSnapshot(root);
  AddFace(root);
  AddSalvage(root);
  AddStore(root);
  AddRecord(root);
  AddSearch(root);
  AddLive(root);
  AddPlay(root);
  AddDemo(root);
  return line.Run(arguments, console);
}

}  // namespace zebtool
