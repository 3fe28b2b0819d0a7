// Runs of small triangles with AVX-512. Included after kernels/pixel_formats.inl.
//
// A triangle a few pixels wide leaves most lanes of its rows empty, and its rows cost as much as long ones. Here the lanes are
// first the edges of up to 14 triangles of a strip, then the rows of all these triangles, 16 at a time whichever triangle they
// belong to; only what a row reads and writes is done row by row, in the strip's order. The values are those of the walk over
// single triangles, bit for bit.
#pragma once

#include "renderer/kernels/reciprocals.h"
#include "renderer/triangles/small_triangles.h"

namespace krb::KRB_KERNEL_SET {
namespace {

// ---- lanes by number

inline Int lanes_at(Int table, Int positions) {
    return {_mm512_permutexvar_epi32(positions.lanes, table.lanes)};
}

// Positions 0 to 15 are the first table's, 16 to 31 the second's.
inline Int lanes_at(Int first, Int second, Int positions) {
    return {_mm512_permutex2var_epi32(first.lanes, positions.lanes, second.lanes)};
}

// Lane i takes the value of lane i + count, modulo 16.
template <int count> inline Int rotated(Int a) {
    return {_mm512_alignr_epi32(a.lanes, a.lanes, count)};
}

template <int bits> inline Int shift_signed_right(Int a) {
    return {_mm512_srai_epi32(a.lanes, bits)};
}

inline Int shift_left_by(Int a, Int bits) {
    return {_mm512_sllv_epi32(a.lanes, bits.lanes)};
}

inline Int difference_or_reverse(Int a, Int b, Active backwards) {
    return {_mm512_mask_sub_epi32(_mm512_sub_epi32(a.lanes, b.lanes), backwards.lanes, b.lanes, a.lanes)};
}

inline Int least(Int a, Int b) {
    return {_mm512_min_epi32(a.lanes, b.lanes)};
}

inline Int greatest(Int a, Int b) {
    return {_mm512_max_epi32(a.lanes, b.lanes)};
}

inline Int combined(Int mask, Int yes, Int no) {
    return {_mm512_ternarylogic_epi32(mask.lanes, yes.lanes, no.lanes, 0xCA)};
}

inline void store_ints(std::int32_t* to, Int a) {
    _mm512_storeu_si512(to, a.lanes);
}

// ---- quotients

struct Lane_Reciprocals {
    __m512d low, high;
};

inline Int quotient(Int a, const Lane_Reciprocals& by) {
    const __m512d low = _mm512_mul_pd(_mm512_cvtepi32_pd(_mm512_castsi512_si256(a.lanes)), by.low);
    const __m512d high = _mm512_mul_pd(_mm512_cvtepi32_pd(_mm512_extracti64x4_epi64(a.lanes, 1)), by.high);
    return {_mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvttpd_epi32(low)), _mm512_cvttpd_epi32(high), 1)};
}

// For numbers of pixels from 1 to 16.
inline Lane_Reciprocals reciprocals_of_16(Int counts) {
    const __m512d first = _mm512_setr_pd(reciprocals.of[16], reciprocals.of[1], reciprocals.of[2], reciprocals.of[3],
                                         reciprocals.of[4], reciprocals.of[5], reciprocals.of[6], reciprocals.of[7]);
    const __m512d second = _mm512_setr_pd(reciprocals.of[8], reciprocals.of[9], reciprocals.of[10], reciprocals.of[11],
                                          reciprocals.of[12], reciprocals.of[13], reciprocals.of[14], reciprocals.of[15]);
    const __m512i low = _mm512_cvtepu32_epi64(_mm512_castsi512_si256(counts.lanes));
    const __m512i high = _mm512_cvtepu32_epi64(_mm512_extracti64x4_epi64(counts.lanes, 1));
    return {_mm512_permutex2var_pd(first, low, second), _mm512_permutex2var_pd(first, high, second)};
}

// For numbers of rows below 128. 1, 2, 4 and 8 divide by a smaller shift instead.
inline Lane_Reciprocals edge_reciprocals(Int rows, Active shifted) {
    const Int positions = select(shifted, splat(1), rows & splat(Reciprocals::count - 1));
    return {_mm512_i32gather_pd(_mm512_castsi512_si256(positions.lanes), reciprocals.of, 8),
            _mm512_i32gather_pd(_mm512_extracti64x4_epi64(positions.lanes, 1), reciprocals.of, 8)};
}

// ---- the points of a batch, one a lane

inline constexpr int most_triangles = 14; // in a batch: 16 points
inline constexpr std::int32_t most_rows = 64, most_columns = 16;

struct Batch_Points {
    Int x, y, z;

    // Of VT_DCI_Points, at most 16, from memory where they stand one behind the other.
    Batch_Points(const VT_DCI_Point* points, std::int32_t count) {
        const std::uint64_t wanted = (std::uint64_t{1} << (3 * count)) - 1;
        const auto load = [&](int part) {
            return Int{_mm512_maskz_loadu_epi32(static_cast<__mmask16>(wanted >> 16 * part),
                                                reinterpret_cast<const char*>(points) + 64 * part)};
        };
        const Int parts[3] = {load(0), load(1), load(2)};
        // Words 3 i + axis of the 48.
        const auto every_third = [&](Int in_first_two, Int in_all) {
            return lanes_at(lanes_at(parts[0], parts[1], in_first_two), parts[2], in_all);
        };
        const Int thirds = lane_numbers() * splat(3);
        x = every_third(thirds, {_mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 17, 20, 23, 26, 29)});
        y = every_third(thirds + splat(1), {_mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 18, 21, 24, 27, 30)});
        z = every_third(thirds + splat(2), {_mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 16, 19, 22, 25, 28, 31)});
    }
};

inline Int load_colors(const VT_RGB32* colors, std::int32_t count) {
    return load_pixels(reinterpret_cast<const std::uint8_t*>(colors), first_lanes(count));
}

// Whether a channel other than alpha differs by more than 3 from the triangle's first point's.
inline Active colors_differ(Int words) {
    const auto beyond = [](Int a, Int b) {
        const __m512i distance = _mm512_or_si512(_mm512_subs_epu8(a.lanes, b.lanes), _mm512_subs_epu8(b.lanes, a.lanes));
        return _mm512_subs_epu8(distance, _mm512_set1_epi32(static_cast<std::int32_t>(0xFF030303)));
    };
    return {_mm512_test_epi32_mask(_mm512_or_si512(beyond(words, rotated<1>(words)), beyond(words, rotated<2>(words))),
                                   _mm512_set1_epi32(-1))};
}

// ---- edges

// Lane i of the first tables is the edge from point i to the next one, of the second tables the edge to the one after it.
struct Edge_Tables {
    Int start[2];
    Int step[2];
};

// An edge's value so many rows below its upper point.
inline Int on_edge(const Edge_Tables& edges, Int edge, Int rows) {
    return lanes_at(edges.start[0], edges.start[1], edge) + rows * lanes_at(edges.step[0], edges.step[1], edge);
}

struct Edge_Rows {
    Active backwards; // the second point is the upper one
    Int dropped_bits;
    Lane_Reciprocals by;

    Edge_Rows(Int y, Int other_y) : backwards{_mm512_cmplt_epi32_mask(other_y.lanes, y.lanes)} {
        const Int rows = difference_or_reverse(other_y, y, backwards);
        const Int dropped{_mm512_setr_epi32(0, 0, 1, 0, 2, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0)};
        dropped_bits = where(less_or_equal(rows, splat(8)), lanes_at(dropped, rows));
        const Active shifted{_mm512_test_epi32_mask(dropped_bits.lanes, dropped_bits.lanes)};
        by = edge_reciprocals(rows, shifted);
    }
};

// bits: of the fraction.
template <int bits, int other> inline void set_edges(Edge_Tables& edges, Int value, const Edge_Rows& rows) {
    const Int to = rotated<other>(value);
    edges.start[other - 1] = shift_left<bits>(select(rows.backwards, to, value)) + splat(1 << (bits - 1));
    edges.step[other - 1] =
        quotient(shift_left_by(difference_or_reverse(to, value, rows.backwards), splat(bits) - rows.dropped_bits), rows.by);
}

template <int bits> inline Edge_Tables edge_tables(Int value, const Edge_Rows& next, const Edge_Rows& after_next) {
    Edge_Tables edges;
    set_edges<bits, 1>(edges, value, next);
    set_edges<bits, 2>(edges, value, after_next);
    return edges;
}

// By the order of a triangle's vertices' rows, y0 <= y1, y1 <= y2 and y0 <= y2 in bits 0 to 2: the positions in the tables of the
// long edge, the upper and the lower one, a byte each. The triangle's number is added to each.
inline Int edges_by_order(Int order) {
    constexpr auto of = [](int long_edge, int upper, int lower) { return long_edge | upper << 8 | lower << 16; };
    return lanes_at({_mm512_setr_epi32(of(16, 1, 0), of(1, 16, 0), of(0, 1, 16), of(16, 0, 1), of(1, 0, 16), of(0, 16, 1),
                                       of(1, 0, 16), of(16, 0, 1), 0, 0, 0, 0, 0, 0, 0, 0)},
                    order);
}

// ---- rows

// One lane of the second stage. From bit 0: edges on the left and on the right, five bits each, the triangle's number, four bits,
// one that says that it is drawn flat, and in the two high bytes how many rows below their upper points the edges are met.
using Row_Word = std::uint32_t;

// What 16 rows' words say.
struct Row_Edges {
    Int left, right; // the low five bits of each
    Int left_rows, right_rows;

    explicit Row_Edges(Int word)
        : left(word), right(shift_right<5>(word)), left_rows(shift_right<16>(word) & splat(0xFF)),
          right_rows(shift_right<24>(word)) {}
};

// The rows of triangles, a triangle a lane: where they begin, how many they are, how many of these lie above the middle vertex,
// and the words of a row there and below, in the triangle's row 0.
struct Triangle_Rows {
    Int top, count, upper_count, above, below;

    // flat: the triangles that are drawn so. Orders vertices as the walk over single triangles does.
    Triangle_Rows(Int y, const Edge_Tables& x, Active flat) {
        const Int y1 = rotated<1>(y);
        const Int y2 = rotated<2>(y);
        const Int bottom = greatest(greatest(y, y1), y2);
        top = least(least(y, y1), y2);
        count = bottom - top;
        upper_count = y + y1 + y2 - bottom - top - top;
        const Int order = where(less_or_equal(y, y1), splat(1)) + where(less_or_equal(y1, y2), splat(2)) +
                          where(less_or_equal(y, y2), splat(4));
        const Int edges = edges_by_order(order) + lane_numbers() * splat(0x010101);
        const Int byte = splat(0xFF);
        const Int long_edge = edges & byte;
        const Int upper = shift_right<8>(edges) & byte;
        const Int lower = shift_right<16>(edges);
        const Active is_right_above = less_or_equal(step_of(x, upper), step_of(x, long_edge));
        const Active is_left_below =
            less_or_equal(start_of(x, long_edge) + upper_count * step_of(x, long_edge), start_of(x, lower));
        const Int common = shift_left<10>(lane_numbers()) + where(flat, splat(1 << 14));
        above = common + select(is_right_above, upper + shift_left<5>(long_edge), long_edge + shift_left<5>(upper));
        below = common + select(is_left_below, long_edge + shift_left<5>(lower), lower + shift_left<5>(long_edge)) -
                shift_left_by(upper_count, select(is_left_below, splat(24), splat(16)));
    }

private:
    static Int start_of(const Edge_Tables& edges, Int edge) { return lanes_at(edges.start[0], edges.start[1], edge); }
    static Int step_of(const Edge_Tables& edges, Int edge) { return lanes_at(edges.step[0], edges.step[1], edge); }
};

struct Batch_Rows {
    static constexpr int most = most_triangles * most_rows + 16;
    std::int32_t count = 0;
    alignas(64) std::int32_t word[most];
    alignas(64) std::int32_t row[most];
    // Set by place: first columns, numbers of columns, which may be none, and how far the first pixels lie from those of row 0,
    // in bytes.
    alignas(64) std::int32_t first[most];
    alignas(64) std::int32_t columns[most];
    alignas(64) std::int32_t color_place[most];
    alignas(64) std::int32_t depth_place[most];

    // Row after row, triangle after triangle. Writes whole vectors; what is too much lies where the next ones go.
    Batch_Rows(const Triangle_Rows& rows, std::int32_t triangles) {
        alignas(64) std::int32_t above[16], below[16], upper_count[16], top[16], counts[16];
        store_ints(above, rows.above);
        store_ints(below, rows.below);
        store_ints(upper_count, rows.upper_count);
        store_ints(top, rows.top);
        store_ints(counts, rows.count);
        for (std::int32_t k = 0; k < triangles; ++k) {
            std::int32_t done = 0;
            do {
                const Int lanes = lane_numbers() + splat(done);
                const Int common = select(less_or_equal(splat(upper_count[k]), lanes), splat(below[k]), splat(above[k]));
                store_ints(word + count + done, common + shift_left<16>(lanes) + shift_left<24>(lanes));
                store_ints(row + count + done, splat(top[k]) + lanes);
                done += 16;
            } while (done < counts[k]);
            count += counts[k];
        }
    }

    void place(const Edge_Tables& x, std::int32_t color_row_bytes, std::int32_t depth_row_bytes) {
        for (std::int32_t i = 0; i < count; i += 16) {
            const Row_Edges edges(load_ints(word + i));
            const Int column = shift_right<16>(on_edge(x, edges.left, edges.left_rows));
            const Int rows = load_ints(row + i);
            store_ints(first + i, column);
            store_ints(columns + i, shift_right<16>(on_edge(x, edges.right, edges.right_rows)) - column);
            store_ints(color_place + i, rows * splat(color_row_bytes) + shift_left<2>(column));
            store_ints(depth_place + i, rows * splat(depth_row_bytes) + shift_left<1>(column));
        }
    }
};

struct Row_Divisors {
    Lane_Reciprocals by;
    Active are_two;

    explicit Row_Divisors(Int count) : by(reciprocals_of_16(count)), are_two(equal(count, splat(2))) {}
};

// Start and step of a value in 16 rows.
struct Row_Values {
    Int start, step;
};

// half_bits: those that the fraction of a mean is cut in; 1 where a value has 16 bits and no sign.
template <int bits, int before>
inline Row_Values row_values(const Edge_Tables& edges, const Row_Edges& at, const Row_Divisors& divisors) {
    const Int left = on_edge(edges, at.left, at.left_rows);
    const Int right = on_edge(edges, at.right, at.right_rows);
    const Int whole = splat(static_cast<std::int32_t>(0xFFFFU << bits));
    const Int from = left & whole;
    const Int step = quotient((right & whole) - from, divisors.by);
    // The second pixel of two takes the edges' mean.
    const Int sum = shift_signed_right<before>(left) + shift_signed_right<before>(right);
    const Int mean = shift_signed_right<1 - before>(sum) & splat(static_cast<std::int32_t>(~0U << bits));
    return {from | splat(1 << (bits - 1)), select(divisors.are_two, mean - from, step)};
}

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
