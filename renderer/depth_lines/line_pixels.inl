// Pixels of lines in lanes. Included once for each vocabulary of lanes, after it.

#include "renderer/depth_lines/line_kernels.h"
#include "renderer/kernels/pixel_formats.inl"
#include "renderer/kernels/single_pixel.inl"
#include "renderer/kernels/span.inl"

namespace krb::KRB_KERNEL_SET {
namespace {

inline Ramp ramp_of(const Fixed_Interpolator& ramp) {
    return Ramp::from(splat(ramp.value), splat(ramp.step));
}

struct Index_Line_Source : Index_Source {
    Index_Line_Source(const Line_Target&, const Line_Paint& paint) : Index_Source(paint.index) {}
};

template <class Format> struct Flat_Line_Source : Format::Flat {
    Flat_Line_Source(const Line_Target& target, const Line_Paint& paint) : Flat_Line_Source(target, paint.color, paint.prepared) {}
    Flat_Line_Source(const Line_Target& target, VT_RGB32 color, const Prepared_Color& prepared)
        : Format::Flat(target, color, prepared) {}
};

struct Gouraud_Line_Source : Gouraud_Source {
    Gouraud_Line_Source(const Line_Target&, const Line_Paint& paint)
        : Gouraud_Source(ramp_of(paint.blue), ramp_of(paint.green), ramp_of(paint.red), ramp_of(paint.alpha)) {}
};

// Scaled channels with 16 fraction bits to the index that additive dithering makes of them.
inline Int additive_indices(const Dither& dither, Int blue, Int green, Int red, Int thresholds) {
    const auto cell = [thresholds](Int channel) { return shift_right<16>(channel + thresholds) & splat(0xFF); };
    return splat(dither.base) + cell(red) * splat(dither.red_stride) + cell(green) * splat(dither.green_stride) + cell(blue);
}

struct Additive_Flat_Source : Uniform_Source {
    Int blue, green, red;

    Additive_Flat_Source(const Line_Target& target, const Line_Paint& paint)
        : blue(scaled(paint.color.blue, target.dither->blue_multiplier)),
          green(scaled(paint.color.green, target.dither->green_multiplier)),
          red(scaled(paint.color.red, target.dither->red_multiplier)) {}
    Int index_lanes(const Line_Target& target, Int thresholds) const {
        return additive_indices(*target.dither, blue, green, red, thresholds);
    }

private:
    static Int scaled(std::uint8_t value, std::int32_t multiplier) {
        return shift_left<8>(splat(value) * splat(multiplier)) + splat(128);
    }
};

struct Additive_Gouraud_Source {
    static constexpr bool moves = true;
    Ramp blue, green, red;

    Additive_Gouraud_Source(const Line_Target&, const Line_Paint& paint)
        : blue(ramp_of(paint.blue)), green(ramp_of(paint.green)), red(ramp_of(paint.red)) {}
    template <class Group, class Lanes> static Lanes prepare(Lanes lanes) { return lanes; }
    Int index_lanes(const Line_Target& target, Int thresholds) const {
        return additive_indices(*target.dither, shift_right<8>(blue.value), shift_right<8>(green.value),
                                shift_right<8>(red.value), thresholds);
    }
    void skip(std::int32_t pixels) {
        blue.skip(pixels);
        green.skip(pixels);
        red.skip(pixels);
    }
    void advance_group(Int lanes) {
        blue.advance_group(lanes);
        green.advance_group(lanes);
        red.advance_group(lanes);
    }
};

// Once for all segments of one colour.
template <Line_Configuration c> void prepare_color(const Line_Target& target, Line_Paint& paint) {
    if constexpr (c.shading == Line_Shading::flat && c.dither == Line_Dither::ordered) {
        Format_Type<c.format>::prepare(target, paint.color, paint.prepared);
    }
}

template <Line_Shading shading, Line_Dither dither, class Format> struct Line_Source;
template <Line_Dither dither, class Format> struct Line_Source<Line_Shading::index, dither, Format> {
    using type = Index_Line_Source;
};
template <class Format> struct Line_Source<Line_Shading::flat, Line_Dither::ordered, Format> {
    using type = Flat_Line_Source<Format>;
};
template <class Format> struct Line_Source<Line_Shading::gouraud, Line_Dither::ordered, Format> {
    using type = Gouraud_Line_Source;
};
template <class Format> struct Line_Source<Line_Shading::flat, Line_Dither::additive, Format> {
    using type = Additive_Flat_Source;
};
template <class Format> struct Line_Source<Line_Shading::gouraud, Line_Dither::additive, Format> {
    using type = Additive_Gouraud_Source;
};

template <Pixel_Rule rule> struct Line_Pixel_Of;
template <> struct Line_Pixel_Of<Pixel_Rule::store> { using type = Store; };
template <> struct Line_Pixel_Of<Pixel_Rule::blend> { using type = Line_Blend; };
template <> struct Line_Pixel_Of<Pixel_Rule::merge> { using type = Merge; };

template <Line_Configuration c> struct Line_Span_Rules {
    using Target = Line_Target;
    using Format = Format_Type<c.format>;
    using Depth = typename Depth_Of<c.depth>::type;
    using Pixel = typename Line_Pixel_Of<c.pixel>::type;
    static constexpr Clip_Rule clip = c.clip;
    static constexpr bool fetches_ahead = false;
    static constexpr bool hides_transparent = false;
};

// Draws runs and single pixels of a segment in its paint.
template <Line_Configuration c> class Line_Pen {
public:
    Line_Pen(const Line_Target& target, const Line_Paint& paint)
        : target_(target), color_rows_(target.color_rows), depth_rows_(target.depth_rows), source_(target, paint),
          depth_(ramp_of(paint.depth)) {}

    // Pixels of a row, with values as many pixels on as the column says: the ramps run along columns from column 0 on.
    void draw_run(std::int32_t row, std::int32_t column, std::int32_t count) const {
        auto span = span_of(row);
        span.skip(column);
        span.draw(column, count);
    }

    KRB_ALWAYS_INLINE void draw_single(std::int32_t row, std::int32_t column) const { span_of(row).draw_single(column); }
    KRB_ALWAYS_INLINE void fetch_early(std::int32_t row, std::int32_t column) const {
        KRB_FETCH_EARLY(color_rows_[row] + std::int64_t{Format::bytes} * column);
        if constexpr (c.depth != Depth_Rule::none) {
            KRB_FETCH_EARLY(depth_rows_[row] + std::int64_t{2} * column);
        }
    }
    void advance() {
        source_.advance_group(splat(1));
        depth_.advance_group(splat(1));
    }

private:
    using Format = Format_Type<c.format>;
    using Source = typename Line_Source<c.shading, c.dither, Format>::type;

    Span<Line_Span_Rules<c>, Source> span_of(std::int32_t row) const {
        return {target_, row, color_rows_[row], c.depth == Depth_Rule::none ? nullptr : depth_rows_[row], source_, depth_, false};
    }

    const Line_Target& target_;
    // Copies, which no store to a pixel can be suspected of changing.
    std::uint8_t* const* color_rows_;
    std::uint8_t* const* depth_rows_;
    Source source_;
    Ramp depth_;
};

// One pixel with a depth of its own.
template <Line_Configuration c>
void draw_line_pixel(const Line_Target& target, std::int32_t row, std::int32_t column, std::int32_t z, const Line_Paint& paint) {
    using Source = typename Line_Source<c.shading, c.dither, Format_Type<c.format>>::type;
    draw_pixel<Line_Span_Rules<c>>(target, row, column, z, Source(target, paint));
}

} // namespace
} // namespace krb::KRB_KERNEL_SET
