// The studio look of a model: ambient occlusion, outlines, soft light and a shadow on the ground, made of several pictures of
// each tile.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "drawing/image/background.h"
#include "drawing/image/studio_shading.h"
#include "drawing/model/camera.h"
#include "drawing/model/mesh.h"
#include "drawing/model/model_look.h"
#include "drawing/model/scene_renderer.h"
#include "drawing/model/studio_view.h"
#include "drawing/recording/session.h"
#include "host/rendition.h"

namespace vorna::drawing {

// Throws Usage_Error for a mesh with more triangles than colours of 24 bits can number.
void check_countable(const model::Mesh& mesh);

class Studio {
public:
    // The mesh may be gone afterwards. module: draws the picture for the ground's shadow. Throws as check_countable does.
    Studio(const model::Mesh& mesh, const model::Facing& facing, const Module_Choice& module, unsigned threads = 1);

    // Columns and rows that tiles need around them, see Tile_Grid. supersample, height: of the image.
    static std::int32_t tile_margin(std::int32_t height, std::int32_t supersample);
    std::uint64_t prepared_memory() const noexcept;

    // up: the direction of the model's space that points up, of length 1.
    void prepare(const model::Tile_Grid& grid, const model::Camera& camera, const model::Model_Look& look, const VT_Vector_D& up,
                 std::int32_t supersample);
    // Draws a tile of the prepared frame over the background. faces: the model without light, prepared for the same camera and
    // grid.
    void draw(const model::Scene& faces, Session& session, const VT_Rendition& rendition, std::size_t tile,
              const Background& background);

private:
    Studio_Ground ground_seen(const model::Tile_Grid& grid, const model::Camera& camera, const model::Model_Look& look,
                              const VT_Vector_D& up);
    std::unique_ptr<Studio_Planes> lend_planes();
    void give_back(std::unique_ptr<Studio_Planes> planes);

    model::Scene_Renderer geometry_;
    model::Studio_Faces faces_;
    Module_Choice module_;
    std::unique_ptr<Session> ground_session_; // made for the first frame
    // Of the prepared frame.
    std::optional<Studio_Lights> lights_;
    std::optional<Studio_Shading> shading_;
    std::optional<model::Tile_Grid> grid_;
    // Planes that no thread uses.
    std::mutex mutex_;
    std::vector<std::unique_ptr<Studio_Planes>> planes_;
};

} // namespace vorna::drawing
