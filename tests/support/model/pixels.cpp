// The model's pixels: depth test, blends, merge control, dithering, patterns; and dots, which are nothing else.
#include <algorithm>

#include "tests/support/model/model.h"

namespace model {

namespace {

std::uint8_t byte_of(std::int64_t value) {
    return static_cast<std::uint8_t>(value & 0xFF);
}

VT_RGB32 opaque(VT_RGB32 color) {
    color.alpha = 255;
    return color;
}

std::uint8_t blended(std::uint8_t fresh, std::uint8_t stored, std::uint8_t alpha) {
    return byte_of((fresh * alpha + stored * (255 - alpha)) / 255);
}

// Alpha counts in 256ths; full alpha has to be all of them.
std::uint8_t blended_as_line(std::uint8_t fresh, std::uint8_t stored, std::uint8_t alpha) {
    const int weight = alpha == 255 ? 256 : alpha;
    return byte_of(stored + (((fresh - stored) * weight) >> 8));
}

template <class Blend> std::uint32_t blended_word(VT_RGB32 fresh, std::uint32_t stored_word, Blend blend) {
    const VT_RGB32 stored = vorna::color_of(stored_word);
    return vorna::word_of({blend(fresh.blue, stored.blue, fresh.alpha), blend(fresh.green, stored.green, fresh.alpha),
                           blend(fresh.red, stored.red, fresh.alpha), 255});
}

VT_RGB32 palette_color(const VT_Palette& palette, std::uint32_t index) {
    return palette.color(byte_of(index));
}

std::int32_t remainder(std::int32_t value, std::int32_t divisor) {
    return (value % divisor + divisor) % divisor;
}

bool is_stock_cell(std::int32_t pattern, std::int32_t a, std::int32_t b) {
    switch (pattern) {
    case 65:
        return b % 4 == 0;
    case 66:
        return a % 4 == 0;
    case 67:
        return (a + b) % 4 == 0;
    case 68:
        return (a - b) % 4 == 0;
    case 69:
        return is_stock_cell(65, a, b) || is_stock_cell(66, a, b);
    case 70:
        return is_stock_cell(67, a, b) || is_stock_cell(68, a, b);
    case 71:
        return b % 2 == 0;
    case 72:
        return a % 2 == 0;
    case 73:
        return (a + b) % 2 == 0;
    default:
        return bayer_rank(a, b) < pattern;
    }
}

} // namespace

Model::Handed_Over Model::draw_dot(const VT_Rendition& rendition, const VT_DCI_Point& point, const VT_RGB32* color_given) {
    Pixel_Rules rules{Color_Rule::store, Depth_Rule::none, region_of(rendition)};
    const bool with_depth = setup.depth && rendition.clip.depth_test;
    if (with_depth) {
        rules.depth = setup.has_indices() ? Depth_Rule::nearer_or_equal : Depth_Rule::by_mode;
    }
    const bool merging = is_merging(rendition.line.mode);
    Fragment fragment{column_of(point.x), row_of(point.y), point.z, color_given ? *color_given : rendition.line.color};
    if (setup.has_indices() && color_given) {
        rules.color = Color_Rule::dither;
    } else if (setup.has_indices()) {
        // An index travels in the first byte of the colour.
        fragment.color = vorna::color_of(rendition.line.index);
        rules.color = merging ? Color_Rule::merge : Color_Rule::store;
    } else if (merging) {
        rules.color = Color_Rule::merge;
    } else {
        rules.color = setup.alpha ? Color_Rule::blend_as_line : Color_Rule::store;
    }
    draw_pixel(fragment, rules);
    return {};
}

Model::Handed_Over Model::draw_polymarker(const VT_Rendition& rendition, const std::vector<VT_DCI_Point>& points,
                                          const std::vector<VT_RGB32>& colors, bool single_color) {
    const VT_Marker_Attributes& marker = rendition.marker;
    const bool is_colorized = single_color || !colors.empty();
    const bool has_slot = is_colorized ? setup.alpha && !setup.depth : !(setup.has_indices() && setup.depth);
    if (!has_slot || marker.symbol != 0 || (is_colorized && marker.size > 1)) {
        return {is_colorized ? "VD_Standard_Draw_2DI_Colorized_Polymarker" : "VD_Standard_Draw_2DI_Polymarker"};
    }
    Pixel_Rules rules{setup.alpha ? Color_Rule::blend_as_line : Color_Rule::store, Depth_Rule::none, region_of(rendition)};
    if (setup.depth && rendition.clip.depth_test) {
        rules = {rules.color, Depth_Rule::by_mode, nullptr}; // these members know neither regions nor merging
    } else if (is_merging(marker.mode)) {
        rules.color = Color_Rule::merge;
    }
    // An opaque colour is stored, and that is what its blend leaves too.
    const VT_RGB32 own_color = setup.has_indices() ? vorna::color_of(marker.index) : marker.color;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const VT_DCI_Point& point = points[i];
        const std::int64_t column = std::int64_t{point.x} - setup.origin.x, row = std::int64_t{point.y} - setup.origin.y;
        const bool is_in_window = column >= 0 && column < setup.size.x && row >= 0 && row < setup.size.y;
        if (is_in_window && contains(rendition.clip.hard_clip, point.x, point.y)) {
            draw_pixel(fragment_at(point.x, point.y, point.z, colors.empty() ? own_color : colors[single_color ? 0 : i]), rules);
        }
    }
    return {};
}

VT_Reference<const VT_Contour_Set> Model::region_of(const VT_Rendition& rendition) const {
    if (!setup.use_mask || !rendition.clip.complex_clip) {
        return nullptr;
    }
    const VT_Int_Pair offset = rendition.clip.window_offset;
    return offset.x < 0 || offset.y < 0 ? rendition.shifted_complex_clip() : rendition.clip.complex_clip;
}

// Counts the edges left of or at the point in long double, whose 64 bits hold every product that tests can make.
bool is_inside(const VT_Contour_Set& region, long double x, long double y) {
    bool inside = false;
    for (const auto& contour : region.contours()) {
        for (std::size_t i = 0; i < contour.size(); ++i) {
            const VT_Point& a = contour[i];
            const VT_Point& b = contour[(i + 1) % contour.size()];
            const long double product =
                (x - a.x) * (static_cast<long double>(b.y) - a.y) - (y - a.y) * (static_cast<long double>(b.x) - a.x);
            inside ^= (a.y <= y) != (b.y <= y) && (a.y <= y ? product >= 0 : product <= 0);
        }
    }
    return inside;
}

void Model::draw_pixel(const Fragment& fragment, const Pixel_Rules& rules) {
    if (rules.region &&
        !is_inside(*rules.region, fragment.column + setup.origin.x + 0.5L, fragment.row + setup.origin.y + 0.5L)) {
        return;
    }
    if (rules.color == Color_Rule::blend_visible && fragment.color.alpha == 0) {
        return;
    }
    if (rules.depth != Depth_Rule::none) {
        std::uint32_t& stored = depth.at(fragment.column, fragment.row);
        if (!passes_depth_test(fragment.z, stored, rules.depth)) {
            return;
        }
        if (z_write || rules.depth == Depth_Rule::nearer_or_equal) {
            stored = static_cast<std::uint32_t>(fragment.z & 0xFFFF);
        }
    }
    std::uint32_t& stored = color.at(fragment.column, fragment.row);
    stored = combined(stored, fragment, rules.color);
}

bool Model::passes_depth_test(std::int64_t z, std::uint32_t stored, Depth_Rule rule) const {
    if (rule == Depth_Rule::by_mode && z_test == 1) {
        return z < stored;
    }
    if (rule == Depth_Rule::by_mode && z_test == 5) {
        return z > stored;
    }
    return z <= stored;
}

std::uint32_t Model::combined(std::uint32_t stored, const Fragment& fragment, Color_Rule rule) const {
    switch (rule) {
    case Color_Rule::store:
        return setup.has_indices() ? fragment.color.blue : vorna::word_of(fragment.color);
    case Color_Rule::store_opaque:
        return vorna::word_of(opaque(fragment.color));
    case Color_Rule::blend:
    case Color_Rule::blend_visible:
        return blended_word(fragment.color, stored, blended);
    case Color_Rule::blend_as_line:
        return blended_word(fragment.color, stored, blended_as_line);
    case Color_Rule::blend_by_weight:
        return blended_word(fragment.color, stored, [&](std::uint8_t fresh, std::uint8_t old, std::uint8_t) {
            return byte_of(old + (((fresh - old) * fragment.weight) >> 16));
        });
    case Color_Rule::merge:
        return setup.has_indices() ? merged_index(stored, fragment.color.blue)
                                   : merged_color(stored, vorna::word_of(fragment.color));
    case Color_Rule::dither:
        return dithered(fragment.color, fragment.column, fragment.row);
    case Color_Rule::dither_and_merge:
        return merged_index(stored, dithered(fragment.color, fragment.column, fragment.row));
    }
    return stored;
}

std::uint32_t Model::merged_color(std::uint32_t stored, std::uint32_t fresh) const {
    if (stored == fresh && stored != background) {
        return stored;
    }
    const std::uint32_t both = stored == background ? fresh : stored & fresh;
    const std::uint32_t result = both | 0xFF000000U;
    return result == background ? alternate : result;
}

// A combination that happens to be the background index stays it; only a fresh background index is replaced.
std::uint32_t Model::merged_index(std::uint32_t stored, std::uint32_t fresh) const {
    if (stored == background) {
        return fresh == background ? alternate : fresh;
    }
    if (stored == fresh) {
        return stored;
    }
    const std::uint32_t both =
        vorna::word_of(palette_color(*setup.palette, stored)) & vorna::word_of(palette_color(*setup.palette, fresh));
    return closest_index(vorna::color_of(both));
}

std::uint32_t Model::closest_index(VT_RGB32 wanted) const {
    std::uint32_t best = 0;
    int least = 3 * 256 * 256;
    for (std::uint32_t index = 0; index < static_cast<std::uint32_t>(setup.palette->size()); ++index) {
        const VT_RGB32 have = palette_color(*setup.palette, index);
        const int red = have.red - wanted.red, green = have.green - wanted.green, blue = have.blue - wanted.blue;
        const int distance = red * red + green * green + blue * blue;
        if (distance < least) {
            least = distance;
            best = index;
        }
    }
    return best;
}

// The colour lies in a cell of the cube; the dither chooses among four corners on the way from the cell's lowest to its highest
// one, the channel with the largest fraction going first.
std::uint32_t Model::dithered(VT_RGB32 wanted, std::int32_t column, std::int32_t row) const {
    const VT_Color_Cube cube = color_cube();
    struct Channel {
        std::uint32_t fraction, stride;
    };
    const auto scaled = [](std::uint8_t value, std::uint32_t multiplier) { return (value * multiplier) << 8; };
    const std::uint32_t red = scaled(wanted.red, cube.red_multiplier);
    const std::uint32_t green = scaled(wanted.green, cube.green_multiplier);
    const std::uint32_t blue = scaled(wanted.blue, cube.blue_multiplier);
    const auto cell = [](std::uint32_t value) { return value >> 16 & 0xFF; };

    std::array<Channel, 3> channels{
        {{red & 0xFFFF, cube.red_stride}, {green & 0xFFFF, cube.green_stride}, {blue & 0xFFFF, cube.blue_stride}}};
    std::stable_sort(channels.begin(), channels.end(), [](Channel a, Channel b) { return a.fraction > b.fraction; });

    const std::uint32_t limit = threshold(address_of(column, row) % 8, row % 8);
    std::uint32_t index = cube.base + cell(red) * cube.red_stride + cell(green) * cube.green_stride + cell(blue);
    for (const Channel& channel : channels) {
        if (0xFFFF - channel.fraction > limit) {
            break;
        }
        index += channel.stride;
    }
    return index & 0xFF;
}

// A palette without a cube leaves the last one's, or the one that renderers are made with.
VT_Color_Cube Model::color_cube() const {
    const VT_Color_Cube made_with({2, 2, 2}, 1.0F, 0);
    const VT_Color_Cube before = setup.palette_before ? setup.palette_before->color_cube().value_or(made_with) : made_with;
    return setup.palette->color_cube().value_or(before);
}

std::uint32_t threshold(std::uintptr_t column, std::int32_t row) {
    return 1024 * static_cast<std::uint32_t>(bayer_rank(static_cast<std::int32_t>(column), row)) + 512;
}

std::int32_t bayer_rank(std::int32_t column, std::int32_t row, std::int32_t size) {
    if (size == 1) {
        return 0;
    }
    constexpr std::int32_t quarters[2][2] = {{0, 2}, {3, 1}};
    const std::int32_t half = size / 2;
    return 4 * bayer_rank(column % half, row % half, half) + quarters[row / half][column / half];
}

bool is_pattern_set(const VT_Face_Attributes& face, std::int32_t column, std::int32_t row) {
    const bool inverted = (face.flags & vorna::face_flag::inverted_pattern) != 0;
    if (face.pattern == vorna::face_pattern::bitmap) {
        const VT_Pattern_Bitmap& bitmap = *face.bitmap;
        const bool set = bitmap.row(remainder(row, bitmap.height()))[remainder(column, bitmap.width())] != 0;
        return set != inverted;
    }
    return is_stock_cell(face.pattern, column % 8, row % 8) != inverted;
}

} // namespace model
