// A map or drawing that the mouse moves. Knows no window system.
#pragma once

#include "app/commands/map_scene.h"
#include "app/view/picture_viewer.h"

namespace vorna::app::view {

class Map_Viewer final : public Picture_Viewer {
public:
    // The picture's size is the window's. Throws what reading, module and options throw.
    Map_Viewer(const Map_Picture& picture, const Map_Options& options, const drawing::Module_Choice& module, std::string folder,
               Screen& screen);

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
    void paint(Canvas& canvas) override { scene_->draw(canvas.session, picture_.background); }
    std::string command_for(const std::string& /*image*/) const override { return {}; }
    std::vector<std::string> help() const override { return map_help_lines(); }
    drawing::map::View view() const;

    Map_Picture picture_;
    const Map_Options options_;
    std::unique_ptr<Map_Scene> scene_;
    drawing::map::Position middle_; // of the window, on the projection's plane
    double zoom_ = 1;               // 1: everything fills the window
    bool antialias_ = false;
};

} // namespace vorna::app::view
