// Span kernels: one colour over a span, or a row of source pixels.

#include <cassert>
#include <cstring>

#include "renderer/core/compiler_hints.h"
#include "renderer/kernels/pixel_formats.inl"
#include "renderer/kernels/span.inl"
#include "renderer/kernels/span_kernels.h"

namespace krb::KRB_KERNEL_SET {
namespace {

template <Pixel_Rule> struct Fill_Pixel_Of;
template <> struct Fill_Pixel_Of<Pixel_Rule::store> { using type = Store; };
template <> struct Fill_Pixel_Of<Pixel_Rule::blend> { using type = Line_Blend; };

template <Pixel_Rule> struct Copy_Pixel_Of;
template <> struct Copy_Pixel_Of<Pixel_Rule::store> { using type = Store; };
template <> struct Copy_Pixel_Of<Pixel_Rule::blend> { using type = Blend; };

template <Span_Configuration c> struct Fill_Rules {
    using Target = Pixel_Target;
    using Format = Format_Type<c.format>;
    using Depth = typename Depth_Of<c.depth>::type;
    using Pixel = typename Fill_Pixel_Of<c.pixel>::type;
    static constexpr Clip_Rule clip = c.clip;
    static constexpr bool fetches_ahead = false;
    static constexpr bool hides_transparent = false;
};

// Images are drawn from the highest row down, and no processor predicts the row below.
template <Span_Configuration c> struct Copy_Rules {
    using Target = Pixel_Target;
    using Format = Format_Type<c.format>;
    using Depth = typename Depth_Of<c.depth>::type;
    using Pixel = typename Copy_Pixel_Of<c.pixel>::type;
    static constexpr Clip_Rule clip = c.clip;
    static constexpr bool fetches_ahead = true;
    static constexpr bool hides_transparent = Pixel::reads;

    static std::int32_t row_to_come(const Pixel_Target&, std::int32_t row) { return row > 0 ? row - 1 : row; }
};

// Source pixels that lie side by side in memory.
template <class Format> struct Image_Source {
    static constexpr bool moves = true;
    static constexpr std::int64_t pixel_bytes = Format::bytes;

    const std::uint8_t* source;
    std::int32_t count;
    std::int32_t position = 0; // of lane 0 in the source
    Int pixels = splat(0);

    template <class Group, class Lanes> Lanes prepare(Lanes lanes) {
        if constexpr (Is_Whole_Group<Group>::value) {
            // The next row, where rows lie one behind the other.
            KRB_FETCH_EARLY(bytes() + row_bytes());
        }
        if constexpr (masked_memory || Is_Whole_Group<Group>::value) {
            pixels = Format::load(bytes(), lanes);
        } else if (position >= 0 && count - position >= lane_count) {
            pixels = Format::load(bytes(), All{});
        } else {
            pixels = loaded_from_end();
        }
        return lanes;
    }
    // Of lane 0.
    const std::uint8_t* bytes() const { return source + position * pixel_bytes; }
    std::int64_t row_bytes() const { return count * pixel_bytes; }
    Int pixel_lanes() const { return pixels; }
    Int alpha_lanes() const { return shift_right<24>(pixels); }
    Int index_lanes(const Pixel_Target&, Int) const { return pixels; }
    void skip(std::int32_t by) { position += by; }
    void advance_group(Int) { position += lane_count; }

private:
    // Without masked memory: a group that reaches beyond the source on either side, where nothing may be read.
    Int loaded_from_end() const {
        std::uint8_t group[static_cast<std::size_t>(lane_count * pixel_bytes)] = {};
        const std::int32_t first = position < 0 ? -position : 0;
        const std::int32_t end = count - position < lane_count ? count - position : lane_count;
        if (first < end) {
            std::memcpy(group + first * pixel_bytes, source + (position + first) * pixel_bytes,
                        static_cast<std::size_t>((end - first) * pixel_bytes));
        }
        return Format::load(group, All{});
    }
};

template <Span_Configuration c> void fill(const Pixel_Target& target, const Mirrored_Rows& shape, VT_RGB32 color) {
    using Rules = Fill_Rules<c>;
    using Format = typename Rules::Format;
    assert(shape.last >= 0 && shape.extents);
    const typename Format::Flat source(target, color);
    const auto extent_of = [&shape](std::int32_t row) { return shape.extents[row < 0 ? -row : row]; };
    for (std::int32_t row = -shape.last; row <= shape.last; ++row) {
        // Processors predict the next bytes of a row, but not the next rows.
        constexpr std::int32_t rows_ahead = 8, cache_line = 64;
        if (row <= shape.last - rows_ahead) {
            const std::int32_t extent = extent_of(row + rows_ahead);
            const std::uint8_t* from =
                target.color_rows[shape.y + row + rows_ahead] + std::int64_t{Format::bytes} * (shape.x - extent);
            for (std::int32_t byte = 0; byte <= 2 * Format::bytes * extent; byte += cache_line) {
                KRB_FETCH_EARLY(from + byte);
            }
        }
        const std::int32_t extent = extent_of(row);
        if (extent >= 0) {
            const std::int32_t at = shape.y + row;
            Span<Rules, typename Format::Flat>{target, at, target.color_rows[at], nullptr, source, Ramp{splat(0), splat(0)},
                                               false}
                .draw(shape.x - extent, 2 * extent + 1);
        }
    }
    clear_upper_halves();
}

template <Span_Configuration c>
void copy(const Pixel_Target& target, Pixel_Span span, const std::uint8_t* source, Fixed_Interpolator depth) {
    using Rules = Copy_Rules<c>;
    using Source = Image_Source<typename Rules::Format>;
    assert(lies_in_window(target, span.row, span.column, span.count) && source);
    std::uint8_t* depth_row = nullptr;
    Ramp ramp{splat(0), splat(0)};
    if constexpr (Rules::Depth::reads) {
        depth_row = target.depth_rows[span.row];
        ramp = Ramp::from(splat(depth.value), splat(depth.step));
    }
    Span<Rules, Source>{target, span.row, target.color_rows[span.row], depth_row, Source{source, span.count}, ramp, false}.draw(
        span.column, span.count);
    clear_upper_halves();
}

struct Fill_Kernel_Of {
    template <Span_Configuration c> constexpr Fill_Kernel* operator()() const { return &fill<c>; }
};

struct Copy_Kernel_Of {
    template <Span_Configuration c> constexpr Copy_Kernel* operator()() const { return &copy<c>; }
};

} // namespace

extern const Span_Kernel_Table span_kernels;
constinit const Span_Kernel_Table span_kernels{
    table_over<decltype(Span_Kernel_Table::fill), fill_configurations>(Fill_Kernel_Of{}),
    table_over<decltype(Span_Kernel_Table::copy), copy_configurations>(Copy_Kernel_Of{})};

} // namespace krb::KRB_KERNEL_SET
