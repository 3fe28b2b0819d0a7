// Parts of rows of pixels out of quads, for the sets that have AVX2. The names are documented in triangle_batches.inl. Included
// by the sets' vocabularies of batches.
#pragma once

namespace krb::KRB_KERNEL_SET {
namespace {
namespace batch {

// Four columns of lane_count rows, row after row.
struct Quads {
    alignas(4 * lane_count) std::uint32_t color[std::size_t{lane_count}][4];
    alignas(4 * lane_count) std::uint16_t depth[std::size_t{lane_count}][4];

    void set_colors(const Int (&columns)[4]);
    // Pairs of neighbouring columns.
    void set_depths(Int columns_01, Int columns_23);
};

template <int> inline __m256i same_colors(std::int32_t pixel) {
    return _mm256_set1_epi32(pixel);
}

template <int count> inline __m256i colors_of(const Quads* quads, int row) {
    const __m256i first = _mm256_zextsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(quads[0].color[row])));
    if constexpr (count == 1) {
        return first;
    } else {
        return _mm256_inserti128_si256(first, _mm_load_si128(reinterpret_cast<const __m128i*>(quads[1].color[row])), 1);
    }
}

template <int count> inline __m128i depths_of(const Quads* quads, int row) {
    const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(quads[0].depth[row]));
    if constexpr (count == 1) {
        return first;
    } else {
        return _mm_unpacklo_epi64(first, _mm_loadl_epi64(reinterpret_cast<const __m128i*>(quads[1].depth[row])));
    }
}

} // namespace batch
} // namespace
} // namespace krb::KRB_KERNEL_SET
