// How lines are stepped: which pixels of a segment lie in which row.
//
// A segment has one pixel for each step along its major axis, the first point's but not the last one's. Segments with more
// columns than rows have one run of pixels a row (after Bresenham's run slices); runs end where the line crosses the middle
// between two rows, and the bias of the start decides to which run a crossing on a column's border belongs, so that either
// direction draws the same pixels. All others have one pixel a row.

#include <cassert>
#include <cstdint>

#include "renderer/core/fixed_point.h"

namespace krb::KRB_KERNEL_SET {
namespace {

constexpr std::int32_t magnitude(std::int32_t a) {
    return a < 0 ? wrapping_subtract(0, a) : a;
}

// The ends of a segment in columns and rows of the buffer.
struct Ends {
    std::int32_t x0, y0, x1, y1;

    constexpr std::int32_t columns() const { return magnitude(wrapping_subtract(x1, x0)); }
    constexpr std::int32_t rows() const { return magnitude(wrapping_subtract(y1, y0)); }
    constexpr bool is_x_major() const { return columns() > rows(); }
    constexpr bool goes_right() const { return x1 > x0; }
    // Without a branch, which would be mispredicted half the time.
    constexpr std::int32_t row_step() const { return (wrapping_subtract(y1, y0) >> 31) | 1; }
    // Change of x from row to row, 16.16.
    constexpr std::int32_t slope() const {
        assert(rows() != 0);
        return wrapping_shift_left(wrapping_subtract(x1, x0), 16) / rows();
    }
};

// One pixel a row, of a segment that is not level.
struct Line_Stepper {
    std::int32_t row, row_step;
    Fixed_Interpolator x;

    constexpr explicit Line_Stepper(const Ends& ends)
        : row(ends.y0), row_step(ends.row_step()), x{wrapping_add(wrapping_shift_left(ends.x0, 16), 0x8000), ends.slope()} {}

    constexpr std::int32_t column() const { return x.value >> 16; }
    // So many rows on.
    std::int32_t row_after(std::int32_t rows) const { return row + row_step * rows; }
    std::int32_t column_after(std::int32_t rows) const { return x.at(rows) >> 16; }
    constexpr void advance() {
        x.advance();
        row += row_step;
    }
    void skip(std::int32_t rows) {
        x.skip(rows);
        row = wrapping_add(row, wrapping_multiply(row_step, rows));
    }
};

// One run a row, of a segment with more columns than rows. The run of the last row ends at the segment's end.
struct Run_Stepper {
    std::int32_t row, row_step;
    std::int32_t from;    // the run's first column
    Fixed_Interpolator x; // where the line leaves the row

    constexpr explicit Run_Stepper(const Ends& ends) : row(ends.y0), row_step(ends.row_step()), from(ends.x0), x{0, 0} {
        if (ends.y0 != ends.y1) {
            constexpr std::int32_t biases[2][2] = {{0x10000, 0xFFFF}, {-1, 0}}; // [leftwards][upwards]
            const std::int32_t leftwards = ends.goes_right() ? 0 : 1;
            const std::int32_t bias = biases[leftwards][ends.y1 > ends.y0 ? 1 : 0];
            x.step = ends.slope();
            x.value = wrapping_add(wrapping_add(wrapping_shift_left(ends.x0, 16), bias), (x.step + leftwards) >> 1);
        }
    }

    // The next run's first column, which is one behind this run's last.
    constexpr std::int32_t to() const { return x.value >> 16; }
    // So many rows on, above 0.
    std::int32_t row_after(std::int32_t rows) const { return row + row_step * rows; }
    std::int32_t from_after(std::int32_t rows) const { return x.at(rows - 1) >> 16; }
    constexpr void advance() {
        from = to();
        x.advance();
        row += row_step;
    }
    // rows is above 0.
    void skip(std::int32_t rows) {
        x.skip(rows - 1);
        from = to();
        x.advance();
        row = wrapping_add(row, wrapping_multiply(row_step, rows));
    }
};

} // namespace
} // namespace krb::KRB_KERNEL_SET
