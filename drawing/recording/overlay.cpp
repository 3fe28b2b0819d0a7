// Renditions laid over each other.
#include <type_traits>

#include "drawing/recording/recording.h"

namespace vorna::drawing::recording {

namespace {

template <class Type> struct Is_Optional : std::false_type {};
template <class Value> struct Is_Optional<std::optional<Value>> : std::true_type {};

template <class Type>
concept Key_Group = requires {
    Type::keys;
};

template <class Type> void lay_over(Type& under, const Type& over);

// Both are given: groups are merged, everything else takes the other's place, a null too.
template <class Value> void replace(Value& under, const Value& over) {
    if constexpr (Key_Group<Value>) {
        lay_over(under, over);
    } else if constexpr (Is_Optional<Value>::value) {
        if (under && over) {
            replace(*under, *over);
        } else {
            under = over;
        }
    } else {
        under = over;
    }
}

// A group, or a key that is empty when it is not given.
template <class Type> void lay_over(Type& under, const Type& over) {
    if constexpr (Key_Group<Type>) {
        std::apply([&](const auto... key) { (lay_over(under.*key, over.*key), ...); }, Type::keys);
    } else if (!under) {
        under = over;
    } else if (over) {
        replace(*under, *over);
    }
}

} // namespace

Rendition overlaid(const Rendition& under, const Rendition& over) {
    Rendition result = under;
    lay_over(result, over);
    return result;
}

} // namespace vorna::drawing::recording
