// A part of a plane as it was before a call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "drawing/recording/plane.h"

namespace vorna::drawing::recording {

class Area_Copy {
public:
    void take(const Plane& plane, const Plane_Part& part) {
        plane_ = plane;
        part_ = part;
        row_bytes_ = plane.row_bytes_of(part);
        bytes_.resize(row_bytes_ * static_cast<std::size_t>(part.height));
        for (std::int32_t r = 0; r < part.height; ++r) {
            std::memcpy(bytes_.data() + static_cast<std::size_t>(r) * row_bytes_, plane.row(part, r), row_bytes_);
        }
    }

    void put_back() const {
        for (std::int32_t r = 0; r < part_.height; ++r) {
            std::memcpy(plane_.row(part_, r), row(r), row_bytes_);
        }
    }

    // Inverts every byte but the fourth of each pixel, the alpha of colours; with_alpha: that one too.
    void invert(bool with_alpha) {
        for (std::uint8_t& byte : bytes_) {
            byte = static_cast<std::uint8_t>(~byte);
        }
        if (plane_.pixel_bytes == 4 && !with_alpha) {
            for (std::size_t i = 3; i < bytes_.size(); i += 4) {
                bytes_[i] = static_cast<std::uint8_t>(~bytes_[i]);
            }
        }
    }

    // Calls note(position) for each pixel that the plane holds another value of. Positions count from the part's top left, row by
    // row.
    template <class Note> void for_each_change(const Note& note) const {
        const auto pixel_bytes = static_cast<std::size_t>(plane_.pixel_bytes);
        for (std::int32_t r = 0; r < part_.height; ++r) {
            const std::uint8_t *before = row(r), *now = plane_.row(part_, r);
            if (std::memcmp(before, now, row_bytes_) == 0) {
                continue;
            }
            const auto first = static_cast<std::size_t>(r) * static_cast<std::size_t>(part_.width);
            for (std::size_t i = 0; i < row_bytes_; i += pixel_bytes) {
                if (std::memcmp(before + i, now + i, pixel_bytes) != 0) {
                    note(first + i / pixel_bytes);
                }
            }
        }
    }

private:
    const std::uint8_t* row(std::int32_t r) const noexcept { return bytes_.data() + static_cast<std::size_t>(r) * row_bytes_; }

    Plane plane_;
    Plane_Part part_;
    std::size_t row_bytes_ = 0;
    std::vector<std::uint8_t> bytes_;
};

} // namespace vorna::drawing::recording
