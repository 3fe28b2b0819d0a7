// What the command `render` does with maps and drawings.
#include "app/commands/map_command.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <tuple>

#include "app/cli/color_option.h"
#include "app/cli/messages.h"
#include "app/commands/map_scene.h"
#include "drawing/files/input_file.h"
#include "drawing/files/memory.h"
#include "drawing/files/output_file.h"
#include "drawing/image/image_file.h"
#include "drawing/image/pixel_finish.h"
#include "drawing/image/png_writer.h"
#include "drawing/image/sha256.h"
#include "drawing/image/sight.h"
#include "drawing/map/globe_cutter.h"
#include "drawing/map/label_font.h"
#include "drawing/map/labels.h"
#include "drawing/map/map_layer.h"
#include "drawing/map/map_reader.h"
#include "drawing/recording/recorder.h"
#include "drawing/recording/recording_file.h"
#include "drawing/recording/session.h"
#include "vorna/draw.h"

namespace vorna::app {
namespace {

using namespace drawing::map;
using Clock = std::chrono::steady_clock;

constexpr std::int32_t largest_height = 8192; // of those that are chosen here
constexpr double full_circle = 360;

// Neighbours take different ones.
constexpr std::array palette_colors{0xF2D5A7, 0xC9DFB0, 0xF4C7C3, 0xCBD6EC, 0xEBE5A4, 0xDCC8E4, 0xB9DCD6};
constexpr VT_RGB32 border_color{64, 64, 64, 255};
constexpr VT_RGB32 graticule_color{200, 190, 180, 255};

double milliseconds_since(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// Numbers between commas; empty when there is anything else.
std::vector<double> parsed_numbers(const std::string& text) {
    std::vector<double> numbers;
    const char* const end = text.data() + text.size();
    for (const char* place = text.data();; ++place) {
        double value = 0;
        const auto [stop, error] = std::from_chars(place, end, value);
        if (error != std::errc{} || !std::isfinite(value) || (stop != end && *stop != ',')) {
            return {};
        }
        numbers.push_back(value);
        place = stop;
        if (place == end) {
            return numbers;
        }
    }
}

struct Border_Style {
    const char* name;
    Dashes dashes;
};

const std::vector<Border_Style>& border_styles() {
    static const std::vector<Border_Style> styles{{"solid", {}},
                                                  {"dashed", {6, 4}},
                                                  {"dotted", {0, 3}},
                                                  {"dash-dot", {8, 3, 0, 3}},
                                                  {"dash-dot-dot", {8, 3, 0, 3, 0, 3}},
                                                  {"long-dashed", {14, 5}}};
    return styles;
}

std::vector<std::string> border_names() {
    std::vector<std::string> names{"none"};
    names.reserve(1 + border_styles().size());
    for (const Border_Style& style : border_styles()) {
        names.emplace_back(style.name);
    }
    return names;
}

// Nothing: no line at all.
std::optional<Dashes> parsed_dashes(const char* option, const std::string& text) {
    if (text == "none") {
        return std::nullopt;
    }
    for (const Border_Style& style : border_styles()) {
        if (text == style.name) {
            return style.dashes;
        }
    }
    const std::vector<double> lengths = parsed_numbers(text);
    const bool fits = !lengths.empty() && lengths.size() % 2 == 0 && std::ranges::all_of(lengths, [&](const double& length) {
        return length <= 10000 && (&length - lengths.data()) % 2 ? length > 0 : length >= 0;
    });
    if (!fits) {
        throw drawing::Usage_Error(
            std::string(option) +
            ": expected none, solid, dashed, dotted, dash-dot, dash-dot-dot, long-dashed or lengths of dashes and "
            "gaps in pixels as 6,4, found '" +
            text + "'");
    }
    return lengths;
}

constexpr std::array<std::pair<const char*, std::int32_t>, 9> symbols{{{"dot", vorna::marker_symbol::dot},
                                                                       {"plus", vorna::marker_symbol::plus},
                                                                       {"cross", vorna::marker_symbol::cross},
                                                                       {"circle", vorna::marker_symbol::circle},
                                                                       {"disc", vorna::marker_symbol::filled_circle},
                                                                       {"square", vorna::marker_symbol::square},
                                                                       {"block", vorna::marker_symbol::filled_square},
                                                                       {"triangle", vorna::marker_symbol::triangle},
                                                                       {"star", vorna::marker_symbol::star}}};

std::vector<std::string> symbol_names() {
    std::vector<std::string> names;
    names.reserve(symbols.size());
    for (const auto& [name, symbol] : symbols) {
        names.emplace_back(name);
    }
    return names;
}

std::int32_t parsed_symbol(const std::string& text) {
    for (const auto& [name, symbol] : symbols) {
        if (text == name) {
            return symbol;
        }
    }
    throw drawing::Usage_Error("--marker: expected one of " + list_of(symbol_names()) + ", found '" + text + "'");
}

std::optional<Extent> parsed_extent(const std::string& text, bool drawing) {
    if (text.empty()) {
        return std::nullopt;
    }
    const std::vector<double> n = parsed_numbers(text);
    if (n.size() != 4 || n[1] >= n[3] || n[0] == n[2] || (drawing && n[0] > n[2])) {
        throw drawing::Usage_Error("--bbox: expected west,south,east,north, found '" + text + "'");
    }
    return Extent{n[0], n[1], n[0] > n[2] ? n[2] + full_circle : n[2], n[3]};
}

std::optional<Position> parsed_center(const std::string& text) {
    if (text.empty()) {
        return std::nullopt;
    }
    const std::vector<double> n = parsed_numbers(text);
    if (n.empty() || n.size() > 2 || std::abs(n[0]) > full_circle || (n.size() == 2 && std::abs(n[1]) > 90)) {
        throw drawing::Usage_Error("--center: expected a longitude, or longitude,latitude, found '" + text + "'");
    }
    return Position{n[0], n.size() == 2 ? n[1] : 0};
}

// A file's own statement may run over the antimeridian.
std::optional<Extent> stated_extent(const Map& map, bool on_globe) {
    if (!map.extent) {
        return std::nullopt;
    }
    Extent extent = *map.extent;
    if (on_globe && extent.west > extent.east) {
        extent.east += full_circle;
    }
    return extent.west < extent.east && extent.south < extent.north ? std::optional(extent) : std::nullopt;
}

bool same_name(const std::string& a, const std::string& b) {
    return std::ranges::equal(a, b, [](unsigned char c, unsigned char d) { return std::tolower(c) == std::tolower(d); });
}

// By name, else by identity, else by number.
std::size_t chosen_shape(const Map& map, const std::string& file, const std::string& text) {
    for (const auto key : {&Shape::name, &Shape::id}) {
        const auto found = std::ranges::find_if(map.shapes, [&](const Shape& shape) { return same_name(shape.*key, text); });
        if (found != map.shapes.end()) {
            return static_cast<std::size_t>(found - map.shapes.begin());
        }
    }
    std::size_t number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || stop != text.data() + text.size() || number >= map.shapes.size()) {
        throw drawing::Usage_Error("--clip-to: expected the name, the id or the number of one of " +
                                   std::to_string(map.shapes.size()) + " shapes of " + file + ", found '" + text + "'");
    }
    return number;
}

// The meridian around which a shape that lies across the antimeridian is whole; nothing for all others.
std::optional<Position> middle_of(const Shape& shape) {
    std::array<bool, 360> touched{};
    for (const Face& face : shape.faces) {
        for (const Path& ring : face) {
            for (const Position& p : ring) {
                touched[static_cast<std::size_t>(std::clamp(std::floor(std::remainder(p.x, full_circle)) + 180, 0.0, 359.0))] =
                    true;
            }
        }
    }
    if (!touched.front() || !touched.back()) {
        return std::nullopt;
    }
    std::size_t best_start = 0, best = 0, run = 0;
    for (std::size_t i = 0; i < touched.size(); ++i) {
        run = touched[i] ? 0 : run + 1;
        if (run > best) {
            best = run;
            best_start = i + 1 - run;
        }
    }
    const double gap_middle = static_cast<double>(best_start) + static_cast<double>(best) / 2 - 180;
    return best < 10 ? std::nullopt : std::optional(Position{std::remainder(gap_middle + 180, full_circle), 0});
}

// So far beyond the globe, or on a plane so far out, that nothing can be drawn there. whose: the file, or the option.
void check_extent(const Extent& extent, const std::string& whose, bool on_globe) {
    const double most_x = on_globe ? 3 * full_circle : 1e100, most_y = on_globe ? full_circle : 1e100;
    for (const auto& [value, most] :
         {std::pair(extent.west, most_x), {extent.east, most_x}, {extent.south, most_y}, {extent.north, most_y}}) {
        if (!(std::abs(value) <= most)) {
            std::array<char, 32> found;
            std::snprintf(found.data(), found.size(), "%.10g", value);
            throw drawing::Usage_Error(whose + ": expected " + (on_globe ? "degrees" : "coordinates up to 1e100") + ", found " +
                                       found.data());
        }
    }
}

// Where an extent lies on the map.
Bounds bounds_of(const Extent& extent, const Projection& projection) {
    constexpr int steps = 128;
    Bounds bounds = Bounds::nothing();
    for (int i = 0; i <= steps; ++i) {
        for (int j = 0; j <= steps; ++j) {
            Position p{extent.west + (extent.east - extent.west) * i / steps,
                       extent.south + (extent.north - extent.south) * j / steps};
            if (projection.domain()) {
                p.y = std::clamp(p.y, projection.domain()->south, projection.domain()->north);
            }
            if (const auto place = project_point(p, projection)) {
                bounds.add(*place);
            }
        }
    }
    return bounds;
}

Bounds bounds_of(const Face& face) {
    Bounds bounds = Bounds::nothing();
    for (const Path& ring : face) {
        std::ranges::for_each(ring, [&](Position p) { bounds.add(p); });
    }
    return bounds;
}

// Meridians and parallels.
std::vector<Path> graticule_lines(double step, const Projection& projection) {
    std::vector<Path> lines;
    const auto add = [&](const Path& line) { std::ranges::move(project_line(line, projection), std::back_inserter(lines)); };
    for (double x = -180; x < 180; x += step) {
        Path line;
        for (int y = -90; y <= 90; ++y) {
            line.push_back({x, static_cast<double>(y)});
        }
        add(line);
    }
    for (double y = step * std::floor(90 / step); y >= -90; y -= step) {
        Path line;
        for (int x = -180; x <= 180; ++x) {
            line.push_back({static_cast<double>(x), y});
        }
        if (std::abs(y) < 90) {
            add(line);
        }
    }
    for (Path ring : project_outline(projection)) {
        ring.push_back(ring.front());
        lines.push_back(std::move(ring));
    }
    return lines;
}

VT_RGB32 contrast_to(VT_RGB32 background) {
    const bool dark = 3 * background.red + 6 * background.green + background.blue < 1280;
    return dark ? VT_RGB32{255, 255, 255, 255} : VT_RGB32{0, 0, 0, 255};
}

VT_RGB32 with_opacity(VT_RGB32 color, double opacity) {
    color.alpha = static_cast<std::uint8_t>(std::lround(255 * opacity));
    return color;
}

// The standard palette with the map's own colours in the place of its greys.
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

class Map_Drawing final : public Map_Scene {
public:
    Map_Drawing(const Map_Picture& picture, const Map_Options& options);

    VT_Int_Pair size() const { return view_.size; }
    drawing::map::View fitted(VT_Int_Pair size) const override;
    void look(const drawing::map::View& view) override;
    void set_up(drawing::Session& session) override;
    void draw(drawing::Session& session, VT_RGB32 background) const override;
    std::string summary() const override {
        return std::to_string(layer_->shape_count()) + " shapes, " + std::to_string(layer_->position_count()) + " positions";
    }

private:
    void choose_projection();
    void choose_bounds();
    void place_labels();
    void draw_labels(Map_Painter& painter) const;
    Layer_Style style_of(const Map& map, const Map_Layer& layer) const;
    Layer_Style overlay_style(const Map& map) const;
    void set_line_style(Layer_Style& style) const;

    const Map_Picture& picture_;
    const Map_Options& options_;
    Map map_, overlay_map_;
    std::optional<Extent> extent_;
    std::optional<std::size_t> clip_shape_;
    std::unique_ptr<Projection> projection_;
    std::optional<Map_Layer> layer_, overlay_;
    Layer_Style style_, overlay_style_;
    Face globe_;
    std::vector<Path> graticule_;
    std::optional<VT_RGB32> water_;
    Bounds shown_ = Bounds::nothing(); // on the plane
    View view_;
    std::vector<Face> labels_; // in pixels
    VT_Reference<VT_Rendition> rendition_;
};

void warn(const Map& map, bool strict) {
    for (const std::string& warning : map.warnings) {
        if (strict) {
            throw drawing::Usage_Error(warning);
        }
        app::warn(warning);
    }
}

Map_Drawing::Map_Drawing(const Map_Picture& picture, const Map_Options& options)
    : picture_(picture), options_(options), map_(load_map(picture.input, options.layer, *picture.limits)) {
    extent_ = parsed_extent(options.bbox, map_.drawing);
    if (!options.water.empty()) {
        water_ = parsed_color("--water", options.water);
    }
    if (!options.clip_to.empty()) {
        clip_shape_ = chosen_shape(map_, picture.input.name, options.clip_to);
    }
    choose_projection();
    layer_.emplace(picture.input.name, map_, *projection_, *picture.limits);
    style_ = style_of(map_, *layer_);
    if (!options.overlay.empty()) {
        const drawing::Input overlay = drawing::open_input(options.overlay, "", *picture.limits);
        if (!drawing::is_map(overlay)) {
            throw drawing::Usage_Error("--overlay: expected a map or drawing, found " + overlay.name);
        }
        overlay_map_ = load_map(overlay, "", *picture.limits);
        overlay_.emplace(overlay.name, overlay_map_, *projection_, *picture.limits);
        overlay_style_ = overlay_style(overlay_map_);
    }
    globe_ = project_outline(*projection_);
    if (options.graticule > 0) {
        graticule_ = graticule_lines(options.graticule, *projection_);
    }
    choose_bounds();
    look(fitted(picture.size));
    warn(map_, picture.strict);
    warn(overlay_map_, picture.strict);
}

void Map_Drawing::choose_projection() {
    const std::string name = options_.projection.empty() ? map_.drawing ? "plane" : "equirectangular" : options_.projection;
    std::optional<Position> center = parsed_center(options_.center);
    if (map_.drawing && name != "plane") {
        throw drawing::Usage_Error("--projection: expected a map, found the drawing " + picture_.input.name);
    }
    if (name == "plane") {
        for (const auto& [given, option] : {std::pair(water_.has_value(), "--water"), {options_.graticule > 0, "--graticule"}}) {
            if (given) {
                throw drawing::Usage_Error(std::string(option) + ": expected a projection of the globe, found a plane");
            }
        }
    }
    if (!extent_ && !clip_shape_) {
        extent_ = stated_extent(map_, name != "plane");
    }
    if (extent_) {
        check_extent(*extent_, options_.bbox.empty() ? picture_.input.name + ": bbox" : "--bbox", name != "plane");
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

void Map_Drawing::choose_bounds() {
    Bounds bounds = extent_       ? bounds_of(*extent_, *projection_)
                    : clip_shape_ ? bounds_of(layer_->face_of(*clip_shape_))
                                  : layer_->bounds();
    const bool is_given = !options_.bbox.empty();
    if (bounds.empty()) {
        throw drawing::Usage_Error(is_given
                                       ? "--bbox: expected a part of what the projection shows, found '" + options_.bbox + "'"
                                       : picture_.input.name + ": expected shapes to draw, found none that the projection shows");
    }
    const Bounds globe = bounds_of(globe_);
    const bool shows_globe = water_ || !graticule_.empty();
    if (!is_given && !clip_shape_ && shows_globe && 2 * (bounds.right - bounds.left) > globe.right - globe.left) {
        bounds = globe;
    }
    shown_ = bounds;
}

// What is drawn fills the window, in the middle of it; but for --bbox, a little is left free around it.
drawing::map::View Map_Drawing::fitted(VT_Int_Pair size) const {
    double width = shown_.right - shown_.left, height = shown_.top - shown_.bottom;
    if (width == 0 && height == 0) {
        width = height = 1; // a single point
    }
    drawing::map::View view;
    view.middle = {(shown_.left + shown_.right) / 2, (shown_.bottom + shown_.top) / 2};
    view.size = size;
    const double room = options_.bbox.empty() ? 0.96 : 1;
    if (size.y == 0) {
        view.size.y = static_cast<std::int32_t>(
            std::clamp(std::ceil(size.x * height / std::max(width, 1e-300)), size.x / 8.0, double{largest_height}));
    }
    view.scale = room * std::min(view.size.x / std::max(width, 1e-300), view.size.y / std::max(height, 1e-300));
    return view;
}

void Map_Drawing::look(const drawing::map::View& view) {
    view_ = view;
    labels_.clear();
    if (options_.labels) {
        place_labels();
    }
}

// Names of points to the right of their markers, names of faces inside of them; what finds no room is left out.
void Map_Drawing::place_labels() {
    const std::unique_ptr<Label_Font> font = load_label_font(options_.font, options_.label_size);
    const VT_Int_Rectangle window{0, view_.size.x - 1, 0, view_.size.y - 1};
    const auto height = static_cast<std::int32_t>(std::ceil(font->height()));
    constexpr std::int32_t margin = 2;
    // Of every view anew: who moves a map looks on for as long as he likes.
    drawing::Load_Limits limits(picture_.limits->memory_left());
    const auto text_of = [&](std::size_t shape) {
        return font->text_of(map_.shapes[shape].name, view_.size.x, picture_.input.name, limits);
    };
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
        const Position p = view_.device_place(place);
        if (p.x >= 0 && p.y >= 0 && p.x < view_.size.x && p.y < view_.size.y) {
            add(text_of(shape),
                {static_cast<std::int32_t>(p.x) + options_.marker_size / 2 + 3, static_cast<std::int32_t>(p.y) - height / 2});
        }
    }
    for (std::size_t s = 0; s < map_.shapes.size(); ++s) {
        if (map_.shapes[s].name.empty()) {
            continue;
        }
        const Label_Font::Text text = text_of(s);
        const VT_Int_Pair size{static_cast<std::int32_t>(std::ceil(text.width)) + 2 * margin, height + 2 * margin};
        const Face face = view_.device_face(layer_->face_of(s));
        if (const auto at = place_in_face(face, window, size)) {
            add(text, {at->x + margin, at->y + margin});
        }
    }
}

void Map_Drawing::set_line_style(Layer_Style& style) const {
    const std::optional<Dashes> border = parsed_dashes("--border", options_.border);
    const std::optional<Dashes> outline =
        parsed_dashes("--outline", options_.outline.empty() ? options_.border : options_.outline);
    style.borders = border;
    style.outlines = outline;
    style.width = options_.border_width;
    style.casing_width = options_.casing_width;
    if (!options_.casing.empty()) {
        style.casing = parsed_color("--casing", options_.casing);
    }
    style.marker = {parsed_color("--marker-color", options_.marker_color), parsed_symbol(options_.marker), options_.marker_size};
}

Layer_Style Map_Drawing::style_of(const Map& map, const Map_Layer& layer) const {
    Layer_Style style;
    const std::string& fill = options_.fill;
    const bool by_palette = fill == "palette" || (fill.empty() && !map.drawing);
    std::optional<VT_RGB32> one_fill, one_stroke;
    if (!fill.empty() && fill != "palette" && fill != "none") {
        one_fill = parsed_color("--fill", fill, {"palette", "none"});
    }
    if (!options_.border_color.empty()) {
        one_stroke = parsed_color("--border-color", options_.border_color);
    }
    std::vector<std::size_t> numbers;
    if (by_palette) {
        numbers = numbers_unlike_neighbours(layer.neighbours(), palette_colors.size());
    }
    const VT_RGB32 foreground = map.drawing ? contrast_to(picture_.background) : border_color;
    for (std::size_t s = 0; s < map.shapes.size(); ++s) {
        const Shape& shape = map.shapes[s];
        std::optional<VT_RGB32> color = one_fill ? one_fill : shape.fill;
        if (by_palette && !color) {
            color = vorna::color_of(0xFF000000U | static_cast<std::uint32_t>(palette_colors[numbers[s]]));
        }
        if (fill == "none") {
            color.reset();
        }
        style.fills.push_back(color ? std::optional(with_opacity(*color, options_.opacity)) : std::nullopt);
        style.strokes.push_back(one_stroke ? *one_stroke : shape.stroke.value_or(foreground));
    }
    set_line_style(style);
    return style;
}

Layer_Style Map_Drawing::overlay_style(const Map& map) const {
    const VT_RGB32 color = parsed_color("--overlay-color", options_.overlay_color);
    Layer_Style style;
    set_line_style(style);
    style.fills.assign(map.shapes.size(), color);
    style.strokes.assign(map.shapes.size(), color);
    style.borders = style.outlines = Dashes{};
    style.casing.reset();
    style.marker.color = color;
    return style;
}

void Map_Drawing::set_up(drawing::Session& session) {
    const VT_Int_Rectangle window{0, view_.size.x - 1, 0, view_.size.y - 1};
    VT_Renderer_Options& options = session.options();
    options.set_window_size(view_.size);
    options.set_color_system(picture_.colors == 32 ? 1 : 0);
    options.set_buffer_depth(0);
    if (picture_.colors == 8) {
        const VT_RGB32 label = parsed_color("--label-color", options_.label_color);
        std::vector<VT_RGB32> colors{label, contrast_to(label), picture_.background, graticule_color, style_.marker.color};
        colors.insert(colors.end(), style_.strokes.begin(), style_.strokes.end());
        colors.push_back(water_.value_or(picture_.background));
        colors.push_back(style_.casing.value_or(picture_.background));
        if (overlay_) {
            colors.push_back(overlay_style_.marker.color);
        }
        for (const std::optional<VT_RGB32>& fill : style_.fills) {
            colors.push_back(fill.value_or(picture_.background));
        }
        options.set_palette(palette_with(colors));
    }
    rendition_ = new VT_Rendition;
    rendition_->clip.hard_clip = window;
    rendition_->window.rectangle = window;
    rendition_->line.flags = picture_.antialias ? vorna::line_flag::smoothed : 0;
    rendition_->line.cap = vorna::line_cap::butt;
    if (clip_shape_) {
        std::vector<VT_Contour_Set::Contour> contours;
        for (const Path& ring : layer_->face_of(*clip_shape_)) {
            VT_Contour_Set::Contour& contour = contours.emplace_back();
            for (const Position& p : ring) {
                const Position place = view_.device_place(p);
                contour.push_back({static_cast<float>(place.x), static_cast<float>(place.y), 0});
            }
        }
        rendition_->clip.complex_clip = new VT_Contour_Set(std::move(contours));
        session.renderer().requested_table.find("Use Mask")->set(true);
    }
    if (overlay_ && !options_.merge.empty()) {
        const VT_RGB32 b = picture_.background;
        session.renderer().requested_table.find("Merge Control Background Color")->set(VT_Int_RGB{b.red, b.green, b.blue});
    }
    session.establish();
    rendition_->window.index = static_cast<std::uint8_t>(session.palette().closest_match(picture_.background, false));
}

void Map_Drawing::draw(drawing::Session& session, VT_RGB32 background) const {
    VT_Renderer_Data& renderer = session.renderer();
    rendition_->window.color = background;
    renderer.begin_picture_all();
    VD_Draw_Window(renderer, *rendition_);
    Map_Painter painter(renderer, *rendition_, view_);
    if (water_) {
        painter.fill(globe_, *water_);
    }
    for (const Path& line : graticule_) {
        painter.draw(line, {graticule_color, 1, {}});
    }
    layer_->draw(painter, style_);
    if (overlay_) {
        const VT_Reference<VT_Rendition> rendition(new VT_Rendition(*rendition_));
        if (!options_.merge.empty()) {
            rendition->face.mode = rendition->line.mode = rendition->marker.mode = vorna::merge_drawing_mode;
        }
        Map_Painter overlay_painter(renderer, *rendition, view_);
        overlay_->draw(overlay_painter, overlay_style_);
    }
    draw_labels(painter);
    renderer.end_picture_all();
}

// Each letter with a light or dark seam of one pixel around it.
void Map_Drawing::draw_labels(Map_Painter& painter) const {
    const VT_RGB32 color = parsed_color("--label-color", options_.label_color);
    const auto draw_moved = [&](const Face& label, double right, double up, VT_RGB32 ink) {
        Face moved = label;
        for (Path& ring : moved) {
            std::ranges::transform(ring, ring.begin(), [&](Position p) { return Position{p.x + right, p.y + up}; });
        }
        painter.fill_pixels(moved, ink);
    };
    for (const Face& label : labels_) {
        for (const double up : {-1.0, 0.0, 1.0}) {
            for (const double right : {-1.0, 0.0, 1.0}) {
                draw_moved(label, right, up, contrast_to(color));
            }
        }
    }
    for (const Face& label : labels_) {
        painter.fill_pixels(label, color);
    }
}

void check_combinations(const Map_Picture& picture, const Map_Options& options) {
    if (picture.antialias && picture.colors != 32) {
        throw drawing::Usage_Error("--antialias: expected 32 bits a pixel, found --colors 8");
    }
    if (options.opacity < 1 && picture.colors != 32) {
        throw drawing::Usage_Error("--opacity: expected 32 bits a pixel, found --colors 8");
    }
    for (const auto& [given, name, expected] : {std::tuple(picture.colors != 32, "--colors 8", "32 bits a pixel"),
                                                {!options.merge.empty(), "--merge", "a colour to merge with"}}) {
        if (given && picture.transparent) {
            throw drawing::Usage_Error("--background none: expected " + std::string(expected) + ", found " + name);
        }
    }
    if (options.overlay == "-" && picture.input.name == drawing::name_of_input("-")) {
        throw drawing::Usage_Error("--overlay -: expected a file, found standard input, which is the map");
    }
    if (!picture.record.empty() && drawing::is_standard_output(picture.record) && drawing::is_standard_output(picture.output)) {
        throw drawing::Usage_Error("--record " + picture.record + ": expected another file, found -o " + picture.output);
    }
}

} // namespace

void add_map_options(std::vector<Option>& table, Map_Options& options) {
    const std::vector<Option> own{
        {.names = {"--projection"},
         .value = suggested_value("NAME", projection_names()),
         .text = "A projection's name, a PROJ string or EPSG code; maps are equirectangular by default, plane is coordinates as "
                 "they are",
         .target = &options.projection},
        {.names = {"--center"},
         .value = text_value("LON[,LAT]"),
         .text = "Longitude, or longitude and latitude, in the middle of the projection",
         .target = &options.center},
        {.names = {"--bbox"},
         .value = text_value("W,S,E,N"),
         .text = "What to show, in degrees or a drawing's units; all by default",
         .target = &options.bbox},
        {.names = {"--layer"},
         .value = text_value("NAME"),
         .text = "Object of a TopoJSON file; its first by default",
         .target = &options.layer},
        {.names = {"--clip-to"},
         .value = text_value("SHAPE"),
         .text = "Draw inside of this shape only: its name, id or number",
         .target = &options.clip_to},
        {.names = {"--fill"},
         .value = text_value("COLOR"),
         .text = "One colour for all faces; palette, the default of maps, gives neighbours different ones",
         .target = &options.fill},
        {.names = {"--opacity"},
         .value = number_value("SHARE", 0, 1),
         .text = "How much fills hide what lies below",
         .target = &options.opacity},
        {.names = {"--water"},
         .value = text_value("COLOR"),
         .text = "Colour of the globe behind the shapes",
         .target = &options.water},
        {.names = {"--graticule"},
         .value = number_value("DEGREES", 0.1, 90),
         .text = "Meridians and parallels so many degrees apart",
         .target = &options.graticule},
        {.names = {"--border"},
         .value = suggested_value("STYLE", border_names()),
         .text = "Borders and lines, solid by default; or lengths of dashes and gaps such as 6,4",
         .target = &options.border},
        {.names = {"--outline"},
         .value = suggested_value("STYLE", border_names()),
         .text = "Borders that no two faces share, as coasts; as --border by default",
         .target = &options.outline},
        {.names = {"--border-color"},
         .value = text_value("COLOR"),
         .text = "Colour of borders and lines instead of their own",
         .target = &options.border_color},
        {.names = {"--border-width"},
         .value = whole_value("PIXELS", 1, 1000),
         .text = "Width of borders and lines, 1 by default",
         .target = &options.border_width},
        {.names = {"--casing"},
         .value = text_value("COLOR"),
         .text = "Colour of a casing on both sides of borders and lines",
         .target = &options.casing},
        {.names = {"--casing-width"},
         .value = whole_value("PIXELS", 1, 1000),
         .text = "Width of the casing on each side, 2 by default",
         .target = &options.casing_width,
         .needs = {"--casing"}},
        {.names = {"--marker"},
         .value = suggested_value("SYMBOL", symbol_names()),
         .text = "Points, disc by default",
         .target = &options.marker},
        {.names = {"--marker-size"},
         .value = whole_value("PIXELS", 1, 1000),
         .text = "Size of points, 7 by default",
         .target = &options.marker_size},
        {.names = {"--marker-color"}, .value = text_value("COLOR"), .text = "Colour of points", .target = &options.marker_color},
        {.names = {"--labels"}, .text = "Names of shapes where there is room for them", .target = &options.labels},
        {.names = {"--label-size"},
         .value = whole_value("PIXELS", 4, 1000),
         .text = "Size of letters, 12 by default",
         .target = &options.label_size,
         .needs = {"--labels"}},
        {.names = {"--label-color"},
         .value = text_value("COLOR"),
         .text = "Colour of letters",
         .target = &options.label_color,
         .needs = {"--labels"}},
        {.names = {"--font"},
         .value = text_value("FONT"),
         .text = "Font of labels: TrueType, OpenType and others",
         .target = &options.font,
         .needs = {"--labels"}},
        {.names = {"--overlay"},
         .value = text_value("MAP"),
         .text = "Another map to draw over this one",
         .target = &options.overlay},
        {.names = {"--overlay-color"},
         .value = text_value("COLOR"),
         .text = "Colour of its faces, lines and points",
         .target = &options.overlay_color,
         .needs = {"--overlay"}},
        {.names = {"--merge"},
         .value = choice_value("RULE", {"and"}),
         .text = "How the overlay's colours combine with those below, bit by bit, as inks do",
         .target = &options.merge,
         .needs = {"--overlay"}},
    };
    for (Option option : own) {
        option.group = "Maps and drawings";
        option.applies_to = Applies_To::maps;
        table.push_back(std::move(option));
    }
}

std::unique_ptr<Map_Scene> load_map_scene(const Map_Picture& picture, const Map_Options& options) {
    check_combinations(picture, options);
    return std::make_unique<Map_Drawing>(picture, options);
}

namespace {

void describe(const Map_Picture& picture, const Map_Drawing& drawing) {
    const VT_Int_Pair size = drawing.size();
    const std::uint64_t pixels = static_cast<std::uint64_t>(size.x) * static_cast<std::uint64_t>(size.y);
    const bool indexed = picture.colors != 32;
    const std::string kind = indexed ? "256 colours" : picture.transparent ? "32 bits a pixel, transparent" : "32 bits a pixel";
    print(stdout, "map: " + drawing::printable(picture.input.name) + "\ndrawn: " + drawing.summary() +
                      "\npicture: " + std::to_string(size.x) + 'x' + std::to_string(size.y) + ", " + kind + "\nmemory: " +
                      drawing::memory_text(drawing::resident_memory() + pixels * (indexed               ? 1
                                                                                  : picture.transparent ? 8
                                                                                                        : 4)) +
                      "\nfile: " + (picture.output == "-" ? "standard output" : drawing::printable(picture.output)) + '\n');
}

// The file of what has been drawn, and the digest of its pixels.
std::string finished(const Map_Picture& picture, const Map_Drawing& drawing, drawing::Session& session, std::string& hash) {
    const drawing::Raster raster = drawing::raster_of(session.color_buffer());
    const VT_RGB32 b = picture.background;
    std::vector<std::uint8_t> nothing{b.red, b.green, b.blue, b.alpha};
    drawing::Pixel_Finish finish({.transparent = picture.transparent});
    if (picture.colors != 32) {
        nothing = {static_cast<std::uint8_t>(session.palette().closest_match(b, false))};
    } else if (picture.transparent) {
        nothing.assign(4, 0);
        drawing.draw(session, {0, 0, 0, 255});
        finish.keep(raster);
        drawing.draw(session, b);
    }
    drawing::Sight sight(std::move(nothing));
    drawing::Sha256 digest;
    const drawing::Png_Form form = drawing::png_form_of(raster, session.palette());
    std::string file = drawing::png_file(form, [&](std::uint32_t row, std::uint8_t* samples) {
        finish.store_row(raster, static_cast<std::int32_t>(row), {}, samples);
        sight.look_at(samples, static_cast<std::size_t>(raster.width));
        if (picture.hash) {
            digest.add(samples, static_cast<std::size_t>(raster.width) * form.pixel_bytes());
        }
    });
    hash = digest.finish();
    if (sight.is_empty() && !picture.allow_empty) {
        throw std::runtime_error(drawing::nothing_seen(picture.input.name));
    }
    return file;
}

} // namespace

void render_map(const Map_Picture& picture, const Map_Options& options, const drawing::Module_Choice& module) {
    check_combinations(picture, options);
    if (!picture.dry_run) {
        drawing::refuse_terminal("-o", picture.output);
    }
    drawing::Session session(module);
    std::optional<drawing::recording::Recorder> recorder;
    if (!picture.record.empty()) {
        recorder.emplace(session);
    }
    const auto load_start = Clock::now();
    Map_Drawing drawing(picture, options);
    const double load = milliseconds_since(load_start);
    if (picture.dry_run) {
        drawing::Output_File::check(picture.output);
        if (!picture.record.empty()) {
            drawing::Output_File::check(picture.record);
        }
        describe(picture, drawing);
        return;
    }
    const auto setup_start = Clock::now();
    drawing.set_up(session);
    const double setup = milliseconds_since(setup_start);
    drawing::Output_Files files;
    double best = INFINITY;
    for (int i = 0; i < picture.repeat; ++i) {
        const auto start = Clock::now();
        drawing.draw(session, picture.background);
        best = std::min(best, milliseconds_since(start));
        if (recorder && i == 0) {
            files.add(picture.record, drawing::recording::file_of(recorder->finish(), picture.record));
        }
    }
    std::string hash;
    files.add(picture.output, finished(picture, drawing, session, hash));
    files.commit();
    if (picture.hash) {
        drawing::print_line(drawing::is_standard_output(picture.record) ? picture.record : picture.output, hash);
    }
    if (picture.stats) {
        std::array<char, 100> times;
        std::snprintf(times.data(), times.size(), ", load %.1f ms, setup %.1f ms, draw %.2f ms\n", load, setup, best);
        print(stderr, drawing.summary() + times.data());
    }
}

} // namespace vorna::app
