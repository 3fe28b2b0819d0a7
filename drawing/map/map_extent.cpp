// The visible part of a map, its projection, and the views that show it.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

#include "drawing/files/setting_names.h"
#include "drawing/map/coordinate_system.h"
#include "drawing/map/globe_cutter.h"
#include "drawing/map/map_center.h"
#include "drawing/map/map_choice.h"
#include "drawing/map/map_scene.h"

namespace vorna::drawing::map {
namespace {

constexpr std::int32_t largest_height = 8192; // of computed heights
constexpr std::int32_t most_side = 1 << 18;   // of images

std::string text_of(const Extent& extent) {
    std::array<char, 128> text;
    std::snprintf(text.data(), text.size(), "%.10g,%.10g,%.10g,%.10g", extent.west, extent.south, extent.east, extent.north);
    return text.data();
}

} // namespace

void Map_Scene::choose_extent() {
    const Map_Sheet& first = sheets_.front();
    if (extent_ && extent_->west > extent_->east) {
        if (first.map().drawing) {
            throw Usage_Error(name_of(Setting::bbox) +
                              ": expected west,south,east,north with west below east in a drawing, found '" + text_of(*extent_) +
                              "'");
        }
        extent_->east += full_circle;
    }
    if (!settings_.clip_to.empty()) {
        clip_shape_ = chosen_shape(first.map(), first.file(), settings_.clip_to);
    }
}

void Map_Scene::choose_projection() {
    const Map_Sheet& first = sheets_.front();
    const bool is_drawing = first.map().drawing;
    // Without a given projection, centre or water: those expect a globe.
    const bool is_open = settings_.projection.empty() && !settings_.center && !settings_.water && settings_.graticule == 0;
    const Coordinate_Kind kind = is_open && !is_drawing ? coordinate_kind(sheets_) : Coordinate_Kind::degrees;
    const std::string name = !settings_.projection.empty()                    ? settings_.projection
                             : is_drawing || kind != Coordinate_Kind::degrees ? "plane"
                                                                              : "equirectangular";
    std::optional<Position> center = settings_.center;
    if (is_drawing && name != "plane") {
        throw Usage_Error(name_of(Setting::projection) + ": expected a map, found the drawing " + first.file());
    }
    if (name != "plane") {
        for (Map_Sheet& sheet : sheets_) {
            convert_to_degrees(sheet.file(), sheet.map(), *limits_);
        }
    }
    if (name == "plane" || name == "albers-usa") {
        for (const auto& [given, setting] : {std::pair(settings_.water.has_value(), Setting::water),
                                             {settings_.graticule > 0, Setting::graticule},
                                             {settings_.map_scale != Scale_Unit::none, Setting::map_scale}}) {
            if (given) {
                throw Usage_Error(name_of(setting) + ": expected a projection of the globe, found " +
                                  (name == "plane" ? "a plane" : name));
            }
        }
    }
    if (settings_.flip_y && name != "plane") {
        throw Usage_Error(name_of(Setting::flip_y) + ": expected coordinates of a plane, found degrees; " +
                          name_of(Setting::projection) + " plane draws coordinates as they are");
    }
    if (settings_.flip_y.value_or(kind == Coordinate_Kind::picture)) {
        flip();
    }
    if (!extent_ && !clip_shape_ && sheets_.size() == 1) {
        extent_ = stated_extent(first.map(), name != "plane");
    }
    if (extent_) {
        check_extent(*extent_, !settings_.bbox ? first.file() + ": bbox" : name_of(Setting::bbox), name != "plane");
    }
    const bool says_its_middle =
        name == "plane" || name == "albers-usa" || name.find(':') != std::string::npos || name.starts_with('+');
    if (!center && !says_its_middle) {
        const bool azimuthal = is_azimuthal(name);
        const double middle_x = extent_ ? (extent_->west + extent_->east) / 2 : 0;
        if (azimuthal && settings_.bbox) {
            center = Position{middle_x, std::clamp((extent_->south + extent_->north) / 2, -90.0, 90.0)};
        } else if (extent_ && (extent_->west < -180 || extent_->east > 180)) {
            center = Position{middle_x, 0};
        } else if (!extent_ && clip_shape_) {
            center = middle_of(first.map().shapes[*clip_shape_]);
        } else if (!extent_ || azimuthal) {
            center = automatic_center(sheets_, azimuthal);
        }
    }
    projection_ = make_projection(name, center);
}

// Mirrors all positions of a plane at its x axis.
void Map_Scene::flip() {
    for (Map_Sheet& sheet : sheets_) {
        for (Shape& shape : sheet.map().shapes) {
            for_each_path(shape, [](Path& path) { std::ranges::for_each(path, [](Position& p) { p.y = -p.y; }); });
        }
        if (std::optional<Extent>& extent = sheet.map().extent) {
            extent = Extent{extent->west, -extent->north, extent->east, -extent->south};
        }
    }
    if (extent_) {
        extent_ = Extent{extent_->west, -extent_->north, extent_->east, -extent_->south};
    }
}

void Map_Scene::choose_bounds() {
    Bounds bounds = Bounds::nothing();
    if (extent_) {
        bounds = bounds_of(*extent_, *projection_);
    } else if (clip_shape_) {
        bounds = bounds_of(sheets_.front().layer().face_of(*clip_shape_));
    } else {
        for (const Map_Sheet& sheet : sheets_) {
            if (const Bounds& own = sheet.layer().bounds(); !own.empty()) {
                bounds.add({own.left, own.bottom});
                bounds.add({own.right, own.top});
            }
        }
    }
    const bool is_given = settings_.bbox.has_value();
    if (bounds.empty()) {
        throw Usage_Error(is_given ? name_of(Setting::bbox) + ": expected a part of what the projection shows, found '" +
                                         text_of(*settings_.bbox) + "'"
                                   : sheets_.front().file() + ": expected shapes to draw, found none that the projection shows");
    }
    const Bounds globe = bounds_of(globe_);
    const bool shows_globe = settings_.water || !graticule_.empty();
    if (!is_given && !clip_shape_ && shows_globe && 2 * (bounds.right - bounds.left) > globe.right - globe.left) {
        bounds = globe;
    }
    shown_ = bounds;
}

// The map is centred and fills the window, with a margin unless an extent is given.
View Map_Scene::fitted(VT_Int_Pair size) const {
    double width = shown_.right - shown_.left, height = shown_.top - shown_.bottom;
    if (width == 0 && height == 0) {
        width = height = 1; // a single point
    }
    View view;
    view.middle = {(shown_.left + shown_.right) / 2, (shown_.bottom + shown_.top) / 2};
    view.size = size;
    const bool is_sheet = extent_ && sheets_.front().map().paper_unit > 0; // of paper
    const double room = settings_.bbox || is_sheet ? 1 : 0.96;
    if (size.y == 0) {
        const double least = size.x / 8.0, most = std::max(double{largest_height}, least);
        view.size.y = static_cast<std::int32_t>(std::clamp(std::ceil(size.x * height / std::max(width, 1e-300)), least, most));
    }
    view.scale = room * std::min(view.size.x / std::max(width, 1e-300), view.size.y / std::max(height, 1e-300));
    return view;
}

View Map_Scene::scaled(VT_Int_Pair size, double pixels_per_metre, std::optional<double> unit_metres) const {
    const bool is_plane = !projection_->domain();
    const double unit = is_plane ? unit_metres.value_or(0) : projection_->unit_metres();
    if (unit <= 0) {
        throw Usage_Error(name_of(Setting::scale) + (is_plane ? ": expected a unit for the coordinates of a plane beside it"
                                                              : ": expected a projection with a known unit"));
    }
    if (!is_plane && unit_metres) {
        throw Usage_Error(name_of(Setting::unit) + ": expected coordinates of a plane, found degrees");
    }
    View view;
    view.middle = {(shown_.left + shown_.right) / 2, (shown_.bottom + shown_.top) / 2};
    view.scale = pixels_per_metre * unit;
    view.size = size;
    if (size.x == 0) {
        const double room = settings_.bbox ? 1 : 0.96;
        const auto side = [&](double length) {
            const double pixels = std::ceil(length * view.scale / room);
            if (!(pixels <= most_side)) {
                throw Usage_Error(name_of(Setting::scale) + ": expected an image of up to " + std::to_string(most_side) +
                                  " pixels each way, found a larger one");
            }
            return std::max(static_cast<std::int32_t>(pixels), 1);
        };
        view.size = {side(shown_.right - shown_.left), side(shown_.top - shown_.bottom)};
    }
    return view;
}

} // namespace vorna::drawing::map
