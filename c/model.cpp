// Models: files and arrays, and their images.
#include <cstring>
#include <optional>

#include "c/call.h"
#include "c/handles.h"
#include "c/reading.h"
#include "c/rendering.h"
#include "drawing/drawing.h"
#include "vorna/c_model.h"

namespace vorna::c {

using namespace drawing::model;

namespace {

const vorna_view& default_view() noexcept {
    static const vorna_view view = [] {
        const drawing::Model_View usual;
        vorna_view made{};
        made.struct_size = sizeof made;
        made.shading = VORNA_AUTOMATIC;
        made.light = {usual.look.light.x, usual.look.light.y, usual.look.light.z};
        made.specular = usual.look.specular;
        made.line_width = usual.line_width;
        made.point_size = usual.point_size;
        made.view = VORNA_ISO;
        made.zoom = usual.camera.zoom;
        return made;
    }();
    return view;
}

// A value of an enumeration whose numbers are those of the C interface.
template <class Enumeration> Enumeration choice(const char* name, std::int32_t value, Enumeration last) {
    require_range(name, value, 0, static_cast<std::int32_t>(last));
    return static_cast<Enumeration>(value);
}
static_assert(static_cast<int>(Shading::automatic) == VORNA_AUTOMATIC && static_cast<int>(Shading::flat) == VORNA_FLAT);
static_assert(static_cast<int>(View::iso) == VORNA_ISO && static_cast<int>(View::front) == VORNA_FRONT);
static_assert(static_cast<int>(Up_Axis::minus_x) == VORNA_MINUS_X_UP && static_cast<int>(Up_Axis::y) == VORNA_Y_UP);
static_assert(static_cast<int>(Tint::normals) == VORNA_NORMALS && static_cast<int>(Tint::lit) == VORNA_LIT);

VT_Vector_D vector_of(const char* name, const vorna_point_d& point) {
    require_finite(name, point.x);
    require_finite(name, point.y);
    require_finite(name, point.z);
    return {point.x, point.y, point.z};
}

VORNA_SETTINGS_END(vorna_view, upward);
VORNA_SETTINGS_END(vorna_mesh, section);

const vorna_image_settings& default_image_settings() noexcept {
    static const vorna_image_settings settings = [] {
        const drawing::Image_Settings usual;
        vorna_image_settings made{};
        made.struct_size = sizeof made;
        made.width = usual.size.x;
        made.height = usual.size.y;
        made.background = c_color(usual.background);
        made.max_memory = usual.max_memory;
        return made;
    }();
    return settings;
}

VORNA_SETTINGS_END(vorna_image_settings, unit);

template <class Element, class Given> std::vector<Element> list_of(const char* name, const Given* given, std::size_t count) {
    static_assert(sizeof(Element) == sizeof(Given));
    require_list(given, count, name);
    std::vector<Element> list(count);
    if (count > 0) {
        std::memcpy(static_cast<void*>(list.data()), given, count * sizeof(Element));
    }
    return list;
}

// Of lists that may be missing.
template <class Element, class Given> std::vector<Element> list_or_none(const Given* given, std::size_t count) {
    return given ? list_of<Element>("", given, count) : std::vector<Element>();
}

Mesh mesh_of(const vorna_mesh& given) {
    require_range<std::size_t>("vertex_count", given.vertex_count, 0, UINT32_MAX - 1);
    for (const std::size_t count : {given.triangle_count, given.line_count, given.point_count}) {
        require_range<std::size_t>("triangle_count, line_count, point_count", count, 0, UINT32_MAX / 3);
    }
    Mesh mesh;
    mesh.positions = list_of<VT_Vector>("positions", given.positions, given.vertex_count);
    mesh.normals = list_or_none<VT_Vector>(given.normals, given.vertex_count);
    mesh.colors = list_or_none<VT_RGB32>(given.colors, given.vertex_count);
    mesh.coordinates = list_or_none<Texture_Point>(given.texture_points, given.vertex_count);
    mesh.triangles = list_of<std::uint32_t>("triangles", given.triangles, 3 * given.triangle_count);
    mesh.lines = list_of<std::uint32_t>("lines", given.lines, 2 * given.line_count);
    mesh.points = list_of<std::uint32_t>("points", given.points, given.point_count);
    if (given.texture) {
        require(given.texture_points != nullptr, "texture_points: expected a pointer beside texture, found null");
        require(bytes_per_pixel(given.texture->pixels->format()) == 4, "texture: expected VORNA_RGB32");
        drawing::add_texture(mesh, samples_of(*given.texture));
    }
    return mesh;
}

} // namespace

drawing::Model_View view_of(const vorna_view* view) {
    const vorna_view given = settings_or(view, default_view());
    drawing::Model_View result;
    result.look.shading = choice("shading", given.shading, Shading::automatic);
    result.look.tint = choice("tint", given.tint, Tint::normals);
    result.look.culling = given.culls_back_faces ? Culling::back : Culling::none;
    result.look.light = {given.light.x, given.light.y, given.light.z};
    result.look.specular = given.specular;
    result.studio = given.studio != 0;
    require_range("edges", given.edges, VORNA_NO_EDGES + 0, VORNA_FEATURE_EDGES + 0);
    if (given.edges != VORNA_NO_EDGES) {
        result.edges = given.edges == VORNA_ALL_EDGES ? Edge_Choice::all : Edge_Choice::features;
    }
    result.edge_color = color_or_none(given.edge_color);
    result.color = color_or_none(given.color);
    result.line_width = given.line_width;
    result.point_size = given.point_size;
    result.axes = given.axes != 0;
    result.scale_bar = given.scale_bar != 0;
    result.camera.view = choice("view", given.view, View::iso);
    result.camera.up = choice("up", given.up, Up_Axis::minus_x);
    result.camera.projection = given.orthographic ? Projection::orthographic : Projection::perspective;
    result.camera.zoom = given.zoom;
    if (given.field_of_view != 0) {
        require(given.field_of_view >= 1 && given.field_of_view <= 150, "field_of_view: expected 0, or 1 to 150 degrees");
        result.camera.half_tangent = half_tangent_of(given.field_of_view);
    }
    if (given.has_aim) {
        result.camera.aim = {vector_of("eye", given.eye), vector_of("target", given.target), vector_of("upward", given.upward)};
    }
    return result;
}

drawing::Image_Settings image_settings_of(const vorna_image_settings* settings) {
    const vorna_image_settings given = settings_or(settings, default_image_settings());
    drawing::Image_Settings result;
    result.size = {given.width, given.height};
    result.background = host_color(given.background);
    result.lower_background = color_or_none(given.lower_background);
    result.transparent = given.transparent != 0;
    result.indexed = given.indexed != 0;
    result.smooth_lines = given.smooth_lines != 0;
    result.supersample = given.supersample;
    result.threads = given.threads;
    result.max_memory = given.max_memory;
    result.allow_empty = given.refuses_empty == 0;
    result.module = text_of(given.module);
    result.print = {given.dpi, text_of(given.paper), text_of(given.scale), text_of(given.unit)};
    return result;
}

std::unique_ptr<vorna_image> image_of(const drawing::Image& image, const drawing::Image_Settings& settings) {
    auto made = image_of(
        {reinterpret_cast<const std::uint8_t*>(image.pixels.data()), std::ptrdiff_t{image.width} * 4, image.width, image.height},
        new VT_Palette);
    made->pixels_per_metre = settings.print.pixels_per_metre();
    return made;
}

void give_line(const std::vector<std::string>& lines, std::size_t number, const char** line) {
    required(line, "line") = nullptr;
    require(number < lines.size(),
            [&] { return "number: expected less than " + std::to_string(lines.size()) + ", found " + std::to_string(number); });
    *line = lines[number].c_str();
}

void give_digest(const std::string& digits, char* digest) {
    if (digest) {
        std::memcpy(digest, digits.c_str(), digits.size() + 1);
    }
}

} // namespace vorna::c

using namespace vorna::c;

vorna_status vorna_model_read(size_t count, const char* const* files, const vorna_reading* reading, vorna_model** model) {
    return make_handle(model, "model", [&] {
        require_list(files, count, "files");
        std::vector<std::string> names;
        for (std::size_t i = 0; i < count; ++i) {
            names.emplace_back(&required(files[i], "files"));
        }
        return std::make_unique<vorna_model>(vorna_model{vorna::drawing::Model(names, reading_of(reading))});
    });
}

vorna_status vorna_mesh_init(vorna_mesh* mesh, size_t size) {
    return fill_defaults(mesh, size, vorna_mesh{});
}

vorna_status vorna_model_create(const vorna_mesh* mesh, vorna_model** model) {
    return make_handle(model, "model", [&] {
        const vorna_mesh given = settings_or(&required(mesh, "mesh"), vorna_mesh{});
        vorna::drawing::Reading reading;
        reading.section = section_of(given.section);
        std::vector<Mesh> meshes;
        meshes.push_back(mesh_of(given));
        return std::make_unique<vorna_model>(vorna_model{vorna::drawing::Model(std::move(meshes), reading)});
    });
}

vorna_status vorna_model_counts(const vorna_model* model, size_t* triangles, size_t* lines, size_t* points) {
    return guarded([&] {
        const vorna::drawing::Model& asked = required(model, "model").content;
        if (triangles) {
            *triangles = asked.triangle_count();
        }
        if (lines) {
            *lines = asked.line_count();
        }
        if (points) {
            *points = asked.point_count();
        }
    });
}

vorna_status vorna_model_warning_count(const vorna_model* model, size_t* count) {
    return guarded([&] { required(count, "count") = required(model, "model").content.warnings().size(); });
}

vorna_status vorna_model_warning(const vorna_model* model, size_t number, const char** line) {
    return guarded([&] { give_line(required(model, "model").content.warnings(), number, line); });
}

vorna_status vorna_view_init(vorna_view* view, size_t size) {
    return fill_defaults(view, size, default_view());
}

vorna_status vorna_image_settings_init(vorna_image_settings* settings, size_t size) {
    return fill_defaults(settings, size, default_image_settings());
}

vorna_status vorna_model_render(const vorna_model* model, const vorna_view* view, const vorna_image_settings* settings,
                                vorna_image** image) {
    return make_handle(image, "image", [&] {
        const vorna::drawing::Image_Settings given = image_settings_of(settings);
        return image_of(vorna::drawing::make_image(required(model, "model").content, view_of(view), given), given);
    });
}

vorna_status vorna_model_render_file(const vorna_model* model, const vorna_view* view, const vorna_image_settings* settings,
                                     const char* file, char* digest) {
    return guarded([&] {
        give_digest(vorna::drawing::write_image(&required(file, "file"), required(model, "model").content, view_of(view),
                                                image_settings_of(settings)),
                    digest);
    });
}

void vorna_model_free(vorna_model* model) {
    delete model;
}
