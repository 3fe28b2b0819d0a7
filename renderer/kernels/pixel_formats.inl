// What a group of lanes does with the pixels of a format: load, prepare a colour, store, blend, merge and dither. Included once
// for each vocabulary of lanes, after it.
//
// A colour source offers pixel_lanes() and alpha_lanes(), index_lanes(target, thresholds), or all of them; a format asks for what
// it stores.

#include <cassert>
#include <concepts>

#include "renderer/kernels/pixel_formats.h"
#include "renderer/kernels/pixel_lanes.inl"

namespace krb::KRB_KERNEL_SET {
namespace {

// Base of the sources that have the same colour in every pixel.
struct Uniform_Source {
    static constexpr bool moves = false;
    template <class Group, class Lanes> static Lanes prepare(Lanes lanes) { return lanes; }
    void skip(std::int32_t) {}
    void advance_group(Int) {}
};

// One palette index everywhere.
struct Index_Source : Uniform_Source {
    Int index;

    explicit Index_Source(std::uint8_t of_all) : index(splat(of_all)) {}
    Int index_lanes(const Pixel_Target&, Int) const { return index; }
};

// 32-bit pixels: blue, green, red and alpha.
struct Colour_32 {
    static constexpr Pixel_Format format = Pixel_Format::rgb32;
    static constexpr std::int32_t bytes = facts_of(format).pixel_bytes;
    static constexpr bool stores_words = facts_of(format).stores_words;

    template <class Lanes> static Int load(const std::uint8_t* from, Lanes lanes) { return load_pixels(from, lanes); }

    struct Flat : Uniform_Source {
        Int pixels;
        Int alphas;

        Flat(const Pixel_Target&, VT_RGB32 color) : pixels(pixel_word(color)), alphas(splat(color.alpha)) {}
        Flat(const Pixel_Target& target, VT_RGB32 color, const Prepared_Color&) : Flat(target, color) {}
        Int pixel_lanes() const { return pixels; }
        Int alpha_lanes() const { return alphas; }
    };

    static void prepare(const Pixel_Target&, VT_RGB32, Prepared_Color&) {}

    template <class Rule, class Target, class Source, class Lanes>
    KRB_ALWAYS_INLINE static void write(const Target& target, std::int32_t, std::uint8_t* at, const Source& source, Lanes lanes) {
        if constexpr (requires { Rule::combine_halves(source.red_blue_lanes(), source.alpha_green_lanes(), Int{}, Int{}); }) {
            store_pixels(at,
                         Rule::combine_halves(source.red_blue_lanes(), source.alpha_green_lanes(), source.alphas_in_halves(),
                                              load(at, lanes)),
                         lanes);
        } else if constexpr (Rule::reads) {
            store_pixels(at, Rule::combine(target, source.pixel_lanes(), source.alpha_lanes(), load(at, lanes)), lanes);
        } else {
            store_pixels(at, source.pixel_lanes(), lanes);
        }
    }
};

// 8-bit palette indices.
struct Palette_8 {
    static constexpr Pixel_Format format = Pixel_Format::index8;
    static constexpr std::int32_t bytes = facts_of(format).pixel_bytes;
    static constexpr bool stores_words = facts_of(format).stores_words;

    template <class Lanes> static Int load(const std::uint8_t* from, Lanes lanes) { return load_indices(from, lanes); }

    // One colour, dithered as far as it does not depend on the place.
    struct Flat : Colour_32::Flat {
        Dithered_Color dithered;

        Flat(const Pixel_Target& target, VT_RGB32 color)
            : Colour_32::Flat(target, color),
              dithered(Dithered_Color::of(target, splat(color.red), splat(color.green), splat(color.blue))) {}
        Flat(const Pixel_Target& target, VT_RGB32 color, const Prepared_Color& prepared)
            : Colour_32::Flat(target, color), dithered{{splat(0), splat(prepared.red)},
                                                       {splat(0), splat(prepared.green)},
                                                       {splat(0), splat(prepared.blue)},
                                                       splat(prepared.index)} {}
        Int index_lanes(const Pixel_Target& target, Int thresholds) const { return dithered.indices(*target.dither, thresholds); }
    };

    static void prepare(const Pixel_Target& target, VT_RGB32 color, Prepared_Color& prepared) {
        const Dithered_Color dithered = Dithered_Color::of(target, splat(color.red), splat(color.green), splat(color.blue));
        const auto first = [](Int value) { return static_cast<std::int32_t>(lane_of(value, 0)); };
        prepared = {first(dithered.index), first(dithered.red.complement), first(dithered.green.complement),
                    first(dithered.blue.complement)};
    }

    // Blends with the palette's pixels by the rule of 32-bit faces, whatever the rule; the outcome is dithered.
    template <class Rule, class Target, class Source, class Lanes>
    KRB_ALWAYS_INLINE static void write(const Target& target, std::int32_t row, std::uint8_t* at, const Source& source,
                                        Lanes lanes) {
        const Int thresholds =
            load_ints(target.dither->thresholds[(row + target.dither_row) & 7] + (reinterpret_cast<std::uintptr_t>(at) & 7));
        if constexpr (Rule::merges) {
            merge(target, at, source.index_lanes(target, thresholds), lanes & first_lanes(lane_count));
        } else if constexpr (Rule::reads) {
            const Int stored = gather(target.palette, load(at, lanes));
            const Int pixels = Blend::combine(target, source.pixel_lanes(), source.alpha_lanes(), stored);
            store_indices(at, Dithered_Color::of_pixels(target, pixels).indices(*target.dither, thresholds), lanes);
        } else {
            store_indices(at, source.index_lanes(target, thresholds), lanes);
        }
    }

private:
    // Index by index: the outcome is a search in the palette.
    static void merge(const Pixel_Target& target, std::uint8_t* at, Int indices, Active lanes) {
        assert(target.merged_index8);
        for (std::int32_t i = 0; i < lane_count; ++i) {
            if (has_lane(lanes, i)) {
                at[i] = target.merged_index8(target.renderer, at[i], static_cast<std::uint8_t>(lane_of(indices, i)));
            }
        }
    }
};

template <class Format>
concept Format_Rules = requires(const Pixel_Target& target, VT_RGB32 color, Prepared_Color& prepared, std::uint8_t* at,
                                typename Format::Flat source) {
    { Format::format } -> std::convertible_to<Pixel_Format>;
    { Format::bytes } -> std::convertible_to<std::int32_t>;
    { Format::stores_words } -> std::convertible_to<bool>;
    { Format::load(at, All{}) } -> std::same_as<Int>;
    Format::prepare(target, color, prepared);
    requires std::constructible_from<typename Format::Flat, const Pixel_Target&, VT_RGB32>;
    requires std::constructible_from<typename Format::Flat, const Pixel_Target&, VT_RGB32, const Prepared_Color&>;
    Format::template write<Store>(target, 0, at, source, All{});
};

template <Pixel_Format> struct Format_Of;
template <> struct Format_Of<Pixel_Format::index8> { using type = Palette_8; };
template <> struct Format_Of<Pixel_Format::rgb32> { using type = Colour_32; };

template <Pixel_Format format>
requires Format_Rules<typename Format_Of<format>::type>
using Format_Type = typename Format_Of<format>::type;

} // namespace
} // namespace krb::KRB_KERNEL_SET
