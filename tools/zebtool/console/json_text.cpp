#include "tools/zebtool/console/json_text.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace zebtool {
namespace {

constexpr int kIndent = 2;

bool IsUtf8(const std::string& text) {
  try {
    static_cast<void>(Json(text).dump());
    return true;
  } catch (const Json::type_error&) {
    return false;
  }
}

std::string FromLatin1(const std::string& text) {
  std::string utf8;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0x80) {
      utf8 += character;
    } else {
      utf8 += static_cast<char>(0xC0 | byte >> 6);
      utf8 += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return utf8;
}

void MakePrintable(Json& value) {
  std::vector<Json*> pending = {&value};
  while (!pending.empty()) {
    Json& next = *pending.back();
    pending.pop_back();
    if (next.is_string()) {
      const auto& text = next.get_ref<const std::string&>();
      if (!IsUtf8(text)) next = FromLatin1(text);
    } else if (next.is_structured()) {
      for (Json& part : next) pending.push_back(&part);
    }
  }
}

}  // namespace

std::string JsonText(Json value) {
  MakePrintable(value);
  return value.dump(kIndent);
}

double Rounded(double number) {
  constexpr double kThousandth = 1000;
  return std::round(number * kThousandth) / kThousandth;
}

}  // namespace zebtool
