// Batches of small triangles with SSE4.2: eight lanes, two vectors of the set's four. The names are documented in
// triangle_batches.inl. Included after kernels/pixel_formats.inl.
#pragma once

#include <cstring>

#include "renderer/kernels/reciprocals.h"

namespace krb::KRB_KERNEL_SET {
namespace {
namespace batch {

inline constexpr int lane_count = 8;
inline constexpr std::int32_t least_run = 3;
inline constexpr std::int32_t rows_ahead = 2 * lane_count;

using Half = krb::KRB_KERNEL_SET::Int;

struct Int {
    __m128i low, high;

    Half low_half() const { return {low}; }
    Half high_half() const { return {high}; }
};

struct Active {
    __m128i low, high;
};

template <class Operation> KRB_ALWAYS_INLINE Int in_halves(Operation operation, Int a) {
    return {operation(a.low), operation(a.high)};
}

template <class Operation> KRB_ALWAYS_INLINE Int in_halves(Operation operation, Int a, Int b) {
    return {operation(a.low, b.low), operation(a.high, b.high)};
}

inline __m128i* vector_at(void* address) {
    return static_cast<__m128i*>(address);
}

inline const __m128i* vector_at(const void* address) {
    return static_cast<const __m128i*>(address);
}

// ---- lanes

inline Int splat(std::int32_t value) {
    return {_mm_set1_epi32(value), _mm_set1_epi32(value)};
}

inline Int lane_numbers() {
    return {_mm_setr_epi32(0, 1, 2, 3), _mm_setr_epi32(4, 5, 6, 7)};
}

inline Int operator+(Int a, Int b) {
    return in_halves([](__m128i x, __m128i y) { return _mm_add_epi32(x, y); }, a, b);
}

inline Int operator-(Int a, Int b) {
    return in_halves([](__m128i x, __m128i y) { return _mm_sub_epi32(x, y); }, a, b);
}

inline Int operator*(Int a, Int b) {
    return in_halves([](__m128i x, __m128i y) { return _mm_mullo_epi32(x, y); }, a, b);
}

inline Int operator&(Int a, Int b) {
    return in_halves([](__m128i x, __m128i y) { return _mm_and_si128(x, y); }, a, b);
}

inline Int operator|(Int a, Int b) {
    return in_halves([](__m128i x, __m128i y) { return _mm_or_si128(x, y); }, a, b);
}

template <int bits> inline Int shift_left(Int a) {
    return in_halves([](__m128i x) { return _mm_slli_epi32(x, bits); }, a);
}

template <int bits> inline Int shift_right(Int a) {
    return in_halves([](__m128i x) { return _mm_srli_epi32(x, bits); }, a);
}

template <int bits> inline Int shift_signed_right(Int a) {
    return in_halves([](__m128i x) { return _mm_srai_epi32(x, bits); }, a);
}

// By a product with a power of two, made as the exponent of a float.
inline Int shift_left_by(Int a, Int bits) {
    const auto shifted = [](__m128i x, __m128i by) {
        const __m128i power = _mm_slli_epi32(_mm_add_epi32(by, _mm_set1_epi32(127)), 23);
        return _mm_mullo_epi32(x, _mm_cvttps_epi32(_mm_castsi128_ps(power)));
    };
    return in_halves(shifted, a, bits);
}

inline Int least(Int a, Int b) {
    return in_halves([](__m128i x, __m128i y) { return _mm_min_epi32(x, y); }, a, b);
}

inline Int greatest(Int a, Int b) {
    return in_halves([](__m128i x, __m128i y) { return _mm_max_epi32(x, y); }, a, b);
}

inline Active less(Int a, Int b) {
    return {_mm_cmplt_epi32(a.low, b.low), _mm_cmplt_epi32(a.high, b.high)};
}

inline Active equal(Int a, Int b) {
    return {_mm_cmpeq_epi32(a.low, b.low), _mm_cmpeq_epi32(a.high, b.high)};
}

inline Active less_or_equal(Int a, Int b) {
    return equal(least(a, b), a);
}

inline Active has_any(Int a, Int bits) {
    return less(splat(0), a & bits);
}

inline Active operator&(Active a, Active b) {
    return {_mm_and_si128(a.low, b.low), _mm_and_si128(a.high, b.high)};
}

inline std::uint32_t bits_of(Active active) {
    return static_cast<std::uint32_t>(_mm_movemask_ps(_mm_castsi128_ps(active.low)) |
                                      _mm_movemask_ps(_mm_castsi128_ps(active.high)) << 4);
}

inline bool none(Active active) {
    const __m128i any = _mm_or_si128(active.low, active.high);
    return _mm_testz_si128(any, any) != 0;
}

inline Active no_lanes() {
    return {_mm_setzero_si128(), _mm_setzero_si128()};
}

inline Int select(Active condition, Int yes, Int no) {
    return {_mm_blendv_epi8(no.low, yes.low, condition.low), _mm_blendv_epi8(no.high, yes.high, condition.high)};
}

inline Int where(Active condition, Int value) {
    return {_mm_and_si128(condition.low, value.low), _mm_and_si128(condition.high, value.high)};
}

inline Int difference_or_reverse(Int a, Int b, Active backwards) {
    const auto negated = [](__m128i x, __m128i lanes) { return _mm_sub_epi32(_mm_xor_si128(x, lanes), lanes); };
    const Int forwards = a - b;
    return {negated(forwards.low, backwards.low), negated(forwards.high, backwards.high)};
}

inline Int joined_halves(Int low, Int high) {
    return in_halves([](__m128i x, __m128i y) { return _mm_blend_epi16(x, y, 0xAA); }, low, high);
}

inline Int bytes_beyond(Int a, Int b, std::uint32_t limits) {
    const __m128i limit = _mm_set1_epi32(static_cast<std::int32_t>(limits));
    const auto beyond = [limit](__m128i x, __m128i y) {
        return _mm_subs_epu8(_mm_or_si128(_mm_subs_epu8(x, y), _mm_subs_epu8(y, x)), limit);
    };
    return in_halves(beyond, a, b);
}

inline Int load_ints(const std::int32_t* from) {
    return {_mm_loadu_si128(vector_at(from)), _mm_loadu_si128(vector_at(from + 4))};
}

inline void store_ints(std::int32_t* to, Int a) {
    _mm_storeu_si128(vector_at(to), a.low);
    _mm_storeu_si128(vector_at(to + 4), a.high);
}

template <int count> inline Int rotated(Int a) {
    return {_mm_alignr_epi8(a.high, a.low, 4 * count), _mm_alignr_epi8(a.low, a.high, 4 * count)};
}

// Of a table whose size is a power of two.
template <std::size_t size> inline Int looked_up(const std::int32_t (&table)[size], Int positions) {
    const auto* const from = reinterpret_cast<const std::uint8_t*>(table);
    const Int at = positions & splat(static_cast<std::int32_t>(size) - 1);
    return {gather(from, at.low_half()).lanes, gather(from, at.high_half()).lanes};
}

inline Int one_of_8(const std::int32_t (&table)[8], Int positions) {
    return looked_up(table, positions);
}

inline Int lanes_at(Int table, Int positions) {
    alignas(16) std::int32_t entries[8];
    store_ints(entries, table);
    return looked_up(entries, positions);
}

inline Int load_first(const VT_RGB32* colors, std::int32_t count) {
    alignas(16) std::int32_t words[8] = {};
    std::memcpy(words, colors, static_cast<std::size_t>(count) * sizeof *colors);
    return load_ints(words);
}

// Words 3 i + axis of the 12 of four points: no two of an axis lie in the same lane.
inline void load_first(const VT_DCI_Point* points, std::int32_t count, Int& x, Int& y, Int& z) {
    alignas(16) std::int32_t words[24] = {};
    std::memcpy(words, points, static_cast<std::size_t>(count) * sizeof *points);
    const auto load = [&words](int at, __m128i& of_x, __m128i& of_y, __m128i& of_z) {
        const __m128i first = _mm_load_si128(vector_at(words + at));
        const __m128i second = _mm_load_si128(vector_at(words + at + 4));
        const __m128i third = _mm_load_si128(vector_at(words + at + 8));
        of_x = _mm_shuffle_epi32(_mm_blend_epi16(_mm_blend_epi16(first, second, 0x30), third, 0x0C), _MM_SHUFFLE(1, 2, 3, 0));
        of_y = _mm_shuffle_epi32(_mm_blend_epi16(_mm_blend_epi16(first, second, 0xC3), third, 0x30), _MM_SHUFFLE(2, 3, 0, 1));
        of_z = _mm_shuffle_epi32(_mm_blend_epi16(_mm_blend_epi16(first, second, 0x0C), third, 0xC3), _MM_SHUFFLE(3, 0, 1, 2));
    };
    load(0, x.low, y.low, z.low);
    load(12, x.high, y.high, z.high);
}

// ---- quotients

struct Lane_Reciprocals {
    __m128d of[4];
};

inline Int quotient(Int a, const Lane_Reciprocals& by) {
    const auto of_four = [](__m128i four, __m128d first, __m128d second) {
        return _mm_unpacklo_epi64(_mm_cvttpd_epi32(_mm_mul_pd(_mm_cvtepi32_pd(four), first)),
                                  _mm_cvttpd_epi32(_mm_mul_pd(_mm_cvtepi32_pd(_mm_srli_si128(four, 8)), second)));
    };
    return {of_four(a.low, by.of[0], by.of[1]), of_four(a.high, by.of[2], by.of[3])};
}

inline Lane_Reciprocals row_reciprocals(Int counts) {
    alignas(16) std::int32_t at[8];
    store_ints(at, counts & splat(Reciprocals::count - 1));
    const auto two = [&at](int lane) {
        return _mm_loadh_pd(_mm_load_sd(reciprocals.of + at[lane]), reciprocals.of + at[lane + 1]);
    };
    return {two(0), two(2), two(4), two(6)};
}

inline Lane_Reciprocals column_reciprocals(Int counts) {
    return row_reciprocals(counts);
}

// Row i of out takes lane i of all four.
inline void transpose(const __m128i (&in)[4], __m128i* out) {
    const __m128i first_low = _mm_unpacklo_epi32(in[0], in[1]);
    const __m128i second_low = _mm_unpacklo_epi32(in[2], in[3]);
    const __m128i first_high = _mm_unpackhi_epi32(in[0], in[1]);
    const __m128i second_high = _mm_unpackhi_epi32(in[2], in[3]);
    out[0] = _mm_unpacklo_epi64(first_low, second_low);
    out[1] = _mm_unpackhi_epi64(first_low, second_low);
    out[2] = _mm_unpacklo_epi64(first_high, second_high);
    out[3] = _mm_unpackhi_epi64(first_high, second_high);
}

// ---- rows of pixels

struct Quads {
    alignas(16) std::uint32_t color[8][4];
    alignas(16) std::uint16_t depth[8][4];

    void set_colors(const Int (&columns)[4]) {
        __m128i rows[8];
        transpose({columns[0].low, columns[1].low, columns[2].low, columns[3].low}, rows);
        transpose({columns[0].high, columns[1].high, columns[2].high, columns[3].high}, rows + 4);
        for (int i = 0; i < 8; ++i) {
            _mm_store_si128(vector_at(color[i]), rows[i]);
        }
    }

    void set_depths(Int columns_01, Int columns_23) {
        _mm_store_si128(vector_at(depth[0]), _mm_unpacklo_epi32(columns_01.low, columns_23.low));
        _mm_store_si128(vector_at(depth[2]), _mm_unpackhi_epi32(columns_01.low, columns_23.low));
        _mm_store_si128(vector_at(depth[4]), _mm_unpacklo_epi32(columns_01.high, columns_23.high));
        _mm_store_si128(vector_at(depth[6]), _mm_unpackhi_epi32(columns_01.high, columns_23.high));
    }
};

// Numbers of columns.
struct Row_Lanes {
    alignas(16) std::int32_t columns[8];

    explicit Row_Lanes(Int counts) { store_ints(columns, counts); }
};

// Half as wide as the lanes of colours.
struct Part_Lanes {
    __m128i halves;

    Part_Lanes(const Row_Lanes& rows, int row, int skipped)
        : halves(_mm_cmpgt_epi16(_mm_set1_epi16(static_cast<std::int16_t>(rows.columns[row] - skipped)),
                                 _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7))) {}
    void limit_to(std::uint32_t mask_bits) {
        const __m128i own_bit = _mm_setr_epi16(1, 2, 4, 8, 16, 32, 64, 128);
        const __m128i all = _mm_set1_epi16(static_cast<std::int16_t>(mask_bits));
        halves = _mm_and_si128(halves, _mm_cmpeq_epi16(_mm_and_si128(all, own_bit), own_bit));
    }
};

template <int quads> struct Part_Colors { __m128i of[std::size_t{quads}]; };

template <int quads> inline Part_Colors<quads> same_colors(std::int32_t pixel) {
    Part_Colors<quads> colors;
    for (__m128i& quad : colors.of) {
        quad = _mm_set1_epi32(pixel);
    }
    return colors;
}

template <int count> inline Part_Colors<count> colors_of(const Quads* quads, int row) {
    Part_Colors<count> colors;
    for (int i = 0; i < count; ++i) {
        colors.of[i] = _mm_load_si128(vector_at(quads[i].color[row]));
    }
    return colors;
}

template <int count> inline __m128i depths_of(const Quads* quads, int row) {
    const __m128i first = _mm_loadl_epi64(vector_at(quads[0].depth[row]));
    return count == 1 ? first : _mm_unpacklo_epi64(first, _mm_loadl_epi64(vector_at(quads[count - 1].depth[row])));
}

inline void store_nearer(std::uint8_t* at, __m128i depths, Part_Lanes& lanes) {
    const __m128i stored = _mm_loadu_si128(vector_at(at));
    lanes.halves = _mm_and_si128(lanes.halves, _mm_cmpeq_epi16(_mm_min_epu16(depths, stored), depths));
    _mm_storeu_si128(vector_at(at), _mm_blendv_epi8(stored, depths, lanes.halves));
}

template <int quads> inline void store_colors(std::uint8_t* at, Part_Colors<quads> colors, Part_Lanes lanes) {
    const auto store = [](std::uint8_t* to, __m128i pixels, __m128i wide) {
        store_pixels(to, Half{pixels}, krb::KRB_KERNEL_SET::Active{wide});
    };
    store(at, colors.of[0], _mm_unpacklo_epi16(lanes.halves, lanes.halves));
    if constexpr (quads > 1) {
        store(at + 16, colors.of[1], _mm_unpackhi_epi16(lanes.halves, lanes.halves));
    }
}

} // namespace batch
} // namespace
} // namespace krb::KRB_KERNEL_SET

#include "renderer/triangles/edge_tables_baseline.inl"
