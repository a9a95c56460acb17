// What a subcommand was given: its options and its positional arguments, checked against what it
// takes.
#pragma once

#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/framework/types.h"
#include "tools/zebtool/console.h"

namespace zebtool {

struct OptionSpec {
  enum class Kind { kFlag, kValue, kValues };  // kValues may be given several times
  std::string_view name;                       // with its dashes
  Kind kind = Kind::kValue;
};

class Options {
 public:
  // `subcommand` is named in the messages; `positionals` are the names of the positional arguments,
  // of which at least `required` must be there; more than all of them only when `repeat_last`.
  struct Shape {
    std::string_view subcommand;
    std::vector<OptionSpec> options;
    std::initializer_list<std::string_view> positionals;
    std::size_t required = 0;
    bool repeat_last = false;
  };

  // Takes "--name value", "--name=value" and, after "--", positional arguments only. Throws
  // UsageError for what the shape does not allow and for an option given twice that takes one
  // value.
  Options(const Shape& shape, Arguments arguments);

  bool Has(std::string_view name) const { return m_values.contains(name); }
  std::optional<std::string> Text(std::string_view name) const;
  // Of a kValues option, in the order given.
  std::vector<std::string> Texts(std::string_view name) const;
  // A decimal number within the bounds; throws UsageError for anything else.
  std::optional<DWORD> Number(std::string_view name, DWORD least, DWORD most) const;

  const std::vector<std::string>& Positionals() const { return m_positionals; }

  [[noreturn]] void Fail(const std::string& what) const;

 private:
  void AddOption(const Shape& shape, Arguments arguments, std::size_t& at);

  std::string m_subcommand;
  std::map<std::string, std::vector<std::string>, std::less<>> m_values;
  std::vector<std::string> m_positionals;
};

// The whole of `text` as a decimal number, or nothing.
std::optional<DWORD> ParseNumber(std::string_view text);

}  // namespace zebtool
