// Draws the points of a model.
#pragma once

#include <cstdint>
#include <vector>

#include "drawing/model/camera.h"
#include "drawing/model/lighting.h"
#include "drawing/model/mesh.h"
#include "drawing/model/projected_points.h"
#include "drawing/model/tiles.h"
#include "host/renderer_data.h"
#include "host/rendition.h"

namespace vorna::drawing::model {

struct Point_Settings {
    std::int32_t size = 0;      // pixels of an image that is not enlarged, 0 = by the number of points and of pixels
    std::int32_t enlarged = 1;  // pixels of the frame for one of the image
    bool over_faces = false;    // points are moved towards the viewer, so that faces that they lie on do not cut them
    VT_Vector_D light{0, 0, 1}; // towards it, in view space
    double specular = 1;        // strength of highlights: a factor
};

// A point covers a square up to two pixels wide, or an octagon, around its place, all of it at its own depth. Points with normals
// are lit from the side that faces the viewer. Others keep their colours. In models without faces those without a colour grow
// darker with distance, since nothing else would show their form.
class Point_Renderer {
public:
    // The mesh may be gone afterwards, and is a finished one with points. base_color: of vertices without a colour of their own;
    // of all with own_colors off.
    Point_Renderer(const Mesh& mesh, VT_RGB32 base_color, bool own_colors);

    std::size_t count() const noexcept { return positions_.size(); }

    // Pixels of a point in an image of that size that is not enlarged.
    std::int32_t size_in(VT_Int_Pair image, const Point_Settings& settings) const;
    void prepare(const Tile_Grid& grid, const Camera& camera, const Point_Settings& settings);
    // Draws what touches a tile of the prepared image against the depth buffer; the renderer's window is the tile's. Several
    // threads may draw at once, each through a renderer and a rendition of its own.
    void draw(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::size_t tile) const;
    // Bytes that prepare takes, roughly, in images of several tiles.
    std::uint64_t prepared_memory() const noexcept { return 48 * count(); }

private:
    void set_colors(const Camera& camera, const Point_Settings& settings);

    Vector_Columns positions_;
    std::vector<VT_RGB32> own_colors_; // one for all, or one each
    bool has_colors_ = false;          // whether they are the model's own
    Surfaces surfaces_;                // none, or one a point

    // Of the prepared image.
    Projected_Points projection_;
    std::vector<VT_RGB32> colors_; // one a point
    std::int32_t size_ = 1;        // pixels of the frame
    Tile_Bins bins_;
};

} // namespace vorna::drawing::model
