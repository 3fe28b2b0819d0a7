// Batches of small triangles with AVX-512: the points of up to 14 triangles of a strip, their edges, and the rows between these.
// Included after kernels/pixel_formats.inl.
#pragma once

#include "renderer/kernels/reciprocals.h"
#include "renderer/triangles/triangle_kernels.h"

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

} // namespace
} // namespace krb::KRB_KERNEL_SET
