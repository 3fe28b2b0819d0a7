// What a viewer shows of a model, as a drawing.
#pragma once

#include <string>
#include <utility>

#include "drawing/job/model_drawing.h"

namespace vorna::app::view {

class Viewed_Model final : public drawing::Drawing {
public:
    // The parts must outlive what is drawn of them.
    void set(const drawing::Drawn_Parts& parts, drawing::Model_Look look, const drawing::model::Camera& camera) {
        parts_ = parts;
        look_ = std::move(look);
        camera_ = camera;
    }

    std::string summary() const override { return {}; }
    drawing::Drawing_Needs needs(VT_Int_Pair size, std::int32_t supersample) const override {
        return drawing::model_needs(parts_, look_, size, supersample);
    }
    void prepare(const drawing::Tile_Grid& grid, std::int32_t supersample, std::int32_t /*frame*/) override {
        drawing::prepare_model(parts_, grid, camera_, look_, supersample);
    }
    void set_options(drawing::Session& session) const override { drawing::set_model_options(session, look_); }
    void set_attributes(VT_Rendition&) const override {}
    void draw(drawing::Session& session, const VT_Rendition& rendition, std::size_t tile,
              const drawing::Background& background) const override {
        drawing::draw_model(parts_, look_, session.renderer(), rendition, tile, background);
    }

private:
    drawing::Drawn_Parts parts_;
    drawing::Model_Look look_;
    drawing::model::Camera camera_;
};

} // namespace vorna::app::view
