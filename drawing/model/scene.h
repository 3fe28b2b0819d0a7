// A model laid out for drawing, once for all pictures of it.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "drawing/model/camera.h"
#include "drawing/model/model_look.h"
#include "drawing/model/tiles.h"
#include "host/renderer_data.h"
#include "host/rendition.h"

namespace vorna::drawing::model {

class Scene {
public:
    Scene() = default;
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
    virtual ~Scene() = default;

    // The vertices that are drawn, for fitting a camera.
    virtual const std::vector<VT_Vector>& points() const noexcept = 0;
    // How large it is, in words.
    virtual std::string summary() const = 0;
    virtual std::size_t triangle_count() const noexcept = 0;

    // Does what a picture needs once: projection, light, and which triangles lie in which tile. Faces seen from behind are lit
    // from behind.
    virtual void prepare(const Tile_Grid& grid, const Camera& camera, const Model_Look& settings) = 0;
    // Draws what touches a tile of the prepared picture; the renderer's window is the tile's. Several threads may draw at once,
    // each through a renderer and a rendition of its own.
    virtual void draw(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::size_t tile) const = 0;
    // Bytes that prepare takes, roughly, in pictures of several tiles.
    virtual std::uint64_t prepared_memory() const noexcept = 0;
};

} // namespace vorna::drawing::model
