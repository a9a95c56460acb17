// From a command line to a subcommand and an exit status.
#include <algorithm>
#include <array>
#include <new>
#include <utility>

#include "platform/framework/error_report.h"
#include "tools/zebtool/subcommands.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr std::array<const Subcommand*, 12> kSubcommands = {
    &kImportCommand, &kInfoCommand,     &kVerifyCommand, &kExportCommand,
    &kClipCommand,   &kSnapshotCommand, &kFaceCommand,   &kSalvageCommand,
    &kStoreCommand,  &kRecordCommand,   &kSearchCommand, &kDemoCommand};

// Failures that the library reports instead of throwing become lines of the tool.
class ReportOnConsole {
 public:
  explicit ReportOnConsole(std::ostream& err)
      : m_before(SetErrorSink(
            [&err](const std::exception& error) { err << "zebtool: " << error.what() << '\n'; })) {}
  ~ReportOnConsole() { SetErrorSink(std::move(m_before)); }
  ReportOnConsole(const ReportOnConsole&) = delete;
  ReportOnConsole& operator=(const ReportOnConsole&) = delete;

 private:
  ErrorSink m_before;
};

void PrintHelp(std::ostream& out) {
  out << "usage: zebtool SUBCOMMAND ...\n"
         "\n"
         "Makes, inspects, cuts and repairs recordings (.zebz), and keeps them on disks.\n"
         "\n"
         "subcommands:\n";
  for (const Subcommand* subcommand : kSubcommands) {
    std::string name(subcommand->name);
    name.resize(10, ' ');
    out << "  " << name << subcommand->summary << '\n';
  }
  out << "\n"
         "  zebtool help SUBCOMMAND   what a subcommand takes\n"
         "  zebtool --version         the version\n"
         "\n"
         "Exit status: 0 good, 1 the job failed or the file is bad, 2 wrong usage.\n"
         "Paths with drive letters (d:\\dvr\\x.zebz) follow the environment variable ZEBX_DRIVES,\n"
         "for example \"d=/srv/video1;e=/mnt/nas:network\".\n";
}

const Subcommand& FindSubcommand(const std::string& name) {
  const auto* const found = std::find_if(kSubcommands.begin(), kSubcommands.end(),
                                         [&](const Subcommand* one) { return one->name == name; });
  if (found == kSubcommands.end()) {
    throw UsageError("there is no subcommand '" + name + "'; 'zebtool --help' lists them");
  }
  return **found;
}

bool IsHelp(const std::string& argument) {
  return argument == "--help" || argument == "-h";
}

int Help(Arguments arguments, Console& console) {
  if (arguments.empty()) {
    PrintHelp(console.out);
  } else {
    console.out << FindSubcommand(arguments.front()).help;
  }
  return kExitGood;
}

int Dispatch(Arguments arguments, Console& console) {
  if (arguments.empty()) throw UsageError("no subcommand given; 'zebtool --help' lists them");
  const std::string& first = arguments.front();
  const Arguments rest = arguments.subspan(1);
  if (IsHelp(first) || first == "help") return Help(rest, console);
  if (first == "--version") {
    console.out << "zebtool " ZEBTOOL_VERSION "\n";
    return kExitGood;
  }
  const Subcommand& subcommand = FindSubcommand(first);
  if (std::any_of(rest.begin(), rest.end(), IsHelp)) {
    console.out << subcommand.help;
    return kExitGood;
  }
  return subcommand.run(rest, console);
}

}  // namespace

int RunZebtool(Arguments arguments, Console& console) {
  const ReportOnConsole reports(console.err);
  try {
    const int status = Dispatch(arguments, console);
    if (!console.out.flush()) {
      throw JobError("cannot write the standard output: its reader is gone or its disk is full");
    }
    return status;
  } catch (const UsageError& error) {
    console.err << "zebtool: " << error.what() << '\n';
    return kExitUsage;
  } catch (const std::bad_alloc&) {
    console.err << "zebtool: out of memory\n";
    return kExitBad;
  } catch (const std::exception& error) {
    console.err << "zebtool: " << error.what() << '\n';
    return kExitBad;
  }
}

}  // namespace zebtool
