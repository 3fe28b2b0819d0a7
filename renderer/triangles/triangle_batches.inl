// Batches of small triangles: the points of a part of a strip, one a lane, their edges, and the rows between these. Included
// after a set's vocabulary of batches, batch_lanes_*.inl.
//
// The vocabulary is a namespace `batch` inside the set's. Its lanes are those of the set, unless it defines Int, Active and their
// operations again. Beyond the names of kernels/lanes_portable.inl it has:
//   lanes_at(table, positions)           lane positions[i] of the table in lane i
//   one_of_8(table, positions)           the same of eight integers in memory; the low three bits count
//   rotated<n>(a)                        lane i + n, modulo lane_count, in lane i
//   shift_signed_right<n>, shift_left_by(a, bits), least, greatest, less, store_ints
//   difference_or_reverse(a, b, which)   a - b, and b - a in the lanes of which
//   has_any(a, bits)                     the lanes in which one of the bits is set; the highest one is not tested
//   no_lanes(), bits_of(active)          bit i for lane i
//   joined_halves(low, high)             the low 16 bits of each lane of the one, the high 16 of the other
//   bytes_beyond(a, b, limits)           not 0 where a byte of a and b differs by more than that byte of the limits
//   load_first(from, count, ...)         the first count colours, or points as x, y and z; memory behind them is not read
//   Lane_Reciprocals                     divisors of quotient(a, by): row_reciprocals of 0 to most_rows, column_reciprocals of
//                                        0 to most_columns; any quotient will do where the count is 0 or less
//   Edge_Tables<n>, Edge_Values<n>       n values on edges, see edge_tables.inl; an edge is numbered by its lane, plus lane_count
//                                        in the second table, in the low bits of a lane. finish comes after the last set; starts
//                                        and steps exist for one value only
//   least_run                            fewer triangles are drawn one by one
//   rows_ahead                           how long before a row is drawn its memory is prefetched
// Rows are stored in parts of eight columns, or four:
//   Quads                                four columns of lane_count rows, row after row
//   Row_Lanes                            how many columns each row has, which may be less than none
//   Part_Lanes                           the columns of a part of a row that take part; limit_to(bits) takes away others
//   depths_of<n>, colors_of<n>           a row of one or two quads; same_colors<n>
//   store_nearer, store_colors           store a part; store_nearer takes away the columns that do not pass
#pragma once

#include "renderer/triangles/triangle_kernels.h"

namespace krb::KRB_KERNEL_SET {
namespace {
namespace batch {

inline constexpr int most_triangles = lane_count - 2; // of lane_count points
inline constexpr std::int32_t most_rows = 64, most_columns = 16;

// ---- points

struct Batch_Points {
    Int x, y, z;

    Batch_Points(const VT_DCI_Point* points, std::int32_t count) { load_first(points, count, x, y, z); }
};

// Triangles whose points differ by up to 3 in each channel but alpha.
inline Active near_flat(Int words) {
    constexpr std::uint32_t limits = 0xFF030303;
    return equal(bytes_beyond(words, rotated<1>(words), limits) | bytes_beyond(words, rotated<2>(words), limits), splat(0));
}

// ---- edges

struct Edge_Rows {
    Active backwards; // the second point is the upper one
    Int dropped_bits;
    Lane_Reciprocals by;

    // 1, 2, 4 and 8 rows divide by a smaller shift.
    Edge_Rows(Int y, Int other_y) : backwards(less(other_y, y)) {
        static constexpr std::int32_t dropped[8] = {0, 1, 0, 2, 0, 0, 0, 3};
        const Int rows = difference_or_reverse(other_y, y, backwards);
        dropped_bits = where(less_or_equal(rows, splat(8)), one_of_8(dropped, rows - splat(1)));
        by = row_reciprocals(select(less(splat(0), dropped_bits), splat(1), rows));
    }
};

// The rows of a batch's edges: lane i of the first table is the edge from point i to the next one, of the second table the edge
// to the one after it.
struct Batch_Edge_Rows {
    Edge_Rows next, after_next;

    explicit Batch_Edge_Rows(Int y) : next(y, rotated<1>(y)), after_next(y, rotated<2>(y)) {}
};

template <int bits, int other, int values>
inline void set_edges(Edge_Tables<values>& tables, int value, Int from, const Edge_Rows& rows) {
    const Int to = rotated<other>(from);
    tables.set(
        value, other - 1, shift_left<bits>(select(rows.backwards, to, from)) + splat(1 << (bits - 1)),
        quotient(shift_left_by(difference_or_reverse(to, from, rows.backwards), splat(bits) - rows.dropped_bits), rows.by));
}

// bits: of the fraction.
template <int bits, int values>
inline void set_edges(Edge_Tables<values>& tables, int value, Int from, const Batch_Edge_Rows& rows) {
    set_edges<bits, 1>(tables, value, from, rows.next);
    set_edges<bits, 2>(tables, value, from, rows.after_next);
}

// By the order of a triangle's vertices' rows, y0 <= y1, y1 <= y2 and y0 <= y2 in bits 0 to 2: the numbers of the long edge, the
// upper and the lower one, a byte each. The triangle's number is added to each.
inline Int edges_by_order(Int order) {
    constexpr auto of = [](int long_edge, int upper, int lower) { return long_edge | upper << 8 | lower << 16; };
    constexpr int second = lane_count;
    static constexpr std::int32_t edges[8] = {of(second, 1, 0), of(1, second, 0), of(0, 1, second), of(second, 0, 1),
                                              of(1, 0, second), of(0, second, 1), of(1, 0, second), of(second, 0, 1)};
    return one_of_8(edges, order);
}

// ---- rows

// One lane of the second stage. From bit 0: edges on the left and on the right, five bits each, the triangle's number, four bits,
// one that says that it is drawn flat, and in the two high bytes how many rows below their upper points the edges are met.
using Row_Word = std::uint32_t;

// What the words of a group of rows say.
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

    // x: on edges. flat: the triangles that are drawn so. Orders vertices as the walk over single triangles does.
    Triangle_Rows(Int y, const Edge_Tables<1>& x, Active flat) {
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
        const Int long_step = x.template steps<0>(long_edge);
        const Active is_right_above = less_or_equal(x.template steps<0>(upper), long_step);
        const Active is_left_below =
            less_or_equal(x.template starts<0>(long_edge) + upper_count * long_step, x.template starts<0>(lower));
        const Int common = shift_left<10>(lane_numbers()) + where(flat, splat(1 << 14));
        above = common + select(is_right_above, upper + shift_left<5>(long_edge), long_edge + shift_left<5>(upper));
        below = common + select(is_left_below, long_edge + shift_left<5>(lower), lower + shift_left<5>(long_edge)) -
                shift_left_by(upper_count, select(is_left_below, splat(24), splat(16)));
    }
};

struct Batch_Rows {
    static constexpr int most = most_triangles * most_rows + lane_count;
    std::int32_t count = 0;
    alignas(64) std::int32_t word[most];
    alignas(64) std::int32_t row[most];
    // Set by place: first columns, numbers of columns, which may be none, and how far the first pixels lie from those of row 0,
    // in bytes.
    alignas(64) std::int32_t first[most];
    alignas(64) std::int32_t columns[most];
    alignas(64) std::int32_t color_place[most];
    alignas(64) std::int32_t depth_place[most];

    // Row after row, triangle after triangle. Writes whole vectors; what is too much lies where the next ones go. A vector of
    // zeros ends them: rows from an edge to itself, without columns, which fill the last group.
    Batch_Rows(const Triangle_Rows& rows, std::int32_t triangles) {
        alignas(64) std::int32_t above[lane_count], below[lane_count], upper_count[lane_count], top[lane_count],
            counts[lane_count];
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
                done += lane_count;
            } while (done < counts[k]);
            count += counts[k];
        }
        store_ints(word + count, splat(0));
    }

    void place(const Edge_Tables<1>& x, std::int32_t color_row_bytes, std::int32_t depth_row_bytes) {
        for (std::int32_t i = 0; i < count; i += lane_count) {
            const Row_Edges edges(load_ints(word + i));
            const Int column = shift_right<16>(Edge_Values<1>(x, edges.left, edges.left_rows).template get<0>());
            const Int end = shift_right<16>(Edge_Values<1>(x, edges.right, edges.right_rows).template get<0>());
            const Int rows = load_ints(row + i);
            store_ints(first + i, column);
            store_ints(columns + i, end - column);
            store_ints(color_place + i, rows * splat(color_row_bytes) + shift_left<2>(column));
            store_ints(depth_place + i, rows * splat(depth_row_bytes) + shift_left<1>(column));
        }
    }

    // Once they are placed.
    bool end_without_columns() const {
        bool has_columns = false;
        for (std::int32_t i = count; i % lane_count != 0; ++i) {
            has_columns |= columns[i] != 0;
        }
        return !has_columns;
    }
};

struct Row_Divisors {
    Lane_Reciprocals by;
    Active are_two;

    explicit Row_Divisors(Int count) : by(column_reciprocals(count)), are_two(equal(count, splat(2))) {}
};

// Start and step of a value in a group of rows.
struct Row_Values {
    Int start, step;

    // bits: of the fraction. before: how many bits a value loses before two are added for their mean, and thus has too many for
    // the sum: 1 where it has 16 bits and no sign, else 0.
    template <int bits, int before> static Row_Values between(Int left, Int right, const Row_Divisors& divisors) {
        const Int whole = splat(static_cast<std::int32_t>(0xFFFFU << bits));
        const Int from = left & whole;
        const Int step = quotient((right & whole) - from, divisors.by);
        // The second pixel of two takes the edges' mean.
        const Int sum = shift_signed_right<before>(left) + shift_signed_right<before>(right);
        const Int mean = shift_signed_right<1 - before>(sum) & splat(static_cast<std::int32_t>(~0U << bits));
        return {from | splat(1 << (bits - 1)), select(divisors.are_two, mean - from, step)};
    }
};

} // namespace batch
} // namespace
} // namespace krb::KRB_KERNEL_SET
