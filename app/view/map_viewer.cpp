// The viewer of maps and drawings.
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

Map_Viewer::Map_Viewer(const Model_Options& options, const Map_Options& map_options, const drawing::Input& input,
                       const drawing::Module_Choice& module, std::string folder, Screen& screen)
    : Base_Viewer(module, input.name, std::move(folder), 0, options.limits->threads(), screen),
      is_opaque_(map_options.opacity == 1), look_{map_background_of(options), options.colors == 8, options.antialias},
      drawing_(load_map_scene(options, map_options, {input}), look_), middle_(drawing_.scene().fitted({1, 1}).middle),
      antialias_(options.antialias) {
}

drawing::map::View Map_Viewer::view() const {
    drawing::map::View view = drawing_.scene().fitted(size_);
    view.middle = middle_;
    view.scale *= zoom_;
    return view;
}

void Map_Viewer::move(const Place& by) {
    const double scale = view().scale;
    middle_ = {middle_.x - by.x / scale, middle_.y + by.y / scale};
    changed_ = true;
}

// The point under the pointer keeps its place.
void Map_Viewer::zoom(double factor, const Place& pointer) {
    const double before = view().scale;
    zoom_ = std::clamp(zoom_ * factor, smallest_map_zoom, largest_map_zoom);
    const double shift = 1 / before - 1 / view().scale; // per pixel
    middle_ = {middle_.x + (pointer.x - size_.x / 2.0) * shift, middle_.y + (size_.y / 2.0 - pointer.y) * shift};
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
        middle_ = drawing_.scene().fitted(size_).middle;
        zoom_ = 1;
        break;
    case Command::antialias:
        antialias_ = !antialias_;
        break;
    case Command::palette:
        // Palettes have no translucent colours.
        look_.indexed = !look_.indexed && is_opaque_;
        break;
    default:
        return;
    }
    changed_ = true;
}

void Map_Viewer::establish(Canvas& canvas) {
    look_.smoothed = antialias_ && !look_.indexed;
    drawing_.set_look(look_);
    drawing_.set_view(view());
    const drawing::Tile_Grid grid({0, size_.x - 1, 0, size_.y - 1});
    drawing_.prepare(grid, 1, 0);
    canvas.rendition = VT_Reference<VT_Rendition>(new VT_Rendition);
    drawing::establish(canvas.session, *canvas.rendition, drawing_, grid, 0);
    frames_.forget_options();
}

void Map_Viewer::draw() {
    const auto start = Clock::now();
    establish(canvas_);
    established_ = true;
    if (!draw_by_threads(drawing_, look_.background)) {
        paint(canvas_);
    }
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
    return file_name() + ": " + drawing_.summary() + zoom + (look_.smoothed ? ", smooth" : "") +
           (look_.indexed ? ", 8 bits" : ", 32 bits") + speed_text();
}

} // namespace vorna::app::view
