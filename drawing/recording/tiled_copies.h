// Copies of planes of pixels at several times, which share the tiles that are equal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "drawing/recording/plane.h"
#include "host/geometry.h"

namespace vorna::drawing::recording {

class Tiled_Copies {
public:
    // The bytes of a tile without padding; null = all of them are zero.
    using Tile = std::shared_ptr<const std::vector<std::uint8_t>>;
    // The tiles of all planes.
    using Copy = std::vector<Tile>;

    // All planes have this size. Copies of earlier planes can be put back when planes of their sizes are set again.
    void set_planes(std::vector<Plane> planes, VT_Int_Pair size);
    // The pixels of the part may have changed since the last copy.
    void mark(const Plane_Part& part);

    std::size_t tiles() const noexcept { return last_.size(); }
    // How many bytes the next copy takes at most, besides the tiles that it shares.
    std::uint64_t most_bytes() const noexcept;
    Copy copy();
    void put_back(const Copy& copy);
    // Of all tiles that copies have, without the lists of tiles.
    std::uint64_t bytes() const noexcept { return *bytes_; }

private:
    static constexpr std::int32_t side = 64;

    // The part of the plane that a tile shows, by its number among all tiles.
    Plane_Part part_of(std::size_t tile) const noexcept;
    Tile copy_of(std::size_t tile) const;

    std::vector<Plane> planes_;
    VT_Int_Pair size_, tiles_; // of a plane in pixels and in tiles
    std::size_t of_plane_ = 0; // tiles
    Copy last_;                // what the planes hold, apart from marked tiles
    std::vector<bool> is_marked_;
    std::shared_ptr<std::uint64_t> bytes_ = std::make_shared<std::uint64_t>(0);
};

} // namespace vorna::drawing::recording
