// Short segments in one colour that is stored as it is: every pixel's place at once, then the pixels one by one.
//
// Directions, lengths and runs of short segments are as good as random, and a branch that depends on them is mispredicted every
// other time. Here none does: the pixels of a segment are read from a table, and always as many pixels are stored, of which those
// past the end fall on the end.

#include <cstdint>

#include "renderer/depth_lines/line_steppers.inl"

namespace krb::KRB_KERNEL_SET {
namespace {

// For segments of up to most_steps columns and rows, how far each pixel lies from the start along the minor axis. Where a pixel
// lies does not depend on the place of a segment, only on its columns and rows.
struct Step_Table {
    static constexpr std::int32_t most_steps = 15;
    static constexpr std::int32_t sides = 2 * most_steps + 1;
    std::uint8_t minor[sides * sides][most_steps + 1];

    static constexpr std::int32_t entry(std::int32_t dx, std::int32_t dy) {
        return (dy + most_steps) * sides + dx + most_steps;
    }
};

constexpr Step_Table make_step_table() {
    constexpr std::int32_t most = Step_Table::most_steps;
    Step_Table table{};
    for (std::int32_t dy = -most; dy <= most; ++dy) {
        for (std::int32_t dx = -most; dx <= most; ++dx) {
            const Ends ends{0, 0, dx, dy};
            std::uint8_t* const minor = table.minor[Step_Table::entry(dx, dy)];
            std::int32_t pixel = 0;
            if (ends.is_x_major()) {
                Run_Stepper run(ends);
                for (std::int32_t row = 0; row < ends.rows(); ++row, run.advance()) {
                    for (; pixel < magnitude(run.to()); ++pixel) {
                        minor[pixel] = static_cast<std::uint8_t>(row);
                    }
                }
                for (; pixel <= most; ++pixel) {
                    minor[pixel] = static_cast<std::uint8_t>(ends.rows());
                }
            } else if (dy != 0) {
                Line_Stepper line(ends);
                for (; pixel < ends.rows(); ++pixel, line.advance()) {
                    minor[pixel] = static_cast<std::uint8_t>(magnitude(line.column()));
                }
                for (; pixel <= most; ++pixel) {
                    minor[pixel] = static_cast<std::uint8_t>(ends.columns());
                }
            }
        }
    }
    return table;
}

inline constexpr Step_Table step_table = make_step_table();

KRB_ALWAYS_INLINE bool is_short(const Ends& ends) {
    constexpr std::int32_t most = Step_Table::most_steps;
    const auto fits = [](std::int32_t a, std::int32_t b) {
        return static_cast<std::uint32_t>(a - b + most) < static_cast<std::uint32_t>(Step_Table::sides);
    };
    return static_cast<int>(fits(ends.x1, ends.x0)) & static_cast<int>(fits(ends.y1, ends.y0));
}

// With the last pixel.
KRB_ALWAYS_INLINE void draw_short_segment(const Pixel_Target& target, const Ends& ends, std::uint32_t word) {
    constexpr std::int32_t places_count = Step_Table::most_steps + 1;
    const std::int32_t dx = ends.x1 - ends.x0;
    const std::int32_t dy = ends.y1 - ends.y0;
    const std::int32_t columns = ends.columns();
    const std::int32_t rows = ends.rows();
    const std::int32_t column_bytes = ((dx >> 31) | 1) * 4;
    const std::int32_t row_bytes = ((dy >> 31) | 1) * target.color_row_bytes;
    const std::int32_t is_level = (rows - columns) >> 31; // all bits
    const std::int32_t swap = (column_bytes ^ row_bytes) & is_level;
    const std::int32_t steps = rows ^ ((rows ^ columns) & is_level);
    const Int major_bytes = splat(row_bytes ^ swap);
    const Int minor_bytes = splat(column_bytes ^ swap);
    const Int last = splat(steps);
    const std::uint8_t* const minor = step_table.minor[Step_Table::entry(dx, dy)];
    alignas(64) std::int32_t places[places_count];
    for (std::int32_t i = 0; i < places_count; i += lane_count) {
        const Int step = lane_numbers() + splat(i);
        const Int major = select(less_or_equal(step, last), step, last);
        store_pixels(reinterpret_cast<std::uint8_t*>(places + i), major * major_bytes + load_indices(minor + i, All{}) * minor_bytes,
                     All{});
    }
    KRB_KEEP_IN_MEMORY(places);
    std::uint8_t* const start = target.color_rows[ends.y0] + std::int64_t{4} * ends.x0;
#pragma GCC unroll 16
    for (std::int32_t i = 0; i < places_count; ++i) {
        store_word(start + places[i], word);
    }
}

} // namespace
} // namespace krb::KRB_KERNEL_SET
