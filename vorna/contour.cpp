// Contour sets and the shape of polygons.
#include "host/contour.h"

#include "vorna/exact.h"

VT_Contour_Set::VT_Contour_Set(std::int32_t count, const VT_Point* points, bool) {
    if (count > 0) {
        contours_.emplace_back(points, points + count);
    }
}

void VT_Contour_Set::translate(float x, float y) noexcept {
    for (Contour& contour : contours_) {
        for (VT_Point& point : contour) {
            point.x += x;
            point.y += y;
        }
    }
    moved_copies_ = {};
    stamp();
}

// Masks have the serial number of their contours as key, so the same offset must give the same object, not a new copy.
VT_Reference<const VT_Contour_Set> VT_Contour_Set::moved(VT_Int_Pair offset) const {
    return moved_copies_.find_or_make(*this, offset);
}

VT_Reference<const VT_Contour_Set> VT_Contour_Set::Moved_Copies::find_or_make(const VT_Contour_Set& set, VT_Int_Pair offset) {
    constexpr std::size_t most_copies = 4;
    const std::lock_guard lock(mutex_);
    for (const Copy& copy : copies_) {
        if (copy.offset == offset) {
            return copy.contours;
        }
    }
    const VT_Reference<VT_Contour_Set> made(new VT_Contour_Set(set));
    made->translate(static_cast<float>(offset.x), static_cast<float>(offset.y));
    if (copies_.size() == most_copies) {
        copies_.erase(copies_.begin());
    }
    copies_.push_back({offset, made});
    return made;
}

namespace {

// The half plane, upper or lower, of a direction. Each full turn of a contour enters both once.
int half_plane(const VT_Point& from, const VT_Point& to) noexcept {
    return from.y < to.y || (from.y == to.y && from.x < to.x) ? 1 : -1;
}

} // namespace

// Convex: all turns have the same direction and add up to one full turn. A contour that winds around several times changes
// between upwards and downwards more often than twice.
VT_Polygon_Rank VD_Rank_Polygon(std::int32_t count, const VT_Point* points) {
    std::vector<VT_Point> corners; // without consecutive equal points, between which there is no direction
    for (std::int32_t i = 0; i < count; ++i) {
        if (corners.empty() || corners.back().x != points[i].x || corners.back().y != points[i].y) {
            corners.push_back(points[i]);
        }
    }
    while (corners.size() > 1 && corners.front().x == corners.back().x && corners.front().y == corners.back().y) {
        corners.pop_back();
    }
    bool turns_left = false;
    bool turns_right = false;
    int changes_of_direction = 0;
    const std::size_t size = corners.size();
    for (std::size_t i = 0; i < size; ++i) {
        const VT_Point& a = corners[i];
        const VT_Point& b = corners[(i + 1) % size];
        const VT_Point& c = corners[(i + 2) % size];
        const int side = vorna::turn(a, b, c);
        turns_left = turns_left || side > 0;
        turns_right = turns_right || side < 0;
        changes_of_direction += half_plane(a, b) != half_plane(b, c);
    }
    const bool convex = !(turns_left && turns_right) && changes_of_direction <= 2;
    return {convex ? 0 : 1};
}
