// The viewer of models: draws a model and changes camera and options by mouse and keys. Independent of the window system.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/commands/model_options.h"
#include "app/view/base_viewer.h"
#include "app/view/camera_moves.h"
#include "app/view/viewed_model.h"
#include "drawing/model/mesh.h"
#include "drawing/recording/session.h"

namespace vorna::app::view {

// The values of --palette that a window shows.
std::vector<std::string> window_palettes();
// Throws Usage_Error for another value.
void check_window_palette(const Model_Options& options);

class Viewer final : public Base_Viewer {
public:
    // folder: for screenshots and recordings. Throws what reading, module and options throw.
    Viewer(const Model_Options& options, std::vector<drawing::Input> inputs, const drawing::Module_Choice& module,
           std::string folder, Screen& screen);

    void turn(const Place& by) override;
    void move(const Place& by) override;
    void zoom(double factor, const Place& pointer) override;
    void draw() override;
    bool is_draft() const override { return draft_shown_; }
    void refine() override;
    std::string title() const override;

private:
    void perform(Command command) override;
    void establish(Canvas& canvas) override;
    void paint(Canvas& canvas) override;
    std::string command_for(const std::string& image) const override;
    Model_Options drawn_options() const;
    Pose pose() const;
    void set_pose(const Pose& pose);
    void look_from(drawing::model::View side);
    void set_palette(std::size_t choice);
    drawing::model::Shading shading() const; // never automatic
    void next_shading();
    void next_edges();
    drawing::Model_Parts& model_for(const Model_Options& options, bool draft);
    // Makes the viewed model what the next picture shows.
    void look_at_model(bool draft);
    void draw_model(Canvas& canvas);
    void draw_depths();
    std::optional<double> distance_at(const Place& place);
    Model_Options options_;
    const Model_Options first_options_;
    drawing::model::Mesh mesh_;
    std::vector<VT_Vector> positions_; // the positions that are drawn, for fitting cameras
    // Created when they are first drawn: for shading without and with textures, and for drafts.
    drawing::Model_Parts plain_, textured_, coarse_;
    drawing::Model_Parts forms_; // lines and points, which are never coarse
    Viewed_Model viewed_;

    std::size_t palette_choice_ = 0;
    bool shows_depth_ = false, moving_ = false, draft_shown_ = false;
    drawing::model::Camera camera_; // of the last picture
    double full_time_ = 0;          // milliseconds for the last picture that was not a draft
};

} // namespace vorna::app::view
