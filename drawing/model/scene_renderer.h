// Draws a model through a renderer: transforms and lights its vertices, clips what crosses the view volume, and draws strips.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "drawing/files/long_list.h"
#include "drawing/model/camera.h"
#include "drawing/model/clipper.h"
#include "drawing/model/facing.h"
#include "drawing/model/lighting.h"
#include "drawing/model/mesh.h"
#include "drawing/model/place_blocks.h"
#include "drawing/model/projected_points.h"
#include "drawing/model/scene.h"
#include "drawing/model/strips.h"
#include "drawing/model/surface_tints.h"
#include "drawing/model/viewport.h"

namespace vorna::drawing::model {

// Numbers as colours: red is the high byte of 24 bits, and alpha has the others, so that small numbers are opaque.
constexpr VT_RGB32 color_of_number(std::uint32_t number) noexcept {
    return color_of(number ^ 0xFF000000U);
}
constexpr std::uint32_t number_of_color(VT_RGB32 color) noexcept {
    return word_of(color) ^ 0xFF000000U;
}

// The order in which triangles are drawn, which decides between equal depths.
enum class Triangle_Order {
    strips, // of strips, those that are seen from behind first
    mesh,   // of the mesh
};

class Scene_Renderer final : public Scene {
public:
    // base_color: of vertices without a colour of their own; of all with own_colors off. numbered: whether draw_numbers is
    // called. facing: of the mesh. threads: of the constructor and of prepare; the result does not depend on their number.
    Scene_Renderer(const Mesh& mesh, const Facing& facing, VT_RGB32 base_color, bool own_colors, bool numbered = false,
                   unsigned threads = 1, Triangle_Order order = Triangle_Order::strips);

    const std::vector<VT_Vector>& points() const noexcept override { return points_; }
    std::size_t triangle_count() const noexcept override { return triangle_count_; }
    std::size_t strip_count() const noexcept { return strip_starts_.size() - 1; }
    std::string summary() const override;

    void prepare(const Tile_Grid& grid, const Camera& camera, const Model_Look& settings) override;
    void draw(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::size_t tile) const override;
    // Draws each triangle of the prepared picture in the colour of 1 + its number in the mesh.
    void draw_numbers(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::size_t tile) const;
    std::uint64_t prepared_memory() const noexcept override { return 40 * points_.size() + 24 * strip_vertices_.size(); }

private:
    // The colours of faces or of vertices.
    struct Painting {
        bool flat, unlit;
        const std::vector<VT_RGB32>&front, &back; // by vertex, or by place in flat shading
    };
    // How a triangle is drawn. Clipped ones cross the view volume.
    enum class Manner : std::uint8_t { back, clipped_back, front, clipped_front, hidden };
    static bool is_back(Manner manner) noexcept { return manner <= Manner::clipped_back; }
    static bool is_clipped(Manner manner) noexcept { return manner == Manner::clipped_back || manner == Manner::clipped_front; }
    // Triangles of one strip and one manner, by the places where they begin.
    struct Run {
        std::uint32_t first, triangles;
        Manner manner;
    };
    // Runs that are drawn one after the other. Tiles draw groups of them, each of the runs of one block.
    struct Layer {
        struct Group {
            std::uint32_t first; // run; the last group has none
            bool lies_in_one_tile = false;
        };

        std::vector<Run> runs;
        std::vector<Group> groups;
        Tile_Bins bins; // of the groups
    };
    // What the strips of some blocks are cut into.
    struct Part {
        Layer backs, fronts;
        // By place and by block, while the strips are cut.
        std::vector<std::uint8_t> facing;
        std::vector<Extent> extents;
    };
    class Drawing;

    void lay_out(const Mesh& mesh, const Facing& facing, const Strips& strips, unsigned threads);
    Manner manner_of(std::size_t place, bool front) const noexcept;
    std::size_t first_block_of(std::size_t part) const;
    void cut_blocks(std::size_t first_block, std::size_t end_block, const Tile_Grid& grid, Part& part) const;
    void cut_strip(std::size_t first, std::size_t end, const std::uint8_t* facing, Part& part) const;
    Painting painting() const noexcept {
        return numbers_only_ ? number_painting() : Painting{flat_, unlit_, tints_.front, tints_.back};
    }
    Painting number_painting() const noexcept { return {true, false, numbers_, numbers_}; }
    Clip_Polygon clipped(std::size_t place, const Painting& painting) const;
    void draw_as(const Painting& painting, VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::size_t tile) const;
    VT_DCI_Point device_point(const Clip_Vertex& vertex, std::size_t place) const;

    // Vertices in the order in which strips first use them.
    std::vector<VT_Vector> points_;
    Vector_Columns positions_;
    Surfaces vertices_;
    // By place in the strips: the vertex, and the face that begins there.
    Long_List<std::uint32_t> strip_vertices_, strip_starts_;
    Surfaces faces_;
    Place_Blocks blocks_;
    std::vector<VT_RGB32> numbers_; // by place, see draw_numbers
    std::size_t triangle_count_ = 0;
    unsigned threads_;
    Triangle_Order order_;
    bool hides_backs_ = false;

    // Of the prepared picture.
    Camera camera_;
    Viewport viewport_{{}};
    std::optional<Tile_Grid> grid_; // none = a single tile
    bool flat_ = false, unlit_ = false, numbers_only_ = false, cull_backs_ = false;
    Projected_Points projection_; // of vertices
    Surface_Tints tints_;         // see Painting
    std::vector<Part> parts_;     // in the order of the blocks
};

} // namespace vorna::drawing::model
