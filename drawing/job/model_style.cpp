// What of a model is drawn and how.
#include "drawing/job/model_style.h"

#include <utility>

#include "drawing/job/print_size.h"
#include "drawing/job/studio.h"
#include "drawing/model/mesh_lines.h"
#include "drawing/model/scene_renderer.h"
#include "drawing/model/textured_scene.h"
#include "drawing/model/vectors.h"

namespace vorna::drawing {
namespace {

constexpr VT_RGB32 dark{51, 40, 30, 255}, light{235, 230, 225, 255};

VT_RGB32 contrast_to(VT_RGB32 background) {
    return 3 * background.red + 6 * background.green + background.blue < 1280 ? light : dark;
}

VT_RGB32 middle_of(const Background& background) {
    return background.row_color(1, {0, 0, 0, 3});
}

} // namespace

model::Edge_Settings edge_settings_of(const Model_Style& style, const std::optional<Background>& background, bool smoothed) {
    model::Edge_Settings settings;
    settings.choice = style.edges.value_or(model::Edge_Choice::all);
    settings.culling = style.look.culling;
    settings.over_faces = style.has_faces();
    settings.smoothed = smoothed;
    if (style.edge_color) {
        settings.color = style.edge_color;
    } else if (style.look.shading == model::Shading::hidden_line && background) {
        settings.color = contrast_to(middle_of(*background));
    } else if (style.has_faces()) {
        settings.color = dark;
    }
    return settings;
}

model::Edge_Settings line_settings_of(const Model_Style& style, bool smoothed) {
    model::Edge_Settings settings;
    settings.over_faces = true;
    settings.smoothed = smoothed;
    settings.width = style.line_width;
    return settings;
}

Model_Look look_of(const Model_Style& style, const std::optional<Background>& background, bool smoothed,
                   VT_Reference<const VT_Palette> palette) {
    Model_Look look;
    look.picture = style.look;
    look.edges = edge_settings_of(style, background, smoothed);
    look.lines = line_settings_of(style, smoothed);
    look.points.size = style.point_size;
    look.palette = std::move(palette);
    return look;
}

model::Shading shading_of(const Model_Style& style, const model::Mesh& mesh) {
    if (style.look.shading != model::Shading::automatic) {
        return style.look.shading;
    }
    return !style.color && model::Textured_Scene::has_work(mesh) ? model::Shading::textured : model::Shading::gouraud;
}

std::unique_ptr<model::Scene> make_faces(const model::Mesh& mesh, const model::Facing& facing, const Model_Style& style,
                                         Load_Limits& limits, std::vector<std::string>& warnings) {
    const VT_RGB32 color = style.color.value_or(default_model_color);
    const bool is_numbered = style.look.tint == model::Tint::numbers;
    if (is_numbered || style.look.tint == model::Tint::normals) {
        return std::make_unique<model::Scene_Renderer>(mesh, facing, color, false, is_numbered, limits.threads());
    }
    if (shading_of(style, mesh) == model::Shading::textured && model::Textured_Scene::has_work(mesh)) {
        return std::make_unique<model::Textured_Scene>(mesh, facing, color, !style.color, warnings, limits);
    }
    return std::make_unique<model::Scene_Renderer>(mesh, facing, color, !style.color, false, limits.threads());
}

std::unique_ptr<model::Edge_Renderer> make_edges(const model::Mesh& mesh, const model::Facing& facing, const Model_Style& style,
                                                 unsigned threads) {
    return std::make_unique<model::Edge_Renderer>(mesh, facing, style.color.value_or(default_model_color), !style.color, threads);
}

void add_forms(Model_Parts& parts, const model::Mesh& mesh, const Model_Style& style,
               const std::optional<Background>& background) {
    const VT_RGB32 color = style.color.value_or(default_model_color);
    parts.lines = model::make_line_renderer(mesh, color, !style.color);
    if (!mesh.points.empty()) {
        parts.points = std::make_unique<model::Point_Renderer>(mesh, color, !style.color);
    }
    if (parts.lines || parts.points) {
        parts.own_positions = model::drawn_positions(mesh);
    }
    if (style.axes || style.scale_bar) {
        const Overlay_Settings settings{style.axes, style.scale_bar, background ? contrast_to(background->bottom) : dark};
        parts.overlay = std::make_unique<Model_Overlay>(settings, mesh.radius);
    }
}

Model_Parts make_parts(const model::Mesh& mesh, const Model_Style& style, const std::optional<Background>& background,
                       Load_Limits& limits, std::vector<std::string>& warnings) {
    return make_parts(mesh, model::Facing(mesh, limits.threads()), style, background, limits, warnings);
}

Model_Parts make_parts(const model::Mesh& mesh, const model::Facing& facing, const Model_Style& style,
                       const std::optional<Background>& background, Load_Limits& limits, std::vector<std::string>& warnings) {
    Model_Parts parts;
    add_forms(parts, mesh, style, background);
    if (mesh.triangles.empty()) {
        return parts;
    }
    if (style.has_faces()) {
        parts.faces = make_faces(mesh, facing, style, limits, warnings);
    }
    if (style.has_edges()) {
        parts.edges = make_edges(mesh, facing, style, limits.threads());
    }
    return parts;
}

std::optional<model::Camera_Settings> camera_of_mesh(model::Camera_Settings settings, const model::Mesh& mesh, VT_Int_Pair size) {
    using namespace model;
    settings.aspect = static_cast<double>(size.x) / size.y;
    if (settings.lens) {
        const Lens& lens = *settings.lens;
        settings.half_tangent = size.y / (2 * lens.focal_y);
        settings.aspect *= lens.focal_y / lens.focal_x;
        settings.shift_x = 2 * lens.center_x / size.x - 1;
        settings.shift_y = 1 - 2 * lens.center_y / size.y;
    }
    if (settings.aim) {
        const auto moved = [&mesh](const VT_Vector_D& place) { return (place - mesh.center) * (1 / mesh.radius); };
        Aim aim{moved(settings.aim->eye), moved(settings.aim->target), settings.aim->up};
        if (length(aim.up) == 0) {
            aim.up = up_direction(settings.up);
        }
        if (!is_upright(aim)) {
            return std::nullopt;
        }
        settings.aim = aim;
    }
    return settings;
}

void set_scale(model::Camera_Settings& camera, const Print_Settings& print, const model::Mesh& mesh, VT_Int_Pair size) {
    if (const std::optional<double> scale = scaled_pixels_per_metre(print)) {
        camera.half_height = size.y / (2 * *scale * unit_metres(print).value_or(millimetre) * mesh.radius);
    }
}

} // namespace vorna::drawing
