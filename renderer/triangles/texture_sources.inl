// Colour sources of textured spans: texels times a colour that moves along the span. Included once for each vocabulary of lanes,
// after triangle_setup.inl.

#include <cstdint>

#include "renderer/core/compiler_hints.h"
#include "renderer/core/fixed_point.h"
#include "renderer/triangles/triangle_kernels.h"

namespace krb::KRB_KERNEL_SET {
namespace {

// Any span. Channels have 16 bits. Steps that were rounded down can lead a little below 0 at
// the end of a span, which counts as 0. In spans of two pixels the colour channels, but not alpha, are twice as large, so that
// the half unit of the mean is not lost before the product.
struct Texture_Source {
    static constexpr bool moves = true;
    Gouraud_Source color;
    Ramp s, t;
    const std::uint8_t* texels;
    std::int32_t width_mask, height_mask;
    bool is_doubled;
    Int pixels, alphas;

    Texture_Source(const Triangle_Target& target, const Texture_Span_Values& values)
        : color(values.is_doubled ? values.doubled_start : values.start, values.is_doubled ? values.doubled_step : values.step),
          s(Ramp::from(spread<2>(values.start), spread<2>(values.step))),
          t(Ramp::from(spread<3>(values.start), spread<3>(values.step))), texels(target.texels),
          width_mask(target.texture_width_mask), height_mask(target.texture_height_mask), is_doubled(values.is_doubled),
          pixels(splat(0)), alphas(splat(0)) {
        color.alpha = Ramp::from(spread<7>(values.start), spread<7>(values.step));
    }

    // Pixels off the texture are not drawn; it does not repeat. The first texel row is the top one.
    template <class Group, class Lanes> Active prepare(Lanes lanes) {
        const Int column = shift_right<16>(s.value);
        const Int row = shift_right<16>(t.value);
        const Int outside = (column & splat(~width_mask)) | (row & splat(~height_mask));
        const Int stored_row = splat(height_mask) - (row & splat(height_mask));
        modulate(gather(texels, stored_row * splat(width_mask + 1) + (column & splat(width_mask))));
        return lanes & equal(outside, splat(0));
    }
    Int pixel_lanes() const { return pixels; }
    Int alpha_lanes() const { return alphas; }
    Int index_lanes(const Pixel_Target& target, Int thresholds) const {
        return Dithered_Color::of_pixels(target, pixels).indices(*target.dither, thresholds);
    }
    void skip(std::int32_t count) {
        color.skip(count);
        s.skip(count);
        t.skip(count);
    }
    void advance_group(Int lanes) {
        color.advance_group(lanes);
        s.advance_group(lanes);
        t.advance_group(lanes);
    }

private:
    // Two channels a product, in the halves of a lane.
    void modulate(Int texel) {
        const Int red_blue = texel & splat(0x00FF00FF);
        const Int alpha_green = shift_right<8>(texel) & splat(0x00FF00FF);
        const auto level = [](const Ramp& channel) { return greatest(channel.value, splat(0)); };
        const auto modulated = [](Int bytes, Int upper, Int lower) {
            return multiply_halves_high(bytes, shift_left<16>(upper) | lower);
        };
        if (is_doubled) {
            const Int byte = splat(0xFF);
            const Int blue = shift_right<17>((texel & byte) * level(color.blue));
            const Int red = shift_right<17>(shift_right<16>(red_blue) * level(color.red));
            const Int green = shift_right<17>((alpha_green & byte) * level(color.green));
            pixels = blue | shift_left<8>(green) | shift_left<16>(red);
            alphas = shift_right<16>(shift_right<24>(texel) * level(color.alpha));
        } else {
            const Int products = modulated(alpha_green, level(color.alpha), level(color.green));
            pixels = modulated(red_blue, level(color.red), level(color.blue)) | shift_left<8>(products);
            alphas = shift_right<16>(products);
        }
    }
};

// Which spans keep to the texture and to channels of 16 bits from the first pixel to the last.
template <Shading> struct Texture_Range {
    explicit Texture_Range(const Triangle_Target&) {}
};

template <> struct Texture_Range<Shading::textured> {
    Attributes<8> most;

    explicit Texture_Range(const Triangle_Target& target)
        : most(textured_attributes_of(-1, -1, last_coordinate(target.texture_width_mask),
                                      last_coordinate(target.texture_height_mask), 0xFFFFFFFF)) {}

    // Values between those of two pixels lie between theirs. The last one cannot wrap back into the range: a span has no more
    // steps than fit into half of the 32-bit integers.
    bool holds(const Texture_Span_Values& values, std::int32_t count) const {
        return !values.is_doubled && lies_within(values.start, most) &&
               lies_within(values.start + scaled(values.step, count - 1), most);
    }

private:
    static std::int32_t last_coordinate(std::int32_t mask) { return ((mask + 1) << 16) - 1; }
};

// One texel coordinate along a span: a number that moves from group to group, and lanes that add to it and are never negative.
struct Texel_Ramp {
    std::int32_t least; // of the lanes
    std::int32_t group_step;
    std::int32_t step;
    Int offsets;

    Texel_Ramp(std::int32_t start, std::int32_t by)
        : least(start), group_step(wrapping_multiply(by, lane_count)), step(by), offsets(lane_numbers() * splat(by)) {
        if (by < 0) {
            const std::int32_t across = wrapping_multiply(by, lane_count - 1);
            least = wrapping_add(least, across);
            offsets = offsets - splat(across);
        }
    }
    void skip(std::int32_t pixels) { least = wrapping_add(least, wrapping_multiply(step, pixels)); }
    void advance_group() { least = wrapping_add(least, group_step); }
    Int lanes() const { return splat(least) + offsets; }
    // The first of so many texels that hold those of all lanes inside a texture of this side, which is no shorter. Lanes of whole
    // groups are never below 0.
    template <bool is_whole> std::int32_t first_texel(std::int32_t length, std::int32_t side) const {
        const std::int32_t first = least >> 16;
        const std::int32_t last_first = side - length;
        if (!is_whole && first < 0) {
            return 0;
        }
        return first < last_first ? first : last_first;
    }
    Int lanes_from(std::int32_t texel) const { return splat(wrapping_subtract(least, texel << 16)) + offsets; }
    // Whether so many texels always hold those of all lanes.
    bool fits(std::int32_t length, std::int32_t side) const {
        constexpr std::uint32_t gaps = lane_count == 1 ? 1 : lane_count - 1;
        const std::uint32_t size = step < 0 ? 0U - static_cast<std::uint32_t>(step) : static_cast<std::uint32_t>(step);
        return length <= side && (lane_count == 1 || size <= (static_cast<std::uint32_t>(length - 1) << 16) / gaps);
    }
};

// A span in the range: no pixel lies off the texture, and two channels move in the halves of a lane. Where the texels of a group
// lie close together, they are taken from a block of texels in registers.
struct Inner_Texture_Source {
    static constexpr bool moves = true;
    static constexpr int shape_count = sizeof texel_shapes / sizeof texel_shapes[0];

    Ramp red_blue, alpha_green; // of the colour
    Texel_Ramp s, t;            // t in stored rows, of which the first is the top one
    const std::uint8_t* texels;
    std::int32_t width, height;
    int shape; // in texel_shapes
    int width_bits;
    Int texel_red_blue, texel_alpha_green; // times the colour

    Inner_Texture_Source(const Triangle_Target& target, const Texture_Span_Values& values)
        : red_blue(Ramp::from(halves<6, 4>(values.start), halves<6, 4>(values.step))),
          alpha_green(Ramp::from(halves<7, 5>(values.start), halves<7, 5>(values.step))),
          s(first_lane<2>(values.start), first_lane<2>(values.step)),
          t(wrapping_subtract((target.texture_height_mask << 16) | 0xFFFF, first_lane<3>(values.start)),
            wrapping_subtract(0, first_lane<3>(values.step))),
          texels(target.texels), width(target.texture_width_mask + 1), height(target.texture_height_mask + 1), shape(0),
          width_bits(KRB_LOWEST_BIT(static_cast<unsigned>(width))), texel_red_blue(splat(0)), texel_alpha_green(splat(0)) {
        while (shape < shape_count && !(s.fits(texel_shapes[shape].columns, width) && t.fits(texel_shapes[shape].rows, height))) {
            ++shape;
        }
    }

    template <class Group, class Lanes> KRB_ALWAYS_INLINE Lanes prepare(Lanes lanes) {
        modulate(texels_of_group<Is_Whole_Group<Group>::value, 0>());
        return lanes;
    }
    Int red_blue_lanes() const { return texel_red_blue; }
    Int alpha_green_lanes() const { return texel_alpha_green; }
    Int alphas_in_halves() const { return upper_halves_in_both(texel_alpha_green); }
    Int pixel_lanes() const { return texel_red_blue | shift_left<8>(texel_alpha_green); }
    Int alpha_lanes() const { return shift_right<16>(texel_alpha_green); }
    Int index_lanes(const Pixel_Target& target, Int thresholds) const {
        return Dithered_Color::of_pixels(target, pixel_lanes()).indices(*target.dither, thresholds);
    }
    void skip(std::int32_t count) {
        red_blue.skip(count);
        alpha_green.skip(count);
        s.skip(count);
        t.skip(count);
    }
    void advance_group(Int lanes) {
        red_blue.advance_group(lanes);
        alpha_green.advance_group(lanes);
        s.advance_group();
        t.advance_group();
    }

private:
    template <int upper, int lower> static Int halves(Attributes<8> a) {
        return spread<lower>(a) + shift_left<16>(spread<upper>(a));
    }
    template <int lane> static std::int32_t first_lane(Attributes<8> a) {
        return static_cast<std::int32_t>(lane_of(spread<lane>(a), 0));
    }

    template <bool is_whole, int i> KRB_ALWAYS_INLINE Int texels_of_group() const {
        if constexpr (i == shape_count) {
            return gathered<is_whole>();
        } else if (shape == i) {
            constexpr Texel_Shape block = texel_shapes[i];
            const std::int32_t column = s.first_texel<is_whole>(block.columns, width);
            const std::int32_t row = t.first_texel<is_whole>(block.rows, height);
            return block_texels<block.rows, block.columns>(texels + 4 * (std::int64_t{row} * width + column),
                                                           std::int64_t{4} * width, s.lanes_from(column), t.lanes_from(row));
        } else {
            return texels_of_group<is_whole, i + 1>();
        }
    }

    // Lanes that take no part may lie anywhere.
    template <bool is_whole> KRB_ALWAYS_INLINE Int gathered() const {
        Int column = shift_right<16>(s.lanes());
        Int row_start = shift_right_by(t.lanes(), 16 - width_bits) & splat(-width);
        if constexpr (!is_whole) {
            column = column & splat(width - 1);
            row_start = row_start & splat(width * height - 1);
        }
        return gather(texels, row_start | column);
    }

    void modulate(Int texel) {
        texel_red_blue = multiply_halves_high(texel & splat(0x00FF00FF), red_blue.value);
        texel_alpha_green = multiply_halves_high(shift_halves_right<8>(texel), alpha_green.value);
    }
};

} // namespace
} // namespace krb::KRB_KERNEL_SET
