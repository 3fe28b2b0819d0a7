// A model as a drawing: its faces, edges, lines and points, seen by one camera a frame.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "drawing/job/drawing.h"
#include "drawing/job/model_overlay.h"
#include "drawing/job/studio.h"
#include "drawing/model/camera.h"
#include "drawing/model/edge_renderer.h"
#include "drawing/model/point_renderer.h"
#include "drawing/model/scene.h"

namespace vorna::drawing {

// How a model looks.
struct Model_Look {
    model::Model_Look picture;
    model::Edge_Settings edges;
    model::Edge_Settings lines; // of the model itself
    model::Point_Settings points;
    VT_Reference<const VT_Palette> palette; // that the renderer draws with; null = 32 bits a pixel
};

// What is drawn at once, null where nothing is.
struct Drawn_Parts {
    model::Scene* faces = nullptr;
    model::Edge_Renderer *edges = nullptr, *lines = nullptr;
    model::Point_Renderer* points = nullptr;
    Model_Overlay* overlay = nullptr;
};

// What is drawn of a model. Each part may be missing.
struct Model_Parts {
    std::unique_ptr<model::Scene> faces;
    std::unique_ptr<model::Edge_Renderer> edges, lines;
    std::unique_ptr<model::Point_Renderer> points;
    std::unique_ptr<Model_Overlay> overlay;
    std::unique_ptr<Studio> studio;       // shades the faces; none = they are drawn with their light
    std::vector<VT_Vector> own_positions; // of models with lines or points

    // Shades the faces, if there are any, in the studio look. They must have been made without light.
    void add_studio(const model::Mesh& mesh, const model::Facing& facing, const Module_Choice& module, unsigned threads);
    Drawn_Parts drawn() const { return {faces.get(), edges.get(), lines.get(), points.get(), overlay.get()}; }
    // For fitting a camera; none when there is nothing to draw.
    std::span<const VT_Vector> positions() const;
    std::string summary() const;
};

Drawing_Needs model_needs(const Drawn_Parts& parts, const Model_Look& look, VT_Int_Pair size, std::int32_t enlarged);
void set_model_options(Session& session, const Model_Look& look);
// Prepares and draws parts. enlarged: pixels of the grid for one of the image. The renderer's window is empty and has a depth
// buffer.
void prepare_model(const Drawn_Parts& parts, const Tile_Grid& grid, const model::Camera& camera, const Model_Look& look,
                   std::int32_t enlarged = 1);
void draw_model(const Drawn_Parts& parts, const Model_Look& look, VT_Renderer_Data& renderer, const VT_Rendition& rendition,
                std::size_t tile, const Background& background);

class Model_Drawing final : public Drawing {
public:
    // A single frame.
    Model_Drawing(Model_Parts parts, const Model_Look& look, const model::Camera_Settings& camera);
    // A turntable: the camera of each frame is turned around the axis that points up, through what the camera looks at.
    Model_Drawing(Model_Parts parts, const Model_Look& look, const model::Camera_Settings& camera, std::int32_t frames);

    // Another camera for the first frame, and no other frames.
    void set_camera(const model::Camera_Settings& camera);
    const model::Camera& camera() const noexcept { return cameras_.front(); }

    // How far the model reaches towards the border of each frame, see model::reach_of.
    std::vector<double> reach() const;

    std::string summary() const override { return parts_.summary(); }
    std::int32_t frame_count() const override { return static_cast<std::int32_t>(cameras_.size()); }
    Drawing_Needs needs(VT_Int_Pair size, std::int32_t supersample) const override;
    void visit_places(const std::function<void(double x, double y)>& visit) const override;
    void prepare(const Tile_Grid& grid, std::int32_t supersample, std::int32_t frame) override;
    void set_options(Session& session) const override;
    void set_attributes(VT_Rendition&) const override {}
    void draw(Session& session, const VT_Rendition& rendition, std::size_t tile, const Background& background) const override;

private:
    Model_Look scaled_look(std::int32_t supersample) const;
    // Smaller where a fitted model casts a shadow.
    model::Camera_Settings with_room(model::Camera_Settings settings) const;

    Model_Parts parts_;
    Model_Look look_;
    VT_Vector_D up_; // the direction of the model's space that points up
    std::vector<model::Camera> cameras_;
};

} // namespace vorna::drawing
