// The visible part of a segment, by Liang and Barsky's method.
#pragma once

namespace vorna {

// Parameters along a segment, and the numbers of the sides at which its visible part begins and ends.
struct Segment_Part {
    static constexpr int no_side = 4;

    double entering = 0, leaving = 1;
    int entry_side = no_side, exit_side = no_side;
    bool exists = true;

    // Cuts at one side. speed: how fast the segment goes out of it; distance: how far inside it starts.
    constexpr void cut_at(int side, double speed, double distance) noexcept {
        if (speed == 0) {
            exists = exists && distance >= 0;
        } else if (const double parameter = distance / speed; speed < 0) {
            if (parameter > entering) {
                entering = parameter;
                entry_side = side;
            }
        } else if (parameter < leaving) {
            leaving = parameter;
            exit_side = side;
        }
    }
    // Keeps the part where a coordinate that starts at start and changes by speed lies from low to high.
    constexpr void cut_between(double start, double speed, double low, double high) noexcept {
        cut_at(no_side, -speed, start - low);
        cut_at(no_side, speed, high - start);
    }
    // tolerance: by how much a part may end before it begins.
    constexpr bool is_visible(double tolerance = 0) const noexcept { return exists && entering <= leaving + tolerance; }
};

} // namespace vorna
