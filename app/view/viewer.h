// A model that hands turn: what is drawn, and what mouse and keys change about it. Knows no window system.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/model_options.h"
#include "app/scene/mesh.h"
#include "app/session.h"
#include "app/view/camera_moves.h"
#include "app/view/commands.h"
#include "app/view/window.h"

namespace app::view {

class Viewer final : public Controls {
public:
    // folder: for screenshots. Throws what reading, module and options throw.
    Viewer(const Model_Options& options, const Module_Choice& module, std::string folder, Screen& screen);

    void resize(VT_Int_Pair size, std::int32_t letter_scale) override;
    void turn(const Place& by) override;
    void move(const Place& by) override;
    void zoom(double factor, const Place& pointer) override;
    Answer press(char key, bool reversed) override;
    bool has_changed() const override { return changed_; }
    void draw() override;
    bool is_draft() const override { return draft_shown_; }
    void refine() override;
    void show() override;
    std::string title() const override;

private:
    static std::int32_t present(void* viewer, const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right,
                                const VT_Reference<Frame_Buffer>& buffer, std::int32_t x, std::int32_t y);

    void perform(Command command);
    Model_Options drawn_options() const;
    Pose pose() const;
    void set_pose(const Pose& pose);
    void look_from(scene::View side);
    void set_palette(std::size_t choice);
    void next_shading();
    void next_edges();
    // What draws: a session with its window established, and renditions with and without depth test.
    struct Canvas {
        Session session;
        VT_Reference<VT_Rendition> rendition, flat_rendition;

        explicit Canvas(const Module_Choice& module) : session(module) {}
    };
    void establish(Canvas& canvas);
    Drawn_Model& model_for(const Model_Options& options, bool draft);
    void draw_model(Canvas& canvas, bool draft);
    void draw_depths();
    void draw_help();
    std::optional<double> distance_at(const Place& place);
    // A name for a file in the folder that no file has.
    std::string free_name(const std::string& ending);
    void take_screenshot();
    void record();

    Model_Options options_;
    const Model_Options first_options_;
    std::string folder_;
    Screen& screen_;
    const Module_Choice module_;
    Canvas canvas_;
    scene::Mesh mesh_;
    std::vector<VT_Vector> points_; // that triangles use, for fitting cameras
    // Made when they are first drawn: by shading, textured or not, in full and as drafts.
    Drawn_Model plain_, textured_, coarse_;

    VT_Int_Pair size_{1, 1};
    std::int32_t letter_scale_ = 1;
    std::size_t palette_choice_ = 0;
    bool shows_depth_ = false, shows_help_ = false;
    bool established_ = false, changed_ = true, moving_ = false, draft_shown_ = false;
    scene::Camera camera_; // of the last picture
    double full_time_ = 0; // milliseconds that the last picture in full took
    double time_ = 0;      // that the last picture took, until it was shown
    int next_number_ = 1;  // of files
};

} // namespace app::view
