#include "tools/zebtool/console/nearest_word.h"

#include <algorithm>

namespace zebtool {
namespace {

// The number of letters to change, insert, remove or swap with their neighbour that turn one word
// into the other.
std::size_t Distance(std::string_view from, std::string_view to) {
  // Row i holds the distances of the first i letters of `from` to every beginning of `to`.
  std::vector<std::vector<std::size_t>> rows(from.size() + 1,
                                             std::vector<std::size_t>(to.size() + 1));
  for (std::size_t i = 0; i <= from.size(); ++i) {
    for (std::size_t j = 0; j <= to.size(); ++j) {
      std::size_t& steps = rows[i][j];
      if (i == 0 || j == 0) {
        steps = i + j;
        continue;
      }
      const std::size_t change = from[i - 1] == to[j - 1] ? 0 : 1;
      steps = std::min({rows[i - 1][j] + 1, rows[i][j - 1] + 1, rows[i - 1][j - 1] + change});
      const bool swapped = i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
      if (swapped) steps = std::min(steps, rows[i - 2][j - 2] + 1);
    }
  }
  return rows[from.size()][to.size()];
}

}  // namespace

std::string NearestWord(std::string_view typed, const std::vector<std::string>& words) {
  constexpr std::size_t kLongestTyped = 64;
  if (typed.size() > kLongestTyped) return {};
  std::string nearest;
  std::size_t least = std::max<std::size_t>(1, typed.size() / 3) + 1;
  for (const std::string& word : words) {
    const std::size_t distance = Distance(typed, word);
    if (distance >= least) continue;
    least = distance;
    nearest = word;
  }
  return nearest;
}

}  // namespace zebtool
