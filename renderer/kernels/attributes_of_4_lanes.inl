// Attributes of vertices, edges and spans for vocabularies of four lanes: x, z, s and t in one group of lanes, blue, green, red
// and alpha in another. The names are documented in lanes_portable.inl. Included by such a vocabulary, which besides what kernels
// use defines
//   lanes_of, widened_bytes          four integers as lanes; the four bytes of a word as lanes, the lowest first
//   absolute                         signed
//   all_at_most                      unsigned
//   shift_right_signed<bits>         arithmetic; shift_right_signed_by and shift_left_by for counts known at run time only
//   with_lane_1, with_lanes_0_and_1  the lanes of the first argument but for these, which are the second one's
//   spread_lane<lane>                one lane in all
//   truncated_products               with a double
#pragma once

#include <cstdint>

#include "renderer/kernels/reciprocals.h"

namespace krb::KRB_KERNEL_SET {
namespace {

static_assert(lane_count == 4);

template <int size> struct Attributes;

template <> struct Attributes<4> { Int low; };

template <> struct Attributes<8> {
    Int low;  // x, z, s, t
    Int high; // blue, green, red, alpha
};

inline Attributes<4> attributes_of(std::int32_t x, std::int32_t z) {
    return {lanes_of(x, z, 0, 0)};
}

inline Attributes<8> attributes_of(std::int32_t x, std::int32_t z, std::uint32_t color) {
    return {lanes_of(x, z, 0, 0), widened_bytes(color)};
}

inline Attributes<8> textured_attributes_of(std::int32_t x, std::int32_t z, std::int32_t s, std::int32_t t, std::uint32_t color) {
    const Int channels = widened_bytes(color);
    return {lanes_of(x, z, s, t), channels + shift_left<8>(channels)};
}

// Most operations treat both groups alike but for the depth, which is in the low one.
enum class Part { low, high };

template <class Operation> inline Attributes<4> in_parts(Operation operation, Attributes<4> a, Attributes<4> b) {
    return {operation(a.low, b.low, Part::low)};
}

template <class Operation> inline Attributes<8> in_parts(Operation operation, Attributes<8> a, Attributes<8> b) {
    return {operation(a.low, b.low, Part::low), operation(a.high, b.high, Part::high)};
}

inline Int with_depth(Int others, Int depth, Part part) {
    return part == Part::low ? with_lane_1(others, depth) : others;
}

template <int size> inline Attributes<size> operator+(Attributes<size> a, Attributes<size> b) {
    return in_parts([](Int x, Int y, Part) { return x + y; }, a, b);
}

template <int size> inline Attributes<size> operator-(Attributes<size> a, Attributes<size> b) {
    return in_parts([](Int x, Int y, Part) { return x - y; }, a, b);
}

template <int size> inline Attributes<size> scaled(Attributes<size> a, std::int32_t factor) {
    return in_parts([factor](Int x, Int, Part) { return x * splat(factor); }, a, a);
}

template <int size> inline Attributes<size> to_fixed(Attributes<size> a, int drop = 0) {
    return in_parts(
        [drop](Int x, Int, Part part) { return with_depth(shift_left_by(x, 16 - drop), shift_left_by(x, 15 - drop), part); }, a,
        a);
}

inline Attributes<8> shifted_right(Attributes<8> a, int bits) {
    return {shift_right_signed_by(a.low, bits), shift_right_signed_by(a.high, bits)};
}

inline Attributes<8> with_positions(Attributes<8> positions, Attributes<8> others) {
    return {with_lanes_0_and_1(others.low, positions.low), others.high};
}

template <int size> inline Attributes<size> half_units() {
    return in_parts([](Int, Int, Part part) { return with_depth(splat(0x8000), splat(0x4000), part); }, Attributes<size>{},
                    Attributes<size>{});
}

template <int size> inline Attributes<size> integer_parts(Attributes<size> a) {
    return in_parts(
        [](Int x, Int, Part part) { return with_depth(shift_right<16>(x), shift_right<15>(x), part) & splat(0xFFFF); }, a, a);
}

template <int size> inline Attributes<size> mean_of_edges(Attributes<size> a, Attributes<size> b) {
    return in_parts(
        [](Int x, Int y, Part part) {
            const Int halved_first = shift_right_signed<1>(x) + shift_right_signed<1>(y);
            return with_depth(shift_right_signed<17>(x + y), shift_right_signed<15>(halved_first), part);
        },
        a, b);
}

template <int size> inline Attributes<size> quotient(Attributes<size> a, std::int32_t divisor) {
    const double by = reciprocal(divisor);
    return in_parts([by](Int x, Int, Part) { return truncated_products(x, by); }, a, a);
}

template <int size> inline Attributes<size> select(bool condition, Attributes<size> yes, Attributes<size> no) {
    const Active all_or_none{splat(-static_cast<std::int32_t>(condition)).lanes};
    return in_parts([all_or_none](Int x, Int y, Part) { return select(all_or_none, x, y); }, yes, no);
}

template <int size> inline std::int32_t x_of(Attributes<size> a) {
    return static_cast<std::int32_t>(lane_of(a.low, 0));
}

template <int lane, int size> inline Int spread(Attributes<size> a) {
    if constexpr (lane < 4) {
        return spread_lane<lane>(a.low);
    } else {
        return spread_lane<lane - 4>(a.high);
    }
}

inline bool lies_within(Attributes<8> a, Attributes<8> most) {
    return all_at_most(a.low, most.low) && all_at_most(a.high, most.high);
}

inline bool colors_differ(Attributes<8> a, Attributes<8> b, Attributes<8> c, std::int32_t limit) {
    const Int difference = greatest(absolute(b.high - a.high), absolute(c.high - a.high));
    return !none(without(first_lanes(3), less_or_equal(difference, splat(limit))));
}

} // namespace
} // namespace krb::KRB_KERNEL_SET
