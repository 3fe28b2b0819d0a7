// Runs of small triangles with AVX-512. Included after kernels/pixel_formats.inl.
//
// A triangle a few pixels wide leaves most lanes of its rows empty, and its rows cost as much as long ones. Here the lanes are
// first the edges of up to 14 triangles of a strip, then the rows of all these triangles, 16 at a time whichever triangle they
// belong to; only what a row reads and writes is done row by row, in the strip's order. The values are those of the walk over
// single triangles, bit for bit.
#pragma once

#include "renderer/triangles/small_triangles.h"
#include "renderer/triangles/triangle_batches_avx512.h"

namespace krb::KRB_KERNEL_SET {
namespace {

// ---- pixels

// Four columns of 16 rows, row after row.
struct Quads {
    alignas(64) std::uint32_t color[16][4];
    alignas(64) std::uint16_t depth[16][4];

    void set_colors(const Int (&columns)[4]) {
        const __m512i low = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
        const __m512i high = _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
        const __m512i low_pairs = _mm512_setr_epi64(0, 8, 1, 9, 2, 10, 3, 11);
        const __m512i high_pairs = _mm512_setr_epi64(4, 12, 5, 13, 6, 14, 7, 15);
        const auto interleaved = [&](__m512i by, __m512i first, __m512i second) {
            return _mm512_permutex2var_epi32(first, by, second);
        };
        const auto store = [&](int row, __m512i by, __m512i first, __m512i second) {
            _mm512_store_si512(color[row], _mm512_permutex2var_epi64(first, by, second));
        };
        const __m512i first_low = interleaved(low, columns[0].lanes, columns[1].lanes);
        const __m512i second_low = interleaved(low, columns[2].lanes, columns[3].lanes);
        store(0, low_pairs, first_low, second_low);
        store(4, high_pairs, first_low, second_low);
        const __m512i first_high = interleaved(high, columns[0].lanes, columns[1].lanes);
        const __m512i second_high = interleaved(high, columns[2].lanes, columns[3].lanes);
        store(8, low_pairs, first_high, second_high);
        store(12, high_pairs, first_high, second_high);
    }

    // Depths are bits 15 to 30.
    void set_depths(const Int (&columns)[4]) {
        const auto pair = [](Int even, Int odd) { return combined(splat(0xFFFF), shift_right<15>(even), shift_left<1>(odd)); };
        const __m512i low = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
        const __m512i high = _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
        const __m512i first = pair(columns[0], columns[1]).lanes;
        const __m512i second = pair(columns[2], columns[3]).lanes;
        _mm512_store_si512(depth[0], _mm512_permutex2var_epi32(first, low, second));
        _mm512_store_si512(depth[8], _mm512_permutex2var_epi32(first, high, second));
    }
};

constexpr bool has_small_triangles(Triangle_Configuration c) {
    return c.shading != Shading::textured && facts_of(c.format).stores_words && c.pixel == Pixel_Rule::store &&
           c.depth != Depth_Rule::by_mode && c.clip != Clip_Rule::patterned;
}

template <Triangle_Configuration c>
requires(has_small_triangles(c)) struct Small_Triangles<c> {
    static constexpr bool exist = true;
    // With fewer than that, lanes would stay empty.
    static constexpr std::int32_t least_run = 3;

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
        Batch_Points points(strip.points, triangles + 2);
        points.x = points.x - splat(target.origin_x);
        // So that places fit 32 bits.
        points.y = points.y - splat(strip.points[0].y);
        const std::uint32_t small = small_ones(points) | ~0U << triangles;
        const std::int32_t run = small == ~0U ? triangles : __builtin_ctz(~small);
        if (run < least_run) {
            const std::uint32_t rest = (small & ((1U << triangles) - 1)) >> run;
            const std::int32_t large = rest == 0 ? triangles - run : __builtin_ctz(rest);
            return {0, run + large};
        }
        draw_run(target, strip, run, points);
        return {run, 0};
    }

private:
    static constexpr bool is_gouraud = c.shading == Shading::gouraud;
    static constexpr bool has_depths = c.depth != Depth_Rule::none;

    static std::uint32_t small_ones(const Batch_Points& points) {
        const auto extent = [](Int v) {
            const Int v1 = rotated<1>(v);
            const Int v2 = rotated<2>(v);
            return greatest(greatest(v, v1), v2) - least(least(v, v1), v2);
        };
        const Active narrow = less_or_equal(extent(points.x), splat(most_columns));
        const Active low = less_or_equal(extent(points.y), splat(most_rows));
        return (narrow & low).lanes;
    }

    static void draw_run(const Triangle_Target& target, const Triangle_Strip& strip, std::int32_t triangles,
                         const Batch_Points& points) {
        // Colours of points, or of the triangles that are drawn flat.
        const Int words =
            strip.single_color ? pixel_word(strip.colors[0]) : load_colors(strip.colors, is_gouraud ? triangles + 2 : triangles);
        const Active flat{static_cast<__mmask16>(is_gouraud ? ~colors_differ(words).lanes : 0)};
        const Batch_Edges edges(points, words);
        Batch_Rows rows(Triangle_Rows(points.y, edges.x, flat), triangles);
        rows.place(edges.x, target.color_row_bytes, target.depth_row_bytes);
        const Place place(target, strip.points[0].y - target.origin_y);
        fetch_early(place, rows, 0);
        for (std::int32_t first = 0; first < rows.count; first += 16) {
            fetch_early(place, rows, first + 16);
            Row_Pixels pixels;
            const Int columns = load_ints(rows.columns + first);
            const bool wide = !none(less_or_equal(splat(9), columns));
            shade(pixels, edges, words, load_ints(rows.word + first), columns, wide ? 4 : 2);
            const std::int32_t end = first + 16 < rows.count ? first + 16 : rows.count;
            wide ? draw_rows<16>(place, rows, pixels, first, end) : draw_rows<8>(place, rows, pixels, first, end);
        }
    }

    struct Batch_Edges {
        Edge_Tables x, z, blue, green, red;

        Batch_Edges(const Batch_Points& points, Int words) {
            const Edge_Rows next(points.y, rotated<1>(points.y));
            const Edge_Rows after_next(points.y, rotated<2>(points.y));
            x = edge_tables<16>(points.x, next, after_next);
            if constexpr (has_depths) {
                z = edge_tables<15>(points.z, next, after_next);
            }
            if constexpr (is_gouraud) {
                const Int byte = splat(0xFF);
                blue = edge_tables<16>(words & byte, next, after_next);
                green = edge_tables<16>(shift_right<8>(words) & byte, next, after_next);
                red = edge_tables<16>(shift_right<16>(words) & byte, next, after_next);
            }
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

    struct Row_Pixels {
        alignas(32) std::uint16_t lanes[16]; // one bit a pixel
        alignas(64) std::int32_t flat[16];
        Quads quads[4];
    };

    // Prefetches the memory of 16 rows.
    static void fetch_early(const Place& place, const Batch_Rows& rows, std::int32_t first) {
        const std::int32_t end = first + 16 < rows.count ? first + 16 : rows.count;
        for (std::int32_t i = first; i < end; ++i) {
            KRB_FETCH_TO_WRITE(place.color + rows.color_place[i]);
            if constexpr (has_depths) {
                KRB_FETCH_TO_WRITE(place.depth + rows.depth_place[i]);
            }
        }
    }

    static void shade(Row_Pixels& pixels, const Batch_Edges& edges, Int words, Int word, Int columns, int quads) {
        const Row_Edges at(word);
        const Row_Divisors divisors(columns);
        _mm256_store_si256(
            reinterpret_cast<__m256i*>(pixels.lanes),
            _mm512_cvtepi32_epi16((shift_left_by(splat(1), where(less_or_equal(splat(1), columns), columns)) - splat(1)).lanes));
        const Int flat_pixels = lanes_at(words, shift_right<10>(word));
        store_ints(pixels.flat, flat_pixels);
        if constexpr (has_depths) {
            Row_Values z = row_values<15, 1>(edges.z, at, divisors);
            for (int quad = 0; quad < quads; ++quad) {
                Int depths[4];
                for (Int& depth : depths) {
                    depth = z.start;
                    z.start = z.start + z.step;
                }
                pixels.quads[quad].set_depths(depths);
            }
        }
        if constexpr (is_gouraud) {
            Row_Values blue = row_values<16, 0>(edges.blue, at, divisors);
            Row_Values green = row_values<16, 0>(edges.green, at, divisors);
            Row_Values red = row_values<16, 0>(edges.red, at, divisors);
            // Channels have eight bits above the fraction: alpha can lie above red's.
            red.start = red.start | splat(static_cast<std::int32_t>(0xFF000000));
            const Active flat{_mm512_test_epi32_mask(word.lanes, _mm512_set1_epi32(1 << 14))};
            for (int quad = 0; quad < quads; ++quad) {
                Int colors[4];
                for (Int& color : colors) {
                    const Int shaded = combined(splat(static_cast<std::int32_t>(0xFFFF0000)), red.start,
                                                shift_right<16>(blue.start) | (shift_right<8>(green.start) & splat(0xFF00)));
                    color = select(flat, flat_pixels, shaded);
                    blue.start = blue.start + blue.step;
                    green.start = green.start + green.step;
                    red.start = red.start + red.step;
                }
                pixels.quads[quad].set_colors(colors);
            }
        }
    }

    // Of up to so many columns, 8 or 16.
    template <std::int32_t columns>
    static void draw_rows(const Place& place, const Batch_Rows& rows, const Row_Pixels& pixels, std::int32_t first,
                          std::int32_t end) {
        for (std::int32_t row = first; row < end; ++row) {
            draw_row_part<0>(place, rows, row, pixels, row - first);
            if constexpr (columns > 8) {
                draw_row_part<8>(place, rows, row, pixels, row - first);
            }
        }
    }

    // Eight columns from the row's column skipped on; lane i of the pixels.
    template <std::int32_t skipped>
    KRB_ALWAYS_INLINE static void draw_row_part(const Place& place, const Batch_Rows& rows, std::int32_t row,
                                                const Row_Pixels& pixels, std::int32_t i) {
        const Quads* quads = pixels.quads + skipped / 4;
        std::uint32_t bits = std::uint32_t{pixels.lanes[i]} >> skipped;
        if constexpr (c.clip == Clip_Rule::masked) {
            bits &= mask_bits_of_8(place.mask_rows[rows.row[row]], rows.first[row] + skipped);
        }
        __mmask8 lanes = static_cast<__mmask8>(bits);
        if constexpr (has_depths) {
            std::uint8_t* at = place.depth + rows.depth_place[row] + 2 * skipped;
            const __m128i stored = _mm_maskz_loadu_epi16(lanes, at);
            const __m128i depths = _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(quads[0].depth[i])),
                                                      _mm_loadl_epi64(reinterpret_cast<const __m128i*>(quads[1].depth[i])));
            lanes = _mm_mask_cmple_epu16_mask(lanes, depths, stored);
            _mm_mask_storeu_epi16(at, lanes, depths);
        }
        std::uint8_t* at = place.color + rows.color_place[row] + 4 * skipped;
        __m256i colors = _mm256_set1_epi32(pixels.flat[i]);
        if constexpr (is_gouraud) {
            colors = _mm256_inserti128_si256(
                _mm256_castsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(quads[0].color[i]))),
                _mm_load_si128(reinterpret_cast<const __m128i*>(quads[1].color[i])), 1);
        }
        // The lower half of a longer vector would be stored by an instruction that faults on pixels it does not write (GCC 12).
        KRB_HIDE_ORIGIN(colors);
        _mm256_mask_storeu_epi32(at, lanes, colors);
    }
};

} // namespace
} // namespace krb::KRB_KERNEL_SET
