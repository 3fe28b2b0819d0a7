// Copies of planes of pixels at several times.
#include "drawing/recording/tiled_copies.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace vorna::drawing::recording {

void Tiled_Copies::set_planes(std::vector<Plane> planes, VT_Int_Pair size) {
    planes_ = std::move(planes);
    size_ = size;
    tiles_ = {(size.x + side - 1) / side, (size.y + side - 1) / side};
    of_plane_ = static_cast<std::size_t>(tiles_.x) * static_cast<std::size_t>(tiles_.y);
    last_.assign(planes_.size() * of_plane_, nullptr);
    is_marked_.assign(last_.size(), true);
}

void Tiled_Copies::mark(const Plane_Part& part) {
    for (std::int32_t y = part.top / side; y * side < part.top + part.height; ++y) {
        for (std::int32_t x = part.left / side; x * side < part.left + part.width; ++x) {
            const auto tile = static_cast<std::size_t>(y) * static_cast<std::size_t>(tiles_.x) + static_cast<std::size_t>(x);
            for (std::size_t plane = 0; plane < planes_.size(); ++plane) {
                is_marked_[plane * of_plane_ + tile] = true;
            }
        }
    }
}

Plane_Part Tiled_Copies::part_of(std::size_t tile) const noexcept {
    const auto columns = static_cast<std::size_t>(tiles_.x), rows = static_cast<std::size_t>(tiles_.y);
    const auto left = static_cast<std::int32_t>(tile % columns) * side;
    const auto top = static_cast<std::int32_t>(tile / columns % rows) * side;
    return {left, top, std::min(side, size_.x - left), std::min(side, size_.y - top)};
}

namespace {

bool is_zero(const std::vector<std::uint8_t>& bytes) noexcept {
    return std::ranges::all_of(bytes, [](std::uint8_t byte) { return byte == 0; });
}

} // namespace

// The last tile, where the plane still holds the same.
Tiled_Copies::Tile Tiled_Copies::copy_of(std::size_t tile) const {
    const Plane_Part part = part_of(tile);
    const Plane& plane = planes_[tile / of_plane_];
    const std::size_t row_bytes = plane.row_bytes_of(part);
    std::vector<std::uint8_t> bytes(row_bytes * static_cast<std::size_t>(part.height));
    for (std::int32_t r = 0; r < part.height; ++r) {
        std::memcpy(bytes.data() + static_cast<std::size_t>(r) * row_bytes, plane.row(part, r), row_bytes);
    }
    const Tile& last = last_[tile];
    if (last ? *last == bytes : is_zero(bytes)) {
        return last;
    }
    if (is_zero(bytes)) {
        return nullptr;
    }
    // The count is shared, since copies may outlive this object.
    const std::size_t size = bytes.size();
    Tile made(new std::vector<std::uint8_t>(std::move(bytes)), [count = bytes_](const std::vector<std::uint8_t>* freed) {
        *count -= freed->size();
        delete freed;
    });
    *bytes_ += size;
    return made;
}

std::uint64_t Tiled_Copies::most_bytes() const noexcept {
    std::uint64_t bytes = last_.size() * sizeof(Tile);
    for (std::size_t tile = 0; tile < last_.size(); ++tile) {
        if (is_marked_[tile]) {
            const Plane_Part part = part_of(tile);
            bytes += planes_[tile / of_plane_].row_bytes_of(part) * static_cast<std::uint64_t>(part.height);
        }
    }
    return bytes;
}

Tiled_Copies::Copy Tiled_Copies::copy() {
    for (std::size_t tile = 0; tile < last_.size(); ++tile) {
        if (is_marked_[tile]) {
            last_[tile] = copy_of(tile);
            is_marked_[tile] = false;
        }
    }
    return last_;
}

void Tiled_Copies::put_back(const Copy& copy) {
    for (std::size_t tile = 0; tile < last_.size(); ++tile) {
        if (!is_marked_[tile] && last_[tile] == copy[tile]) {
            continue;
        }
        const Plane_Part part = part_of(tile);
        const Plane& plane = planes_[tile / of_plane_];
        const std::size_t row_bytes = plane.row_bytes_of(part);
        for (std::int32_t r = 0; r < part.height; ++r) {
            if (copy[tile]) {
                std::memcpy(plane.row(part, r), copy[tile]->data() + static_cast<std::size_t>(r) * row_bytes, row_bytes);
            } else {
                std::memset(plane.row(part, r), 0, row_bytes);
            }
        }
        last_[tile] = copy[tile];
        is_marked_[tile] = false;
    }
}

} // namespace vorna::drawing::recording
