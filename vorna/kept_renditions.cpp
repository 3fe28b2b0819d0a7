// Copies of the renditions of kept calls.
#include "vorna/kept_renditions.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace vorna {

namespace {

// Bits that differ between two objects in the bytes [first, end), which no padding may be among. Every call compares its whole
// rendition, so members are compared many at once and without branches.
template <std::size_t first, std::size_t end, class Object> std::uint64_t difference(const Object& a, const Object& b) noexcept {
    if constexpr (first == end) {
        return 0;
    } else {
        using Word = std::conditional_t<(end - first >= 8), std::uint64_t,
                                        std::conditional_t<(end - first >= 4), std::uint32_t,
                                                           std::conditional_t<(end - first >= 2), std::uint16_t, std::uint8_t>>>;
        const auto word_of = [](const Object& object) {
            Word word;
            std::memcpy(&word, reinterpret_cast<const std::byte*>(&object) + first, sizeof word);
            return word;
        };
        return std::uint64_t(word_of(a) ^ word_of(b)) | difference<first + sizeof(Word), end>(a, b);
    }
}

template <class Object>
std::uint64_t difference_of_objects(const VT_Reference<Object>& a, const VT_Reference<Object>& b) noexcept {
    return reinterpret_cast<std::uintptr_t>(a.get()) ^ reinterpret_cast<std::uintptr_t>(b.get());
}

// Where pointers have eight bytes.
template <class Object, std::size_t bytes> constexpr bool has_size = sizeof(void*) != 8 || sizeof(Object) == bytes;

// Of the members from one to another.
#define VORNA_DIFFERENCE(Type, first, last, a, b)                                                                                \
    difference<offsetof(Type, first), offsetof(Type, last) + sizeof(Type::last)>(a, b)

std::uint64_t difference_of(const VT_Face_Attributes& a, const VT_Face_Attributes& b) noexcept {
    static_assert(has_size<VT_Face_Attributes, 40>, "all members are compared");
    return VORNA_DIFFERENCE(VT_Face_Attributes, color, contrast_index, a, b) |
           VORNA_DIFFERENCE(VT_Face_Attributes, pattern, mode, a, b) | difference_of_objects(a.bitmap, b.bitmap) |
           difference_of_objects(a.material, b.material);
}

std::uint64_t difference_of(const VT_Line_Attributes& a, const VT_Line_Attributes& b) noexcept {
    static_assert(has_size<VT_Line_Attributes, 48>, "all members are compared");
    return VORNA_DIFFERENCE(VT_Line_Attributes, color, index, a, b) | VORNA_DIFFERENCE(VT_Line_Attributes, weight, mode, a, b) |
           difference_of_objects(a.line_types, b.line_types) | VORNA_DIFFERENCE(VT_Line_Attributes, cap, join, a, b);
}

std::uint64_t difference_of(const VT_Marker_Attributes& a, const VT_Marker_Attributes& b) noexcept {
    static_assert(has_size<VT_Marker_Attributes, 20>, "all members are compared");
    return VORNA_DIFFERENCE(VT_Marker_Attributes, color, index, a, b) |
           VORNA_DIFFERENCE(VT_Marker_Attributes, symbol, mode, a, b);
}

std::uint64_t difference_of(const VT_Clip_Attributes& a, const VT_Clip_Attributes& b) noexcept {
    static_assert(has_size<VT_Clip_Attributes, 40>, "all members are compared");
    return VORNA_DIFFERENCE(VT_Clip_Attributes, hard_clip, depth_test, a, b) |
           difference_of_objects(a.complex_clip, b.complex_clip) |
           VORNA_DIFFERENCE(VT_Clip_Attributes, window_offset, window_offset, a, b);
}

std::uint64_t difference_of(const VT_Window_Attributes& a, const VT_Window_Attributes& b) noexcept {
    static_assert(has_size<VT_Window_Attributes, 28>, "all members are compared");
    return VORNA_DIFFERENCE(VT_Window_Attributes, rectangle, index, a, b);
}

#undef VORNA_DIFFERENCE

} // namespace

bool Kept_Renditions::have_same_values(const VT_Rendition& a, const VT_Rendition& b) noexcept {
    return (difference_of(a.face, b.face) | difference_of(a.line, b.line) | difference_of(a.marker, b.marker) |
            difference_of(a.clip, b.clip) | difference_of(a.window, b.window) | (a.drawing_flags ^ b.drawing_flags)) == 0;
}

const VT_Rendition& Kept_Renditions::copied(const VT_Rendition& rendition) {
    assert(has_room());
    if (count_ == copies_.size()) {
        copies_.emplace_back();
    }
    VT_Reference<VT_Rendition>& place = copies_[count_];
    if (place && place->reference_count() == 1) {
        *place = rendition;
    } else {
        place = new VT_Rendition(rendition); // the first one here, or a renderer has kept the one before
    }
    const VT_Rendition& copy = *copies_[count_++];
    known_of(rendition) = {&rendition, &copy};
    return copy;
}

void Kept_Renditions::clear() noexcept {
    for (std::size_t k = 0; k < count_; ++k) {
        VT_Rendition& copy = *copies_[k];
        copy.face.bitmap = nullptr;
        copy.face.material = nullptr;
        copy.line.line_types = nullptr;
        copy.clip.complex_clip = nullptr;
    }
    count_ = 0;
    std::fill(std::begin(known_), std::end(known_), Known{});
}

} // namespace vorna
