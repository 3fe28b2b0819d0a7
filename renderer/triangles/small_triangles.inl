// Runs of small triangles, many at once. Included after a set's vocabulary of batches.
//
// A triangle a few pixels wide leaves most lanes of its rows empty, and its rows cost as much as long ones. Here the lanes are
// first the edges of several triangles of a strip, then the rows of all these triangles, lane_count at a time whichever triangle
// they belong to; only what a row reads and writes is done row by row, in the strip's order. The values are those of the walk
// over single triangles, bit for bit.
#pragma once

#include <cassert>

#include "renderer/triangles/small_triangles.h"
#include "renderer/triangles/triangle_batches.inl"

namespace krb::KRB_KERNEL_SET {
namespace {
namespace batch {

constexpr bool can_draw(Triangle_Configuration c) {
    return c.shading != Shading::textured && facts_of(c.format).stores_words && c.pixel == Pixel_Rule::store &&
           c.depth != Depth_Rule::by_mode && c.clip != Clip_Rule::patterned;
}

template <Triangle_Configuration c> struct Small_Triangles {
    static constexpr bool exist = true;
    // Whether the strip is long enough, and places in a batch's rows fit 32 bits. Only buffers with much unused room in their
    // rows have rows farther apart.
    static bool can_draw(const Triangle_Target& target, const Triangle_Strip& strip) {
        constexpr std::int32_t farthest = 1 << 20;
        return strip.count >= least_run + 2 && !target.scissored && -target.color_row_bytes <= farthest &&
               -target.depth_row_bytes <= farthest;
    }

    // The strip has three points or more.
    static Strip_Beginning draw(const Triangle_Target& target, const Triangle_Strip& strip) {
        const std::int32_t triangles = strip.count - 2 < most_triangles ? strip.count - 2 : most_triangles;
        if (triangles < least_run) {
            return {0, triangles};
        }
        // Before there are vectors that a call would have to save.
        if constexpr (has_depths) {
            constexpr std::int32_t least_hidden = 4;
            if (target.block_depths && triangles >= least_hidden && takes_chance(target) &&
                are_hidden(target, strip.points, triangles + 2)) [[unlikely]] {
                return {triangles, 0};
            }
        }
        Batch_Points points(strip.points, triangles + 2);
        points.x = points.x - splat(target.origin_x);
        // So that places fit 32 bits.
        points.y = points.y - splat(strip.points[0].y);
        const std::uint32_t small = small_ones(target, points) & ((1U << triangles) - 1);
        const std::int32_t run = KRB_LOWEST_BIT(~small);
        if (run < least_run) {
            const std::int32_t large = KRB_LOWEST_BIT(small >> run | 1U << (triangles - run));
            return {0, run + large};
        }
        draw_run(target, strip, run, points);
        return {run, 0};
    }

private:
    static constexpr bool is_gouraud = c.shading == Shading::gouraud;
    static constexpr bool has_depths = c.depth != Depth_Rule::none;
    // What edges and rows have besides x, in this order.
    static constexpr int z = 0, blue = has_depths ? 1 : 0, green = blue + 1, red = blue + 2;
    static constexpr int values = is_gouraud ? red + 1 : 1;

    static std::uint32_t small_ones(const Triangle_Target& target, const Batch_Points& points) {
        const auto least_of_three = [](Int v) { return least(least(v, rotated<1>(v)), rotated<2>(v)); };
        const auto greatest_of_three = [](Int v) { return greatest(greatest(v, rotated<1>(v)), rotated<2>(v)); };
        const Int end = greatest_of_three(points.x);
        const Active narrow = less_or_equal(end - least_of_three(points.x), splat(most_columns));
        const Active low = less_or_equal(greatest_of_three(points.y) - least_of_three(points.y), splat(most_rows));
        if constexpr (masked_memory) {
            return bits_of(narrow & low);
        } else {
            // Whole parts are loaded and stored, which must lie in their rows.
            return bits_of(narrow & low & less_or_equal(end, splat(target.width - 8)));
        }
    }

    static void draw_run(const Triangle_Target& target, const Triangle_Strip& strip, std::int32_t triangles,
                         const Batch_Points& points) {
        // Colours of points, or of the triangles that are drawn flat.
        const Int words = strip.single_color ? splat(static_cast<std::int32_t>(word_of_color(strip.colors[0])))
                                             : load_first(strip.colors, is_gouraud ? triangles + 2 : triangles);
        const Batch_Edges edges(points, words);
        Batch_Rows rows(Triangle_Rows(points.y, edges.x, is_gouraud ? near_flat(words) : no_lanes()), triangles);
        rows.place(edges.x, target.color_row_bytes, target.depth_row_bytes);
        assert(rows.end_without_columns());
        const Place place(target, strip.points[0].y - target.origin_y);
        fetch_next_points(strip);
        fetch_early(place, rows, 0, rows_ahead);
        for (std::int32_t first = 0; first < rows.count; first += lane_count) {
            fetch_early(place, rows, first + rows_ahead, lane_count);
            draw_group(place, rows, edges, words, first);
        }
    }

    struct Batch_Edges {
        Edge_Tables<1> x;
        Edge_Tables<values> others;

        Batch_Edges(const Batch_Points& points, Int words) {
            const Batch_Edge_Rows rows(points.y);
            set_edges<16>(x, 0, points.x, rows);
            if constexpr (has_depths) {
                set_edges<15>(others, z, points.z, rows);
            }
            if constexpr (is_gouraud) {
                const Int byte = splat(0xFF);
                set_edges<16>(others, blue, words & byte, rows);
                set_edges<16>(others, green, shift_right<8>(words) & byte, rows);
                set_edges<16>(others, red, shift_right<16>(words) & byte, rows);
            }
            others.finish();
        }
    };

    // Copied, since what is written could otherwise be the target.
    struct Place {
        std::uint8_t* color;
        std::uint8_t* depth;
        const std::uint8_t* const* mask_rows;

        // row: that of the batch's first point, from which the batch counts.
        Place(const Triangle_Target& target, std::int32_t row)
            : color(target.color_rows[0] + std::int64_t{target.color_row_bytes} * row),
              depth(has_depths ? target.depth_rows[0] + std::int64_t{target.depth_row_bytes} * row : nullptr),
              mask_rows(c.clip == Clip_Rule::masked ? target.mask_rows + row : nullptr) {}
    };

    // Prefetches the points and colours of the strip's next batch, or those that lie behind the strip in memory.
    static void fetch_next_points(const Triangle_Strip& strip) {
        constexpr std::int32_t cache_line = 64;
        const auto* const points = reinterpret_cast<const std::uint8_t*>(strip.points + lane_count);
        for (std::int32_t byte = 0; byte < lane_count * std::int32_t{sizeof *strip.points}; byte += cache_line) {
            KRB_FETCH_EARLY(points + byte);
        }
        KRB_FETCH_EARLY(strip.colors + 2 * lane_count);
    }

    // Prefetches the memory of so many rows.
    static void fetch_early(const Place& place, const Batch_Rows& rows, std::int32_t first, std::int32_t count) {
        const std::int32_t end = first + count < rows.count ? first + count : rows.count;
        for (std::int32_t i = first; i < end; ++i) {
            KRB_FETCH_TO_WRITE(place.color + rows.color_place[i]);
            if constexpr (has_depths) {
                KRB_FETCH_TO_WRITE(place.depth + rows.depth_place[i]);
            }
        }
    }

    struct Row_Pixels {
        Row_Lanes lanes;
        alignas(64) std::int32_t flat[lane_count];
        Quads quads[most_columns / 4];

        explicit Row_Pixels(Int columns) : lanes(columns) {}
    };

    static void draw_group(const Place& place, const Batch_Rows& rows, const Batch_Edges& edges, Int words, std::int32_t first) {
        const Int columns = load_ints(rows.columns + first);
        Row_Pixels pixels(columns);
        const auto any_beyond = [columns](std::int32_t count) { return !none(less(splat(count), columns)); };
        const auto draw = [&](auto quads) {
            shade(pixels, edges, words, load_ints(rows.word + first), columns, quads.value);
            draw_rows<quads.value>(place, rows, pixels, first);
        };
        if (!any_beyond(4)) {
            draw(Constant<1>{});
        } else if (!any_beyond(8)) {
            draw(Constant<2>{});
        } else {
            draw(Constant<4>{});
        }
    }

    template <int of> struct Constant { static constexpr int value = of; };

    static void shade(Row_Pixels& pixels, const Batch_Edges& edges, Int words, Int word, Int columns, int quads) {
        const Row_Divisors divisors(columns);
        const Int flat_pixels = lanes_at(words, shift_right<10>(word));
        store_ints(pixels.flat, flat_pixels);
        if constexpr (has_depths || is_gouraud) {
            const Row_Edges at(word);
            const Edge_Values<values> left(edges.others, at.left, at.left_rows);
            const Edge_Values<values> right(edges.others, at.right, at.right_rows);
            if constexpr (has_depths) {
                set_depths(pixels, Row_Values::between<15, 1>(left.template get<z>(), right.template get<z>(), divisors), quads);
            }
            if constexpr (is_gouraud) {
                const auto color = [&](auto value) {
                    return Row_Values::between<16, 0>(left.template get<value.value>(), right.template get<value.value>(),
                                                      divisors);
                };
                set_colors(pixels, color(Constant<blue>{}), color(Constant<green>{}), color(Constant<red>{}),
                           has_any(word, splat(1 << 14)), flat_pixels, quads);
            }
        }
    }

    // Depths are bits 15 to 30.
    static void set_depths(Row_Pixels& pixels, Row_Values depth, int quads) {
        const auto next_two = [&depth] {
            const Int even = depth.start;
            const Int odd = even + depth.step;
            depth.start = odd + depth.step;
            return joined_halves(shift_right<15>(even), shift_left<1>(odd));
        };
        for (int quad = 0; quad < quads; ++quad) {
            const Int columns_01 = next_two();
            pixels.quads[quad].set_depths(columns_01, next_two());
        }
    }

    static void set_colors(Row_Pixels& pixels, Row_Values b, Row_Values g, Row_Values r, Active flat, Int flat_pixels,
                           int quads) {
        // Channels have eight bits above the fraction: alpha can lie above red's.
        r.start = r.start | splat(static_cast<std::int32_t>(0xFF000000));
        for (int quad = 0; quad < quads; ++quad) {
            Int colors[4];
            for (Int& color : colors) {
                const Int blue_green = shift_right<16>(b.start) | (shift_right<8>(g.start) & splat(0xFF00));
                color = select(flat, flat_pixels, joined_halves(blue_green, r.start));
                b.start = b.start + b.step;
                g.start = g.start + g.step;
                r.start = r.start + r.step;
            }
            pixels.quads[quad].set_colors(colors);
        }
    }

    template <int quads>
    static void draw_rows(const Place& place, const Batch_Rows& rows, const Row_Pixels& pixels, std::int32_t first) {
        constexpr int in_part = quads == 1 ? 1 : 2;
        const std::int32_t end = first + lane_count < rows.count ? first + lane_count : rows.count;
        for (std::int32_t row = first; row < end; ++row) {
            for (int quad = 0; quad < quads; quad += in_part) {
                draw_part<in_part>(place, rows, row, pixels, row - first, quad);
            }
        }
    }

    // Of so many quads, from one on. i: the row's lane.
    template <int quads>
    KRB_ALWAYS_INLINE static void draw_part(const Place& place, const Batch_Rows& rows, std::int32_t row,
                                            const Row_Pixels& pixels, std::int32_t i, int quad) {
        const int skipped = 4 * quad;
        Part_Lanes lanes(pixels.lanes, i, skipped);
        if constexpr (c.clip == Clip_Rule::masked) {
            lanes.limit_to(mask_bits_of_8(place.mask_rows[rows.row[row]], rows.first[row] + skipped));
        }
        if constexpr (has_depths) {
            store_nearer(place.depth + rows.depth_place[row] + 2 * skipped, depths_of<quads>(pixels.quads + quad, i), lanes);
        }
        std::uint8_t* const at = place.color + rows.color_place[row] + 4 * skipped;
        if constexpr (is_gouraud) {
            store_colors(at, colors_of<quads>(pixels.quads + quad, i), lanes);
        } else {
            store_colors(at, same_colors<quads>(pixels.flat[i]), lanes);
        }
    }
};

} // namespace batch

template <Triangle_Configuration c>
requires(batch::can_draw(c)) struct Small_Triangles<c> : batch::Small_Triangles<c> {
};

} // namespace
} // namespace krb::KRB_KERNEL_SET
