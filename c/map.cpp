// Maps: files and texts, and their images.
#include "c/call.h"
#include "c/handles.h"
#include "c/reading.h"
#include "c/rendering.h"
#include "drawing/drawing.h"
#include "vorna/c_map.h"

struct vorna_map {
    vorna::drawing::Map content;
};

namespace vorna::c {

using namespace drawing::map;

namespace {

const vorna_map_settings& default_settings() noexcept {
    static const vorna_map_settings settings = [] {
        const Map_Settings usual;
        vorna_map_settings made{};
        made.struct_size = sizeof made;
        made.fill_color = c_color(usual.fill.color);
        made.opacity = usual.opacity;
        made.borders = made.outlines = 1;
        made.border_width = usual.border_width;
        made.casing_width = usual.casing_width;
        made.marker_color = c_color(usual.marker.color);
        made.marker_symbol = usual.marker.symbol;
        made.marker_size = usual.marker.size;
        made.label_size = usual.label_size;
        made.label_color = c_color(usual.label_color);
        made.overlay_color = c_color(usual.overlay_color);
        return made;
    }();
    return settings;
}
VORNA_SETTINGS_END(vorna_map_settings, merges);
static_assert(static_cast<int>(Map_Fill::Kind::color) == VORNA_FILL_COLOR &&
              static_cast<int>(Map_Fill::Kind::own) == VORNA_FILL_OWN);

std::optional<Dashes> dashes_of(bool is_drawn, const char* name, const double* dashes, std::size_t count) {
    if (!is_drawn) {
        return {};
    }
    const std::size_t given = dashes ? count : 0;
    require_range<std::size_t>(name, given, 0, 1024);
    return Dashes(dashes, dashes + given);
}

Map_Settings settings_of(const vorna_map_settings* settings) {
    const vorna_map_settings given = settings_or(settings, default_settings());
    Map_Settings result;
    result.layer = text_of(given.layer);
    result.projection = text_of(given.projection);
    result.clip_to = text_of(given.clip_to);
    if (given.has_box) {
        result.bbox = {given.west, given.south, given.east, given.north};
    }
    if (given.has_center) {
        result.center = {given.center_x, given.center_y};
    }
    require_range("fill", given.fill, VORNA_FILL_AUTOMATIC + 0, VORNA_FILL_COLOR + 0);
    result.fill = {static_cast<Map_Fill::Kind>(given.fill), host_color(given.fill_color)};
    result.opacity = given.opacity;
    result.water = color_or_none(given.water);
    result.graticule = given.graticule;
    result.border = dashes_of(given.borders != 0, "border_dash_count", given.border_dashes, given.border_dash_count);
    result.outline = dashes_of(given.outlines != 0, "outline_dash_count", given.outline_dashes, given.outline_dash_count);
    result.border_color = color_or_none(given.border_color);
    result.border_width = given.border_width;
    result.casing = color_or_none(given.casing);
    result.casing_width = given.casing_width;
    result.marker = {host_color(given.marker_color), given.marker_symbol, given.marker_size};
    result.labels = given.labels != 0;
    result.label_size = given.label_size;
    result.label_color = host_color(given.label_color);
    result.font = text_of(given.font);
    result.overlay = text_of(given.overlay);
    result.overlay_color = host_color(given.overlay_color);
    result.merges = given.merges != 0;
    return result;
}

} // namespace
} // namespace vorna::c

using namespace vorna::c;

vorna_status vorna_map_settings_init(vorna_map_settings* settings, size_t size) {
    return fill_defaults(settings, size, default_settings());
}

vorna_status vorna_map_read(const char* file, const vorna_map_settings* settings, const vorna_reading* reading, vorna_map** map) {
    return make_handle(map, "map", [&] {
        const std::string path = &required(file, "file");
        return std::make_unique<vorna_map>(vorna_map{vorna::drawing::Map(path, settings_of(settings), reading_of(reading))});
    });
}

vorna_status vorna_map_parse(const char* format, const char* text, size_t size, const vorna_map_settings* settings,
                             const vorna_reading* reading, vorna_map** map) {
    return make_handle(map, "map", [&] {
        const std::string suffix = &required(format, "format");
        require_list(text, size, "text");
        return std::make_unique<vorna_map>(vorna_map{vorna::drawing::Map(
            "map", suffix, size > 0 ? std::string(text, size) : std::string(), settings_of(settings), reading_of(reading))});
    });
}

vorna_status vorna_map_render(vorna_map* map, const vorna_image_settings* settings, vorna_image** image) {
    return make_handle(image, "image", [&] {
        return image_of(vorna::drawing::make_image(required(map, "map").content, image_settings_of(settings)));
    });
}

vorna_status vorna_map_render_file(vorna_map* map, const vorna_image_settings* settings, const char* file, char* digest) {
    return guarded([&] {
        give_digest(
            vorna::drawing::write_image(&required(file, "file"), required(map, "map").content, image_settings_of(settings)),
            digest);
    });
}

void vorna_map_free(vorna_map* map) {
    delete map;
}
