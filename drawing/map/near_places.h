// Places that lie apart.
#pragma once

#include <cmath>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

// Whether a place is nearer than a distance to one of those before, in square cells of that side so that a test looks at the
// cells around it only. Coordinates are those of pixels, below 2^31 times the distance.
class Near_Places {
public:
    explicit Near_Places(double distance) : distance_(distance) {}

    void add(Position place) { cells_[number_of(cell_of(place.x), cell_of(place.y))].push_back(place); }

    bool has_near(Position place) const {
        const std::int64_t column = cell_of(place.x), row = cell_of(place.y);
        for (std::int64_t cell = 0; cell < 9; ++cell) {
            const auto found = cells_.find(number_of(column + cell % 3 - 1, row + cell / 3 - 1));
            if (found != cells_.end()) {
                for (const Position& p : found->second) {
                    if (std::hypot(p.x - place.x, p.y - place.y) < distance_) {
                        return true;
                    }
                }
            }
        }
        return false;
    }

private:
    std::int64_t cell_of(double coordinate) const { return static_cast<std::int64_t>(std::floor(coordinate / distance_)); }
    static std::uint64_t number_of(std::int64_t column, std::int64_t row) {
        return static_cast<std::uint64_t>(column) << 32 | static_cast<std::uint32_t>(row);
    }

    double distance_;
    std::unordered_map<std::uint64_t, std::vector<Position>> cells_;
};

} // namespace vorna::drawing::map
