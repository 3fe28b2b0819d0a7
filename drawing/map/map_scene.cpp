// A map or drawing, read and projected once, and laid out for any view.
#include "drawing/map/map_scene.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "drawing/files/setting_names.h"
#include "drawing/map/coordinate_system.h"
#include "drawing/map/globe_cutter.h"
#include "drawing/map/graticule.h"
#include "drawing/map/map_reader.h"

namespace vorna::drawing::map {
namespace {

constexpr VT_RGB32 graticule_color{200, 190, 180, 255};

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
            const bool is_dashed = !style.dashes.empty();
            const bool is_new =
                s == 0 || style.widths[s] != style.widths[s - 1] || (is_dashed && style.dashes[s] != style.dashes[s - 1]);
            if (is_new) {
                pens.emplace(style.widths[s], is_dashed ? style.dashes[s] : nullptr);
            }
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
