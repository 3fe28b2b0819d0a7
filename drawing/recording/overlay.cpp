// Renditions laid over each other.
#include "drawing/recording/recording.h"

namespace vorna::drawing::recording {

namespace {

template <class Type> struct Is_Optional : std::false_type {};
template <class Value> struct Is_Optional<std::optional<Value>> : std::true_type {};

template <class Type> void lay_over(Type& under, const Type& over);

// Both are given: groups are merged; any other value replaces the lower one, null included.
template <class Value> void replace(Value& under, const Value& over) {
    if constexpr (Keyed<Value>) {
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
    if constexpr (Keyed<Type>) {
        for_each_field<Type>([&](const auto& field) { lay_over(under.*field.member, over.*field.member); });
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
