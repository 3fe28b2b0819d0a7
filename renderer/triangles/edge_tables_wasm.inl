// Values on edges for batches with WebAssembly's SIMD: the values of an edge are one vector, since a table of sixteen lanes would
// take four look-ups. The names are documented in edge_tables.inl; included by the vocabulary of batches.
#pragma once

namespace krb::KRB_KERNEL_SET {
namespace {
namespace batch {

template <int values> struct Edge_Tables {
    std::int32_t start[2 * lane_count][4], step[2 * lane_count][4];
    Int starts_of[2][4] = {}, steps_of[2][4] = {}; // of values that do not exist zeros

    void set(int value, int table, Int starts_of_lanes, Int steps_of_lanes) {
        starts_of[table][value] = starts_of_lanes;
        steps_of[table][value] = steps_of_lanes;
    }
    void finish() {
        for (int table = 0; table < 2; ++table) {
            store_edges(start + lane_count * table, starts_of[table]);
            store_edges(step + lane_count * table, steps_of[table]);
        }
    }
    // Start plus so many steps of an edge, for all values.
    template <int lane> Half value_at(std::int32_t edge, Half rows) const {
        return krb::KRB_KERNEL_SET::load_ints(start[edge]) + spread_lane<lane>(rows) * krb::KRB_KERNEL_SET::load_ints(step[edge]);
    }

private:
    static void store_edges(std::int32_t (*to)[4], const Int (&of)[4]) {
        Half edges[lane_count];
        transpose({of[0].low, of[1].low, of[2].low, of[3].low}, edges);
        transpose({of[0].high, of[1].high, of[2].high, of[3].high}, edges + 4);
        for (int i = 0; i < lane_count; ++i) {
            wasm_v128_store(to[i], edges[i].lanes);
        }
    }
};

template <int values> struct Edge_Values {
    Int of[4];

    Edge_Values(const Edge_Tables<values>& tables, Int edges, Int rows) {
        std::int32_t at[lane_count];
        store_ints(at, edges & splat(2 * lane_count - 1));
        const auto four = [&tables](const std::int32_t* edge, Half below, Half* out) {
            transpose({tables.template value_at<0>(edge[0], below), tables.template value_at<1>(edge[1], below),
                       tables.template value_at<2>(edge[2], below), tables.template value_at<3>(edge[3], below)},
                      out);
        };
        Half low[4], high[4];
        four(at, rows.low, low);
        four(at + 4, rows.high, high);
        for (int i = 0; i < 4; ++i) {
            of[i] = {low[i], high[i]};
        }
    }
    template <int value> Int get() const { return of[value]; }
};

// Start and step of an edge are neighbours.
template <> struct Edge_Tables<1> {
    std::int32_t edges[2 * lane_count][2];

    void set(int, int table, Int start, Int step) {
        const auto store_four = [this](int first, Half starts_of_four, Half steps_of_four) {
            wasm_v128_store(edges[first], wasm_i32x4_shuffle(starts_of_four.lanes, steps_of_four.lanes, 0, 4, 1, 5));
            wasm_v128_store(edges[first + 2], wasm_i32x4_shuffle(starts_of_four.lanes, steps_of_four.lanes, 2, 6, 3, 7));
        };
        store_four(lane_count * table, start.low, step.low);
        store_four(lane_count * table + 4, start.high, step.high);
    }
    void finish() {}
    void look_up(Int edge_of_lanes, Int& starts_of_lanes, Int& steps_of_lanes) const {
        std::int32_t at[lane_count];
        store_ints(at, edge_of_lanes & splat(2 * lane_count - 1));
        const auto four = [&](int first, Half& starts_of_four, Half& steps_of_four) {
            const auto two = [&](int lane) {
                return wasm_v128_load64_lane(edges[at[lane + 1]], wasm_v128_load64_zero(edges[at[lane]]), 1);
            };
            const v128_t low = two(first), high = two(first + 2);
            starts_of_four = {wasm_i32x4_shuffle(low, high, 0, 2, 4, 6)};
            steps_of_four = {wasm_i32x4_shuffle(low, high, 1, 3, 5, 7)};
        };
        four(0, starts_of_lanes.low, steps_of_lanes.low);
        four(4, starts_of_lanes.high, steps_of_lanes.high);
    }
    template <int> Int starts(Int edge_of_lanes) const {
        Int start, step;
        look_up(edge_of_lanes, start, step);
        return start;
    }
    template <int> Int steps(Int edge_of_lanes) const {
        Int start, step;
        look_up(edge_of_lanes, start, step);
        return step;
    }
};

template <> struct Edge_Values<1> {
    Int value;

    Edge_Values(const Edge_Tables<1>& tables, Int edges, Int rows) {
        Int start, step;
        tables.look_up(edges, start, step);
        value = start + rows * step;
    }
    template <int> Int get() const { return value; }
};

} // namespace batch
} // namespace
} // namespace krb::KRB_KERNEL_SET
