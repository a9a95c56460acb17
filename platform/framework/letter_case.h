// Letters without regard to case: those of ASCII alone, whatever the host's language. Bytes of
// other letters stay as they are.
#pragma once

#include <string_view>

namespace zebx {

constexpr char LowerCase(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

constexpr bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (LowerCase(a[i]) != LowerCase(b[i])) return false;
  }
  return true;
}

}  // namespace zebx
