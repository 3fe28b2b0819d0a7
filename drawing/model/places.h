// Points at equal places, and lists sorted by the number of a group.
#pragma once

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <span>
#include <vector>

#include "drawing/files/helpers.h"
#include "drawing/files/long_list.h"
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
    Long_List<std::uint32_t> starts; // of each group in members, and the end of the last one
    Long_List<Member> members;

    std::size_t count() const noexcept { return starts.size() - 1; }
    std::span<Member> operator[](std::size_t group) noexcept {
        return {members.data() + starts[group], starts[group + 1] - starts[group]};
    }
};

inline constexpr std::uint32_t no_group = 0xFFFFFFFF;

// member_of(i) for each i below count, by group_of(i), which is below group_count or no_group. Each thread goes through all
// numbers and takes the groups of its range: that costs less memory and time than to sort them by ranges first.
template <class Group_Of, class Member_Of>
auto grouped(std::uint32_t count, std::uint32_t group_count, unsigned threads, const Group_Of& group_of,
             const Member_Of& member_of) {
    constexpr std::size_t least_numbers = std::size_t{1} << 15, most_ranges = 8;
    const std::size_t ranges = std::clamp<std::size_t>(count / least_numbers, 1, std::min<std::size_t>(threads, most_ranges));
    const auto for_all = [&](const auto& visit) {
        share_tasks(ranges, threads, [&](std::size_t range, std::size_t) {
            const auto first = static_cast<std::uint32_t>(std::uint64_t{group_count} * range / ranges);
            const auto size = static_cast<std::uint32_t>(std::uint64_t{group_count} * (range + 1) / ranges) - first;
            for (std::uint32_t i = 0; i < count; ++i) {
                if (const std::uint32_t group = group_of(i); group - first < size) {
                    visit(i, group);
                }
            }
        });
    };
    // A group's members are counted two places behind its own, so that its beginning has moved there when all are placed.
    Groups<decltype(member_of(0))> groups{Long_List<std::uint32_t>(std::size_t{group_count} + 2, 0U), {}};
    for_all([&](std::uint32_t, std::uint32_t group) { ++groups.starts[std::size_t{group} + 2]; });
    std::partial_sum(groups.starts.begin(), groups.starts.end(), groups.starts.begin());
    groups.members.resize(groups.starts.back());
    for_all(
        [&](std::uint32_t i, std::uint32_t group) { groups.members[groups.starts[std::size_t{group} + 1]++] = member_of(i); });
    groups.starts.pop_back();
    return groups;
}

} // namespace vorna::drawing::model
