#include "tools/zebtool/options.h"

#include <algorithm>
#include <charconv>

namespace zebtool {

std::optional<DWORD> ParseNumber(std::string_view text) {
  DWORD number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

Options::Options(const Shape& shape, Arguments arguments) : m_subcommand(shape.subcommand) {
  bool options_allowed = true;
  for (std::size_t at = 0; at < arguments.size(); ++at) {
    const std::string& argument = arguments[at];
    if (options_allowed && argument == "--") {
      options_allowed = false;
    } else if (options_allowed && argument.size() > 1 && argument.front() == '-') {
      AddOption(shape, arguments, at);
    } else {
      m_positionals.push_back(argument);
    }
  }
  if (m_positionals.size() < shape.required) {
    Fail(std::string(shape.positionals.begin()[m_positionals.size()]) + " is missing");
  }
  if (m_positionals.size() > shape.positionals.size() && !shape.repeat_last) {
    Fail("'" + m_positionals[shape.positionals.size()] + "' is one argument too many");
  }
}

void Options::AddOption(const Shape& shape, Arguments arguments, std::size_t& at) {
  const std::string& argument = arguments[at];
  const std::size_t equals = argument.find('=');
  const std::string name = argument.substr(0, equals);
  const auto spec = std::find_if(shape.options.begin(), shape.options.end(),
                                 [&](const OptionSpec& one) { return one.name == name; });
  if (spec == shape.options.end()) Fail("there is no option " + name);
  std::string value;
  if (spec->kind == OptionSpec::Kind::kFlag) {
    if (equals != std::string::npos) Fail(name + " takes no value");
  } else if (equals != std::string::npos) {
    value = argument.substr(equals + 1);
  } else if (at + 1 < arguments.size()) {
    value = arguments[++at];
  } else {
    Fail(name + " needs a value");
  }
  std::vector<std::string>& values = m_values[name];
  if (!values.empty() && spec->kind != OptionSpec::Kind::kValues) Fail(name + " is given twice");
  values.push_back(value);
}

std::optional<std::string> Options::Text(std::string_view name) const {
  const auto found = m_values.find(name);
  if (found == m_values.end()) return std::nullopt;
  return found->second.front();
}

std::vector<std::string> Options::Texts(std::string_view name) const {
  const auto found = m_values.find(name);
  return found != m_values.end() ? found->second : std::vector<std::string>();
}

std::optional<DWORD> Options::Number(std::string_view name, DWORD least, DWORD most) const {
  const auto text = Text(name);
  if (!text) return std::nullopt;
  const auto number = ParseNumber(*text);
  if (!number || *number < least || *number > most) {
    Fail(std::string(name) + " takes a number from " + std::to_string(least) + " to " +
         std::to_string(most) + ", not '" + *text + "'");
  }
  return number;
}

void Options::Fail(const std::string& what) const {
  throw UsageError(m_subcommand + ": " + what + "; see 'zebtool help " + m_subcommand + "'");
}

}  // namespace zebtool
