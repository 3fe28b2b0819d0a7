// Arrays for the length of a call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

namespace vorna {

// Up to frame_count elements are stored in the frame of the call, more on the heap. They hold nothing yet: writing zeros first
// would cost more than drawing a short line.
template <class Element, std::int32_t frame_count = 64> class Scratch {
public:
    static_assert(std::is_trivially_copyable_v<Element> && std::is_trivially_destructible_v<Element>);

    // A count below 1 gives no elements. Throws std::bad_alloc.
    explicit Scratch(std::int64_t count) {
        if (count > frame_count) {
            heap_ = std::make_unique_for_overwrite<std::byte[]>(static_cast<std::size_t>(count) * sizeof(Element));
        }
    }

    // An array of bytes holds elements of such types without their being constructed.
    Element* data() noexcept { return reinterpret_cast<Element*>(heap_ ? heap_.get() : frame_); }
    Element& operator[](std::int32_t i) noexcept { return data()[i]; }

private:
    alignas(Element) std::byte frame_[static_cast<std::size_t>(frame_count) * sizeof(Element)];
    std::unique_ptr<std::byte[]> heap_;
};

} // namespace vorna
