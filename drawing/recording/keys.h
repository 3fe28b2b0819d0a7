// How the members of a struct are called in a document.
//
// A struct lists its members once, in `keys`; reader, writer, overlay, recorder and rendition maker walk this list. A struct
// whose list lacks a member does not compile.
#pragma once

#include <cstddef>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace vorna::drawing::recording {

enum class Presence {
    required, // must be given, and is always written
    always,   // may be left out of a document; is always written, an empty optional as null
    given,    // may be left out of a document; is written when it differs from its default
};

// Forms that the type of a member does not tell.
namespace form {
struct Plain {};         // as the type says
struct Side {};          // 1 to 16384
struct Not_Negative {};  // 0 to 2147483647
struct Byte {};          // 0 to 255
struct Cube_Levels {};   // [r, g, b], each 1 to 255
struct Opaque_Colors {}; // a list of 1 to 256 [r, g, b]
struct Nullable {};      // an optional, where null stands for an empty one
struct Sized {};         // rows of pixels; the other members of the struct tell how many
struct Inlined {};       // a struct whose keys stand among those of the struct that holds it
} // namespace form

// Where the host keeps an attribute. An attribute that a document leaves out has the value that a new object of the host has.
struct No_Host {};
template <class Group, class Value> struct Host_Member { Value Group::*value; };
// A palette index; a document that leaves it out means the entry closest to the colour.
template <class Group, class Value, class Color> struct Host_Index {
    Value Group::*value;
    Color Group::*color;
};

template <Presence when, class Group, class Member, class Form, class Host = No_Host> struct Field {
    using Value = Member;
    static constexpr Presence presence = when;

    std::string_view name;
    Member Group::*member;
    Form form;
    Host host;
};

template <class Group, class Member, class Form = form::Plain>
constexpr Field<Presence::required, Group, Member, Form> required(std::string_view name, Member Group::*member, Form form = {}) {
    return {name, member, form, {}};
}

template <class Group, class Member, class Form = form::Plain>
constexpr Field<Presence::always, Group, Member, Form> always(std::string_view name, Member Group::*member, Form form = {}) {
    return {name, member, form, {}};
}

template <class Group, class Member, class Form = form::Plain>
constexpr Field<Presence::given, Group, Member, Form> given(std::string_view name, Member Group::*member, Form form = {}) {
    return {name, member, form, {}};
}

template <class Group, class Member, class Object, class Value, class Form = form::Plain>
constexpr Field<Presence::given, Group, Member, Form, Host_Member<Object, Value>>
attribute(std::string_view name, Member Group::*member, Value Object::*host, Form form = {}) {
    return {name, member, form, {host}};
}

template <class Group, class Member, class Object, class Value, class Color>
constexpr Field<Presence::given, Group, Member, form::Plain, Host_Index<Object, Value, Color>>
index_attribute(std::string_view name, Member Group::*member, Value Object::*index, Color Object::*color) {
    return {name, member, {}, {index, color}};
}

template <class Group>
concept Keyed = requires {
    std::tuple_size<std::remove_cvref_t<decltype(Group::keys)>>::value;
};

// All members, which are as many as there are keys: another number of names does not compile.
template <Keyed Group> constexpr auto members_of(const Group& group) {
    constexpr std::size_t count = std::tuple_size_v<std::remove_cvref_t<decltype(Group::keys)>>;
    if constexpr (count == 1) {
        const auto& [a] = group;
        return std::tie(a);
    } else if constexpr (count == 2) {
        const auto& [a, b] = group;
        return std::tie(a, b);
    } else if constexpr (count == 3) {
        const auto& [a, b, c] = group;
        return std::tie(a, b, c);
    } else if constexpr (count == 4) {
        const auto& [a, b, c, d] = group;
        return std::tie(a, b, c, d);
    } else if constexpr (count == 5) {
        const auto& [a, b, c, d, e] = group;
        return std::tie(a, b, c, d, e);
    } else if constexpr (count == 6) {
        const auto& [a, b, c, d, e, f] = group;
        return std::tie(a, b, c, d, e, f);
    } else if constexpr (count == 7) {
        const auto& [a, b, c, d, e, f, g] = group;
        return std::tie(a, b, c, d, e, f, g);
    } else if constexpr (count == 8) {
        const auto& [a, b, c, d, e, f, g, h] = group;
        return std::tie(a, b, c, d, e, f, g, h);
    } else if constexpr (count == 9) {
        const auto& [a, b, c, d, e, f, g, h, i] = group;
        return std::tie(a, b, c, d, e, f, g, h, i);
    } else {
        static_assert(count == 10, "one more case is needed here");
        const auto& [a, b, c, d, e, f, g, h, i, j] = group;
        return std::tie(a, b, c, d, e, f, g, h, i, j);
    }
}

// Calls visit(field) for every key.
template <Keyed Group, class Visit> constexpr void for_each_field(Visit&& visit) {
    using Members = decltype(members_of(std::declval<const Group&>()));
    static_assert(std::tuple_size_v<Members> == std::tuple_size_v<std::remove_cvref_t<decltype(Group::keys)>>);
    std::apply([&](const auto&... field) { (visit(field), ...); }, Group::keys);
}

// The struct of these values, one for each key.
template <Keyed Group, class... Values> Group made_of(Values&&... values) {
    static_assert(sizeof...(Values) == std::tuple_size_v<std::remove_cvref_t<decltype(Group::keys)>>);
    return Group{std::forward<Values>(values)...};
}

} // namespace vorna::drawing::recording
