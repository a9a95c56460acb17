// JSON as the tool prints it.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace zebtool {

// Keeps the order of its keys.
using Json = nlohmann::ordered_json;

// The value in indented lines, the last one without its line break. Texts in it may hold any bytes:
// one that is no UTF-8 is taken for Latin-1.
std::string JsonText(Json value);

// For measurements: three decimals.
double Rounded(double number);

}  // namespace zebtool
