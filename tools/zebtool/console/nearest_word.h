// What somebody meant who mistyped a word.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zebtool {

// The word that `typed` is most likely to be, at most a third of its letters (and at least one)
// wrong, missing, too many or swapped with their neighbour; empty when none is that near.
std::string NearestWord(std::string_view typed, const std::vector<std::string>& words);

}  // namespace zebtool
