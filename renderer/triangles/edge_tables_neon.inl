// Values on edges for batches with NEON: tables of 16 lanes in memory, which are loaded as tuples of registers. The names are
// documented in edge_tables.inl; included by the vocabulary of batches.
#pragma once

namespace krb::KRB_KERNEL_SET {
namespace {
namespace batch {

struct Edge_Table {
    std::int32_t lanes[2 * lane_count];

    Int at(uint8x16_t low_bytes, uint8x16_t high_bytes) const {
        const uint8x16x4_t bytes = vld1q_u8_x4(reinterpret_cast<const std::uint8_t*>(lanes));
        return {{vreinterpretq_u32_u8(vqtbl4q_u8(bytes, low_bytes))}, {vreinterpretq_u32_u8(vqtbl4q_u8(bytes, high_bytes))}};
    }
    Int at(Int edges) const { return at(byte_positions<16>(edges.low), byte_positions<16>(edges.high)); }
};

template <int values> struct Edge_Tables {
    struct {
        Edge_Table start, step;
    } of[std::size_t{values}];

    void set(int value, int table, Int start, Int step) {
        store_ints(of[value].start.lanes + lane_count * table, start);
        store_ints(of[value].step.lanes + lane_count * table, step);
    }
    void finish() {}
    template <int value> Int starts(Int edges) const { return of[value].start.at(edges); }
    template <int value> Int steps(Int edges) const { return of[value].step.at(edges); }
};

template <int values> struct Edge_Values {
    const Edge_Tables<values>& tables;
    uint8x16_t low_bytes, high_bytes;
    Int rows;

    Edge_Values(const Edge_Tables<values>& all, Int edges, Int rows_below)
        : tables(all), low_bytes(byte_positions<16>(edges.low)), high_bytes(byte_positions<16>(edges.high)), rows(rows_below) {}
    template <int value> Int get() const {
        const auto& [start, step] = tables.of[value];
        return start.at(low_bytes, high_bytes) + rows * step.at(low_bytes, high_bytes);
    }
};

} // namespace batch
} // namespace
} // namespace krb::KRB_KERNEL_SET
