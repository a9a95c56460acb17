// Running command lines of zebtool inside a test.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "tools/zebtool/subcommands.h"

struct ToolRun {
  int status;
  std::string out;
  std::string err;
};

inline ToolRun RunTool(const std::vector<std::string>& arguments, const std::string& input = {}) {
  std::istringstream in(input);
  std::ostringstream out;
  std::ostringstream err;
  zebtool::Console console{in, out, err};
  const int status = zebtool::RunZebtool(arguments, console);
  return {status, out.str(), err.str()};
}

inline bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// The number behind "key": in JSON output; -1 without one.
inline long long JsonNumber(const std::string& json, const std::string& key) {
  const std::size_t at = json.find('"' + key + "\": ");
  return at == std::string::npos ? -1 : std::stoll(json.substr(at + key.size() + 4));
}
