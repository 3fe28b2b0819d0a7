// Blocks of neighbouring places of strips, each small in space.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "drawing/model/camera.h"
#include "drawing/model/lighting.h"
#include "drawing/model/tiles.h"

namespace vorna::drawing::model {

class Place_Blocks {
public:
    Place_Blocks() = default;
    // points: of all vertices. vertices: by place. strip_starts: by strip its first place, and the end of the last one. The
    // result does not depend on the number of threads.
    Place_Blocks(std::span<const VT_Vector> points, std::span<const std::uint32_t> vertices,
                 std::span<const std::uint32_t> strip_starts, unsigned threads);

    std::size_t count() const noexcept { return starts_.size() - 1; }
    // The first place of a block. The number of all places of the block after the last one.
    std::size_t start(std::size_t block) const noexcept { return starts_[block]; }
    // Around all that is seen in a frame of the triangles that begin in the blocks [first, first + extents.size()). Extents are
    // a little larger than that and never empty.
    void find_extents(std::size_t first, const Camera& camera, const VT_Int_Rectangle& frame, std::span<Extent> extents) const;

private:
    std::vector<std::uint32_t> starts_{0};
    // Spheres around the triangles.
    Vector_Columns centers_;
    std::vector<float> radii_;
};

} // namespace vorna::drawing::model
