// Command lines: what subcommands take, what they do with it, and how a line finds its subcommand.
// The only door to the parser, so that its heavy header is compiled once.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/framework/types.h"
#include "tools/zebtool/console/console.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace zebtool {

struct CommandTree;  // private to command_line.cpp

// A number that an option or argument takes.
struct Bounds {
  DWORD least = 0;
  DWORD most = 0;
};

// A subcommand in the making: a handle to it, valid as long as its CommandLine. What its line
// gives goes into variables of the caller, which have to live until the job is done.
class Command {
 public:
  using Take = std::function<void(const std::string& text)>;

  Command(CommandTree& tree, CLI::App& app) : m_tree(tree), m_app(app) {}

  // A subcommand below this one; `summary` is its line in the list of subcommands.
  Command Sub(const std::string& name, const std::string& summary) const;

  // Below the usage in the help, and below everything. Lines are filled; line breaks stay.
  void Describe(const std::string& text) const;
  void Explain(const std::string& text) const;
  // What follows the subcommand's name, one line for each way to use it. Without a call the
  // positional arguments in their order, and "[options]" when there are any.
  void Usage(const std::vector<std::string>& ways) const;
  // Leaves it out of the list of subcommands.
  void Hide() const;
  // The heading of the options that are added from now on.
  void Heading(const std::string& heading) const;

  // Positional arguments, in the order of the calls.
  void Argument(const std::string& name, std::string& value, const std::string& help = {}) const;
  void OptionalArgument(const std::string& name, std::string& value,
                        const std::string& help = {}) const;
  // One or more; the last of the positional arguments.
  void Arguments(const std::string& name, std::vector<std::string>& values,
                 const std::string& help = {}) const;

  void OptionalArguments(const std::string& name, std::vector<std::string>& values) const;

  void Flag(const std::string& name, bool& value, const std::string& help) const;
  // Options with a value. `name` is "--gop", `shape` what the help shows for the value.
  void Option(const std::string& name, const std::string& shape, std::string& value,
              const std::string& help) const;
  void Option(const std::string& name, const std::string& shape, std::optional<std::string>& value,
              const std::string& help) const;
  void Option(const std::string& name, const std::string& shape, std::optional<DWORD>& value,
              Bounds bounds, const std::string& help) const;
  // `parse` makes the value of the text, or nothing when the text is not `form`, which says what is
  // taken.
  template <class Value, class Parse>
  void Option(const std::string& name, const std::string& shape, std::optional<Value>& value,
              Parse parse, const std::string& form, const std::string& help) const {
    AddOption(name, shape, help, [=, &value](const std::string& text) {
      value = parse(text);
      if (!value) throw UsageError(name + " takes " + form + ", not '" + text + "'");
    });
  }
  // May be given several times; `take` gets every text at once.
  void Options(const std::string& name, const std::string& shape, Take take,
               const std::string& help) const;
  // The command line is wrong without it.
  void RequiredOption(const std::string& name, const std::string& shape, std::string& value,
                      const std::string& help) const;

  // What the subcommand does once its line is parsed; the result is an ExitStatus. Throws
  // UsageError, JobError and whatever the library throws.
  void Does(std::function<int(Console&)> job) const;

 private:
  CLI::Option& AddOption(const std::string& name, const std::string& shape, const std::string& help,
                         Take take) const;
  CLI::Option& AddArgument(const std::string& name, const std::string& help, Take take) const;

  CommandTree& m_tree;
  CLI::App& m_app;
};

// The subcommands of a program, and running one line of it.
class CommandLine {
 public:
  CommandLine(const std::string& program, const std::string& version);
  ~CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  Command Root() const;

  // Runs a line, the program's name left out: finds the subcommand, answers the calls for help, and
  // turns every failure into one line on the error stream. Returns an ExitStatus.
  int Run(Arguments arguments, Console& console);

 private:
  int Dispatch(Arguments arguments, Console& console);

  std::unique_ptr<CommandTree> m_tree;
};

}  // namespace zebtool
