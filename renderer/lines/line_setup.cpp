// Segments of 2D lines that cross the clip rectangle: which of their pixels are drawn.
#include "renderer/lines/line_setup.h"

#include <algorithm>
#include <cstdlib>

#include "host/rounding.h"
#include "host/segment_clip.h"
#include "renderer/core/fixed_point.h"

namespace krb {

namespace {

constexpr VT_Int_Rectangle guard_band{-4000, 28760, -4000, 28760};

VT_DCI_Point point_at(const VT_DCI_Point& from, const VT_DCI_Point& to, double parameter) noexcept {
    const auto at = [parameter](double a, double b) { return vorna::nearest_integer(a + (b - a) * parameter); };
    return {at(from.x, to.x), at(from.y, to.y), at(from.z, to.z)};
}

// Rows from the start to where the segment crosses a column, to the nearest. The halves differ by one so that where there are
// more columns than rows the row is the very one whose run holds the column.
std::int32_t rows_to_column(const Cut_Segment& segment, std::int32_t column) noexcept {
    const std::int32_t dx = segment.to.x - segment.from.x;
    const std::int32_t dy = segment.to.y - segment.from.y;
    const std::int32_t columns = std::abs(column - segment.from.x);
    const std::int32_t rows = std::abs(dy);
    if (std::abs(dx) == rows) {
        return columns;
    }
    const std::uint32_t step = (static_cast<std::uint32_t>(std::abs(dx)) << 16) / static_cast<std::uint32_t>(rows);
    const std::uint32_t half = (dy < 0 ? step - 1 : step + 1) >> 1;
    return static_cast<std::int32_t>(((static_cast<std::uint32_t>(columns) << 16) + half) / step);
}

} // namespace

bool is_in_guard_band(const VT_DCI_Point& point) noexcept {
    return vorna::contains(guard_band, point.x, point.y);
}

bool clip_to_guard_band(VT_DCI_Point& from, VT_DCI_Point& to) noexcept {
    const bool start_inside = is_in_guard_band(from);
    const bool end_inside = is_in_guard_band(to);
    const VT_Vector_D direction{double(to.x) - from.x, double(to.y) - from.y, 0};
    const vorna::Segment_Part part = vorna::part_near(guard_band, 0, from, direction);
    if (!part.is_visible()) {
        return false;
    }
    const VT_DCI_Point start = from;
    if (!start_inside) {
        from = point_at(start, to, part.entering);
    }
    if (!end_inside) {
        to = point_at(start, to, part.leaving);
    }
    return true;
}

bool set_visible_part(const VT_Int_Rectangle& rectangle, Cut_Segment& segment) noexcept {
    const VT_DCI_Point& from = segment.from;
    const VT_DCI_Point& to = segment.to;
    const std::int32_t dy = to.y - from.y;
    const std::int32_t rows = std::abs(dy);
    segment.left = rectangle.left;
    segment.right = rectangle.right;
    segment.first_row = 0;
    segment.last_row = 0;
    if (dy == 0) {
        return true;
    }
    // Where the segment enters the rectangle's rows and leaves them. The end point is not drawn; only runs reach its row.
    std::int32_t first = dy > 0 ? rectangle.bottom - from.y : from.y - rectangle.top;
    std::int32_t last = dy > 0 ? rectangle.top - from.y : from.y - rectangle.bottom;
    first = std::max(first, 0);
    last = std::min(last, std::abs(to.x - from.x) > rows ? rows : rows - 1);
    if (from.x < rectangle.left || from.x > rectangle.right) {
        const std::int32_t crossing = rows_to_column(segment, from.x < rectangle.left ? rectangle.left : rectangle.right);
        // With more rows than columns, a crossing beyond the far side counts as the last row there. The kernels leave out a pixel
        // of it that does not lie inside.
        const std::int32_t far_row = dy > 0 ? rectangle.top - from.y : from.y - rectangle.bottom;
        first = std::max(first, std::abs(to.x - from.x) < rows ? std::min(crossing, far_row) : crossing);
    }
    if (to.x < rectangle.left || to.x > rectangle.right) {
        last = std::min(last, rows_to_column(segment, to.x < rectangle.left ? rectangle.left : rectangle.right));
    }
    segment.first_row = first;
    segment.last_row = last;
    return first <= last;
}

Line_Ramps::Line_Ramps(const VT_DCI_Point& from, const VT_DCI_Point& to, const Cut_Segment& cut) noexcept
    : start_{from.x, from.y} {
    const std::int32_t columns = std::abs(cut.to.x - cut.from.x);
    const std::int32_t rows = std::abs(cut.to.y - cut.from.y);
    length_ = columns >= rows ? std::abs(std::int64_t{to.x} - from.x) : std::abs(std::int64_t{to.y} - from.y);
    if (columns == rows) {
        // Kernels step a diagonal by its rows, of which as many have passed as columns.
        const std::int32_t passed =
            cut.to.x > cut.from.x ? wrapping_subtract(cut.from.x, from.x) : wrapping_subtract(from.x, cut.from.x);
        start_.y = cut.to.y > cut.from.y ? wrapping_subtract(cut.from.y, passed) : wrapping_add(cut.from.y, passed);
    }
}

Fixed_Interpolator Line_Ramps::depth(std::int32_t from, std::int32_t to) const noexcept {
    const auto steps = static_cast<std::int32_t>(std::min<std::int64_t>(length_, INT32_MAX));
    Fixed_Interpolator depth = Fixed_Interpolator::between<15>(from, to, steps);
    if (length_ > INT32_MAX) {
        depth.step = static_cast<std::int32_t>(wrapping_shift_left(wrapping_subtract(to, from), 15) / length_);
    }
    return depth;
}

Fixed_Interpolator Line_Ramps::channel(std::int32_t from, std::int32_t to) const noexcept {
    Fixed_Interpolator channel = Fixed_Interpolator::between<16>(from, to, 1);
    // Channels of a fine colour cube differ by more than 16 bits.
    if (length_ > 0) {
        channel.step = static_cast<std::int32_t>((std::int64_t{to} - from) * 65536 / length_);
    }
    return channel;
}

} // namespace krb
