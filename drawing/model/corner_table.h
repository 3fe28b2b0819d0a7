// Numbers the distinct corners of an OBJ model's polygons in the order of their first appearance.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "drawing/model/tuple_table.h"

namespace vorna::drawing::model {

// Corners of one position are in a list. Most positions have one to six corners, so that a list takes less time than a hash
// table; a position with more than most_steps has its later ones in one.
class Corner_Table {
public:
    using Corner = Tuple_Table<4>::Tuple; // position, normal, material, texture coordinate

    std::uint32_t index_of(const Corner& corner) {
        if (corner[0] >= first_.size()) {
            first_.resize(std::max<std::size_t>(std::size_t{corner[0]} + 1, 2 * first_.size()), none);
        }
        std::uint32_t* link = &first_[corner[0]];
        for (int step = 0; *link != none; link = &next_[*link], ++step) {
            const Corner& known = corners_[*link];
            if (((known[1] ^ corner[1]) | (known[2] ^ corner[2]) | (known[3] ^ corner[3])) == 0) {
                return *link;
            }
            if (step == most_steps) {
                return index_of_crowded(corner);
            }
        }
        *link = static_cast<std::uint32_t>(corners_.size());
        return append(corner);
    }

    // In the order of their numbers.
    const std::vector<Corner>& corners() const noexcept { return corners_; }

private:
    static constexpr std::uint32_t none = 0xFFFFFFFF;
    static constexpr int most_steps = 15;

    std::uint32_t append(const Corner& corner) {
        const auto number = static_cast<std::uint32_t>(corners_.size());
        corners_.push_back(corner);
        next_.push_back(none);
        return number;
    }

    std::uint32_t index_of_crowded(const Corner& corner) {
        const std::uint32_t place = crowded_.index_of(corner);
        if (place == crowded_numbers_.size()) {
            crowded_numbers_.push_back(append(corner));
        }
        return crowded_numbers_[place];
    }

    std::vector<Corner> corners_;
    std::vector<std::uint32_t> first_, next_; // by position, by corner: the first and the next corner of the position
    Tuple_Table<4> crowded_;
    std::vector<std::uint32_t> crowded_numbers_;
};

} // namespace vorna::drawing::model
