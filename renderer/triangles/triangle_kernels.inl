// Triangle kernels: strips, their triangles and the spans of these.

#include <cassert>

#include "renderer/kernels/pixel_formats.inl"
#include "renderer/kernels/span.inl"
#include "renderer/triangles/hidden_parts.inl"
#include "renderer/triangles/small_triangles.h"
#include "renderer/triangles/triangle_kernels.h"
#include "renderer/triangles/triangle_setup.inl"
// Uses triangle_setup.inl.
#include "renderer/triangles/texture_sources.inl"
#ifdef KRB_BATCH_LANES
#include KRB_BATCH_LANES
#include "renderer/triangles/small_triangles.inl"
#endif

namespace krb::KRB_KERNEL_SET {
namespace {

constexpr bool is_flat(Triangle_Configuration c) {
    return c.shading == Shading::flat;
}

// ---- rules of a configuration

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

template <Pixel_Rule rule> struct Pixel_Of;
template <> struct Pixel_Of<Pixel_Rule::store> { using type = Store; };
template <> struct Pixel_Of<Pixel_Rule::blend> { using type = Blend; };
template <> struct Pixel_Of<Pixel_Rule::merge> { using type = Merge; };

template <Triangle_Configuration c> struct Triangle_Rules {
    using Target = Triangle_Target;
    using Format = Format_Type<c.format>;
    using Depth = typename Depth_Of<c.depth>::type;
    using Pixel = typename Pixel_Of<c.pixel>::type;
    static constexpr Clip_Rule clip = c.clip;
    static constexpr bool fetches_ahead = true;
    static constexpr bool hides_transparent =
        c.shading == Shading::textured || (c.shading == Shading::gouraud && c.pixel == Pixel_Rule::blend);

    static std::int32_t row_to_come(const Triangle_Target& target, std::int32_t row) {
        constexpr std::int32_t rows_ahead = 2;
        return row + rows_ahead < target.end_row ? row + rows_ahead : row;
    }

    static std::uint32_t pattern_bits(const Triangle_Target& target, std::int32_t column, std::int32_t row) {
        return krb::KRB_KERNEL_SET::pattern_bits(*target.pattern, column, row);
    }
};

// ---- fillers

template <Triangle_Configuration c, int size> struct Filler {
    using Flat = typename Format_Type<c.format>::Flat;

    const Triangle_Target& target;
    Flat flat;     // of flat triangles
    Flat contrast; // of a pattern's gaps
    Span_Limits limits;
    Texture_Range<c.shading> range;

    Filler(const Triangle_Target& where, VT_RGB32 color)
        : target(where), flat(where, color), contrast(where, c.clip == Clip_Rule::patterned ? where.pattern->contrast : color),
          limits(where), range(where) {}

    void set_color(VT_RGB32 color) { flat = Flat(target, color); }

    // Before a triangle is filled; false when no pixel of it would be drawn.
    KRB_ALWAYS_INLINE bool is_visible(const VT_DCI_Point* points) {
        if constexpr (c.depth != Depth_Rule::none) {
            return !target.block_depths || limits.find(target, points);
        }
        return true;
    }

    void fill(std::int32_t row, std::int32_t column, std::int32_t count, Attributes<size> left, Attributes<size> right) {
        std::int32_t skipped = 0;
        std::int32_t drawn = count;
        if (limits.exist) {
            column -= target.column_bias;
            const Visible_Columns visible = limits.in_row(target, row);
            const std::int32_t end = column + count < visible.end ? column + count : visible.end;
            skipped = column < visible.first ? visible.first - column : 0;
            drawn = end - column - skipped;
            if (drawn <= 0) {
                return;
            }
        }
        if constexpr (is_flat(c) && c.depth == Depth_Rule::none) {
            draw(row, column, skipped, drawn, flat, Ramp{splat(0), splat(0)});
        } else if constexpr (c.shading == Shading::textured) {
            const Texture_Span_Values values(left, right, count);
            const Ramp depth = Ramp::from(spread<1>(values.start), spread<1>(values.step));
            // Spans of one group would not make up for the longer set-up.
            if (count > lane_count && range.holds(values, count)) {
                draw(row, column, skipped, drawn, Inner_Texture_Source(target, values), depth);
            } else {
                draw(row, column, skipped, drawn, Texture_Source(target, values), depth);
            }
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
        Span<Triangle_Rules<c>, Source> span{
            target, row, target.color_rows[row], c.depth == Depth_Rule::none ? nullptr : target.depth_rows[row], source,
            depth,  gaps};
        if (skipped > 0) {
            span.skip(skipped);
        }
        span.draw(column + skipped, count);
    }
};

// ---- vertices

// Origins of scissored targets may have wrapped.
inline std::int32_t relative(std::int32_t coordinate, std::int32_t origin) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(coordinate) - static_cast<std::uint32_t>(origin));
}

inline Vertex<4> vertex_of(const Triangle_Target& target, const VT_DCI_Point& point) {
    return {relative(point.y, target.origin_y), attributes_of(relative(point.x, target.origin_x), point.z)};
}

inline Vertex<8> vertex_of(const Triangle_Target& target, const VT_DCI_Point& point, VT_RGB32 color) {
    return {relative(point.y, target.origin_y), attributes_of(relative(point.x, target.origin_x), point.z, word_of_color(color))};
}

// ---- preconditions of the strip kernels

// Points may lie on the far edges of the window's last pixels.
inline bool lies_in_window(const Triangle_Target& target, const Triangle_Strip& strip) {
    for (std::int32_t i = 0; i < strip.count; ++i) {
        const std::int32_t x = relative(strip.points[i].x, target.origin_x);
        const std::int32_t y = relative(strip.points[i].y, target.origin_y);
        if (x < 0 || x > target.width || y < 0 || y > target.height) {
            return false;
        }
    }
    return true;
}

inline bool has_limits_in_window(const Triangle_Target& target) {
    return 0 <= target.first_column && target.first_column <= target.end_column && target.end_column <= target.width &&
           0 <= target.first_row && target.first_row <= target.end_row && target.end_row <= target.height;
}

template <Triangle_Configuration c> bool can_be_drawn(const Triangle_Target& target, const Triangle_Strip& strip) {
    return strip.count >= 3 && strip.points && strip.colors &&
           (target.scissored ? has_limits_in_window(target) : lies_in_window(target, strip)) && target.color_rows &&
           (c.depth == Depth_Rule::none || target.depth_rows) && (Format_Type<c.format>::stores_words || target.dither) &&
           (c.clip != Clip_Rule::masked || target.mask_rows) && (c.clip != Clip_Rule::patterned || target.pattern) &&
           (c.shading != Shading::textured || (target.texels && strip.coordinates));
}

// ---- strips

// Draws runs of small triangles at once where the set can, and hands the others on as parts of the strip, in the strip's order.
template <Triangle_Configuration c, class Draw>
void draw_in_runs(const Triangle_Target& target, const Triangle_Strip& strip, Draw draw) {
    if constexpr (Small_Triangles<c>::exist) {
        if (Small_Triangles<c>::can_draw(target, strip)) {
            for (std::int32_t k = 0; k < strip.count - 2;) {
                const Strip_Beginning beginning = Small_Triangles<c>::draw(target, strip.part(k, strip.count - k));
                k += beginning.drawn;
                if (beginning.left > 0) {
                    draw(target, strip.part(k, beginning.left + 2));
                    k += beginning.left;
                }
            }
            return;
        }
    }
    draw(target, strip);
}

template <Triangle_Configuration c> void draw_flat_triangles(const Triangle_Target& target, const Triangle_Strip& strip) {
    Filler<c, 4> filler(target, strip.colors[0]);
    Vertex<4> vertices[3] = {vertex_of(target, strip.points[0]), vertex_of(target, strip.points[1])};
    for (std::int32_t k = 0; k < strip.count - 2; ++k) {
        vertices[2] = vertex_of(target, strip.points[k + 2]);
        if (k > 0 && !strip.single_color) {
            filler.set_color(strip.colors[k]);
        }
        if (filler.is_visible(strip.points + k)) {
            fill_triangle<Whole_Attributes>(target, filler, vertices);
        }
        vertices[0] = vertices[1];
        vertices[1] = vertices[2];
    }
}

template <Triangle_Configuration c> void draw_flat_strip(const Triangle_Target& target, const Triangle_Strip& strip) {
    assert(can_be_drawn<c>(target, strip));
    draw_in_runs<c>(target, strip, draw_flat_triangles<c>);
    clear_upper_halves();
}

// Runs of near-flat triangles, whose colours hardly differ, are drawn as one flat strip, each triangle in its first vertex's
// colour, in a fraction of the time.
template <Triangle_Configuration c> void draw_gouraud_triangles(const Triangle_Target& target, const Triangle_Strip& strip) {
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
            if (filler.is_visible(strip.points + k)) {
                fill_triangle<Whole_Attributes>(target, filler, vertices);
            }
        } else {
            ++pending;
        }
        vertices[0] = vertices[1];
        vertices[1] = vertices[2];
    }
    draw_pending(strip.count - 2);
}

template <Triangle_Configuration c> void draw_gouraud_strip(const Triangle_Target& target, const Triangle_Strip& strip) {
    assert(can_be_drawn<c>(target, strip) && strip.near_flat);
    constexpr Triangle_Configuration flat{Shading::flat, c.format, c.depth, c.pixel, c.clip};
    if (strip.near_flat == &draw_flat_strip<flat>) {
        draw_in_runs<c>(target, strip, draw_gouraud_triangles<c>);
    } else {
        draw_gouraud_triangles<c>(target, strip);
    }
    clear_upper_halves();
}

template <Triangle_Configuration c> void draw_textured_strip(const Triangle_Target& target, const Triangle_Strip& strip) {
    assert(can_be_drawn<c>(target, strip));
    Filler<c, 8> filler(target, strip.colors[0]);
    const auto vertex = [&](std::int32_t k) {
        const VT_DCI_Point& point = strip.points[k];
        return Vertex<8>{relative(point.y, target.origin_y),
                         textured_attributes_of(relative(point.x, target.origin_x), point.z, strip.coordinates[k].s,
                                                strip.coordinates[k].t, word_of_color(strip.colors[k]))};
    };
    Vertex<8> vertices[3] = {vertex(0), vertex(1)};
    for (std::int32_t k = 0; k < strip.count - 2; ++k) {
        vertices[2] = vertex(k + 2);
        if (filler.is_visible(strip.points + k)) {
            fill_triangle<Texture_Attributes>(target, filler, vertices);
        }
        vertices[0] = vertices[1];
        vertices[1] = vertices[2];
    }
    clear_upper_halves();
}

struct Strip_Kernel_Of {
    template <Triangle_Configuration c> constexpr Strip_Kernel* operator()() const {
        if constexpr (is_flat(c)) {
            return &draw_flat_strip<c>;
        } else if constexpr (c.shading == Shading::gouraud) {
            return &draw_gouraud_strip<c>;
        } else {
            return &draw_textured_strip<c>;
        }
    }
};

} // namespace

extern const Triangle_Kernel_Table triangle_kernels;
constinit const Triangle_Kernel_Table triangle_kernels{
    table_over<decltype(Triangle_Kernel_Table::strips), triangle_configurations>(Strip_Kernel_Of{})};

} // namespace krb::KRB_KERNEL_SET
