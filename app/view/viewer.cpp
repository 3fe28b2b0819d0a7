// The viewer of models.
#include "app/view/viewer.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <numbers>
#include <utility>

#include "app/view/coarse_mesh.h"
#include "drawing/image/blank_check.h"
#include "drawing/model/model_reader.h"
#include "drawing/model/textured_scene.h"
#include "drawing/model/vectors.h"
#include "host/rendition.h"
#include "vorna/draw.h"

namespace vorna::app::view {
namespace {

using Clock = std::chrono::steady_clock;

// In milliseconds. While the camera moves, models that take longer are drawn as coarse meshes.
constexpr double draft_limit = 40;
constexpr std::size_t coarse_triangles = 100000;

// The pixel formats and palettes that the palette key cycles through.
struct Pixel_Kind {
    std::string name;
    int colors;
    std::string palette;
};

const std::array<Pixel_Kind, 4> pixel_kinds{
    {{"32 bits", 32, ""}, {"8 bits", 8, ""}, {"8 bits, 8 x 8 x 4 colours", 8, "8x8x4"}, {"8 bits, 8 colours", 8, "2x2x2"}}};

// The index of the options' pixel kind.
std::size_t pixel_kind_of(const Model_Options& options) {
    const std::string palette = options.palette == "cube" ? "" : options.palette;
    const bool indexed = draws_indices(options);
    const auto found = std::ranges::find_if(
        pixel_kinds, [&](const Pixel_Kind& kind) { return kind.palette == palette && (kind.colors == 8) == indexed; });
    if (found == pixel_kinds.end()) {
        throw drawing::Usage_Error("--palette: expected " + list_of(window_palettes()) + " in a window, found '" + palette + "'");
    }
    return static_cast<std::size_t>(found - pixel_kinds.begin());
}

} // namespace

std::vector<std::string> window_palettes() {
    std::vector<std::string> names;
    for (const Pixel_Kind& kind : pixel_kinds) {
        if (kind.colors == 8) {
            names.push_back(kind.palette.empty() ? "cube" : kind.palette);
        }
    }
    return names;
}

void check_window_palette(const Model_Options& options) {
    pixel_kind_of(options);
}

Viewer::Viewer(const Model_Options& options, std::vector<drawing::Input> inputs, const drawing::Module_Choice& module,
               std::string folder, Screen& screen)
    : Base_Viewer(module, options.models.front() == "-" ? "model" : options.models.front(), std::move(folder), window_margin,
                  options.limits->threads(), screen),
      options_(options), first_options_(options), mesh_(load_mesh(options, std::move(inputs))) {
    set_palette(pixel_kind_of(options));
    look_of(options_, !mesh_.lines.empty());
    camera_settings_of(options_, mesh_, size_);
    positions_ = drawing::model::drawn_positions(mesh_);
    drawing::add_forms(forms_, mesh_, style_of(options_), background_of(options_));
}

// A drag across the window's height turns the camera by half a turn.
void Viewer::turn(const Place& by) {
    const double angle = std::numbers::pi / size_.y;
    set_pose(turned(pose(), drawing::model::up_direction(options_.camera.up), -by.x * angle, by.y * angle));
}

void Viewer::move(const Place& by) {
    set_pose(moved(pose(), size_, by));
}

// When zooming in, the surface point under the pointer keeps its place.
void Viewer::zoom(double factor, const Place& pointer) {
    Pose pose = this->pose();
    if (const auto distance = factor > 1 ? distance_at(pointer) : std::nullopt) {
        pose = focused(pose,
                       options_.orthographic ? drawing::model::Projection::orthographic : drawing::model::Projection::perspective,
                       *distance);
    }
    set_pose(zoomed(pose, size_, factor, pointer));
}

void Viewer::perform(Command command) {
    constexpr double step = 1.25;
    const Place middle{size_.x / 2.0, size_.y / 2.0};
    changed_ = true;
    moving_ = false;
    switch (command) {
    case Command::front:
        return look_from(drawing::model::View::front);
    case Command::back:
        return look_from(drawing::model::View::back);
    case Command::right:
        return look_from(drawing::model::View::right);
    case Command::left:
        return look_from(drawing::model::View::left);
    case Command::top:
        return look_from(drawing::model::View::top);
    case Command::bottom:
        return look_from(drawing::model::View::bottom);
    case Command::projection:
        options_.orthographic = !options_.orthographic;
        return;
    case Command::shading:
        return next_shading();
    case Command::edges:
        return next_edges();
    case Command::antialias:
        options_.antialias = !options_.antialias;
        return;
    case Command::palette:
        return set_palette((palette_choice_ + 1) % pixel_kinds.size());
    case Command::depth:
        shows_depth_ = !shows_depth_;
        return;
    case Command::larger:
        return zoom(step, middle);
    case Command::smaller:
        return zoom(1 / step, middle);
    case Command::home:
        options_.camera = first_options_.camera;
        options_.aim = first_options_.aim;
        options_.orthographic = first_options_.orthographic;
        return;
    default:
        return;
    }
}

void Viewer::look_from(drawing::model::View side) {
    options_.camera.view = side;
    options_.camera.zoom = 1;
    options_.aim.reset();
}

drawing::model::Shading Viewer::shading() const {
    return drawing::shading_of(style_of(options_), mesh_);
}

void Viewer::next_shading() {
    using drawing::model::Shading;
    const bool has_textures = drawing::model::Textured_Scene::has_work(mesh_);
    const std::array<Shading, 5> all{Shading::gouraud, Shading::flat, Shading::textured, Shading::wireframe,
                                     Shading::hidden_line};
    auto next = std::ranges::find(all, shading()) + 1;
    next += next != all.end() && *next == Shading::textured && !has_textures;
    options_.picture.shading = next == all.end() ? all.front() : *next;
}

void Viewer::next_edges() {
    options_.edges = options_.edges.empty() ? "all" : options_.edges == "all" ? "feature" : "";
}

void Viewer::set_palette(std::size_t choice) {
    palette_choice_ = choice;
    options_.colors = pixel_kinds[choice].colors;
    options_.palette = pixel_kinds[choice].palette;
    established_ = false;
    frames_.forget_options();
}

// The options without those that have no effect now: only edges and lines can be smoothed, and only in 32 bits.
Model_Options Viewer::drawn_options() const {
    Model_Options options = options_;
    options.antialias = options.antialias && (options.has_edges() || !mesh_.lines.empty()) && options.colors == 32;
    if (!options.has_edges()) {
        options.edge_color.clear();
    }
    return options;
}

// In the file's coordinates, which the command line uses, so that a command can draw the same image.
Pose Viewer::pose() const {
    Pose pose{{}, options_.camera.zoom, camera_settings_of(options_, mesh_, size_).half_tangent};
    if (options_.aim) {
        pose.aim = *options_.aim;
        if (drawing::model::length(pose.aim.up) == 0) {
            pose.aim.up = drawing::model::up_direction(options_.camera.up);
        }
    } else {
        using drawing::model::operator+, drawing::model::operator*;
        const drawing::model::Aim fitted = drawing::model::fitted_aim(camera_settings_of(options_, mesh_, size_), positions_);
        const auto in_file = [this](const VT_Vector_D& place) { return mesh_.center + place * mesh_.radius; };
        pose.aim = {in_file(fitted.eye), in_file(fitted.target), fitted.up};
    }
    return pose;
}

void Viewer::set_pose(const Pose& pose) {
    options_.aim = pose.aim;
    options_.camera.zoom = std::clamp(pose.zoom, smallest_zoom, largest_zoom);
    changed_ = true;
    moving_ = true;
}

// The distance from the eye to the surface at a place of the last picture; none on the background.
std::optional<double> Viewer::distance_at(const Place& place) {
    if (changed_ || !established_ || !(place.x >= 0 && place.x < size_.x && place.y >= 0 && place.y < size_.y)) {
        return std::nullopt;
    }
    const VT_DCI_Point pixel{static_cast<std::int32_t>(place.x), size_.y - 1 - static_cast<std::int32_t>(place.y), 0};
    const Buffer_Format format = Buffer_Format::depth16;
    std::uint16_t depth = 0xFFFF;
    VT_Reference<VT_Shared_Image> image;
    if (shared_grid_) {
        depth = frames_.depth_at(viewed_, *shared_grid_, background_of(drawn_options()), {pixel.x, pixel.y});
    } else {
        VD_Read_Depth_Image(canvas_.session.renderer(), *canvas_.rendition, &pixel, &pixel, &format, image);
    }
    if (image) {
        std::memcpy(&depth, image->row(0), sizeof depth);
    }
    if (depth == 0xFFFF) {
        return std::nullopt;
    }
    // z / w = depth, both of them linear in the way towards the viewer.
    const auto along = [this](const double(&row)[4]) { return drawing::model::dot({row[0], row[1], row[2]}, camera_.toward); };
    const double d = depth / 65535.0;
    const auto& m = camera_.clip_from_model.m;
    const double along_view = (d * m[3][3] - m[2][3]) / (along(m[2]) - d * along(m[3]));
    using drawing::model::operator-, drawing::model::operator*;
    const VT_Vector_D eye = (pose().aim.eye - mesh_.center) * (1 / mesh_.radius);
    const double distance = drawing::model::dot(camera_.toward, eye) - along_view;
    return distance > 1e-6 ? std::optional(distance * mesh_.radius) : std::nullopt;
}

void Viewer::establish(Canvas& canvas) {
    auto& [session, rendition, flat_rendition] = canvas;
    session.options().set_window_size({size_.x + window_margin, size_.y + window_margin});
    const VT_Reference<const VT_Palette> palette = palette_of(options_).drawn;
    session.options().set_color_system(palette ? 0 : 1);
    if (palette) {
        session.options().set_palette(palette);
    }
    session.options().set_alpha_blending(palette.get() != nullptr); // as images of models are drawn
    session.options().set_buffer_depth(16);
    session.establish();
    rendition = VT_Reference<VT_Rendition>(new VT_Rendition);
    rendition->clip.hard_clip = session.window();
    rendition->window.rectangle = session.window();
    flat_rendition = VT_Reference<VT_Rendition>(new VT_Rendition(*rendition));
    flat_rendition->clip.depth_test = false;
}

drawing::Model_Parts& Viewer::model_for(const Model_Options& options, bool draft) {
    const drawing::model::Shading shading = this->shading();
    drawing::Model_Parts& model = draft ? coarse_ : shading == drawing::model::Shading::textured ? textured_ : plain_;
    const bool has_triangles = !mesh_.triangles.empty();
    const bool needs_faces = has_triangles && options.has_faces() && !model.faces;
    const bool needs_edges = has_triangles && options.has_edges() && !model.edges;
    if (needs_faces || needs_edges) {
        const drawing::model::Mesh coarse = draft ? coarse_mesh(mesh_, coarse_triangles) : drawing::model::Mesh();
        const drawing::model::Mesh& mesh = draft ? coarse : mesh_;
        if (needs_faces) {
            model.faces = make_faces(options, mesh);
        }
        if (needs_edges) {
            const drawing::model::Facing facing(mesh, options.limits->threads());
            model.edges = drawing::make_edges(mesh, facing, style_of(options), options.limits->threads());
        }
    }
    return model;
}

void Viewer::look_at_model(bool draft) {
    Model_Options options = drawn_options();
    if (draft) {
        // A coarse mesh has other edges than the model, so drafts show none over faces.
        options.antialias = false;
        options.edges.clear();
        if (!options.has_edges()) {
            options.edge_color.clear();
        }
    }
    const drawing::Model_Parts& model = model_for(options, draft);
    camera_ = drawing::model::fit_camera(camera_settings_of(options, mesh_, size_), positions_);
    drawing::Model_Look look = look_of(options, !mesh_.lines.empty(), palette_of(options_).drawn);
    const drawing::Drawn_Parts parts{.faces = options.has_faces() ? model.faces.get() : nullptr,
                                     .edges = options.has_edges() ? model.edges.get() : nullptr,
                                     .lines = forms_.lines.get(),
                                     .points = forms_.points.get(),
                                     .overlay = forms_.overlay.get()};
    viewed_.set(parts, std::move(look), camera_);
}

void Viewer::draw_model(Canvas& canvas) {
    viewed_.prepare(drawing::Tile_Grid(canvas.session.window()), 1, 0);
    const drawing::Background background = background_of(drawn_options());
    drawing::paint_background(canvas.session.renderer(), *canvas.rendition, background);
    viewed_.draw(canvas.session, *canvas.rendition, 0, background);
}

// Tiles of the last frame cannot be drawn again afterwards: the parts are prepared for one tile.
void Viewer::paint(Canvas& canvas) {
    look_at_model(false);
    canvas.session.renderer().begin_picture_all();
    draw_model(canvas);
    canvas.session.renderer().end_picture_all();
    changed_ = changed_ || shared_grid_;
}

// Shows depths as grey: the nearest is white, the farthest nearly black.
void Viewer::draw_depths() {
    const VT_Reference<VT_Shared_Image> depths = canvas_.session.read_depth();
    const std::int32_t width = depths->width(), height = depths->height();
    const auto row_of = [&](std::int32_t r) { return reinterpret_cast<const std::uint16_t*>(depths->row(r)); };
    std::int32_t nearest = 0xFFFF, farthest = 0;
    for (std::int32_t r = 0; r < height; ++r) {
        for (std::int32_t x = 0; x < width; ++x) {
            if (const std::uint16_t depth = row_of(r)[x]; depth != 0xFFFF) {
                nearest = std::min<std::int32_t>(nearest, depth);
                farthest = std::max<std::int32_t>(farthest, depth);
            }
        }
    }
    const std::int32_t range = std::max(farthest - nearest, 1);
    VT_Shared_Image image(width, height, Buffer_Format::rgb32, 4 * width, nullptr, false, depths->bottom_up());
    for (std::int32_t r = 0; r < height; ++r) {
        auto* pixels = reinterpret_cast<VT_RGB32*>(image.row(r));
        for (std::int32_t x = 0; x < width; ++x) {
            const std::int32_t depth = row_of(r)[x];
            const auto grey = static_cast<std::uint8_t>(255 - 215 * std::clamp(depth - nearest, 0, range) / range);
            pixels[x] = depth == 0xFFFF ? VT_RGB32{255, 255, 255, 255} : VT_RGB32{grey, grey, grey, 255};
        }
    }
    const VT_Int_Rectangle window = canvas_.session.window();
    const VT_DCI_Point start{window.left, window.top, 0};
    VD_Draw_DCI_Image(canvas_.session.renderer(), *canvas_.flat_rendition, &start, &image);
}

void Viewer::draw() {
    const auto start = Clock::now();
    const auto elapsed = [start] { return std::chrono::duration<double, std::milli>(Clock::now() - start).count(); };
    if (!established_) {
        establish(canvas_);
        established_ = true;
    }
    const bool draft = moving_ && full_time_ > draft_limit && mesh_.triangle_count() > coarse_triangles &&
                       shading() != drawing::model::Shading::textured;
    VT_Renderer_Data& renderer = canvas_.session.renderer();
    renderer.begin_picture_all();
    look_at_model(draft);
    shared_grid_.reset();
    if (shows_depth_ || !draw_by_threads(viewed_, background_of(drawn_options()))) {
        draw_model(canvas_);
    }
    if (!draft) {
        full_time_ = elapsed();
    }
    if (shows_depth_) {
        draw_depths();
    }
    if (shows_help_) {
        draw_help();
    }
    renderer.end_picture_all();
    changed_ = moving_ = false;
    draft_shown_ = draft;
    show();
    time_ = elapsed();
}

void Viewer::refine() {
    changed_ = changed_ || draft_shown_;
    moving_ = false;
}

std::string Viewer::command_for(const std::string& image) const {
    if (shows_depth_) {
        return {};
    }
    std::string line = "vorna render";
    for (const std::string& word : arguments_of(drawn_options())) {
        line += " " + shell_word(word);
    }
    const VT_Int_Rectangle window = canvas_.session.window();
    const VT_Reference<const VT_Palette> palette = palette_of(options_).drawn;
    drawing::Blank_Check check(background_of(options_), window, palette.get());
    check.add(shown(), window.top - window_margin);
    line += check.is_blank() ? " --allow-empty" : "";
    return line + " --size=" + std::to_string(size_.x) + "x" + std::to_string(size_.y) + " --supersample=1 -o " +
           shell_word(image);
}

std::string Viewer::title() const {
    const Model_Options options = drawn_options();
    std::string text = file_name();
    text += options.models.size() > 1 ? " and others" : "";
    text += ": ";
    const auto add_count = [&text](std::size_t count, const char* what) { text += count > 0 ? with_commas(count) + what : ""; };
    add_count(mesh_.triangle_count(), " triangles, ");
    add_count(mesh_.line_count(), " lines, ");
    add_count(mesh_.points.size(), " points, ");
    constexpr const char* shadings[] = {"flat", "gouraud", "textured", "wireframe", "hidden-line"};
    text += shows_depth_ ? "depth buffer" : shadings[static_cast<int>(shading())];
    if (!options.edges.empty() && options.has_faces()) {
        text += options.edges == "all" ? ", edges" : ", feature edges";
    }
    text += options.antialias ? ", smooth" : "";
    text += options.orthographic ? ", parallel" : "";
    text += ", " + pixel_kinds[palette_choice_].name;
    return text + speed_text() + (draft_shown_ ? ", coarse" : "");
}

} // namespace vorna::app::view
