// Points at equal places, and lists sorted by the number of a group.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

#include "drawing/files/helpers.h"
#include "host/geometry.h"

namespace vorna::drawing::model {

// The distinct places of points, numbered in the order of their first appearance.
struct Places {
    std::vector<std::uint32_t> numbers; // by point: of its place
    std::vector<std::uint32_t> firsts;  // by place: the first point there

    std::size_t count() const noexcept { return firsts.size(); }
};

// Points that differ in the sign of a zero only are at one place. The result does not depend on the number of threads.
Places find_places(std::span<const VT_Vector> points, unsigned threads);

// Members sorted by their group, in the order of the list within a group.
template <class Member> struct Groups {
    std::vector<std::uint32_t> starts; // of each group in members, and the end of the last one
    std::vector<Member> members;

    std::size_t count() const noexcept { return starts.size() - 1; }
    std::span<Member> operator[](std::size_t group) noexcept {
        return {members.data() + starts[group], starts[group + 1] - starts[group]};
    }
};

// counts: how many elements each block of a list has for each range, block after block. They become the places where the block's
// elements go when the list is sorted by ranges. Gives where the ranges begin and where the last one ends.
std::vector<std::uint32_t> starts_of_ranges(std::span<std::uint32_t> counts, std::size_t ranges);

inline constexpr std::uint32_t no_group = 0xFFFFFFFF;

// member_of(i) for each i below count, by group_of(i), which is below group_count or no_group. On one thread.
template <class Group_Of, class Member_Of>
auto group_in_turn(std::uint32_t count, std::uint32_t group_count, const Group_Of& group_of, const Member_Of& member_of) {
    const auto for_all = [&](const auto& visit) {
        for (std::uint32_t i = 0; i < count; ++i) {
            if (const std::uint32_t group = group_of(i); group != no_group) {
                visit(i, group);
            }
        }
    };
    // A group's members are counted two places behind its own, so that its beginning has moved there when all are placed.
    Groups<decltype(member_of(0))> groups{std::vector<std::uint32_t>(std::size_t{group_count} + 2), {}};
    for_all([&](std::uint32_t, std::uint32_t group) { ++groups.starts[std::size_t{group} + 2]; });
    std::partial_sum(groups.starts.begin(), groups.starts.end(), groups.starts.begin());
    groups.members.resize(groups.starts.back());
    for_all(
        [&](std::uint32_t i, std::uint32_t group) { groups.members[groups.starts[std::size_t{group} + 1]++] = member_of(i); });
    groups.starts.pop_back();
    return groups;
}

// The same on several threads. Sorted in two steps, first by ranges of groups, so that ranges can be given to threads.
template <class Group_Of, class Member_Of>
auto grouped(std::uint32_t count, std::uint32_t group_count, unsigned threads, const Group_Of& group_of,
             const Member_Of& member_of) {
    constexpr std::size_t least_block = std::size_t{1} << 15;
    if (threads <= 1 || count < 2 * least_block) {
        return group_in_turn(count, group_count, group_of, member_of);
    }
    using Member = decltype(member_of(0));
    struct Entry {
        Member member;
        std::uint32_t group;
    };
    constexpr std::uint32_t most_ranges = 256, least_range = 256;
    const std::uint32_t range_size = std::max(least_range, group_count / most_ranges + 1);
    const std::size_t ranges = group_count / range_size + 1;
    const std::size_t blocks = part_count(count, threads, least_block);
    const auto for_block = [&](std::size_t block, const auto& visit) {
        const auto end = static_cast<std::uint32_t>(std::uint64_t{count} * (block + 1) / blocks);
        for (auto i = static_cast<std::uint32_t>(std::uint64_t{count} * block / blocks); i < end; ++i) {
            if (const std::uint32_t group = group_of(i); group != no_group) {
                visit(i, group);
            }
        }
    };
    // By block and range: how many there are, then where they go.
    std::vector<std::uint32_t> places(blocks * ranges);
    share_tasks(blocks, threads, [&](std::size_t block, std::size_t) {
        std::uint32_t* const counts = &places[block * ranges];
        for_block(block, [&](std::uint32_t, std::uint32_t group) { ++counts[group / range_size]; });
    });
    const std::vector<std::uint32_t> range_starts = starts_of_ranges(places, ranges);
    const auto sorted = std::make_unique_for_overwrite<Entry[]>(range_starts.back());
    share_tasks(blocks, threads, [&](std::size_t block, std::size_t) {
        std::uint32_t* const next = &places[block * ranges];
        for_block(block, [&](std::uint32_t i, std::uint32_t group) {
            sorted[next[group / range_size]++] = {member_of(i), group};
        });
    });
    Groups<Member> groups{std::vector<std::uint32_t>(std::size_t{group_count} + 1), std::vector<Member>(range_starts.back())};
    share_tasks(ranges, threads, [&](std::size_t range, std::size_t) {
        const auto first = static_cast<std::uint32_t>(range * range_size), end = std::min(group_count, first + range_size);
        const std::span<const Entry> entries(&sorted[range_starts[range]], range_starts[range + 1] - range_starts[range]);
        std::vector<std::uint32_t> next(range_size);
        for (const Entry& entry : entries) {
            ++next[entry.group - first];
        }
        std::uint32_t start = range_starts[range];
        for (std::uint32_t group = first; group < end; ++group) {
            groups.starts[group] = start;
            start += std::exchange(next[group - first], start);
        }
        for (const Entry& entry : entries) {
            groups.members[next[entry.group - first]++] = entry.member;
        }
    });
    groups.starts[group_count] = range_starts.back();
    return groups;
}

} // namespace vorna::drawing::model
