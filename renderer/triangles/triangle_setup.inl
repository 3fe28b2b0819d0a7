// Set-up of triangles: edges from vertices, rows from edges, values of a span from the two edges of its row.
//
// A vertex of a smaller buffer row is nearer the top. Rows run from the top vertex's row up to but not including the bottom
// one's, columns from the left edge's up to but not including the right one's, so that triangles that share an edge cover every
// pixel once. Values along edges are interpolated in fixed point from row to row, values along a span from the two edges' integer
// parts.

#include <cassert>
#include <cstdint>

#include "renderer/triangles/triangle_kernels.h"

namespace krb::KRB_KERNEL_SET {
namespace {

template <int size> struct Vertex {
    std::int32_t y; // buffer row
    Attributes<size> values;
};

// How a difference is divided by a row or pixel count: by 1, 2, 4 and 8 as a smaller shift.
struct Division {
    std::int32_t dropped_bits;
    std::int32_t divisor;

    // count is above 0.
    static Division by(std::int32_t count) {
        assert(count > 0);
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
    template <int size>
    KRB_ALWAYS_INLINE static Edge<size> edge(const Vertex<size>& from, const Vertex<size>& to, std::int32_t rows) {
        const Division division = Division::by(rows);
        return {to_fixed(from.values) + half_units<size>(),
                quotient(to_fixed(to.values - from.values, division.dropped_bits), division.divisor)};
    }
};

// Attributes that, but for x and z, are fixed point already: no half unit is added, and the smaller shifts round down.
struct Texture_Attributes {
    KRB_ALWAYS_INLINE static Edge<8> edge(const Vertex<8>& from, const Vertex<8>& to, std::int32_t rows) {
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

// ---- from two edges to a span

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

// The same for a textured span. Of two pixels, colours come doubled as well.
struct Texture_Span_Values {
    Attributes<8> start, step, doubled_start, doubled_step;
    bool is_doubled;

    Texture_Span_Values(Attributes<8> left, Attributes<8> right, std::int32_t count) : is_doubled(count == 2) {
        const Attributes<8> from = integer_parts(left);
        const Attributes<8> difference = right - left;
        const Division division = Division::by(count);
        start = with_positions(to_fixed(from) + half_units<8>(), left);
        step = quotient(with_positions(to_fixed(integer_parts(right) - from, division.dropped_bits),
                                       shifted_right(difference, division.dropped_bits)),
                        division.divisor);
        step = select(count == 2, with_positions(to_fixed(mean_of_edges(left, right) - from), step), step);
        doubled_start = start + start;
        doubled_step = difference;
    }
};

} // namespace
} // namespace krb::KRB_KERNEL_SET
