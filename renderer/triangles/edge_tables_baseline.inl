// Values on edges for batches with SSE4.2, which cannot look lanes up by number. The names are documented in edge_tables.inl;
// included by the vocabulary of batches.
#pragma once

namespace krb::KRB_KERNEL_SET {
namespace {
namespace batch {

// The values of an edge are one vector, so that four rows' values are four loads and a transposition.
template <int values> struct Edge_Tables {
    alignas(16) std::int32_t start[16][4], step[16][4];
    Int starts[2][4], steps[2][4];

    void set(int value, int table, Int start_of_lanes, Int step_of_lanes) {
        starts[table][value] = start_of_lanes;
        steps[table][value] = step_of_lanes;
    }

    void finish() {
        for (int table = 0; table < 2; ++table) {
            store_edges(start + 8 * table, starts[table]);
            store_edges(step + 8 * table, steps[table]);
        }
    }

private:
    static void store_edges(std::int32_t (*to)[4], const Int (&of)[4]) {
        const auto vector = [&of](int value, bool high) {
            return value >= values ? _mm_setzero_si128() : high ? of[value].high : of[value].low;
        };
        for (const bool high : {false, true}) {
            __m128i edges[4];
            transpose({vector(0, high), vector(1, high), vector(2, high), vector(3, high)}, edges);
            for (int i = 0; i < 4; ++i) {
                _mm_store_si128(vector_at(to[4 * high + i]), edges[i]);
            }
        }
    }
};

template <int values> struct Edge_Values {
    Int of[4];

    Edge_Values(const Edge_Tables<values>& tables, Int edges, Int rows) {
        alignas(16) std::int32_t at[8];
        store_ints(at, edges & splat(15));
        __m128i low[4], high[4];
        transpose({value_at<0>(tables, at[0], rows.low), value_at<1>(tables, at[1], rows.low),
                   value_at<2>(tables, at[2], rows.low), value_at<3>(tables, at[3], rows.low)},
                  low);
        transpose({value_at<0>(tables, at[4], rows.high), value_at<1>(tables, at[5], rows.high),
                   value_at<2>(tables, at[6], rows.high), value_at<3>(tables, at[7], rows.high)},
                  high);
        for (int i = 0; i < 4; ++i) {
            of[i] = {low[i], high[i]};
        }
    }
    template <int value> Int get() const { return of[value]; }

private:
    template <int lane> static __m128i value_at(const Edge_Tables<values>& tables, std::int32_t edge, __m128i rows) {
        return _mm_add_epi32(_mm_load_si128(vector_at(tables.start[edge])),
                             _mm_mullo_epi32(_mm_shuffle_epi32(rows, lane * 0x55), _mm_load_si128(vector_at(tables.step[edge]))));
    }
};

// Start and step of an edge are neighbours.
template <> struct Edge_Tables<1> {
    alignas(16) std::int32_t edges[16][2];

    void set(int, int table, Int start, Int step) {
        const auto store_four = [this](int first, __m128i starts_of_four, __m128i steps_of_four) {
            _mm_store_si128(vector_at(edges[first]), _mm_unpacklo_epi32(starts_of_four, steps_of_four));
            _mm_store_si128(vector_at(edges[first + 2]), _mm_unpackhi_epi32(starts_of_four, steps_of_four));
        };
        store_four(8 * table, start.low, step.low);
        store_four(8 * table + 4, start.high, step.high);
    }
    void finish() {}
    template <int> Int starts(Int edge_of_lanes) const;
    template <int> Int steps(Int edge_of_lanes) const;
};

template <> struct Edge_Values<1> {
    Int start, step, value;

    Edge_Values(const Edge_Tables<1>& tables, Int edges, Int rows) {
        alignas(16) std::int32_t at[8];
        store_ints(at, edges & splat(15));
        const auto load_four = [&](int first, __m128i& starts, __m128i& steps) {
            const auto two = [&](int lane) {
                return _mm_castsi128_ps(_mm_unpacklo_epi64(_mm_loadl_epi64(vector_at(tables.edges[at[lane]])),
                                                           _mm_loadl_epi64(vector_at(tables.edges[at[lane + 1]]))));
            };
            const __m128 low = two(first);
            const __m128 high = two(first + 2);
            starts = _mm_castps_si128(_mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0)));
            steps = _mm_castps_si128(_mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1)));
        };
        load_four(0, start.low, step.low);
        load_four(4, start.high, step.high);
        value = start + rows * step;
    }
    template <int> Int get() const { return value; }
};

template <int> inline Int Edge_Tables<1>::starts(Int edge_of_lanes) const {
    return Edge_Values<1>(*this, edge_of_lanes, splat(0)).start;
}

template <int> inline Int Edge_Tables<1>::steps(Int edge_of_lanes) const {
    return Edge_Values<1>(*this, edge_of_lanes, splat(0)).step;
}

} // namespace batch
} // namespace
} // namespace krb::KRB_KERNEL_SET
