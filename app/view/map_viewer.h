// The viewer of maps and drawings. Independent of the window system.
#pragma once

#include "app/commands/map_options.h"
#include "app/view/base_viewer.h"
#include "drawing/job/map_drawing.h"

namespace vorna::app::view {

class Map_Viewer final : public Base_Viewer {
public:
    // Throws what reading, module and options throw.
    Map_Viewer(const Model_Options& options, const Map_Options& map_options, const drawing::Input& input,
               const drawing::Module_Choice& module, std::string folder, Screen& screen);

    void turn(const Place& by) override { move(by); }
    void move(const Place& by) override;
    void zoom(double factor, const Place& pointer) override;
    void draw() override;
    bool is_draft() const override { return false; }
    void refine() override {}
    std::string title() const override;

private:
    void perform(Command command) override;
    void establish(Canvas& canvas) override;
    void paint(Canvas& canvas) override {
        drawing::draw_picture(canvas.session, *canvas.rendition, drawing_, 0, look_.background);
    }
    std::string command_for(const std::string& /*image*/) const override { return {}; }
    std::vector<std::string> help() const override { return map_help_lines(); }
    drawing::map::View view() const;

    const bool is_opaque_;
    drawing::Map_Look look_;
    drawing::Map_Drawing drawing_;
    drawing::map::Position middle_; // of the window, on the projection's plane
    double zoom_ = 1;               // 1: the whole drawing fits the window
    bool antialias_ = false;
};

} // namespace vorna::app::view
