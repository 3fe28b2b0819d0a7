// A model as a drawing: its faces, its edges or both, seen by one camera a frame.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "drawing/job/drawing.h"
#include "drawing/job/studio.h"
#include "drawing/model/camera.h"
#include "drawing/model/edge_renderer.h"
#include "drawing/model/scene.h"

namespace vorna::drawing {

// How a model looks.
struct Model_Look {
    model::Model_Look picture;
    model::Edge_Settings edges;
    VT_Reference<const VT_Palette> palette; // that the renderer draws with; null = 32 bits a pixel
};

// What is drawn of a model. Each part may be missing.
struct Model_Parts {
    std::unique_ptr<model::Scene> faces;
    std::unique_ptr<model::Edge_Renderer> edges;
    std::unique_ptr<Studio> studio; // shades the faces; none = they are drawn with their light

    // Shades the faces, if there are any, in the studio look. They must have been made without light.
    void add_studio(const model::Mesh& mesh, const Module_Choice& module);
    // For fitting a camera; none when there is nothing to draw.
    std::span<const VT_Vector> points() const;
    std::string summary() const;
};

// Prepares and draws faces and edges, of which either may be null. The renderer's window is empty and has a depth buffer.
void prepare_model(model::Scene* faces, model::Edge_Renderer* edges, const Tile_Grid& grid, const model::Camera& camera,
                   const Model_Look& look);
void draw_model(const model::Scene* faces, const model::Edge_Renderer* edges, const Model_Look& look, VT_Renderer_Data& renderer,
                const VT_Rendition& rendition, std::size_t tile);

class Model_Drawing final : public Drawing {
public:
    // A single frame.
    Model_Drawing(Model_Parts parts, const Model_Look& look, const model::Camera_Settings& camera);
    // A turntable: the camera of each frame is turned around the axis that points up, through what the camera looks at.
    Model_Drawing(Model_Parts parts, const Model_Look& look, const model::Camera_Settings& camera, std::int32_t frames);

    // How far the model reaches towards the border of each frame, see model::reach_of.
    std::vector<double> reach() const;

    std::string summary() const override { return parts_.summary(); }
    std::int32_t frame_count() const override { return static_cast<std::int32_t>(cameras_.size()); }
    Drawing_Needs needs(VT_Int_Pair size, std::int32_t supersample) const override;
    void prepare(const Tile_Grid& grid, std::int32_t supersample, std::int32_t frame) override;
    void set_options(Session& session) const override;
    void set_attributes(VT_Rendition&) const override {}
    void draw(Session& session, const VT_Rendition& rendition, std::size_t tile) const override;

private:
    Model_Look scaled_look(std::int32_t supersample) const;

    Model_Parts parts_;
    Model_Look look_;
    VT_Vector_D up_; // the direction of the model's space that points up
    std::vector<model::Camera> cameras_;
};

} // namespace vorna::drawing
