// Pixels of a window, found by their places.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "host/geometry.h"

namespace vorna::drawing::recording {

class Watched_Pixels {
public:
    // Columns and rows from the window's lower left.
    explicit Watched_Pixels(std::vector<VT_Int_Pair> places) : places_(std::move(places)) {
        std::ranges::sort(places_, comes_before);
        places_.erase(std::unique(places_.begin(), places_.end()), places_.end());
        for (std::size_t i = 0; i < places_.size(); ++i) {
            if (i == 0 || places_[i].y != places_[i - 1].y) {
                rows_.push_back(i);
            }
        }
        if (!places_.empty()) {
            const auto [left, right] = std::ranges::minmax(places_, {}, &VT_Int_Pair::x);
            box_ = {left.x, right.x, places_.front().y, places_.back().y};
        }
    }

    // From the lowest row upwards, each from left to right.
    const std::vector<VT_Int_Pair>& places() const noexcept { return places_; }
    // The position in `places`; the place must be there.
    std::size_t find(VT_Int_Pair place) const noexcept {
        return static_cast<std::size_t>(std::lower_bound(places_.begin(), places_.end(), place, comes_before) - places_.begin());
    }
    const VT_Int_Rectangle& box() const noexcept { return box_; }

    // Fills the list with the positions of those that lie in the area.
    void find(const VT_Int_Rectangle& area, std::vector<std::uint32_t>& found) const {
        found.clear();
        if (is_empty(common_part(area, box_))) {
            return;
        }
        const auto row_of = [this](std::size_t first) { return places_[first].y; };
        for (auto row = std::ranges::lower_bound(rows_, area.bottom, {}, row_of); row != rows_.end() && row_of(*row) <= area.top;
             ++row) {
            const std::size_t end = row + 1 == rows_.end() ? places_.size() : row[1];
            const auto of_row = std::span(places_).subspan(*row, end - *row);
            auto pixel = std::ranges::lower_bound(of_row, area.left, {}, &VT_Int_Pair::x);
            for (; pixel != of_row.end() && pixel->x <= area.right; ++pixel) {
                found.push_back(static_cast<std::uint32_t>(*row + static_cast<std::size_t>(pixel - of_row.begin())));
            }
        }
    }

private:
    static bool comes_before(VT_Int_Pair a, VT_Int_Pair b) noexcept { return a.y != b.y ? a.y < b.y : a.x < b.x; }

    std::vector<VT_Int_Pair> places_;
    std::vector<std::size_t> rows_; // the first pixel of each row that has any
    VT_Int_Rectangle box_{0, -1, 0, -1};
};

} // namespace vorna::drawing::recording
