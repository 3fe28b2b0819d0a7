// Values on edges for batches whose vocabulary looks lanes up by number. Included by it.
#pragma once

namespace krb::KRB_KERNEL_SET {
namespace {
namespace batch {

template <int values> struct Edge_Tables {
    struct {
        Int start[2], step[2];
    } of[std::size_t{values}];

    void set(int value, int table, Int start, Int step) {
        of[value].start[table] = start;
        of[value].step[table] = step;
    }
    void finish() {}
    template <int value> Int starts(Int edges) const { return lanes_at(of[value].start[0], of[value].start[1], edges); }
    template <int value> Int steps(Int edges) const { return lanes_at(of[value].step[0], of[value].step[1], edges); }
};

template <int values> struct Edge_Values {
    const Edge_Tables<values>& tables;
    Int edges, rows;

    Edge_Values(const Edge_Tables<values>& all, Int edge_of_lanes, Int rows_below)
        : tables(all), edges(edge_of_lanes), rows(rows_below) {}
    template <int value> Int get() const {
        return tables.template starts<value>(edges) + rows * tables.template steps<value>(edges);
    }
};

} // namespace batch
} // namespace
} // namespace krb::KRB_KERNEL_SET
