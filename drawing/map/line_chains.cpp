// Lines that follow each other, as one.
#include "drawing/map/line_chains.h"

#include <algorithm>
#include <cstddef>

namespace vorna::drawing::map {
namespace {

struct End {
    Position place;
    std::size_t line;
    bool is_last;

    friend bool operator<(const End& a, const End& b) { return a.place < b.place; }
};

} // namespace

std::vector<Path> joined_lines(const std::vector<const Path*>& lines) {
    std::vector<End> ends;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        ends.push_back({lines[i]->front(), i, false});
        ends.push_back({lines[i]->back(), i, true});
    }
    std::stable_sort(ends.begin(), ends.end());
    // The end of another line that meets this one and no third one.
    const auto next_of = [&](Position place, std::size_t line) -> const End* {
        const auto [first, last] = std::equal_range(ends.begin(), ends.end(), End{place, 0, false});
        if (last - first != 2 || first->line == (first + 1)->line) {
            return nullptr;
        }
        return first->line == line ? &*(first + 1) : &*first;
    };
    std::vector<bool> used(lines.size());
    // From an end of a line as far as others follow.
    const auto walk = [&](std::size_t line, bool backwards) {
        Path path;
        for (;;) {
            used[line] = true;
            Path piece = *lines[line];
            if (backwards) {
                std::ranges::reverse(piece);
            }
            path.insert(path.end(), piece.begin() + (path.empty() ? 0 : 1), piece.end());
            const End* next = next_of(path.back(), line);
            if (!next || used[next->line]) {
                return path;
            }
            line = next->line;
            backwards = next->is_last;
        }
    };
    std::vector<Path> chains;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (const bool has_before = next_of(lines[i]->front(), i), has_after = next_of(lines[i]->back(), i);
            !used[i] && !(has_before && has_after)) {
            chains.push_back(walk(i, has_before));
        }
    }
    // What is left are rings.
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (!used[i]) {
            chains.push_back(walk(i, false));
        }
    }
    return chains;
}

} // namespace vorna::drawing::map
