// What can be left out of the groups of a recording: keys that a document need not give.
#pragma once

#include <optional>
#include <type_traits>
#include <utility>

#include "drawing/recording/recording.h"

namespace vorna::drawing::recording {

template <class Value> struct Optional_Value { using Type = void; };
template <class Value> struct Optional_Value<std::optional<Value>> { using Type = Value; };

// Leaves out one given key after the other, of groups inside of groups, too, as long as keeps() accepts the group without it. A
// group that cannot be left out as a whole is tried key by key.
template <Keyed Group, class Keeps> void leave_out_keys(Group& group, const Keeps& keeps) {
    for_each_field<Group>([&](const auto& field) {
        auto& member = group.*field.member;
        using Member = std::remove_cvref_t<decltype(member)>;
        using Inner = typename Optional_Value<Member>::Type;
        if constexpr (Keyed<Member>) {
            leave_out_keys(member, keeps);
        } else if constexpr (!std::is_void_v<Inner>) {
            if (!member) {
                return;
            }
            Member kept = std::exchange(member, std::nullopt);
            if (keeps()) {
                return;
            }
            member = std::move(kept);
            if constexpr (Keyed<Inner>) {
                leave_out_keys(*member, keeps);
            }
        }
    });
}

} // namespace vorna::drawing::recording
