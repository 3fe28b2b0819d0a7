// A map or drawing, read and projected once, and laid out for any view.
#include "drawing/map/map_scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <set>
#include <utility>

#include "drawing/files/setting_names.h"
#include "drawing/map/coordinate_system.h"
#include "drawing/map/globe_cutter.h"
#include "drawing/map/graticule.h"
#include "drawing/map/map_center.h"
#include "drawing/map/map_choice.h"
#include "drawing/map/map_reader.h"

namespace vorna::drawing::map {
namespace {

constexpr std::int32_t largest_height = 8192; // of computed heights
constexpr std::int32_t most_side = 1 << 18;   // of images

constexpr VT_RGB32 graticule_color{200, 190, 180, 255};

std::string text_of(const Extent& extent) {
    std::array<char, 128> text;
    std::snprintf(text.data(), text.size(), "%.10g,%.10g,%.10g,%.10g", extent.west, extent.south, extent.east, extent.north);
    return text.data();
}

// The standard palette with the map's colours instead of its greys.
VT_Reference<const VT_Palette> palette_with(const std::vector<VT_RGB32>& wanted) {
    constexpr std::size_t cube_size = 216, most_own = 40;
    const VT_Palette standard;
    std::vector<VT_RGB32> colors, own;
    for (std::int32_t i = 0; i < standard.size(); ++i) {
        colors.push_back(standard.color(static_cast<std::uint8_t>(i)));
    }
    for (VT_RGB32 color : wanted) {
        color.alpha = 255;
        if (std::ranges::find(own, color) == own.end() && own.size() < most_own) {
            own.push_back(color);
        }
    }
    std::ranges::copy(own, colors.begin() + cube_size);
    return new VT_Palette(std::move(colors), standard.color_cube());
}

} // namespace

Map_Scene::Map_Scene(const std::vector<Map_Source>& sources, const std::optional<Input>& overlay, const Map_Settings& settings,
                     VT_RGB32 background, std::shared_ptr<Load_Limits> limits)
    : settings_(settings), background_(background), limits_(std::move(limits)), extent_(settings.bbox) {
    for (const Map_Source& source : sources) {
        const Map_Sheet& sheet = sheets_.emplace_back(source.input, source.settings, *limits_);
        if (sheet.map().drawing != sheets_.front().map().drawing) {
            throw Usage_Error(sheet.file() + ": expected " + (sheet.map().drawing ? "a map" : "a drawing") + " beside " +
                              sheets_.front().file());
        }
    }
    choose_extent();
    choose_projection();
    for (Map_Sheet& sheet : sheets_) {
        sheet.project(*projection_, background, *limits_);
    }
    if (overlay) {
        if (!is_map(*overlay)) {
            throw Usage_Error(name_of(Setting::overlay) + ": expected a map or drawing, found " + overlay->name);
        }
        Map_Query query;
        query.font = settings.font;
        overlay_map_ = load_map(*overlay, query, *limits_);
        if (projection_->domain()) {
            convert_to_degrees(overlay->name, overlay_map_, *limits_);
        }
        overlay_.emplace(overlay->name, overlay_map_, *projection_, *limits_);
        overlay_style_ = overlay_style(overlay_map_);
    }
    globe_ = project_outline(*projection_);
    if (settings.graticule > 0) {
        graticule_ = graticule_lines(settings.graticule, *projection_);
    }
    choose_bounds();
    load_font();
}

void Map_Scene::set_background(VT_RGB32 background) {
    if (background != background_) {
        background_ = background;
        std::ranges::for_each(sheets_, [=](Map_Sheet& sheet) { sheet.set_background(background); });
    }
}

std::vector<std::string> Map_Scene::files() const {
    std::vector<std::string> files;
    std::ranges::transform(sheets_, std::back_inserter(files), &Map_Sheet::file);
    return files;
}

std::string Map_Scene::summary() const {
    std::size_t shapes = 0, positions = 0;
    for (const Map_Sheet& sheet : sheets_) {
        shapes += sheet.layer().shape_count();
        positions += sheet.layer().position_count();
    }
    return std::to_string(shapes) + " shapes, " + std::to_string(positions) + " positions";
}

std::vector<std::string> Map_Scene::warnings() const {
    std::vector<std::string> warnings;
    for (const Map_Sheet& sheet : sheets_) {
        warnings.insert(warnings.end(), sheet.map().warnings.begin(), sheet.map().warnings.end());
    }
    warnings.insert(warnings.end(), overlay_map_.warnings.begin(), overlay_map_.warnings.end());
    if (font_) {
        std::ranges::move(font_->warnings(), std::back_inserter(warnings));
    }
    return warnings;
}

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

void Map_Scene::lay_out(const View& view, std::int32_t supersample) {
    view_ = view.enlarged(supersample);
    supersample_ = supersample;
    std::ranges::for_each(sheets_, [&](Map_Sheet& sheet) { sheet.lay_out(view_, supersample); });
    drawn_overlay_style_ = overlay_style_;
    drawn_overlay_style_.enlarge(supersample);
    labels_.clear();
    items_.clear();
    overlay_items_.clear();
    label_items_.clear();
    place_signs(view);
    place_labels(view);
    if (settings_.water) {
        items_.push_back(Face_Item{&globe_, *settings_.water});
    }
    for (const Path& line : graticule_) {
        items_.push_back(Line_Item{&line, {graticule_color, supersample}});
    }
    std::ranges::for_each(sheets_, [this](const Map_Sheet& sheet) { sheet.add_items(items_); });
    if (overlay_) {
        overlay_->add_items(drawn_overlay_style_, overlay_items_);
    }
    add_label_items();
}

double Map_Scene::longest_segment() const {
    double longest = 0;
    for (const Map_Sheet& sheet : sheets_) {
        longest = std::max(longest, sheet.layer().longest_segment());
    }
    return longest;
}

std::vector<Line_Paint> Map_Scene::line_paints(const View& view, std::int32_t supersample) const {
    std::vector<Line_Paint> paints;
    for (const Map_Sheet& sheet : sheets_) {
        const Layer_Style style = sheet.style_in(view, supersample);
        std::set<std::pair<std::int32_t, const Dashes*>> pens;
        for (std::size_t s = 0; s < style.widths.size(); ++s) {
            pens.emplace(style.widths[s], style.dashes.empty() ? nullptr : style.dashes[s]);
        }
        for (const auto& [width, own] : pens) {
            for (const std::optional<Dashes>* dashes : {&sheet.style().borders, &sheet.style().outlines}) {
                if (*dashes && width > 0) { // others are not drawn
                    paints.push_back({{}, width, own ? own : &**dashes, own ? style.dash_unit : 0});
                }
            }
        }
    }
    if (overlay_) {
        paints.push_back({{}, settings_.border_width * supersample});
    }
    if (!graticule_.empty()) {
        paints.push_back({{}, supersample});
    }
    return paints;
}

std::size_t Map_Scene::item_count(const View& view) const {
    std::size_t count = (overlay_ ? overlay_->item_count() : 0) + graticule_.size() + 1;
    for (const Map_Sheet& sheet : sheets_) {
        count +=
            sheet.layer().item_count() + (sheet.has_labels() ? label_count(sheet, view) : 0) + 3 * (sheet.legend().size() + 4);
    }
    return count;
}

std::size_t Map_Scene::most_positions() const {
    std::size_t most = overlay_ ? overlay_->most_positions() : 0;
    for (const Map_Sheet& sheet : sheets_) {
        most = std::max(most, sheet.layer().most_positions());
    }
    return most;
}

Layer_Style Map_Scene::overlay_style(const Map& map) const {
    const VT_RGB32 color = settings_.overlay_color;
    Layer_Style style;
    style.casing_width = settings_.casing_width;
    style.widths.assign(map.shapes.size(), settings_.border_width);
    style.markers.assign(map.shapes.size(), {color, settings_.marker.symbol, settings_.marker.size});
    style.fills.assign(map.shapes.size(), color);
    style.strokes.assign(map.shapes.size(), color);
    style.borders = style.outlines = Dashes{};
    return style;
}

VT_Reference<const VT_Palette> Map_Scene::palette() const {
    std::vector<VT_RGB32> colors{settings_.label_color, contrast_to(settings_.label_color), background_, graticule_color};
    const auto add_mixed = [&](const Text_Paint& paint) { std::ranges::move(mixed_colors(paint), std::back_inserter(colors)); };
    if (font_) {
        add_mixed({.color = contrast_to(background_), .ground = background_});
    }
    for (const Map_Sheet& sheet : sheets_) {
        if (sheet.has_labels()) {
            colors.insert(colors.end(), {sheet.label_paint().color, sheet.label_paint().halo_color});
            add_mixed(sheet.label_paint());
        }
        const Layer_Style& style = sheet.style();
        std::ranges::transform(style.markers, std::back_inserter(colors), &Marker_Paint::color);
        colors.insert(colors.end(), style.strokes.begin(), style.strokes.end());
    }
    colors.push_back(settings_.water.value_or(background_));
    for (const Map_Sheet& sheet : sheets_) {
        colors.push_back(sheet.style().casing.value_or(background_));
    }
    if (overlay_) {
        colors.push_back(settings_.overlay_color);
    }
    for (const Map_Sheet& sheet : sheets_) {
        for (const std::optional<VT_RGB32>& fill : sheet.style().fills) {
            colors.push_back(fill.value_or(background_));
        }
    }
    return palette_with(colors);
}

} // namespace vorna::drawing::map
