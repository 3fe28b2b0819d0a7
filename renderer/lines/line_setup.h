// Segments of 2D lines that cross the clip rectangle: which of their pixels are drawn.
#pragma once

#include <cstdint>

#include "host/geometry.h"
#include "renderer/depth_lines/line_kernels.h"

namespace krb {

bool is_in_guard_band(const VT_DCI_Point& point) noexcept;

// Cuts a segment to -4000 ... 28760 in x and y, where 16.16 positions cannot overflow. Ends move to the nearest whole point of
// the segment, depth with them (Liang and Barsky's method, in double precision). False when nothing is left.
bool clip_to_guard_band(VT_DCI_Point& from, VT_DCI_Point& to) noexcept;

// Sets rows and columns of a segment inside the guard band that crosses the rectangle's edge. False when it has no pixel there.
bool set_visible_part(const VT_Int_Rectangle& rectangle, Cut_Segment& segment) noexcept;

// A caller's segment as its depth and colours see it: however it was cut, they run from its first to its last point.
class Line_Ramps {
public:
    // Over the axis along which the kernels step the cut segment; over the columns of a diagonal.
    Line_Ramps(const VT_DCI_Point& from, const VT_DCI_Point& to, const Cut_Segment& cut) noexcept;

    VT_Int_Pair start() const noexcept { return start_; }
    Fixed_Interpolator depth(std::int32_t from, std::int32_t to) const noexcept;
    Fixed_Interpolator channel(std::int32_t from, std::int32_t to) const noexcept;

private:
    VT_Int_Pair start_;
    std::int64_t length_;
};

} // namespace krb
