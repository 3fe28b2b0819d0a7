// Arrays for the length of a call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace krb {

// Up to frame_count elements are stored in the frame of the call, more on the heap. They are default-initialised.
template <class Element, std::int32_t frame_count = 64> class Scratch {
public:
    // A count below 1 gives no elements. Throws std::bad_alloc.
    explicit Scratch(std::int64_t count) {
        if (count > frame_count) {
            heap_ = std::make_unique_for_overwrite<Element[]>(static_cast<std::size_t>(count));
        }
    }

    Element* data() noexcept { return heap_ ? heap_.get() : frame_; }
    Element& operator[](std::int32_t i) noexcept { return data()[i]; }

private:
    Element frame_[static_cast<std::size_t>(frame_count)];
    std::unique_ptr<Element[]> heap_;
};

} // namespace krb
