// Suggests the known name that is nearest to a misspelt one.
#include "app/cli/nearest_name.h"

#include <algorithm>
#include <cctype>

namespace vorna::app {
namespace {

// In lower case, without leading dashes.
std::string normalised(std::string_view text) {
    std::string lower(text.substr(std::min(text.find_first_not_of('-'), text.size())));
    std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

// Letters inserted, deleted, replaced, or exchanged with the next one.
std::size_t edit_distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> before, last(b.size() + 1), row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        before = last;
        last = row;
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                row[j] = std::min(row[j], before[j - 2] + 1);
            }
        }
    }
    return row.back();
}

} // namespace

std::string nearest_name(std::string_view given, const std::vector<std::string>& names) {
    constexpr std::size_t longest = 64; // of names; longer texts are something else
    const std::string text = normalised(given.substr(0, longest));
    std::string nearest;
    std::size_t least = longest;
    for (const std::string& name : names) {
        const std::string known = normalised(name);
        const bool begins = text.size() > 2 && known.starts_with(text);
        const std::size_t distance = begins ? 0 : edit_distance(text, known);
        if (distance < least && distance <= known.size() / 3) {
            least = distance;
            nearest = name;
        }
    }
    return nearest.empty() ? "" : "; did you mean " + nearest + "?";
}

} // namespace vorna::app
