// Draws a model's edges: alone as a wireframe, or over its faces.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "drawing/model/camera.h"
#include "drawing/model/edges.h"
#include "drawing/model/facing.h"
#include "drawing/model/lighting.h"
#include "drawing/model/mesh.h"
#include "drawing/model/projected_points.h"
#include "drawing/model/scene.h"
#include "drawing/model/viewport.h"
#include "host/renderer_data.h"
#include "host/rendition.h"

namespace vorna::drawing::model {

class Edge_Renderer {
public:
    // The mesh may be gone afterwards. base_color: of vertices without a colour of their own; of all with own_colors off.
    // facing: of the mesh.
    Edge_Renderer(const Mesh& mesh, const Facing& facing, VT_RGB32 base_color, bool own_colors, unsigned threads = 1);

    // Lines that bound no faces. colors: none, or by edge.
    Edge_Renderer(Edges lines, std::vector<VT_RGB32> colors, VT_RGB32 base_color);

    // For fitting a camera.
    const std::vector<VT_Vector>& points() const noexcept { return edges_.points; }
    std::string summary() const;
    std::size_t count() const noexcept { return edges_.count; }

    // Columns and rows around a pixel of an edge over faces whose farthest depth it is tested against; 0 = none.
    static std::int32_t reach(const Edge_Settings& settings) noexcept { return settings.over_faces ? 1 + settings.width / 2 : 0; }
    // Margin that tiles of images with edges need over faces, a multiple of 8. Which parts of smoothed edges are visible is found
    // by testing the depths along the whole of the short ones. Edges alone look the same in every window.
    static std::int32_t tile_margin(const Edge_Settings& settings) noexcept {
        return settings.over_faces && settings.smoothed ? 72 : (reach(settings) + 7) / 8 * 8;
    }

    // Does what a picture needs once: which edges are drawn, and where.
    void prepare(const Tile_Grid& grid, const Camera& camera, const Edge_Settings& settings);
    // Of the prepared image.
    std::int32_t reach() const noexcept { return reach(settings_); }
    const VT_Int_Rectangle& frame() const noexcept { return frame_; }
    // After recede_faces. Draws what touches a tile of the prepared picture; the renderer's window is the tile's. Edges over
    // faces obey the depth buffer, others leave it alone. Several threads may draw at once, each through a renderer and a
    // rendition of its own.
    void draw(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::size_t tile) const;
    // Bytes that prepare takes, roughly, in pictures of several tiles.
    std::uint64_t prepared_memory() const noexcept { return 32 * edges_.points.size() + 16 * edges_.chains.size(); }

private:
    // Edges that are drawn, one after the other in a chain.
    struct Run {
        std::uint32_t first, end;
    };
    // Of a triangle: depth units for a column to the right and a row up, and between its nearest and farthest point.
    struct Plane {
        double along_x = 0, along_y = 0, range = 0;
    };
    struct Segment {
        VT_DCI_Point from, to;
    };

    void set_features(const Mesh& mesh);
    void set_colors(const Mesh& mesh, VT_RGB32 base_color);
    void choose_edges();
    void lift_points();
    Plane plane_of(std::size_t triangle) const;
    double rise_beside(std::size_t corner, const Plane& plane) const;
    void gather_runs();
    std::optional<Segment> segment_of(std::size_t edge) const;

    Edges edges_;
    Vector_Columns positions_;
    Surfaces faces_;
    VT_RGB32 base_color_;
    bool hides_backs_ = false;
    std::vector<VT_RGB32> colors_;       // none, or by edge
    std::vector<std::uint8_t> features_; // by edge: whether it is one from everywhere

    // Of the prepared picture.
    Camera camera_;
    Viewport viewport_{{}};
    VT_Int_Rectangle frame_;
    Edge_Settings settings_;
    Projected_Points projection_;
    std::vector<std::uint8_t> drawn_; // by edge; the last place of a chain is none
    std::vector<std::int32_t> lifts_; // by point, see lift_points
    std::vector<Run> runs_;
    Tile_Bins bins_;
};

// Moves the depths in the window to the farthest within the reach of each pixel, once before edges are drawn over the faces.
void recede_faces(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_Int_Rectangle& frame, std::int32_t reach);

} // namespace vorna::drawing::model
