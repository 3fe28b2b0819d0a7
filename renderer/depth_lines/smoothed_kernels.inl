// Kernels for smoothed lines: three pixels at every step along the major axis, blended by their distance from the ideal line. The
// pixels beside the one on the line are its neighbours along the minor axis.

#include <cassert>

#include "renderer/core/compiler_hints.h"
#include "renderer/depth_lines/smooth_stepper.inl"
#include "renderer/depth_lines/smoothed_kernels.h"
#include "renderer/kernels/pixel_words.inl"

namespace krb::KRB_KERNEL_SET {
namespace {

// ---- pixels

inline bool is_in_window(const Pixel_Target& target, VT_Int_Pair place) {
    return static_cast<std::uint32_t>(place.x) < static_cast<std::uint32_t>(target.width) &&
           static_cast<std::uint32_t>(place.y) < static_cast<std::uint32_t>(target.height);
}

inline std::uint8_t* pixel_at(const Pixel_Target& target, VT_Int_Pair place) {
    assert(is_in_window(target, place));
    return target.color_rows[place.y] + std::int64_t{place.x} * 4;
}

struct Open {
    static constexpr bool clips = false;
    static bool clipped(const Pixel_Target&, VT_Int_Pair) { return false; }
};

struct Masked {
    static constexpr bool clips = true;
    static bool clipped(const Pixel_Target& target, VT_Int_Pair place) {
        return (target.mask_rows[place.y][place.x >> 3] & 0x80 >> (place.x & 7)) != 0;
    }
};

template <Clip_Rule rule> struct Clip_Of;
template <> struct Clip_Of<Clip_Rule::open> { using type = Open; };
template <> struct Clip_Of<Clip_Rule::masked> { using type = Masked; };

// The three pixels across a line that goes from row to row.
struct In_Row {
    std::uint8_t* first;

    static VT_Int_Pair place(std::int32_t major, std::int32_t minor) { return {minor, major}; }
    static In_Row at(const Pixel_Target& target, const VT_Int_Pair* places) { return {pixel_at(target, places[0])}; }
    Pixels<3> load() const { return load_pixels<3>(first); }
    void store(Pixels<3> pixels) const { store_pixels(first, pixels); }
};

// The same of a line that goes from column to column.
struct In_Column {
    std::uint8_t* pixel[3];

    static VT_Int_Pair place(std::int32_t major, std::int32_t minor) { return {major, minor}; }
    static In_Column at(const Pixel_Target& target, const VT_Int_Pair* places) {
        return {{pixel_at(target, places[0]), pixel_at(target, places[1]), pixel_at(target, places[2])}};
    }
    Pixels<3> load() const { return load_pixels(pixel[0], pixel[1], pixel[2]); }
    void store(Pixels<3> pixels) const { store_pixels(pixel[0], pixel[1], pixel[2], pixels); }
};

// How many steps ahead memory is prefetched, since no processor predicts in which row the next pixels lie.
constexpr std::int32_t steps_ahead = 16;

// Which pixels are tested: none, those beside the line against the visible rectangle, or besides these the ones on the line
// against the window, of segments that leave it.
enum class Reach { inside, across_the_edge, beyond };

inline bool is_visible(const Smoothed_Target& target, VT_Int_Pair place) {
    const VT_Int_Rectangle& visible = target.visible;
    return visible.left <= place.x && place.x <= visible.right && visible.bottom <= place.y && place.y <= visible.top;
}

inline void blend_pixel(const Pixel_Target& target, VT_Int_Pair place, std::uint16_t weight, const Ink& ink) {
    std::uint8_t* pixel = pixel_at(target, place);
    store_pixels(pixel, blended(load_pixels<1>(pixel), same_weights(weight), ink));
}

// A segment in columns and rows, its last pixel left out.
struct Segment {
    VT_Int_Pair from, to;
    std::uint32_t color;
    Ink ink;
};

template <class Across, class Clip, Reach reach>
inline void draw_across(const Smoothed_Target& target, std::int32_t major, std::int32_t minor, const Weights_Across& across,
                        const Ink& ink) {
    const VT_Int_Pair places[3] = {Across::place(major, minor - 1), Across::place(major, minor), Across::place(major, minor + 1)};
    // No mask reaches beyond the window.
    const auto hides = [&](std::int32_t k) {
        const bool is_outside = k == 1 ? reach == Reach::beyond && !is_in_window(target, places[k])
                                       : reach != Reach::inside && !is_visible(target, places[k]);
        return is_outside || Clip::clipped(target, places[k]);
    };
    if (!(hides(0) || hides(1) || hides(2))) {
        const Across pixels = Across::at(target, places);
        pixels.store(blended(pixels.load(), load_weights(across.weight), ink));
        return;
    }
    for (std::int32_t k = 0; k < 3; ++k) {
        if (!hides(k)) {
            blend_pixel(target, places[k], across.weight[k], ink);
        }
    }
}

// ---- segments

template <class Across, class Clip, Reach reach> void draw_sloped(const Smoothed_Target& target, const Segment& segment) {
    // Either axis swaps back what it swapped.
    Smooth_Stepper line(Across::place(segment.from.x, segment.from.y), Across::place(segment.to.x, segment.to.y));
    if constexpr (reach == Reach::beyond) {
        line.limit_to(Across::place(target.width - 1, target.height - 1).x);
    }
    for (; line.remaining > 0; line.advance()) {
        if (reach != Reach::beyond && line.remaining > steps_ahead) {
            KRB_FETCH_EARLY(pixel_at(target, Across::place(line.major_after(steps_ahead), line.minor_after(steps_ahead))));
        }
        draw_across<Across, Clip, reach>(target, line.major, line.minor(), line.weights(), segment.ink);
    }
}

template <class Across, class Clip> void draw_sloped(const Smoothed_Target& target, const Segment& segment) {
    const VT_Int_Pair around = Across::place(0, 1);
    const VT_Int_Pair a = segment.from;
    const VT_Int_Pair b = segment.to;
    if (is_visible(target, {least(a.x, b.x) - around.x, least(a.y, b.y) - around.y}) &&
        is_visible(target, {most(a.x, b.x) + around.x, most(a.y, b.y) + around.y})) {
        draw_sloped<Across, Clip, Reach::inside>(target, segment);
    } else {
        draw_sloped<Across, Clip, Reach::across_the_edge>(target, segment);
    }
}

// The pixel on an axis-aligned segment: the colour as it stands, or blended by its own weight.
template <Pixel_Rule rule, class Clip>
inline void draw_on_line(const Smoothed_Target& target, VT_Int_Pair place, const Segment& segment) {
    if constexpr (rule == Pixel_Rule::store) {
        if (!Clip::clipped(target, place)) {
            store_word(pixel_at(target, place), segment.color);
        }
    } else if (!Clip::clipped(target, place)) {
        blend_pixel(target, place, weights_on_pixel.weight[1], segment.ink);
    }
}

// What is drawn in each row of a column in the window or beside it. The pixels beside a segment are left out where it touches the
// clip rectangle's edge.
template <Pixel_Rule rule, class Clip> class Upright {
public:
    // A stored colour that is blended at its full weight is what it should be, but for its fourth byte.
    Upright(const Smoothed_Target& target, std::int32_t column, const Segment& segment)
        : target_(target), segment_(segment), column_(column),
          has_neighbours_(target.clip.left < column && column < target.clip.right),
          draws_across_(has_neighbours_ && 0 < column && column < target.width - 1),
          draws_alone_((rule == Pixel_Rule::store && segment.color >> 24 != 255) || !draws_across_) {}

    KRB_ALWAYS_INLINE void draw(std::int32_t row) const {
        if (draws_across_) {
            draw_across<In_Row, Clip, Reach::inside>(target_, row, column_, weights_on_pixel, segment_.ink);
        } else if (has_neighbours_) {
            draw_beside({column_ - 1, row}, weights_on_pixel.weight[0]);
            draw_beside({column_ + 1, row}, weights_on_pixel.weight[2]);
        }
        if (draws_alone_ && is_in_window(target_, {column_, row})) {
            draw_on_line<rule, Clip>(target_, {column_, row}, segment_);
        }
    }

private:
    void draw_beside(VT_Int_Pair place, std::uint16_t weight) const {
        if (is_in_window(target_, place) && !Clip::clipped(target_, place)) {
            blend_pixel(target_, place, weight, segment_.ink);
        }
    }

    const Smoothed_Target& target_;
    const Segment& segment_;
    const std::int32_t column_;
    const bool has_neighbours_, draws_across_, draws_alone_;
};

// count rows from the lowest one on.
template <Pixel_Rule rule, class Clip>
void draw_column(const Smoothed_Target& target, VT_Int_Pair lowest, std::int32_t count, const Segment& segment) {
    const Upright<rule, Clip> upright(target, lowest.x, segment);
    const std::int32_t end = lowest.y + count;
    // The column may lie beside the window, with neighbours in it.
    const std::int32_t fetched = most(least(lowest.x, target.width - 1), 0);
    for (std::int32_t row = lowest.y; row < end; ++row) {
        if (row + steps_ahead < end) {
            KRB_FETCH_EARLY(pixel_at(target, {fetched, row + steps_ahead}));
        }
        upright.draw(row);
    }
}

// Pixels of a row, all with one weight.
template <class Clip>
void blend_run(const Smoothed_Target& target, VT_Int_Pair first, std::int32_t count, std::uint16_t weight, const Ink& ink) {
    std::int32_t i = 0;
    if constexpr (!Clip::clips) {
        // Without pixels the first one may lie beside the window.
        std::uint8_t* pixels = count > 0 ? pixel_at(target, first) : nullptr;
        for (; i + 4 <= count; i += 4) {
            store_pixels(pixels + i * 4, blended(load_pixels<4>(pixels + i * 4), same_weights(weight), ink));
        }
    }
    for (; i < count; ++i) {
        if (const VT_Int_Pair place{first.x + i, first.y}; !Clip::clipped(target, place)) {
            blend_pixel(target, place, weight, ink);
        }
    }
}

// A row in the window or beside it.
template <Pixel_Rule rule, class Clip>
void draw_row(const Smoothed_Target& target, VT_Int_Pair leftmost, std::int32_t count, const Segment& segment) {
    const std::int32_t row = leftmost.y;
    if (0 <= row && row < target.height) {
        if constexpr (rule == Pixel_Rule::store) {
            for (std::int32_t i = 0; i < count; ++i) {
                draw_on_line<rule, Clip>(target, {leftmost.x + i, row}, segment);
            }
        } else {
            blend_run<Clip>(target, leftmost, count, weights_on_pixel.weight[1], segment.ink);
        }
    }
    if (target.clip.bottom < row && row < target.clip.top) {
        if (0 < row) {
            blend_run<Clip>(target, {leftmost.x, row - 1}, count, weights_on_pixel.weight[0], segment.ink);
        }
        if (row < target.height - 1) {
            blend_run<Clip>(target, {leftmost.x, row + 1}, count, weights_on_pixel.weight[2], segment.ink);
        }
    }
}

// What the window shows of a segment that leaves it. Of level and upright segments just beside it, that is the pixels beside
// them.
template <Pixel_Rule rule, class Clip> void draw_beyond(const Smoothed_Target& target, const Segment& segment) {
    const VT_Int_Pair a = segment.from, b = segment.to;
    if (a.x == b.x) {
        if (-1 <= a.x && a.x <= target.width) {
            const std::int32_t first = most(a.y < b.y ? a.y : b.y + 1, 0),
                               last = least(a.y < b.y ? b.y - 1 : a.y, target.height - 1);
            draw_column<rule, Clip>(target, {a.x, first}, last - first + 1, segment);
        }
    } else if (a.y == b.y) {
        if (-1 <= a.y && a.y <= target.height) {
            const std::int32_t first = most(a.x < b.x ? a.x : b.x + 1, 0),
                               last = least(a.x < b.x ? b.x - 1 : a.x, target.width - 1);
            draw_row<rule, Clip>(target, {first, a.y}, last - first + 1, segment);
        }
    } else if (most(a.y, b.y) - least(a.y, b.y) >= most(a.x, b.x) - least(a.x, b.x)) {
        draw_sloped<In_Row, Clip, Reach::beyond>(target, segment);
    } else {
        draw_sloped<In_Column, Clip, Reach::beyond>(target, segment);
    }
}

template <Pixel_Rule rule, class Clip> void draw_segment(const Smoothed_Target& target, const Segment& segment) {
    const std::int32_t dx = segment.to.x - segment.from.x;
    const std::int32_t dy = segment.to.y - segment.from.y;
    const std::int32_t columns = dx < 0 ? -dx : dx;
    const std::int32_t rows = dy < 0 ? -dy : dy;
    if (dx == 0) {
        draw_column<rule, Clip>(target, {segment.from.x, dy < 0 ? segment.to.y + 1 : segment.from.y}, rows, segment);
    } else if (dy == 0) {
        draw_row<rule, Clip>(target, {dx < 0 ? segment.to.x + 1 : segment.from.x, segment.from.y}, columns, segment);
    } else if (rows >= columns) {
        draw_sloped<In_Row, Clip>(target, segment);
    } else {
        draw_sloped<In_Column, Clip>(target, segment);
    }
}

// ---- polylines

template <Pixel_Rule rule> Ink ink_of(VT_RGB32 color, std::uint32_t word) {
    return {word, rule == Pixel_Rule::store || color.alpha == 255 ? 256U : color.alpha};
}

template <Pixel_Rule rule> Segment segment_from(VT_Int_Pair point, VT_RGB32 color) {
    const std::uint32_t word = load_word(&color);
    return {point, point, word, ink_of<rule>(color, word)};
}

template <Pixel_Rule rule, Clip_Rule clip> void draw_polyline(const Smoothed_Target& target, const Polyline& polyline) {
    using Clip = typename Clip_Of<clip>::type;
    assert(target.color_rows && polyline.count >= 2 && polyline.points && polyline.colors && (!Clip::clips || target.mask_rows));
    const auto place = [&](std::int32_t i) {
        return VT_Int_Pair{polyline.points[i].x - target.origin_x, polyline.points[i].y - target.origin_y};
    };
    Segment segment = segment_from<rule>(place(0), polyline.colors[0]);
    bool ends_inside = is_in_window(target, segment.to);
    for (std::int32_t i = 1; i < polyline.count; ++i) {
        if (i > 1 && !polyline.single_color) {
            segment = segment_from<rule>(segment.to, polyline.colors[i - 1]);
        }
        segment.from = segment.to;
        segment.to = place(i);
        const bool starts_inside = ends_inside;
        ends_inside = is_in_window(target, segment.to);
        if (starts_inside && ends_inside) {
            draw_segment<rule, Clip>(target, segment);
        } else {
            draw_beyond<rule, Clip>(target, segment);
        }
    }
    // The last point as a column of one row.
    if (0 <= segment.to.y && segment.to.y < target.height && -1 <= segment.to.x && segment.to.x <= target.width) {
        Upright<rule, Clip>(target, segment.to.x, segment).draw(segment.to.y);
    }
}

struct Smoothed_Kernel_Of {
    template <Smoothed_Configuration c> constexpr Smoothed_Kernel* operator()() const { return &draw_polyline<c.pixel, c.clip>; }
};

} // namespace

extern const Smoothed_Kernel_Table smoothed_kernels;
constinit const Smoothed_Kernel_Table smoothed_kernels{
    table_over<decltype(Smoothed_Kernel_Table::polylines), smoothed_configurations>(Smoothed_Kernel_Of{})};

} // namespace krb::KRB_KERNEL_SET
