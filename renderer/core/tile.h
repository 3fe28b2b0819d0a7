// Drawing of transformed points that may lie anywhere, in the coordinates of the window, which is one tile of the picture.
#pragma once

#include <cstdint>

#include "host/rounding.h"
#include "renderer/core/fixed_point.h"
#include "renderer/core/software_z_buffer.h"

namespace krb {

// During its lifetime device coordinates count from the renderer's window, for the host's standard functions too, and device
// strips are cut to the hard clip of the tile's rendition.
class Tile {
public:
    // Throws std::bad_alloc.
    Tile(Software_Z_Buffer& renderer, const VT_Rendition& rendition);
    Tile(const Tile&) = delete;
    Tile& operator=(const Tile&) = delete;
    ~Tile();

    // The caller's rendition, or a copy of it where the tile's clips differ.
    const VT_Rendition& rendition() const noexcept { return *rendition_; }
    // In device coordinates. Points outside do not fit 32-bit integers.
    const VT_Int_Rectangle& guard_band() const noexcept { return guard_band_; }

    VT_DCI_Point to_tile(const VT_DCI_Point& point) const noexcept {
        return {wrapping_subtract(point.x, origin_.x), wrapping_subtract(point.y, origin_.y), point.z};
    }
    // Rounded before they are moved.
    VT_DCI_Point to_tile(const VT_Point_D& point) const noexcept { return to_tile(vorna::rounded_point(point)); }
    void to_tile(std::int32_t count, const VT_Point_D* points, VT_DCI_Point* moved) const noexcept {
        for (std::int32_t i = 0; i < count; ++i) {
            moved[i] = to_tile(points[i]);
        }
    }
    VT_Point_D moved(const VT_Point_D& point) const noexcept { return {point.x - origin_.x, point.y - origin_.y, point.z}; }

private:
    Software_Z_Buffer& renderer_;
    const VT_Int_Pair origin_;
    const VT_Int_Pair outer_origin_;
    const bool keeps_to_hard_clip_;
    const bool has_local_coordinates_;
    VT_Reference<VT_Rendition> copy_;
    const VT_Rendition* rendition_;
    VT_Int_Rectangle guard_band_;
};

} // namespace krb
