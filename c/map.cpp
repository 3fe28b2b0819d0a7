// Maps: files and texts, and their images.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "c/call.h"
#include "c/handles.h"
#include "c/reading.h"
#include "c/rendering.h"
#include "drawing/drawing.h"
#include "vorna/c_map.h"

struct vorna_map {
    vorna::drawing::Map content;
    std::vector<std::string> warnings; // as last asked for
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
        made.class_count = static_cast<std::int32_t>(usual.classing.count);
        made.widths[0] = usual.width_from;
        made.widths[1] = usual.width_to;
        made.halo = usual.halo;
        return made;
    }();
    return settings;
}
VORNA_SETTINGS_END(vorna_map_settings, reserved);
static_assert(static_cast<int>(Map_Fill::Kind::color) == VORNA_FILL_COLOR &&
              static_cast<int>(Map_Fill::Kind::own) == VORNA_FILL_OWN);
static_assert(static_cast<int>(Scale_Unit::kilometres) == VORNA_KILOMETRES && static_cast<int>(Scale_Unit::miles) == VORNA_MILES);

std::optional<Dashes> dashes_of(bool is_drawn, const char* name, const double* dashes, std::size_t count) {
    if (!is_drawn) {
        return {};
    }
    const std::size_t given = dashes ? count : 0;
    require_range<std::size_t>(name, given, 0, 1024);
    return Dashes(dashes, dashes + given);
}

// What the values of fields decide.
void set_classing(const vorna_map_settings& given, Map_Settings& result) {
    result.fill_by = text_of(given.fill_by);
    result.classing.method = text_of(given.classes);
    require_range("class_count", given.class_count, 1, 64);
    result.classing.count = static_cast<std::size_t>(given.class_count);
    require_list(given.breaks, given.break_count, "breaks");
    require_range<std::size_t>("break_count", given.break_count, 0, 63);
    result.classing.breaks.assign(given.breaks, given.breaks + given.break_count);
    result.classing.ramp = text_of(given.ramp);
    result.classing.reversed = given.reverse_ramp != 0;
    result.width_by = text_of(given.width_by);
    result.width_from = given.widths[0];
    result.width_to = given.widths[1];
    result.label_by = text_of(given.label_by);
    result.label_key = text_of(given.label_key);
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
    result.layout = text_of(given.layout);
    result.filter = text_of(given.filter);
    set_classing(given, result);
    result.halo = given.halo;
    result.halo_color = color_or_none(given.halo_color);
    result.style = text_of(given.style);
    result.title = text_of(given.title);
    result.attribution = text_of(given.attribution);
    result.legend = given.legend != 0;
    require_range("map_scale", given.map_scale, VORNA_NO_SCALE + 0, VORNA_MILES + 0);
    result.map_scale = static_cast<Scale_Unit>(given.map_scale);
    require_range("flip_y", given.flip_y, -1, 1);
    if (given.flip_y != 0) {
        result.flip_y = given.flip_y > 0;
    }
    require_range("reserved", given.reserved, 0, 0);
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
        return std::make_unique<vorna_map>(vorna_map{vorna::drawing::Map(path, settings_of(settings), reading_of(reading)), {}});
    });
}

vorna_status vorna_map_read_files(size_t count, const char* const* files, const vorna_map_settings* settings,
                                  const vorna_reading* reading, vorna_map** map) {
    return make_handle(map, "map", [&] {
        require_list(files, count, "files");
        std::vector<vorna::drawing::Map_Input> inputs;
        for (std::size_t i = 0; i < count; ++i) {
            inputs.push_back({&required(files[i], "files"), {}, {}});
        }
        return std::make_unique<vorna_map>(
            vorna_map{vorna::drawing::Map(inputs, settings_of(settings), reading_of(reading)), {}});
    });
}

vorna_status vorna_map_parse(const char* format, const char* text, size_t size, const vorna_map_settings* settings,
                             const vorna_reading* reading, vorna_map** map) {
    return make_handle(map, "map", [&] {
        const std::string suffix = &required(format, "format");
        require_list(text, size, "text");
        return std::make_unique<vorna_map>(
            vorna_map{vorna::drawing::Map("map", suffix, size > 0 ? std::string(text, size) : std::string(),
                                          settings_of(settings), reading_of(reading)),
                      {}});
    });
}

vorna_status vorna_map_render(vorna_map* map, const vorna_image_settings* settings, vorna_image** image) {
    return make_handle(image, "image", [&] {
        const vorna::drawing::Image_Settings given = image_settings_of(settings);
        return image_of(vorna::drawing::make_image(required(map, "map").content, given), given);
    });
}

vorna_status vorna_map_render_file(vorna_map* map, const vorna_image_settings* settings, const char* file, char* digest) {
    return guarded([&] {
        give_digest(
            vorna::drawing::write_image(&required(file, "file"), required(map, "map").content, image_settings_of(settings)),
            digest);
    });
}

vorna_status vorna_map_warning_count(vorna_map* map, size_t* count) {
    return guarded([&] {
        required(count, "count") = 0;
        vorna_map& asked = required(map, "map");
        asked.warnings = asked.content.warnings();
        *count = asked.warnings.size();
    });
}

vorna_status vorna_map_warning(const vorna_map* map, size_t number, const char** line) {
    return guarded([&] { give_line(required(map, "map").warnings, number, line); });
}

void vorna_map_free(vorna_map* map) {
    delete map;
}
