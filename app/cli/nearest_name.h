// Suggests the known name that is nearest to a misspelt one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vorna::app {

// "; did you mean NAME?" with the name that is nearest to what was given: the one that begins with it, else the one at the
// smallest edit distance (Damerau and Levenshtein's, without regard to case) of at most a third of its length. Empty when none is
// near.
std::string nearest_name(std::string_view given, const std::vector<std::string>& names);

} // namespace vorna::app
