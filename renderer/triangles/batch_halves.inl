// Batches of eight lanes for vocabularies of four: two vectors of the set. What needs more than the set's own operations is the
// including vocabulary's. The names are documented in triangle_batches.inl.
#pragma once

#include <cstdint>

namespace krb::KRB_KERNEL_SET {
namespace {
namespace batch {

inline constexpr int lane_count = 8;

using Half = krb::KRB_KERNEL_SET::Int;
using Half_Active = krb::KRB_KERNEL_SET::Active;

struct Int {
    Half low, high;
};

struct Active {
    Half_Active low, high;
};

inline Int splat(std::int32_t value) {
    return {krb::KRB_KERNEL_SET::splat(value), krb::KRB_KERNEL_SET::splat(value)};
}

inline Int lane_numbers() {
    return {lanes_of(0, 1, 2, 3), lanes_of(4, 5, 6, 7)};
}

inline Int operator+(Int a, Int b) {
    return {a.low + b.low, a.high + b.high};
}

inline Int operator-(Int a, Int b) {
    return {a.low - b.low, a.high - b.high};
}

inline Int operator*(Int a, Int b) {
    return {a.low * b.low, a.high * b.high};
}

inline Int operator&(Int a, Int b) {
    return {a.low & b.low, a.high & b.high};
}

inline Int operator|(Int a, Int b) {
    return {a.low | b.low, a.high | b.high};
}

template <int bits> inline Int shift_left(Int a) {
    return {krb::KRB_KERNEL_SET::shift_left<bits>(a.low), krb::KRB_KERNEL_SET::shift_left<bits>(a.high)};
}

template <int bits> inline Int shift_right(Int a) {
    return {krb::KRB_KERNEL_SET::shift_right<bits>(a.low), krb::KRB_KERNEL_SET::shift_right<bits>(a.high)};
}

// Not every set shifts right by 0.
template <int bits> inline Int shift_signed_right(Int a) {
    if constexpr (bits == 0) {
        return a;
    } else {
        return {shift_right_signed<bits>(a.low), shift_right_signed<bits>(a.high)};
    }
}

inline Int greatest(Int a, Int b) {
    return {krb::KRB_KERNEL_SET::greatest(a.low, b.low), krb::KRB_KERNEL_SET::greatest(a.high, b.high)};
}

inline Active less_or_equal(Int a, Int b) {
    return {krb::KRB_KERNEL_SET::less_or_equal(a.low, b.low), krb::KRB_KERNEL_SET::less_or_equal(a.high, b.high)};
}

inline Active equal(Int a, Int b) {
    return {krb::KRB_KERNEL_SET::equal(a.low, b.low), krb::KRB_KERNEL_SET::equal(a.high, b.high)};
}

inline Active operator&(Active a, Active b) {
    return {a.low & b.low, a.high & b.high};
}

inline Int select(Active condition, Int yes, Int no) {
    return {krb::KRB_KERNEL_SET::select(condition.low, yes.low, no.low),
            krb::KRB_KERNEL_SET::select(condition.high, yes.high, no.high)};
}

inline Int where(Active condition, Int value) {
    return {krb::KRB_KERNEL_SET::where(condition.low, value.low), krb::KRB_KERNEL_SET::where(condition.high, value.high)};
}

inline Int load_ints(const std::int32_t* from) {
    return {krb::KRB_KERNEL_SET::load_ints(from), krb::KRB_KERNEL_SET::load_ints(from + 4)};
}

} // namespace batch
} // namespace
} // namespace krb::KRB_KERNEL_SET
