// Short segments in one colour that is stored as it is: the places of all pixels in lanes, then the pixels one by one.
//
// The directions, lengths and runs of short segments follow no pattern, so that processors mispredict branches that depend on
// them. Here none does: a table has the pixels of each segment, and the same number of pixels is stored for all, where those past
// the end are stored at the end.
//
// Included after line_pixels.inl.

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

// The colour of a segment that is stored as it is.
struct Plain_Color {
    VT_RGB32 color{};
    Prepared_Color prepared{};
    std::uint8_t index = 0;
};

inline Line_Paint paint_of(const Plain_Color& plain) {
    Line_Paint paint{};
    paint.color = plain.color;
    paint.prepared = plain.prepared;
    paint.index = plain.index;
    return paint;
}

// Whether segments are stored without looking at what was there. Where a mask clips them they are drawn in another way.
template <Line_Configuration c>
constexpr bool is_plain = lane_count > 1 && c.shading != Line_Shading::gouraud && c.dither == Line_Dither::ordered &&
                          c.depth == Depth_Rule::none && c.pixel == Pixel_Rule::store;

// The pixels of an open or unclipped segment in the window, with the last one.
template <Line_Configuration c>
KRB_ALWAYS_INLINE void draw_short_segment(const Line_Target& target, const Ends& ends, const Plain_Color& plain) {
    using Format = Format_Type<c.format>;
    constexpr bool is_dithered = c.shading == Line_Shading::flat && !Format::stores_words;
    constexpr std::int32_t count = Step_Table::most_steps + 1;
    const std::int32_t dx = ends.x1 - ends.x0;
    const std::int32_t dy = ends.y1 - ends.y0;
    const std::int32_t columns = ends.columns();
    const std::int32_t rows = ends.rows();
    // All bits for segments with more columns than rows, whose major axis is that of the columns.
    const std::int32_t x_major = (rows - columns) >> 31;
    const std::int32_t row_step = ends.row_step();
    const std::int32_t column_bytes = ((dx >> 31) | 1) * Format::bytes;
    const std::int32_t row_bytes = row_step * target.color_row_bytes;
    const Int major_bytes = splat(row_bytes ^ ((column_bytes ^ row_bytes) & x_major));
    const Int minor_bytes = splat(column_bytes ^ ((column_bytes ^ row_bytes) & x_major));
    const Int last = splat(rows ^ ((rows ^ columns) & x_major));
    std::uint8_t* const start = target.color_rows[ends.y0] + std::int64_t{Format::bytes} * ends.x0;
    const std::uint8_t* const minor_steps = step_table.minor[Step_Table::entry(dx, dy)];
    alignas(64) std::int32_t places[count];
    alignas(64) std::int32_t indices[is_dithered ? count : 1];
    for (std::int32_t i = 0; i < count; i += lane_count) {
        const Int step = lane_numbers() + splat(i);
        const Int major = select(less_or_equal(step, last), step, last);
        const Int minor = load_indices(minor_steps + i, All{});
        const Int place = major * major_bytes + minor * minor_bytes;
        store_pixels(reinterpret_cast<std::uint8_t*>(places + i), place, All{});
        if constexpr (is_dithered) {
            const Int row = splat(ends.y0 + target.dither_row) + major * splat(row_step & ~x_major) + minor * splat(row_step & x_major);
            const Int column = splat(static_cast<std::int32_t>(reinterpret_cast<std::uintptr_t>(start) & 7)) + place;
            constexpr std::int32_t in_row = sizeof target.dither->thresholds[0] / sizeof target.dither->thresholds[0][0];
            const Int thresholds = gather(reinterpret_cast<const std::uint8_t*>(target.dither->thresholds),
                                          (row & splat(7)) * splat(in_row) + (column & splat(7)));
            const Int values = Flat_Line_Source<Format>(target, plain.color, plain.prepared).index_lanes(target, thresholds);
            store_pixels(reinterpret_cast<std::uint8_t*>(indices + i), values, All{});
        }
    }
    KRB_KEEP_IN_MEMORY(places);
    KRB_KEEP_IN_MEMORY(indices);
    const std::uint32_t word = Format::stores_words ? word_of_color(plain.color) : 0;
    for (std::int32_t i = 0; i < count; ++i) {
        std::uint8_t* const at = start + places[i];
        if constexpr (Format::stores_words) {
            store_word(at, word);
        } else {
            *at = is_dithered ? static_cast<std::uint8_t>(indices[i]) : plain.index;
        }
    }
}

} // namespace
} // namespace krb::KRB_KERNEL_SET
