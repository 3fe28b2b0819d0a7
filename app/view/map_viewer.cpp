// A map or drawing that the mouse moves.
#include "app/view/map_viewer.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

namespace vorna::app::view {
namespace {

using Clock = std::chrono::steady_clock;

constexpr double smallest_map_zoom = 0.1, largest_map_zoom = 10000;

} // namespace

Map_Viewer::Map_Viewer(const Map_Picture& picture, const Map_Options& options, const drawing::Module_Choice& module,
                       std::string folder, Screen& screen)
    : Picture_Viewer(module, picture.input.name, std::move(folder), 0, screen), picture_(picture), options_(options),
      scene_(load_map_scene(picture_, options_)), middle_(scene_->fitted({1, 1}).middle), antialias_(picture.antialias) {
}

drawing::map::View Map_Viewer::view() const {
    drawing::map::View view = scene_->fitted(size_);
    view.middle = middle_;
    view.scale *= zoom_;
    return view;
}

void Map_Viewer::move(const Place& by) {
    const double scale = view().scale;
    middle_ = {middle_.x - by.x / scale, middle_.y + by.y / scale};
    changed_ = true;
}

// What lies under the pointer stays there.
void Map_Viewer::zoom(double factor, const Place& pointer) {
    const double before = view().scale;
    zoom_ = std::clamp(zoom_ * factor, smallest_map_zoom, largest_map_zoom);
    const double share = 1 / before - 1 / view().scale;
    middle_ = {middle_.x + (pointer.x - size_.x / 2.0) * share, middle_.y + (size_.y / 2.0 - pointer.y) * share};
    changed_ = true;
}

void Map_Viewer::perform(Command command) {
    constexpr double step = 1.25;
    const Place middle{size_.x / 2.0, size_.y / 2.0};
    switch (command) {
    case Command::larger:
        return zoom(step, middle);
    case Command::smaller:
        return zoom(1 / step, middle);
    case Command::home:
        middle_ = scene_->fitted(size_).middle;
        zoom_ = 1;
        break;
    case Command::antialias:
        antialias_ = !antialias_;
        break;
    case Command::palette:
        // Palettes have no translucent colours.
        picture_.colors = picture_.colors == 32 && options_.opacity == 1 ? 8 : 32;
        break;
    default:
        return;
    }
    changed_ = true;
}

void Map_Viewer::establish(Canvas& canvas) {
    picture_.antialias = antialias_ && picture_.colors == 32;
    scene_->look(view());
    scene_->set_up(canvas.session);
}

void Map_Viewer::draw() {
    const auto start = Clock::now();
    establish(canvas_);
    established_ = true;
    paint(canvas_);
    if (shows_help_) {
        VT_Renderer_Data& renderer = canvas_.session.renderer();
        renderer.begin_picture_all();
        draw_help();
        renderer.end_picture_all();
    }
    changed_ = false;
    show();
    time_ = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

std::string Map_Viewer::title() const {
    char zoom[32];
    std::snprintf(zoom, sizeof zoom, ", zoom %.3g", zoom_);
    return file_name() + ": " + scene_->summary() + zoom + (picture_.antialias ? ", smooth" : "") +
           (picture_.colors == 32 ? ", 32 bits" : ", 8 bits") + speed_text();
}

} // namespace vorna::app::view
