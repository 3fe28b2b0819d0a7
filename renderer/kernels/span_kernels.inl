// Span kernels: one colour over a span, or a row of source pixels.

#include <cassert>
#include <cstring>

#include "renderer/kernels/compiler_hints.h"
#include "renderer/kernels/pixel_lanes.inl"
#include "renderer/kernels/span.inl"
#include "renderer/kernels/span_kernels.h"

namespace krb::KRB_KERNEL_SET {
namespace {

template <Pixel_Format of_format, class Combination, Clip_Rule of_clip> struct Span_Rules {
    using Target = Pixel_Target;
    using Depth = No_Depth;
    using Pixel = Combination;
    static constexpr Pixel_Format format = of_format;
    static constexpr Pixel_Rule pixel = Pixel::reads ? Pixel_Rule::blend : Pixel_Rule::store;
    static constexpr Clip_Rule clip = of_clip;
    static constexpr bool fetches_ahead = false;
    static constexpr bool hides_transparent = false;
};

// Images are drawn from the highest row down, and the row below is in memory that no processor foresees.
template <class Combination, Clip_Rule of_clip> struct Image_Rules : Span_Rules<Pixel_Format::rgb32, Combination, of_clip> {
    static constexpr bool fetches_ahead = true;
    static constexpr bool hides_transparent = Combination::reads;

    static std::int32_t row_to_come(const Pixel_Target&, std::int32_t row) { return row > 0 ? row - 1 : row; }
};

// Source pixels that lie side by side in memory.
template <Pixel_Format format> struct Image_Source {
    static constexpr bool moves = true;
    static constexpr std::int64_t pixel_bytes = format == Pixel_Format::rgb32 ? 4 : 1;

    const std::uint8_t* source;
    std::int32_t count;
    std::int32_t position = 0; // of lane 0 in the source
    Int pixels = splat(0);

    template <class Lanes> Lanes prepare(Lanes lanes) {
        if constexpr (format == Pixel_Format::rgb32 && Is_Whole_Group<Lanes>::value) {
            // The next row, where rows lie one behind the other.
            KRB_FETCH_EARLY(source + (position + count) * pixel_bytes);
        }
        if constexpr (masked_memory || Is_Whole_Group<Lanes>::value) {
            pixels = loaded(source + position * pixel_bytes, lanes);
        } else if (position >= 0 && count - position >= lane_count) {
            pixels = loaded(source + position * pixel_bytes, All{});
        } else {
            pixels = loaded_from_end();
        }
        return lanes;
    }
    Int pixel_lanes() const { return pixels; }
    Int alpha_lanes() const { return shift_right<24>(pixels); }
    Int index_lanes(const Pixel_Target&, Int) const { return pixels; }
    void skip(std::int32_t by) { position += by; }
    void advance_group(Int) { position += lane_count; }

private:
    template <class Lanes> static Int loaded(const std::uint8_t* from, Lanes lanes) {
        if constexpr (format == Pixel_Format::rgb32) {
            return load_pixels(from, lanes);
        } else {
            return load_indices(from, lanes);
        }
    }

    // Without masked memory: a group that reaches beyond the source on either side, where nothing may be read.
    Int loaded_from_end() const {
        std::uint8_t group[static_cast<std::size_t>(lane_count * pixel_bytes)] = {};
        const std::int32_t first = position < 0 ? -position : 0;
        const std::int32_t end = count - position < lane_count ? count - position : lane_count;
        if (first < end) {
            std::memcpy(group + first * pixel_bytes, source + (position + first) * pixel_bytes,
                        static_cast<std::size_t>((end - first) * pixel_bytes));
        }
        return loaded(group, All{});
    }
};

template <class Rules, class Source> void draw_span(const Pixel_Target& target, Pixel_Span span, const Source& source) {
    Span<Rules, Source>{target, span.row, target.color_rows[span.row], nullptr, source, Ramp{splat(0), splat(0)}, false}.draw(
        span.column, span.count);
}

template <class Rules> void fill(const Pixel_Target& target, const Mirrored_Rows& shape, VT_RGB32 color) {
    assert(shape.last >= 0 && shape.extents);
    const Flat_Source<Rules::format> source(target, color);
    const auto extent_of = [&shape](std::int32_t row) { return shape.extents[row < 0 ? -row : row]; };
    for (std::int32_t row = -shape.last; row <= shape.last; ++row) {
        // Processors foresee the next bytes of a row, but not the rows to come. (A function of its own that only says so would be
        // taken for one without effect.)
        constexpr std::int32_t rows_ahead = 8, cache_line = 64;
        if (row <= shape.last - rows_ahead) {
            const std::int32_t extent = extent_of(row + rows_ahead);
            const std::uint8_t* from = target.color_rows[shape.y + row + rows_ahead] + std::int64_t{4} * (shape.x - extent);
            for (std::int32_t byte = 0; byte <= 8 * extent; byte += cache_line) {
                KRB_FETCH_EARLY(from + byte);
            }
        }
        const std::int32_t extent = extent_of(row);
        if (extent >= 0) {
            draw_span<Rules>(target, {shape.y + row, shape.x - extent, 2 * extent + 1}, source);
        }
    }
    leave_lanes();
}

template <class Rules> void copy(const Pixel_Target& target, Pixel_Span span, const std::uint8_t* source) {
    using Source = Image_Source<Rules::format>;
    assert(lies_in_window(target, span.row, span.column, span.count) && source);
    if constexpr (Rules::format == Pixel_Format::index8 && Rules::clip == Clip_Rule::open) {
        std::memcpy(target.color_rows[span.row] + span.column * Source::pixel_bytes, source,
                    static_cast<std::size_t>(span.count * Source::pixel_bytes));
    } else {
        draw_span<Rules>(target, span, Source{source, span.count});
        leave_lanes();
    }
}

template <Clip_Rule clip> constexpr Span_Kernels span_kernels_of() {
    return {&fill<Span_Rules<Pixel_Format::rgb32, Store, clip>>, &fill<Span_Rules<Pixel_Format::rgb32, Line_Blend, clip>>,
            &copy<Span_Rules<Pixel_Format::index8, Store, clip>>, &copy<Image_Rules<Store, clip>>,
            &copy<Image_Rules<Blend, clip>>};
}

} // namespace

extern const Span_Kernel_Table span_kernels;
constinit const Span_Kernel_Table span_kernels{span_kernels_of<Clip_Rule::open>(), span_kernels_of<Clip_Rule::masked>()};

} // namespace krb::KRB_KERNEL_SET
