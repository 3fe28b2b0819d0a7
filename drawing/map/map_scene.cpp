// A map or drawing, read and projected once, and laid out for any view.
#include "drawing/map/map_scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

#include "drawing/files/setting_names.h"
#include "drawing/map/coordinate_system.h"
#include "drawing/map/globe_cutter.h"
#include "drawing/map/graticule.h"
#include "drawing/map/label_font.h"
#include "drawing/map/labels.h"
#include "drawing/map/map_choice.h"
#include "drawing/map/map_reader.h"

namespace vorna::drawing::map {
namespace {

constexpr std::int32_t largest_height = 8192; // of computed heights

// Fills; neighbours get different ones.
constexpr std::array palette_colors{0xF2D5A7, 0xC9DFB0, 0xF4C7C3, 0xCBD6EC, 0xEBE5A4, 0xDCC8E4, 0xB9DCD6};
constexpr VT_RGB32 border_color{64, 64, 64, 255};
constexpr VT_RGB32 graticule_color{200, 190, 180, 255};

VT_RGB32 contrast_to(VT_RGB32 background) {
    const bool dark = 3 * background.red + 6 * background.green + background.blue < 1280;
    return dark ? VT_RGB32{255, 255, 255, 255} : VT_RGB32{0, 0, 0, 255};
}

VT_RGB32 with_opacity(VT_RGB32 color, double opacity) {
    color.alpha = static_cast<std::uint8_t>(std::lround(255 * opacity));
    return color;
}

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

Map_Scene::Map_Scene(const Input& input, const std::optional<Input>& overlay, const Map_Settings& settings, VT_RGB32 background,
                     std::shared_ptr<Load_Limits> limits)
    : settings_(settings), background_(background), limits_(std::move(limits)), file_(input.name),
      map_(load_map(input, {settings.layer, {}}, *limits_)), extent_(settings.bbox) {
    if (extent_ && extent_->west > extent_->east) {
        if (map_.drawing) {
            throw Usage_Error(name_of(Setting::bbox) +
                              ": expected west,south,east,north with west below east in a drawing, found '" + text_of(*extent_) +
                              "'");
        }
        extent_->east += full_circle;
    }
    if (!settings.clip_to.empty()) {
        clip_shape_ = chosen_shape(map_, input.name, settings.clip_to);
    }
    choose_projection(input);
    layer_.emplace(input.name, map_, *projection_, *limits_);
    style_ = style_of(map_, *layer_);
    if (overlay) {
        if (!is_map(*overlay)) {
            throw Usage_Error(name_of(Setting::overlay) + ": expected a map or drawing, found " + overlay->name);
        }
        overlay_map_ = load_map(*overlay, {}, *limits_);
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
    choose_bounds(input);
}

void Map_Scene::set_background(VT_RGB32 background) {
    if (background != background_) {
        background_ = background;
        style_ = style_of(map_, *layer_);
    }
}

std::string Map_Scene::summary() const {
    return std::to_string(layer_->shape_count()) + " shapes, " + std::to_string(layer_->position_count()) + " positions";
}

std::vector<std::string> Map_Scene::warnings() const {
    std::vector<std::string> warnings = map_.warnings;
    warnings.insert(warnings.end(), overlay_map_.warnings.begin(), overlay_map_.warnings.end());
    return warnings;
}

void Map_Scene::choose_projection(const Input& input) {
    const std::string name = settings_.projection.empty() ? map_.drawing ? "plane" : "equirectangular" : settings_.projection;
    std::optional<Position> center = settings_.center;
    if (map_.drawing && name != "plane") {
        throw Usage_Error(name_of(Setting::projection) + ": expected a map, found the drawing " + input.name);
    }
    if (name != "plane") {
        convert_to_degrees(input.name, map_, *limits_);
    } else {
        for (const auto& [given, setting] :
             {std::pair(settings_.water.has_value(), Setting::water), {settings_.graticule > 0, Setting::graticule}}) {
            if (given) {
                throw Usage_Error(name_of(setting) + ": expected a projection of the globe, found a plane");
            }
        }
    }
    if (!extent_ && !clip_shape_) {
        extent_ = stated_extent(map_, name != "plane");
    }
    if (extent_) {
        check_extent(*extent_, !settings_.bbox ? input.name + ": bbox" : name_of(Setting::bbox), name != "plane");
    }
    const bool says_its_middle = name == "plane" || name.find(':') != std::string::npos || name.starts_with('+');
    if (!center && !says_its_middle) {
        if (extent_ && (extent_->west < -180 || extent_->east > 180)) {
            center = Position{(extent_->west + extent_->east) / 2, 0};
        } else if (!extent_ && clip_shape_) {
            center = middle_of(map_.shapes[*clip_shape_]);
        }
    }
    projection_ = make_projection(name, center);
}

void Map_Scene::choose_bounds(const Input& input) {
    Bounds bounds = extent_       ? bounds_of(*extent_, *projection_)
                    : clip_shape_ ? bounds_of(layer_->face_of(*clip_shape_))
                                  : layer_->bounds();
    const bool is_given = settings_.bbox.has_value();
    if (bounds.empty()) {
        throw Usage_Error(is_given ? name_of(Setting::bbox) + ": expected a part of what the projection shows, found '" +
                                         text_of(*settings_.bbox) + "'"
                                   : input.name + ": expected shapes to draw, found none that the projection shows");
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
    const double room = settings_.bbox ? 1 : 0.96;
    if (size.y == 0) {
        const double least = size.x / 8.0, most = std::max(double{largest_height}, least);
        view.size.y = static_cast<std::int32_t>(std::clamp(std::ceil(size.x * height / std::max(width, 1e-300)), least, most));
    }
    view.scale = room * std::min(view.size.x / std::max(width, 1e-300), view.size.y / std::max(height, 1e-300));
    return view;
}

void Map_Scene::lay_out(const View& view, std::int32_t supersample) {
    view_ = view.enlarged(supersample);
    supersample_ = supersample;
    drawn_style_ = style_;
    drawn_style_.enlarge(supersample);
    drawn_overlay_style_ = overlay_style_;
    drawn_overlay_style_.enlarge(supersample);
    labels_.clear();
    items_.clear();
    overlay_items_.clear();
    label_items_.clear();
    if (settings_.labels) {
        place_labels(view);
    }
    if (settings_.water) {
        items_.push_back(Face_Item{&globe_, *settings_.water});
    }
    for (const Path& line : graticule_) {
        items_.push_back(Line_Item{&line, {graticule_color, supersample}});
    }
    layer_->add_items(drawn_style_, items_);
    if (overlay_) {
        overlay_->add_items(drawn_overlay_style_, overlay_items_);
    }
    add_label_items();
}

double Map_Scene::longest_segment() const {
    return layer_->longest_segment();
}

std::vector<Line_Paint> Map_Scene::line_paints(std::int32_t supersample) const {
    std::vector<Line_Paint> paints;
    for (const std::optional<Dashes>* dashes : {&style_.borders, &style_.outlines}) {
        if (*dashes) {
            paints.push_back({{}, style_.width * supersample, &**dashes});
        }
    }
    if (overlay_) {
        paints.push_back({{}, overlay_style_.width * supersample});
    }
    if (!graticule_.empty()) {
        paints.push_back({{}, supersample});
    }
    return paints;
}

std::size_t Map_Scene::item_count() const {
    const std::size_t label_copies = settings_.labels ? 26 * layer_->shape_count() : 0;
    return layer_->item_count() + (overlay_ ? overlay_->item_count() : 0) + graticule_.size() + 1 + label_copies;
}

std::size_t Map_Scene::most_positions() const {
    return std::max(layer_->most_positions(), overlay_ ? overlay_->most_positions() : 0);
}

// Names of points stand to the right of their markers, names of faces inside them; those without room are left out.
void Map_Scene::place_labels(const View& view) {
    const std::unique_ptr<Label_Font> font = load_label_font(settings_.font, settings_.label_size);
    const VT_Int_Rectangle window{0, view.size.x - 1, 0, view.size.y - 1};
    const auto height = static_cast<std::int32_t>(std::ceil(font->height()));
    constexpr std::int32_t margin = 2;
    // New limits for each view: a viewer lays out any number of them.
    Load_Limits limits(limits_->memory_left());
    const auto text_of = [&](std::size_t shape) { return font->text_of(map_.shapes[shape].name, view.size.x, file_, limits); };
    Free_Room room;
    const auto add = [&](const Label_Font::Text& text, VT_Int_Pair at) {
        const VT_Int_Rectangle box{at.x - margin, at.x + static_cast<std::int32_t>(text.width) + margin, at.y - margin,
                                   at.y + height + margin};
        if (text.outline.empty() || !room.take(box)) {
            return;
        }
        Face& face = labels_.emplace_back(text.outline);
        for (Path& ring : face) {
            std::ranges::transform(ring, ring.begin(), [&](Position p) { return Position{p.x + at.x, p.y + at.y}; });
        }
    };
    for (const auto& [place, shape] : layer_->points()) {
        const Position p = view.device_place(place);
        if (p.x >= 0 && p.y >= 0 && p.x < view.size.x && p.y < view.size.y) {
            add(text_of(shape),
                {static_cast<std::int32_t>(p.x) + settings_.marker.size / 2 + 3, static_cast<std::int32_t>(p.y) - height / 2});
        }
    }
    for (std::size_t s = 0; s < map_.shapes.size(); ++s) {
        if (map_.shapes[s].name.empty()) {
            continue;
        }
        const Label_Font::Text text = text_of(s);
        const VT_Int_Pair size{static_cast<std::int32_t>(std::ceil(text.width)) + 2 * margin, height + 2 * margin};
        const Face face = view.device_face(layer_->face_of(s));
        if (const auto at = place_in_face(face, window, size)) {
            add(text, {at->x + margin, at->y + margin});
        }
    }
}

void Map_Scene::set_line_style(Layer_Style& style) const {
    style.borders = settings_.border;
    style.outlines = settings_.outline;
    style.width = settings_.border_width;
    style.casing_width = settings_.casing_width;
    style.casing = settings_.casing;
    style.marker = settings_.marker;
}

Layer_Style Map_Scene::style_of(const Map& map, const Map_Layer& layer) const {
    using Kind = Map_Fill::Kind;
    const Map_Fill& fill = settings_.fill;
    const Kind kind = fill.kind != Kind::automatic ? fill.kind : map.drawing ? Kind::own : Kind::palette;
    std::vector<std::size_t> numbers;
    if (kind == Kind::palette) {
        numbers = numbers_unlike_neighbours(layer.neighbours(), palette_colors.size());
    }
    const VT_RGB32 foreground = map.drawing ? contrast_to(background_) : border_color;
    Layer_Style style;
    for (std::size_t s = 0; s < map.shapes.size(); ++s) {
        const Shape& shape = map.shapes[s];
        std::optional<VT_RGB32> color = kind == Kind::color ? fill.color : shape.fill;
        if (kind == Kind::palette && !color) {
            color = vorna::color_of(0xFF000000U | static_cast<std::uint32_t>(palette_colors[numbers[s]]));
        }
        if (kind == Kind::none) {
            color.reset();
        }
        style.fills.push_back(color ? std::optional(with_opacity(*color, settings_.opacity)) : std::nullopt);
        style.strokes.push_back(settings_.border_color ? *settings_.border_color : shape.stroke.value_or(foreground));
    }
    set_line_style(style);
    return style;
}

Layer_Style Map_Scene::overlay_style(const Map& map) const {
    const VT_RGB32 color = settings_.overlay_color;
    Layer_Style style;
    set_line_style(style);
    style.fills.assign(map.shapes.size(), color);
    style.strokes.assign(map.shapes.size(), color);
    style.borders = style.outlines = Dashes{};
    style.casing.reset();
    style.marker.color = color;
    return style;
}

// Each letter has a light or dark outline of one pixel, supersampled with the letter.
void Map_Scene::add_label_items() {
    const std::int32_t step = (supersample_ + 1) / 2;
    for (const Face& label : labels_) {
        for (std::int32_t up = -supersample_; up <= supersample_; up += step) {
            for (std::int32_t right = -supersample_; right <= supersample_; right += step) {
                label_items_.push_back(Text_Item{&label, {right, up}, contrast_to(settings_.label_color)});
            }
        }
    }
    for (const Face& label : labels_) {
        label_items_.push_back(Text_Item{&label, {}, settings_.label_color});
    }
}

VT_Reference<const VT_Palette> Map_Scene::palette() const {
    const VT_RGB32 label = settings_.label_color;
    std::vector<VT_RGB32> colors{label, contrast_to(label), background_, graticule_color, style_.marker.color};
    colors.insert(colors.end(), style_.strokes.begin(), style_.strokes.end());
    colors.push_back(settings_.water.value_or(background_));
    colors.push_back(style_.casing.value_or(background_));
    if (overlay_) {
        colors.push_back(overlay_style_.marker.color);
    }
    for (const std::optional<VT_RGB32>& fill : style_.fills) {
        colors.push_back(fill.value_or(background_));
    }
    return palette_with(colors);
}

} // namespace vorna::drawing::map
