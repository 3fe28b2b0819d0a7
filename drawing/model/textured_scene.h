// Draws a model with its materials: textures, and surfaces that let through what lies behind them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "drawing/model/clipper.h"
#include "drawing/model/facing.h"
#include "drawing/model/lighting.h"
#include "drawing/model/mesh.h"
#include "drawing/model/paints.h"
#include "drawing/model/scene.h"
#include "drawing/model/surface_tints.h"
#include "drawing/model/textured_triangles.h"
#include "drawing/model/viewport.h"

namespace vorna::drawing::model {

// Opaque triangles come first, those seen from behind before the others, which are seen where depths are equal; then translucent
// ones from the farthest to the nearest.
class Textured_Scene final : public Scene {
public:
    // The mesh may be gone afterwards. base_color: of what has neither a colour nor a texture; of all, with own_colors off. The
    // surfaces of textures that cannot be read are plain, and one line in warnings names these textures.
    Textured_Scene(const Mesh& mesh, const Facing& facing, VT_RGB32 base_color, bool own_colors,
                   std::vector<std::string>& warnings, Load_Limits& limits);

    // Whether a mesh has materials that make a difference.
    static bool has_work(const Mesh& mesh);

    const std::vector<VT_Vector>& points() const noexcept override { return points_; }
    std::string summary() const override;
    std::size_t triangle_count() const noexcept override { return triangles_.size(); }

    void prepare(const Tile_Grid& grid, const Camera& camera, const Model_Look& settings) override;
    void draw(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::size_t tile) const override;
    std::uint64_t prepared_memory() const noexcept override { return 64 * points_.size() + 40 * triangles_.size(); }

private:
    void order_triangles(const Mesh& mesh, const Facing& facing);
    std::vector<std::uint32_t> lay_out(const Mesh& mesh);
    // vertices: the mesh's own numbers of the vertices that are drawn.
    void set_colors(const Mesh& mesh, const std::vector<std::uint32_t>& vertices, VT_RGB32 base_color, bool own_colors);
    void transform(const Camera& camera);
    void order_drawing(const Camera& camera);
    Clip_Polygon clipped(std::size_t triangle) const;
    Extent extent_of(std::size_t triangle) const;
    void draw_triangle(Textured_Triangles& triangles, std::size_t triangle) const;

    Paints paints_;

    std::vector<VT_Vector> points_;
    std::vector<Texture_Point> coordinates_;
    Surfaces vertices_;
    // By triangle, the translucent ones last.
    std::vector<std::array<std::uint32_t, 3>> triangles_;
    std::vector<std::uint32_t> triangle_paints_;
    Surfaces faces_;
    std::size_t opaque_count_ = 0;
    bool hides_backs_ = false; // see Facing; never with materials that let through what is behind them

    // Of the prepared picture.
    bool has_highlights_ = false; // see Paint::highlights_apart
    Camera camera_;
    Viewport viewport_{{}};
    bool cull_backs_ = false;
    std::vector<Clip_Point> clip_points_;
    std::vector<std::uint8_t> beyond_;
    Surface_Tints tints_;              // of vertices
    std::vector<std::uint32_t> order_; // triangles as they are drawn: opaque ones, then translucent ones
    Tile_Bins bins_;                   // of places in the order
};

} // namespace vorna::drawing::model
