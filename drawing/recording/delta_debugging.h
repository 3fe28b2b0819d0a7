// Delta debugging: the elements of a list that a fault needs.
#pragma once

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

namespace vorna::drawing::recording {

// The algorithm ddmin of Zeller and Hildebrandt (2002). keeps(elements): whether the fault shows with these elements of 0 to
// count - 1 alone, in their order; it shows with all of them, which is not tried. Of the result no single element can be left
// out.
template <class Keeps> std::vector<std::size_t> minimal_elements(std::size_t count, const Keeps& keeps) {
    std::vector<std::size_t> kept(count);
    std::iota(kept.begin(), kept.end(), std::size_t{0});
    if (count == 0 || keeps(std::vector<std::size_t>())) {
        return {};
    }
    for (std::size_t parts = 2; kept.size() >= 2;) {
        const auto bound = [&](std::size_t part) {
            return kept.begin() + static_cast<std::ptrdiff_t>(kept.size() * part / parts);
        };
        bool is_smaller = false;
        for (std::size_t part = 0; part < parts && !is_smaller; ++part) {
            std::vector<std::size_t> subset(bound(part), bound(part + 1));
            is_smaller = keeps(subset);
            if (is_smaller) {
                kept = std::move(subset);
            }
        }
        if (is_smaller) {
            parts = 2;
            continue;
        }
        // Of two parts each is the other's complement.
        for (std::size_t part = 0; parts > 2 && part < parts && !is_smaller; ++part) {
            std::vector<std::size_t> complement(kept.begin(), bound(part));
            complement.insert(complement.end(), bound(part + 1), kept.end());
            is_smaller = keeps(complement);
            if (is_smaller) {
                kept = std::move(complement);
            }
        }
        if (is_smaller) {
            parts = std::max<std::size_t>(parts - 1, 2);
        } else if (parts >= kept.size()) {
            break;
        } else {
            parts = std::min(2 * parts, kept.size());
        }
    }
    return kept;
}

} // namespace vorna::drawing::recording
