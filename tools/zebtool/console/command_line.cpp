#include "tools/zebtool/console/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <new>
#include <sstream>

#include "platform/framework/error_report.h"
#include "tools/zebtool/console/nearest_word.h"
#include "tools/zebtool/console/text.h"

using namespace zebx;

namespace zebtool {

// The parser's own tree, and what it has no place for.
struct CommandTree {
  struct Extras {
    std::string explanation;
    std::vector<std::string> ways;
    std::string heading = "options";
    std::function<int(Console&)> job;
  };

  CLI::App root;
  std::map<const CLI::App*, Extras> extras;
};

namespace {

constexpr std::size_t kHelpWidth = 100;
constexpr std::size_t kNameWidth = 26;
constexpr char kMarkOfPositionals[] = "--";

// Taken everywhere and listed nowhere: the program's help names it.
void AddHelpFlag(CLI::App& app) {
  app.set_help_flag("-h,--help")->group("");
}

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

// The subcommand's name behind the program's, such as "store init"; empty for the program itself.
std::string PathOf(const CLI::App* app) {
  std::string path;
  for (; app->get_parent() != nullptr; app = app->get_parent()) {
    path = app->get_name() + (path.empty() ? "" : ' ' + path);
  }
  return path;
}

// The subcommand that the line led to.
CLI::App* SelectedOf(CLI::App* app) {
  while (!app->get_subcommands().empty()) app = app->get_subcommands().front();
  return app;
}

std::string DidYouMean(const std::string& typed, const std::vector<std::string>& words) {
  const std::string nearest = NearestWord(typed, words);
  return nearest.empty() ? "" : ", did you mean '" + nearest + "'?";
}

[[noreturn]] void RefuseSubcommand(const CLI::App* app, const std::string& name) {
  std::vector<std::string> names;
  for (const CLI::App* sub : app->get_subcommands({})) names.push_back(sub->get_name());
  throw UsageError("there is no subcommand '" + name + "'" + DidYouMean(name, names));
}

// Throws UsageError when the line has something that the subcommand does not take.
void RefuseExtras(const CLI::App* app) {
  for (const std::string& extra : app->remaining()) {
    if (extra == kMarkOfPositionals) continue;
    if (extra.size() > 1 && extra.front() == '-') {
      std::vector<std::string> names;
      for (const CLI::Option* option : app->get_options()) names.push_back(option->get_name());
      const std::string name = extra.substr(0, extra.find('='));
      throw UsageError("there is no option " + name + DidYouMean(name, names));
    }
    if (!app->get_subcommands({}).empty()) RefuseSubcommand(app, extra);
    throw UsageError("'" + extra + "' is one argument too many");
  }
}

class HelpText {
 public:
  HelpText(const CommandTree& tree, const CLI::App* app) : m_tree(tree), m_app(app) {}

  void Print(std::ostream& out) const {
    const CommandTree::Extras& extras = m_tree.extras.at(m_app);
    PrintUsage(extras.ways.empty() ? std::vector{DefaultWay()} : extras.ways, out);
    if (!m_app->get_footer().empty()) out << '\n' << FillLines(m_app->get_footer(), kHelpWidth);
    PrintSubcommands(out);
    PrintOptions("arguments", out, [](const CLI::Option* option) {
      return option->get_positional() && !option->get_description().empty();
    });
    for (const std::string& heading : m_app->get_groups()) {
      PrintOptions(heading, out, [&](const CLI::Option* option) {
        return option->nonpositional() && option->get_group() == heading;
      });
    }
    if (!extras.explanation.empty()) out << '\n' << FillLines(extras.explanation, kHelpWidth);
  }

 private:
  void PrintUsage(const std::vector<std::string>& ways, std::ostream& out) const {
    const std::string path = PathOf(m_app);
    const char* label = "usage: ";
    for (const std::string& way : ways) {
      out << std::exchange(label, "       ") << m_tree.root.get_name() << ' '
          << (path.empty() ? "" : path + ' ') << way << '\n';
    }
  }

  std::string DefaultWay() const {
    if (!m_app->get_subcommands({}).empty()) return "SUBCOMMAND ...";
    std::string way;
    for (const CLI::Option* option : m_app->get_options()) {
      if (!option->get_positional()) continue;
      const std::string name =
          option->get_name(true) + (option->get_allow_extra_args() ? "..." : "");
      way += option->get_required() ? name + ' ' : '[' + name + "] ";
    }
    return way + "[options]";
  }

  void PrintSubcommands(std::ostream& out) const {
    const char* heading = "\nsubcommands:\n";
    for (const CLI::App* sub : m_app->get_subcommands({})) {
      if (sub->get_group().empty()) continue;
      out << std::exchange(heading, "");
      PrintLine(sub->get_name(), sub->get_description(), 12, out);
    }
  }

  void PrintOptions(const std::string& heading, std::ostream& out,
                    const std::function<bool(const CLI::Option*)>& filter) const {
    const auto options = m_app->get_options(filter);
    if (options.empty() || heading.empty()) return;
    out << '\n' << heading << ":\n";
    for (const CLI::Option* option : options) {
      PrintLine(option->get_name(option->get_positional()) + option->get_option_text(),
                option->get_description(), kNameWidth, out);
    }
  }

  static void PrintLine(const std::string& name, const std::string& text, std::size_t name_width,
                        std::ostream& out) {
    std::string lines = FillLines(text, kHelpWidth - name_width);
    if (!lines.empty()) lines.pop_back();  // the last line break, which format_help writes
    CLI::detail::format_help(out, name, lines, name_width);
  }

  const CommandTree& m_tree;
  const CLI::App* m_app;
};

}  // namespace

Command Command::Sub(const std::string& name, const std::string& summary) const {
  CLI::App* const sub = m_app.add_subcommand(name, summary);
  sub->allow_extras();
  AddHelpFlag(*sub);
  m_tree.extras.try_emplace(sub);
  // One at most, so that an argument with a subcommand's name is an argument.
  m_app.require_subcommand(0, 1);
  return {m_tree, *sub};
}

void Command::Describe(const std::string& text) const {
  m_app.footer(text);
}

void Command::Explain(const std::string& text) const {
  m_tree.extras[&m_app].explanation += text + '\n';
}

void Command::Usage(const std::vector<std::string>& ways) const {
  m_tree.extras[&m_app].ways = ways;
}

void Command::Heading(const std::string& heading) const {
  m_tree.extras[&m_app].heading = heading;
}

void Command::Hide() const {
  m_app.group("");
}

CLI::Option& Command::AddArgument(const std::string& name, const std::string& help,
                                  Take take) const {
  CLI::Option& option = AddOption(name, "", help, std::move(take));
  option.option_text("");
  return option;
}

CLI::Option& Command::AddOption(const std::string& name, const std::string& shape,
                                const std::string& help, Take take) const {
  CLI::Option* const option = m_app.add_option(
      name,
      [take = std::move(take)](const CLI::results_t& texts) {
        for (const std::string& text : texts) take(text);
        return true;
      },
      help);
  option->option_text(' ' + shape);
  option->type_name(shape);  // for messages
  option->group(m_tree.extras[&m_app].heading);
  return *option;
}

void Command::Argument(const std::string& name, std::string& value, const std::string& help) const {
  AddArgument(name, help, [&value](const std::string& text) { value = text; }).required();
}

void Command::OptionalArgument(const std::string& name, std::string& value,
                               const std::string& help) const {
  AddArgument(name, help, [&value](const std::string& text) { value = text; });
}

void Command::Arguments(const std::string& name, std::vector<std::string>& values,
                        const std::string& help) const {
  const auto take = [&values](const std::string& text) { values.push_back(text); };
  AddArgument(name, help, take).required()->expected(1, -1)->allow_extra_args();
}

void Command::OptionalArguments(const std::string& name, std::vector<std::string>& values) const {
  const auto take = [&values](const std::string& text) { values.push_back(text); };
  AddArgument(name, "", take).expected(1, -1)->allow_extra_args();
}

void Command::Flag(const std::string& name, bool& value, const std::string& help) const {
  const auto take = [&value](std::int64_t count) { value = count > 0; };
  m_app.add_flag_function(name, take, help)->group(m_tree.extras[&m_app].heading);
}

void Command::Option(const std::string& name, const std::string& shape, std::string& value,
                     const std::string& help) const {
  AddOption(name, shape, help, [&value](const std::string& text) { value = text; });
}

void Command::Option(const std::string& name, const std::string& shape,
                     std::optional<std::string>& value, const std::string& help) const {
  AddOption(name, shape, help, [&value](const std::string& text) { value = text; });
}

void Command::Option(const std::string& name, const std::string& shape, std::optional<DWORD>& value,
                     Bounds bounds, const std::string& help) const {
  const auto parse = [bounds](const std::string& text) {
    auto number = ParseNumber(text);
    if (number && (*number < bounds.least || *number > bounds.most)) number.reset();
    return number;
  };
  Option(name, shape, value, parse,
         "a number from " + std::to_string(bounds.least) + " to " + std::to_string(bounds.most),
         help);
}

void Command::Options(const std::string& name, const std::string& shape, Take take,
                      const std::string& help) const {
  AddOption(name, shape, help, std::move(take))
      .multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void Command::RequiredOption(const std::string& name, const std::string& shape, std::string& value,
                             const std::string& help) const {
  const auto take = [&value](const std::string& text) { value = text; };
  AddOption(name, shape, help, take).required();
}

void Command::Does(std::function<int(Console&)> job) const {
  m_tree.extras[&m_app].job = std::move(job);
}

CommandLine::CommandLine(const std::string& program, const std::string& version)
    : m_tree(std::make_unique<CommandTree>()) {
  CLI::App& root = m_tree->root;
  root.name(program);
  root.allow_extras();
  AddHelpFlag(root);
  root.set_version_flag("--version", program + ' ' + version, "")->group("");
  m_tree->extras.try_emplace(&root);

  auto words = std::make_shared<std::vector<std::string>>();
  const Command help = Root().Sub("help", "");
  help.Hide();
  help.Usage({"[SUBCOMMAND...]"});
  help.OptionalArguments("SUBCOMMAND", *words);
  help.Does([this, words](Console& console) {
    const CLI::App* app = &m_tree->root;
    for (const std::string& word : *words) {
      const auto subs =
          app->get_subcommands([&](const CLI::App* s) { return s->get_name() == word; });
      if (subs.empty()) RefuseSubcommand(app, word);
      app = subs.front();
    }
    HelpText(*m_tree, app).Print(console.out);
    return kExitGood;
  });
}

CommandLine::~CommandLine() = default;

Command CommandLine::Root() const {
  return {*m_tree, m_tree->root};
}

int CommandLine::Dispatch(Arguments arguments, Console& console) {
  CLI::App& root = m_tree->root;
  try {
    root.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::CallForVersion& version) {
    console.out << version.what() << '\n';
    return kExitGood;
  } catch (const std::exception& error) {
    const CLI::App* const selected = SelectedOf(&root);
    if (selected->get_help_ptr()->count() > 0) {
      HelpText(*m_tree, selected).Print(console.out);
      return kExitGood;
    }
    // A mistyped option explains more than the argument that is missing because of it.
    if (dynamic_cast<const CLI::Error*>(&error) == nullptr) throw;
    RefuseExtras(selected);
    throw UsageError(error.what());
  }
  const CLI::App* const selected = SelectedOf(&root);
  RefuseExtras(selected);
  const auto& job = m_tree->extras.at(selected).job;
  if (!job) throw UsageError("no subcommand given");
  return job(console);
}

int CommandLine::Run(Arguments arguments, Console& console) {
  const ReportOnConsole reports(console.err);
  const auto fail = [&](const std::string& what, int status) {
    console.err << m_tree->root.get_name() << ": " << what << '\n';
    return status;
  };
  try {
    const int status = Dispatch(arguments, console);
    if (!console.out.flush()) {
      throw JobError("cannot write the standard output: its reader is gone or its disk is full");
    }
    return status;
  } catch (const UsageError& error) {
    const std::string path = PathOf(SelectedOf(&m_tree->root));
    return fail((path.empty() ? "" : path + ": ") + error.what() + "; see 'zebtool help" +
                    (path.empty() ? "" : ' ' + path) + "'",
                kExitUsage);
  } catch (const std::bad_alloc&) {
    return fail("out of memory", kExitBad);
  } catch (const std::exception& error) {
    return fail(error.what(), kExitBad);
  }
}

}  // namespace zebtool
