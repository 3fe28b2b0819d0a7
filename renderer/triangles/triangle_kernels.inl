// Triangle kernels: the walk over a strip, its spans, and the pixels of flat and Gouraud members.
//
// A vertex of a smaller buffer row is nearer the top. Rows run from the top vertex's row up to but not including the bottom
// one's, columns from the left edge's up to but not including the right one's, so that triangles that share an edge cover every
// pixel once. Values along edges are interpolated in fixed point from row to row, values along a span from the two edges' integer
// parts. A value at pixel i is start + i * step whichever way it is reached, so lanes may start anywhere.

#include <cstring>

#include "renderer/triangles/triangle_kernels.h"

namespace krb::KRB_KERNEL_SET {
namespace {

constexpr bool is_flat(Triangle_Configuration c) {
    return c.shading == Shading::flat;
}

// A value that moves along a span, one lane a pixel.
struct Ramp {
    Int value;
    Int step;

    static Ramp from(Int start, Int step) { return {start + lane_numbers() * step, step}; }
    void skip(std::int32_t pixels) { value = value + splat(pixels) * step; }
    void advance_group(Int lanes) { value = value + lanes * step; }
};

// ---- colour sources

inline std::uint32_t word_of_color(VT_RGB32 color) {
    return std::uint32_t{color.blue} | std::uint32_t{color.green} << 8 | std::uint32_t{color.red} << 16 |
           std::uint32_t{color.alpha} << 24;
}

inline Int pixel_word(VT_RGB32 color) {
    return splat(static_cast<std::int32_t>(word_of_color(color)));
}

// One channel on its way to a palette index.
struct Dithered_Channel {
    Int cell;       // of the cube
    Int complement; // 65535 less the fraction: the least threshold that steps up to the next cell

    static Dithered_Channel of(Int value, std::int32_t multiplier, std::int32_t bias) {
        const Int scaled = shift_left<8>(value * splat(multiplier)) | splat(bias);
        return {shift_right<16>(scaled) & splat(0xFF), splat(0xFFFF) - (scaled & splat(0xFFFF))};
    }
    Int step_up(Int thresholds, std::int32_t stride) const { return where(less_or_equal(complement, thresholds), splat(stride)); }
};

struct Dithered_Color {
    Dithered_Channel red, green, blue;
    Int index; // of the cell

    static Dithered_Color of(const Triangle_Target& target, Int red, Int green, Int blue) {
        const Dither& dither = *target.dither;
        const std::int32_t bias = target.dither_bias;
        Dithered_Color color{Dithered_Channel::of(red, dither.red_multiplier, bias),
                             Dithered_Channel::of(green, dither.green_multiplier, bias),
                             Dithered_Channel::of(blue, dither.blue_multiplier, bias), splat(dither.base)};
        // The cell of blue counts once, whatever the cube's blue stride.
        color.index = color.index + color.red.cell * splat(dither.red_stride) + color.green.cell * splat(dither.green_stride) +
                      color.blue.cell;
        return color;
    }
    // Correct in the low eight bits, which are all that is stored.
    Int indices(const Dither& dither, Int thresholds) const {
        return index + red.step_up(thresholds, dither.red_stride) + green.step_up(thresholds, dither.green_stride) +
               blue.step_up(thresholds, dither.blue_stride);
    }
};

// The same colour for a whole triangle.
template <Pixel_Format format> struct Flat_Source {
    static constexpr bool moves = false;
    Int pixels;
    Int alphas;

    Flat_Source(const Triangle_Target&, VT_RGB32 color) : pixels(pixel_word(color)), alphas(splat(color.alpha)) {}
    template <class Lanes> static Lanes prepare(Lanes lanes) { return lanes; }
    Int pixel_lanes() const { return pixels; }
    Int alpha_lanes() const { return alphas; }
    void skip(std::int32_t) {}
    void advance_group(Int) {}
};

// Its way to palette indices is gone once.
template <> struct Flat_Source<Pixel_Format::index8> : Flat_Source<Pixel_Format::rgb32> {
    Dithered_Color dithered;

    Flat_Source(const Triangle_Target& target, VT_RGB32 color)
        : Flat_Source<Pixel_Format::rgb32>(target, color),
          dithered(Dithered_Color::of(target, splat(color.red), splat(color.green), splat(color.blue))) {}
    Int index_lanes(const Triangle_Target& target, Int thresholds) const { return dithered.indices(*target.dither, thresholds); }
};

// Channels that move along the span. The stored pixel is opaque.
struct Gouraud_Source {
    static constexpr bool moves = true;
    Ramp blue, green, red, alpha;

    Gouraud_Source(Attributes<8> start, Attributes<8> step)
        : blue(Ramp::from(spread<4>(start), spread<4>(step))), green(Ramp::from(spread<5>(start), spread<5>(step))),
          red(Ramp::from(spread<6>(start), spread<6>(step))), alpha(Ramp::from(spread<7>(start), spread<7>(step))) {}
    template <class Lanes> static Lanes prepare(Lanes lanes) { return lanes; }
    Int pixel_lanes() const {
        return shift_right<16>(blue.value) | (shift_right<8>(green.value) & splat(0xFF00)) | (red.value & splat(0xFF0000)) |
               splat(static_cast<std::int32_t>(0xFF000000));
    }
    Int alpha_lanes() const { return shift_right<16>(alpha.value); }
    Int index_lanes(const Triangle_Target& target, Int thresholds) const {
        return Dithered_Color::of(target, shift_right<16>(red.value), shift_right<16>(green.value), shift_right<16>(blue.value))
            .indices(*target.dither, thresholds);
    }
    void skip(std::int32_t pixels) {
        blue.skip(pixels);
        green.skip(pixels);
        red.skip(pixels);
        alpha.skip(pixels);
    }
    void advance_group(Int lanes) {
        blue.advance_group(lanes);
        green.advance_group(lanes);
        red.advance_group(lanes);
        alpha.advance_group(lanes);
    }
};

// Texels times a colour that moves along the span. Colours are held twice as large as their 16 bits, so that the half unit of a
// two-pixel span's mean is not lost before the product.
struct Texture_Source {
    static constexpr bool moves = true;
    Gouraud_Source color;
    Ramp s, t;
    const std::uint8_t* texels;
    std::int32_t width_mask, height_mask;
    Int pixels, alphas;

    Texture_Source(const Triangle_Target& target, Attributes<8> start, Attributes<8> step, Attributes<8> doubled_start,
                   Attributes<8> doubled_step)
        : color(doubled_start, doubled_step), s(Ramp::from(spread<2>(start), spread<2>(step))),
          t(Ramp::from(spread<3>(start), spread<3>(step))), texels(target.texels), width_mask(target.texture_width_mask),
          height_mask(target.texture_height_mask), pixels(splat(0)), alphas(splat(0)) {}

    // Pixels off the texture are not drawn; it does not repeat. The first texel row is the top one.
    template <class Lanes> Active prepare(Lanes lanes) {
        const Int column = shift_right<16>(s.value);
        const Int row = shift_right<16>(t.value);
        const Int outside = (column & splat(~width_mask)) | (row & splat(~height_mask));
        const Int stored_row = splat(height_mask) - (row & splat(height_mask));
        const Int texel = gather(texels, stored_row * splat(width_mask + 1) + (column & splat(width_mask)));
        // Steps that were rounded down can lead a little below 0 at the end of a span.
        const auto modulated = [](Int byte, const Ramp& by) {
            return shift_right<17>(byte * where(less_or_equal(splat(0), by.value), by.value));
        };
        pixels = modulated(texel & splat(0xFF), color.blue) |
                 shift_left<8>(modulated(shift_right<8>(texel) & splat(0xFF), color.green)) |
                 shift_left<16>(modulated(shift_right<16>(texel) & splat(0xFF), color.red));
        alphas = modulated(shift_right<24>(texel), color.alpha);
        return lanes & equal(outside, splat(0));
    }
    Int pixel_lanes() const { return pixels; }
    Int alpha_lanes() const { return alphas; }
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
};

// ---- depth rules

struct No_Depth {
    static constexpr bool reads = false;
};

struct Less_Or_Equal {
    static constexpr bool reads = true;
    template <class Lanes> static Active pass(const Triangle_Target&, Lanes lanes, Int depths, Int stored) {
        return lanes & less_or_equal(depths, stored);
    }
    static bool writes(const Triangle_Target&) { return true; }
};

struct By_Mode {
    static constexpr bool reads = true;
    template <class Lanes> static Active pass(const Triangle_Target& target, Lanes lanes, Int depths, Int stored) {
        const Active low = less_or_equal(depths, stored + splat(target.depth_bias));
        return target.depth_inverted ? without(lanes & first_lanes(lane_count), low) : lanes & low;
    }
    static bool writes(const Triangle_Target& target) { return target.depth_written; }
};

template <Depth_Rule rule> struct Depth_Of;
template <> struct Depth_Of<Depth_Rule::none> { using type = No_Depth; };
template <> struct Depth_Of<Depth_Rule::less_or_equal> { using type = Less_Or_Equal; };
template <> struct Depth_Of<Depth_Rule::by_mode> { using type = By_Mode; };

// ---- pixel rules of 32-bit buffers: source pixels and stored pixels to what is written

struct Store {
    static constexpr bool reads = false;
};

// (source * a + stored * (255 - a)) / 255, truncated, for each colour byte; the pixel becomes opaque.
struct Blend {
    static constexpr bool reads = true;
    static Int combine(const Triangle_Target&, Int source, Int alphas, Int stored) {
        const Int even = splat(0x00FF00FF);
        const Int weights = alphas | shift_left<16>(alphas);
        const Int rest = even - weights;
        const Int red_blue = divided_by_255(multiply_halves(source & even, weights) + multiply_halves(stored & even, rest));
        const Int green = divided_by_255(multiply_halves(shift_right<8>(source) & even, weights) +
                                         multiply_halves(shift_right<8>(stored) & even, rest));
        return red_blue | (shift_left<8>(green) & splat(0xFF00)) | splat(static_cast<std::int32_t>(0xFF000000));
    }

private:
    // Exact for what two weighted bytes add up to, 0 to 65025: floor(v / 255) = (v + 1 + (v >> 8)) >> 8.
    static Int divided_by_255(Int halves) {
        return shift_halves_right<8>(halves + splat(0x00010001) + shift_halves_right<8>(halves));
    }
};

// Merge control: an untouched pixel takes the colour, an equal one stays, two different ones give their bitwise AND.
struct Merge {
    static constexpr bool reads = true;
    static Int combine(const Triangle_Target& target, Int source, Int, Int stored) {
        const Int background = splat(static_cast<std::int32_t>(target.background));
        const Active untouched = equal(stored, background);
        const Int merged = select(untouched, source, stored & source) | splat(static_cast<std::int32_t>(0xFF000000));
        const Int visible =
            select(equal(merged, background), splat(static_cast<std::int32_t>(target.alternate_background)), merged);
        return select(without(equal(stored, source), untouched), stored, visible);
    }
};

template <Pixel_Rule rule> struct Pixel_Of;
template <> struct Pixel_Of<Pixel_Rule::store> { using type = Store; };
template <> struct Pixel_Of<Pixel_Rule::blend> { using type = Blend; };
template <> struct Pixel_Of<Pixel_Rule::merge> { using type = Merge; };

// ---- clip rules

// Bit i: whether the pattern draws the pixel i columns on.
inline std::uint32_t pattern_bits(const Face_Pattern& pattern, std::int32_t column, std::int32_t row) {
    std::uint32_t bits = 0;
    if (pattern.bitmap) {
        const std::uint8_t* cells = pattern.bitmap + std::int64_t{row % pattern.height} * pattern.width;
        std::int32_t cell = column % pattern.width;
        for (int i = 0; i < lane_count; ++i) {
            bits |= std::uint32_t{cells[cell] != 0} << i;
            cell = cell + 1 == pattern.width ? 0 : cell + 1;
        }
    } else {
        bits = pattern.stock_rows[row & 7] >> (column & 7);
    }
    return pattern.inverted ? ~bits : bits;
}

struct Reversed_Bytes {
    std::uint8_t of[256];
};

constexpr Reversed_Bytes reversed_bytes() {
    Reversed_Bytes bytes{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            if ((byte & 1U << bit) != 0) {
                bytes.of[byte] = static_cast<std::uint8_t>(bytes.of[byte] | 0x80U >> bit);
            }
        }
    }
    return bytes;
}

constexpr Reversed_Bytes reversed = reversed_bytes();

// Bit i: whether the mask leaves the pixel i columns on.
inline std::uint32_t mask_bits(const std::uint8_t* mask_row, std::int32_t column) {
    const std::uint8_t* bytes = mask_row + (column >> 3);
    std::uint32_t clipped = std::uint32_t{reversed.of[bytes[0]]} | std::uint32_t{reversed.of[bytes[1]]} << 8;
    if constexpr (lane_count > 8) {
        clipped |= std::uint32_t{reversed.of[bytes[2]]} << 16;
    }
    return ~(clipped >> (column & 7));
}

// How many of the pixels from the column on, up to count, lie in mask bytes that all have this value.
inline std::int32_t stretch_of(const std::uint8_t* mask_row, std::int32_t column, std::int32_t count, std::uint8_t value) {
    const std::uint8_t* const first = mask_row + (column >> 3);
    const std::uint8_t* const end = mask_row + ((column + count + 7) >> 3);
    const std::uint64_t word = value * UINT64_C(0x0101010101010101);
    const std::uint8_t* byte = first;
    for (; end - byte >= 8; byte += 8) {
        std::uint64_t bytes;
        std::memcpy(&bytes, byte, 8);
        if (bytes != word) {
            break;
        }
    }
    while (byte < end && *byte == value) {
        ++byte;
    }
    const std::int32_t pixels = static_cast<std::int32_t>(byte - first) * 8 - (column & 7);
    return pixels < 0 ? 0 : pixels < count ? pixels : count;
}

// ---- spans

// What is left of a span that does not fill all lanes.
struct Tail {
    std::int32_t column; // of lane 0
    std::int32_t back;   // how far lane 0 lies before the next pixel
    Active lanes;
};

// Without masked memory a short group is drawn inside a full one that lies in the same row.
inline Tail tail_of(std::int32_t column, std::int32_t count, std::int32_t width) {
    if constexpr (masked_memory) {
        (void)width;
        return {column, 0, first_lanes(count)};
    } else {
        const std::int32_t last = width - lane_count;
        const std::int32_t start = column < last ? column : last;
        return {start, column - start, lanes_between(column - start, column - start + count)};
    }
}

template <class Lanes> struct Is_Whole_Group { static constexpr bool value = false; };
template <> struct Is_Whole_Group<All> { static constexpr bool value = true; };

// Draws one span group by group. Rules are those of the configuration, the colour is the source's.
template <Triangle_Configuration c, class Source> struct Span {
    using Depth = typename Depth_Of<c.depth>::type;
    using Pixel = typename Pixel_Of<c.pixel>::type;
    static constexpr std::int32_t pixel_bytes = c.format == Pixel_Format::rgb32 ? 4 : 1;
    // Nothing is read and nothing moves: the span is one value in every pixel.
    static constexpr bool is_solid = is_flat(c) && !Depth::reads && c.pixel == Pixel_Rule::store &&
                                     c.format == Pixel_Format::rgb32 && c.clip != Clip_Rule::patterned;

    const Triangle_Target& target;
    std::int32_t row;
    std::uint8_t* color_row;
    std::uint8_t* depth_row;
    Source source;
    Ramp depth;
    bool gaps; // the pixels that the pattern leaves out

    void draw(std::int32_t column, std::int32_t count) {
        if constexpr (c.clip == Clip_Rule::open) {
            draw_open(column, count);
        } else if constexpr (c.clip == Clip_Rule::masked) {
            draw_masked(column, count);
        } else {
            for (; count > 0; count -= lane_count, column += lane_count) {
                draw_patterned_group(column, count);
            }
        }
    }

    void skip(std::int32_t pixels) {
        source.skip(pixels);
        if constexpr (Depth::reads) {
            depth.skip(pixels);
        }
    }

private:
    void draw_open(std::int32_t column, std::int32_t count) {
        if constexpr (is_solid) {
            if (count >= lane_count) {
                fill_solid(column, count);
                return;
            }
        }
        const std::int32_t whole = count - count % lane_count;
        draw_whole_groups(column, whole);
        if (count > whole) {
            const Tail tail = tail_of(column + whole, count - whole, target.width);
            rewind(tail);
            draw_drawable(tail.column, tail.lanes);
        }
    }

    // Stretches inside the region are drawn as open ones, stretches outside skipped; only groups at its edge are looked at pixel
    // by pixel.
    void draw_masked(std::int32_t column, std::int32_t count) {
        const std::uint8_t* mask_row = target.mask_rows[row];
        while (count > 0) {
            const std::int32_t open = stretch_of(mask_row, column, count, 0);
            if (open == count) {
                draw_open(column, count);
                return;
            }
            std::int32_t done = open - open % lane_count;
            if (done > 0) {
                draw_whole_groups(column, done);
            } else {
                done = stretch_of(mask_row, column, count, 0xFF);
                if (done > 0) {
                    skip(done);
                } else {
                    done = lane_count;
                    draw_selected_group(column, count, mask_bits(mask_row, column));
                }
            }
            column += done;
            count -= done;
        }
    }

    void draw_patterned_group(std::int32_t column, std::int32_t count) {
        std::uint32_t bits = pattern_bits(*target.pattern, column, row);
        bits = gaps ? ~bits : bits;
        if (target.mask_rows) {
            bits &= mask_bits(target.mask_rows[row], column);
        }
        draw_selected_group(column, count, bits);
    }

    // Draws the pixels of the next group whose bits are set; bit 0 is the first one's.
    void draw_selected_group(std::int32_t column, std::int32_t count, std::uint32_t bits) {
        if (count >= lane_count) {
            draw_drawable(column, lanes_of_bits(bits));
            advance_group();
        } else {
            const Tail tail = tail_of(column, count, target.width);
            rewind(tail);
            draw_drawable(tail.column, tail.lanes & lanes_of_bits(bits << tail.back));
        }
    }

    // count is a multiple of lane_count.
    void draw_whole_groups(std::int32_t column, std::int32_t count) {
        if constexpr (is_solid) {
            if (count > 0) {
                fill_solid(column, count);
            }
        } else {
            for (; count > 0; count -= lane_count, column += lane_count) {
                draw_drawable(column, All{});
                advance_group();
            }
        }
    }

    // count is at least lane_count: whole vectors at aligned addresses, and one at each end that may overlap them.
    void fill_solid(std::int32_t column, std::int32_t count) {
        constexpr std::int64_t vector_bytes = std::int64_t{lane_count} * pixel_bytes;
        std::uint8_t* at = color_row + std::int64_t{pixel_bytes} * column;
        std::uint8_t* const last = at + std::int64_t{pixel_bytes} * (count - lane_count);
        store_pixels(at, source.pixel_lanes(), All{});
        // Whole pixels on, also in rows that start at odd addresses.
        const auto misaligned = static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(at) % std::uintptr_t{vector_bytes});
        at += (vector_bytes - misaligned) / pixel_bytes * pixel_bytes;
        for (; at < last; at += vector_bytes) {
            store_pixels(at, source.pixel_lanes(), All{});
        }
        store_pixels(last, source.pixel_lanes(), All{});
    }

    void advance_group() {
        if constexpr (Depth::reads || Source::moves) {
            const Int lanes = splat(lane_count);
            source.advance_group(lanes);
            if constexpr (Depth::reads) {
                depth.advance_group(lanes);
            }
        }
    }

    // Back to where lane 0 of a short group lies.
    void rewind(const Tail& tail) {
        if constexpr (!masked_memory) {
            skip(-tail.back);
        }
    }

    template <class Lanes> void draw_drawable(std::int32_t column, Lanes lanes) {
        if constexpr (Depth::reads) {
            std::uint8_t* at = depth_row + std::int64_t{2} * column;
            const Int depths = shift_right<15>(depth.value) & splat(0xFFFF);
            const Active passed = Depth::pass(target, lanes, depths, load_depths(at, lanes));
            // A short group is drawn whatever passes: the branch would cost more than it saves.
            if constexpr (Is_Whole_Group<Lanes>::value) {
                if (none(passed)) {
                    return;
                }
            }
            const Active visible = visible_lanes(passed);
            if (Depth::writes(target)) {
                store_depths(at, depths, visible);
            }
            write(column, visible);
        } else {
            write(column, visible_lanes(lanes));
        }
    }

    // Gouraud pixels and texels of alpha 0 are not there at all, depth included.
    template <class Lanes> auto visible_lanes(Lanes lanes) {
        const auto prepared = source.prepare(lanes);
        if constexpr (!is_flat(c) && c.pixel == Pixel_Rule::blend) {
            return without(prepared & first_lanes(lane_count), equal(source.alpha_lanes(), splat(0)));
        } else {
            return prepared;
        }
    }

    template <class Lanes> void write(std::int32_t column, Lanes lanes) {
        std::uint8_t* at = color_row + std::int64_t{pixel_bytes} * column;
        if constexpr (c.format == Pixel_Format::rgb32) {
            const Int pixels = source.pixel_lanes();
            if constexpr (Pixel::reads) {
                store_pixels(at, Pixel::combine(target, pixels, source.alpha_lanes(), load_pixels(at, lanes)), lanes);
            } else {
                store_pixels(at, pixels, lanes);
            }
        } else {
            const Int thresholds = load_ints(target.dither->thresholds[row & 7] + (reinterpret_cast<std::uintptr_t>(at) & 7));
            if constexpr (c.pixel == Pixel_Rule::blend) {
                const Int stored = gather(target.palette, load_indices(at, lanes));
                const Int pixels = Blend::combine(target, source.pixel_lanes(), source.alpha_lanes(), stored);
                store_indices(at, indices_of(pixels, thresholds), lanes);
            } else if constexpr (c.pixel == Pixel_Rule::merge) {
                merge_indices(at, source.index_lanes(target, thresholds), lanes & first_lanes(lane_count));
            } else {
                store_indices(at, source.index_lanes(target, thresholds), lanes);
            }
        }
    }

    Int indices_of(Int pixels, Int thresholds) const {
        const Int byte = splat(0xFF);
        return Dithered_Color::of(target, shift_right<16>(pixels) & byte, shift_right<8>(pixels) & byte, pixels & byte)
            .indices(*target.dither, thresholds);
    }

    // Index by index: the outcome is a search in the palette.
    void merge_indices(std::uint8_t* at, Int indices, Active lanes) {
        for (std::int32_t i = 0; i < lane_count; ++i) {
            if (has_lane(lanes, i)) {
                at[i] = target.merged_index8(target.renderer, at[i], static_cast<std::uint8_t>(lane_of(indices, i)));
            }
        }
    }
};

// ---- the walk

template <int size> struct Vertex {
    std::int32_t y; // buffer row
    Attributes<size> values;
};

// How a difference is divided by a row or pixel count: by 1, 2, 4 and 8 as a smaller shift.
struct Division {
    std::int32_t dropped_bits;
    std::int32_t divisor;

    static Division by(std::int32_t count) {
        const std::int32_t small = count <= 8 ? count : 0;
        return {dropped[small], small ? divisors[small] : count};
    }

private:
    static constexpr std::int32_t dropped[9] = {0, 0, 1, 0, 2, 0, 0, 0, 3};
    static constexpr std::int32_t divisors[9] = {0, 1, 1, 3, 1, 5, 6, 7, 1};
};

template <int size> struct Edge {
    Attributes<size> value;
    Attributes<size> step;
};

// Attributes that are whole numbers at the vertices. rows is above 0.
struct Whole_Attributes {
    template <int size> static Edge<size> edge(const Vertex<size>& from, const Vertex<size>& to, std::int32_t rows) {
        const Division division = Division::by(rows);
        return {to_fixed(from.values) + half_units<size>(),
                quotient(to_fixed(to.values - from.values, division.dropped_bits), division.divisor)};
    }
};

// Attributes that, but for x and z, are fixed point already: no half unit is added, and the smaller shifts round down.
struct Texture_Attributes {
    static Edge<8> edge(const Vertex<8>& from, const Vertex<8>& to, std::int32_t rows) {
        const Division division = Division::by(rows);
        const Attributes<8> difference = to.values - from.values;
        return {with_positions(to_fixed(from.values) + half_units<8>(), from.values),
                quotient(
                    with_positions(to_fixed(difference, division.dropped_bits), shifted_right(difference, division.dropped_bits)),
                    division.divisor)};
    }
};

// Fills rows first to end of the half triangle between two edges, moving both.
template <int size, class Filler>
void fill_rows(const Triangle_Target& target, Filler& filler, std::int32_t row, std::int32_t end, Edge<size>& left,
               Edge<size>& right) {
    std::int32_t rows_after = 0;
    if (target.scissored) {
        const std::int32_t first = row < target.first_row ? (target.first_row < end ? target.first_row : end) : row;
        left.value = left.value + scaled(left.step, first - row);
        right.value = right.value + scaled(right.step, first - row);
        row = first;
        const std::int32_t visible_end = end > target.end_row ? (target.end_row > row ? target.end_row : row) : end;
        rows_after = end - visible_end;
        end = visible_end;
    }
    for (; row < end; ++row) {
        const std::int32_t column = x_of(left.value) >> 16 & 0xFFFF;
        const std::int32_t count = (x_of(right.value) >> 16 & 0xFFFF) - column;
        if (count > 0) {
            filler.fill(row, column, count, left.value, right.value);
        }
        left.value = left.value + left.step;
        right.value = right.value + right.step;
    }
    if (rows_after > 0) {
        left.value = left.value + scaled(left.step, rows_after);
        right.value = right.value + scaled(right.step, rows_after);
    }
}

// Fills the half between the long edge and a short one; which of them is the left one the caller knows.
template <int size, class Filler>
void fill_half(const Triangle_Target& target, Filler& filler, std::int32_t row, std::int32_t rows, Edge<size>& long_edge,
               const Edge<size>& short_edge, bool long_is_left) {
    Edge<size> left{select(long_is_left, long_edge.value, short_edge.value),
                    select(long_is_left, long_edge.step, short_edge.step)};
    Edge<size> right{select(long_is_left, short_edge.value, long_edge.value),
                     select(long_is_left, short_edge.step, long_edge.step)};
    fill_rows(target, filler, row, row + rows, left, right);
    long_edge.value = select(long_is_left, left.value, right.value);
}

// Orders the vertices by row, of equal rows the earlier one first, and fills both halves.
template <class Kind, int size, class Filler>
void fill_triangle(const Triangle_Target& target, Filler& filler, const Vertex<size> (&vertices)[3]) {
    // By y0 <= y1, y1 <= y2 and y0 <= y2 in bits 0 to 2. Two of the eight cannot happen.
    static constexpr std::uint8_t orders[8][3] = {{2, 1, 0}, {2, 0, 1}, {1, 2, 0}, {0, 1, 2},
                                                  {1, 0, 2}, {0, 2, 1}, {1, 0, 2}, {0, 1, 2}};
    const int order = (vertices[0].y <= vertices[1].y ? 1 : 0) | (vertices[1].y <= vertices[2].y ? 2 : 0) |
                      (vertices[0].y <= vertices[2].y ? 4 : 0);
    const Vertex<size>& top = vertices[orders[order][0]];
    const Vertex<size>& middle = vertices[orders[order][1]];
    const Vertex<size>& bottom = vertices[orders[order][2]];
    const std::int32_t height = bottom.y - top.y;
    if (height < 1) {
        return;
    }
    Edge<size> long_edge = Kind::edge(top, bottom, height);
    if (const std::int32_t rows = middle.y - top.y; rows > 0) {
        const Edge<size> short_edge = Kind::edge(top, middle, rows);
        fill_half(target, filler, top.y, rows, long_edge, short_edge, x_of(short_edge.step) > x_of(long_edge.step));
    }
    if (const std::int32_t rows = bottom.y - middle.y; rows > 0) {
        const Edge<size> short_edge = Kind::edge(middle, bottom, rows);
        fill_half(target, filler, middle.y, rows, long_edge, short_edge, x_of(short_edge.value) >= x_of(long_edge.value));
    }
}

// ---- fillers: from two edges to a span

template <int size> struct Span_Values {
    Attributes<size> start;
    Attributes<size> step;

    // The second pixel of two takes the edges' mean; longer spans are divided from the edges' integer parts.
    Span_Values(Attributes<size> left, Attributes<size> right, std::int32_t count) {
        const Attributes<size> from = integer_parts(left);
        start = to_fixed(from) + half_units<size>();
        step = select(count == 2, to_fixed(mean_of_edges(left, right) - from),
                      quotient(to_fixed(integer_parts(right) - from), count));
    }
};

// The same for a textured span. Colours come doubled as well.
struct Texture_Span_Values {
    Attributes<8> start, step, doubled_start, doubled_step;

    Texture_Span_Values(Attributes<8> left, Attributes<8> right, std::int32_t count) {
        const Attributes<8> from = integer_parts(left);
        const Attributes<8> difference = right - left;
        const Division division = Division::by(count);
        start = with_positions(to_fixed(from) + half_units<8>(), left);
        step = quotient(with_positions(to_fixed(integer_parts(right) - from, division.dropped_bits),
                                       shifted_right(difference, division.dropped_bits)),
                        division.divisor);
        step = select(count == 2, with_positions(to_fixed(mean_of_edges(left, right) - from), step), step);
        doubled_start = start + start;
        doubled_step = select(count == 2, difference, step + step);
    }
};

template <Triangle_Configuration c, int size> struct Filler {
    const Triangle_Target& target;
    Flat_Source<c.format> flat;     // of flat triangles
    Flat_Source<c.format> contrast; // of a pattern's gaps

    Filler(const Triangle_Target& where, VT_RGB32 color)
        : target(where), flat(where, color), contrast(where, c.clip == Clip_Rule::patterned ? where.pattern->contrast : color) {}

    void set_color(VT_RGB32 color) { flat = Flat_Source<c.format>(target, color); }

    void fill(std::int32_t row, std::int32_t column, std::int32_t count, Attributes<size> left, Attributes<size> right) {
        std::int32_t skipped = 0;
        std::int32_t drawn = count;
        if (target.scissored) {
            column -= target.column_bias;
            const std::int32_t end = column + count < target.end_column ? column + count : target.end_column;
            skipped = column < target.first_column ? target.first_column - column : 0;
            drawn = end - column - skipped;
            if (drawn <= 0) {
                return;
            }
        }
        if constexpr (is_flat(c) && c.depth == Depth_Rule::none) {
            draw(row, column, skipped, drawn, flat, Ramp{splat(0), splat(0)});
        } else if constexpr (c.shading == Shading::textured) {
            const Texture_Span_Values values(left, right, count);
            draw(row, column, skipped, drawn,
                 Texture_Source(target, values.start, values.step, values.doubled_start, values.doubled_step),
                 Ramp::from(spread<1>(values.start), spread<1>(values.step)));
        } else {
            const Span_Values<size> values(left, right, count);
            const Ramp depth = Ramp::from(spread<1>(values.start), spread<1>(values.step));
            if constexpr (is_flat(c)) {
                draw(row, column, skipped, drawn, flat, depth);
            } else {
                draw(row, column, skipped, drawn, Gouraud_Source(values.start, values.step), depth);
            }
        }
    }

private:
    template <class Source>
    void draw(std::int32_t row, std::int32_t column, std::int32_t skipped, std::int32_t count, const Source& source, Ramp depth) {
        draw_pixels(row, column, skipped, count, source, depth, false);
        if constexpr (c.clip == Clip_Rule::patterned) {
            if (target.pattern->opaque_gaps) {
                draw_pixels(row, column, skipped, count, contrast, depth, true);
            }
        }
    }

    template <class Source>
    void draw_pixels(std::int32_t row, std::int32_t column, std::int32_t skipped, std::int32_t count, const Source& source,
                     Ramp depth, bool gaps) {
        Span<c, Source> span{
            target, row, target.color_rows[row], c.depth == Depth_Rule::none ? nullptr : target.depth_rows[row], source,
            depth,  gaps};
        if (skipped > 0) {
            span.skip(skipped);
        }
        span.draw(column + skipped, count);
    }
};

// ---- strips

inline Vertex<4> vertex_of(const Triangle_Target& target, const VT_DCI_Point& point) {
    return {point.y - target.origin_y, attributes_of(point.x - target.origin_x, point.z)};
}

inline Vertex<8> vertex_of(const Triangle_Target& target, const VT_DCI_Point& point, VT_RGB32 color) {
    return {point.y - target.origin_y, attributes_of(point.x - target.origin_x, point.z, word_of_color(color))};
}

template <Triangle_Configuration c> void draw_flat_strip(const Triangle_Target& target, const Triangle_Strip& strip) {
    Filler<c, 4> filler(target, strip.colors[0]);
    Vertex<4> vertices[3] = {vertex_of(target, strip.points[0]), vertex_of(target, strip.points[1])};
    for (std::int32_t k = 0; k < strip.count - 2; ++k) {
        vertices[2] = vertex_of(target, strip.points[k + 2]);
        if (k > 0 && !strip.single_color) {
            filler.set_color(strip.colors[k]);
        }
        fill_triangle<Whole_Attributes>(target, filler, vertices);
        vertices[0] = vertices[1];
        vertices[1] = vertices[2];
    }
}

// Runs of triangles whose colours hardly differ are drawn as one flat strip, each triangle in its first vertex's colour: they
// look the same and cost a fraction.
template <Triangle_Configuration c> void draw_gouraud_strip(const Triangle_Target& target, const Triangle_Strip& strip) {
    constexpr std::int32_t near_flat_limit = 3;
    Filler<c, 8> filler(target, strip.colors[0]);
    Vertex<8> vertices[3] = {vertex_of(target, strip.points[0], strip.colors[0]),
                             vertex_of(target, strip.points[1], strip.colors[1])};
    std::int32_t pending = 0; // near-flat triangles that wait, up to triangle k
    const auto draw_pending = [&](std::int32_t k) {
        if (pending > 0) {
            strip.near_flat(target,
                            {pending + 2, strip.points + (k - pending), strip.colors + (k - pending), false, nullptr, nullptr});
            pending = 0;
        }
    };
    for (std::int32_t k = 0; k < strip.count - 2; ++k) {
        vertices[2] = vertex_of(target, strip.points[k + 2], strip.colors[k + 2]);
        if (colors_differ(vertices[0].values, vertices[1].values, vertices[2].values, near_flat_limit)) {
            draw_pending(k);
            fill_triangle<Whole_Attributes>(target, filler, vertices);
        } else {
            ++pending;
        }
        vertices[0] = vertices[1];
        vertices[1] = vertices[2];
    }
    draw_pending(strip.count - 2);
}

template <Triangle_Configuration c> void draw_textured_strip(const Triangle_Target& target, const Triangle_Strip& strip) {
    Filler<c, 8> filler(target, strip.colors[0]);
    const auto vertex = [&](std::int32_t k) {
        const VT_DCI_Point& point = strip.points[k];
        return Vertex<8>{point.y - target.origin_y,
                         textured_attributes_of(point.x - target.origin_x, point.z, strip.coordinates[k].s,
                                                strip.coordinates[k].t, word_of_color(strip.colors[k]))};
    };
    Vertex<8> vertices[3] = {vertex(0), vertex(1)};
    for (std::int32_t k = 0; k < strip.count - 2; ++k) {
        vertices[2] = vertex(k + 2);
        fill_triangle<Texture_Attributes>(target, filler, vertices);
        vertices[0] = vertices[1];
        vertices[1] = vertices[2];
    }
}

template <int position> constexpr Strip_Kernel* kernel_at() {
    constexpr Triangle_Configuration c = Triangle_Configuration::at(position);
    if constexpr (!c.valid()) {
        return nullptr;
    } else if constexpr (is_flat(c)) {
        return &draw_flat_strip<c>;
    } else if constexpr (c.shading == Shading::gouraud) {
        return &draw_gouraud_strip<c>;
    } else {
        return &draw_textured_strip<c>;
    }
}

template <int... positions> struct Positions {};

template <int... positions> constexpr Triangle_Kernel_Table table_of(Positions<positions...>) {
    return {{kernel_at<positions>()...}};
}

template <int count, int... positions> constexpr auto first_positions() {
    if constexpr (count == 0) {
        return Positions<positions...>{};
    } else {
        return first_positions<count - 1, count - 1, positions...>();
    }
}

} // namespace

extern const Triangle_Kernel_Table triangle_kernels;
constinit const Triangle_Kernel_Table triangle_kernels = table_of(first_positions<triangle_configuration_count>());

} // namespace krb::KRB_KERNEL_SET
