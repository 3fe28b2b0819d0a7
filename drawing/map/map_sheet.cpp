// The shapes of one file or of one layer of a style file, with their style.
#include "drawing/map/map_sheet.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <utility>

#include "drawing/map/classes.h"
#include "drawing/map/color_ramps.h"
#include "drawing/map/filter.h"
#include "drawing/map/map_reader.h"
#include "drawing/map/simple_style.h"

namespace vorna::drawing::map {
namespace {

// Fills; neighbours get different ones.
constexpr std::array palette_colors{0xF2D5A7, 0xC9DFB0, 0xF4C7C3, 0xCBD6EC, 0xEBE5A4, 0xDCC8E4, 0xB9DCD6};
constexpr VT_RGB32 border_color{64, 64, 64, 255};
constexpr VT_RGB32 no_value_color{217, 217, 217, 255};
constexpr std::size_t most_categories = 256;

VT_RGB32 with_opacity(VT_RGB32 color, double opacity) {
    color.alpha = static_cast<std::uint8_t>(std::lround(color.alpha * opacity));
    return color;
}

void add_field(std::vector<std::string>& fields, const std::string& field) {
    if (!field.empty() && std::ranges::find(fields, field) == fields.end()) {
        fields.push_back(field);
    }
}

// The values of a field that are numbers.
std::vector<double> numbers_of(const Map& map, std::size_t field) {
    std::vector<double> numbers;
    for (const Shape& shape : map.shapes) {
        if (const auto* number = std::get_if<double>(&shape.values[field]); number && std::isfinite(*number)) {
            numbers.push_back(*number);
        }
    }
    return numbers;
}

// number: of the palette's colours.
std::optional<VT_RGB32> own_fill(const Map_Fill& fill, Map_Fill::Kind kind, const Shape& shape, std::size_t number,
                                 VT_RGB32 foreground) {
    using Kind = Map_Fill::Kind;
    if (kind == Kind::none) {
        return std::nullopt;
    }
    if (kind == Kind::color) {
        return fill.color;
    }
    if (shape.pen.contrasts && !shape.fill) {
        return foreground;
    }
    if (kind == Kind::palette && !shape.fill) {
        return vorna::color_of(0xFF000000U | static_cast<std::uint32_t>(palette_colors[number]));
    }
    return shape.fill;
}

bool has_text(const Map& map, std::size_t field) {
    return std::ranges::any_of(map.shapes,
                               [&](const Shape& shape) { return std::holds_alternative<std::string>(shape.values[field]); });
}

} // namespace

VT_RGB32 contrast_to(VT_RGB32 background) {
    const bool dark = 3 * background.red + 6 * background.green + background.blue < 1280;
    return dark ? VT_RGB32{255, 255, 255, 255} : VT_RGB32{0, 0, 0, 255};
}

Map_Sheet::Map_Sheet(const Input& input, const Map_Settings& settings, Load_Limits& limits)
    : settings_(settings), file_(input.name), query_{settings.layer, {}} {
    query_.layout = settings.layout;
    query_.font = settings.font;
    std::optional<Filter> filter;
    if (!settings.filter.empty()) {
        query_.fields = filter.emplace(settings.place + "filter", settings.filter).fields();
    }
    for (const std::string* field : {&settings.fill_by, &settings.width_by, &settings.label_by}) {
        add_field(query_.fields, *field);
    }
    if (has_labels()) {
        add_field(query_.fields, settings.label_key);
    }
    map_ = load_map(input, query_, limits);
    check_fields();
    if (filter) {
        std::erase_if(map_.shapes, [&](const Shape& shape) { return !filter->accepts(shape.values); });
    }
}

std::size_t Map_Sheet::index_of(const std::string& field) const {
    return static_cast<std::size_t>(std::ranges::find(query_.fields, field) - query_.fields.begin());
}

// A field without any value is a wrong name, as far as the shapes tell.
void Map_Sheet::check_fields() const {
    for (std::size_t i = 0; i < query_.fields.size() && !map_.shapes.empty(); ++i) {
        const bool has_value = std::ranges::any_of(map_.shapes, [i](const Shape& shape) { return shape.values[i].index() != 0; });
        if (!has_value) {
            std::string names;
            for (const Layer_Facts& layer : map_.layers) {
                for (const Field_Facts& field : layer.fields) {
                    names += (names.empty() ? "" : ", ") + field.name;
                }
            }
            throw Usage_Error(settings_.place + "expected a field of " + file_ + " that has values" +
                              (names.empty() ? "" : ": " + names) + "; found '" + query_.fields[i] + "'");
        }
    }
}

void Map_Sheet::project(const Projection& projection, VT_RGB32 background, Load_Limits& limits) {
    layer_.emplace(file_, map_, projection, limits);
    if (!settings_.fill_by.empty()) {
        data_fills_ = colors_by_field();
    }
    if (!settings_.width_by.empty()) {
        data_widths_ = widths_by_field();
    }
    style_ = drawn_style_ = style_of(background);
}

void Map_Sheet::set_background(VT_RGB32 background) {
    style_ = style_of(background);
}

std::string Map_Sheet::label_of(std::size_t shape) const {
    const Shape& found = map_.shapes[shape];
    return settings_.label_by.empty() ? found.name : text_of(found.values[index_of(settings_.label_by)]);
}

// A pen of the usual weight is as wide as other lines, on paper as 0.25 mm. Patterns too small to be seen are solid.
Layer_Style Map_Sheet::style_in(const View& view, std::int32_t times) const {
    constexpr double usual_weight = 0.25, widest = 16384, least_pattern = 3;
    static const Dashes solid;
    Layer_Style style = style_;
    style.enlarge(times);
    if (!map_.drawing || !data_widths_.empty()) {
        return style;
    }
    style.dash_unit = view.scale;
    style.dashes.resize(map_.shapes.size());
    for (std::size_t s = 0; s < map_.shapes.size(); ++s) {
        const Pen& pen = map_.shapes[s].pen;
        const double weight = pen.weight > 0 ? pen.weight : usual_weight;
        const double base = map_.paper_unit > 0 ? view.scale * weight / map_.paper_unit : times * weight / usual_weight;
        const double width = pen.width > 0 ? pen.width * view.scale : base * settings_.border_width;
        style.widths[s] =
            static_cast<std::int32_t>(std::lround(std::clamp<double>(width, settings_.border_width > 0 ? times : 0, widest)));
        if (pen.dashes > 0) {
            const Dashes& dashes = map_.dashes[pen.dashes - 1];
            const double length = std::accumulate(dashes.begin(), dashes.end(), 0.0) * view.scale;
            style.dashes[s] = length >= least_pattern * times ? &dashes : &solid;
        }
    }
    return style;
}

double Map_Sheet::label_key_of(std::size_t shape) const {
    const auto* number = std::get_if<double>(&map_.shapes[shape].values[index_of(settings_.label_key)]);
    return number && !std::isnan(*number) ? *number : -INFINITY;
}

Text_Paint Map_Sheet::label_paint() const {
    const VT_RGB32 color = settings_.label_color;
    return {.color = color, .halo_color = settings_.halo_color.value_or(contrast_to(color)), .halo_width = settings_.halo};
}

std::vector<std::optional<VT_RGB32>> Map_Sheet::colors_by_field() {
    const std::size_t field = index_of(settings_.fill_by);
    const Classing& classing = settings_.classing;
    const bool by_category =
        classing.method == "categories" || (classing.method.empty() && classing.breaks.empty() && has_text(map_, field));
    bool has_grey = false;
    std::vector<std::optional<VT_RGB32>> fills(map_.shapes.size());
    const auto colors_for = [&](std::size_t count) {
        const std::string ramp = !classing.ramp.empty() ? classing.ramp : by_category ? count > 8 ? "Set3" : "Set2" : "YlGnBu";
        std::vector<VT_RGB32> colors = *ramp_colors(ramp, std::max<std::size_t>(count, 1));
        if (classing.reversed) {
            std::ranges::reverse(colors);
        }
        return colors;
    };
    if (by_category) {
        std::vector<std::string> categories;
        for (const Shape& shape : map_.shapes) {
            if (shape.values[field].index() != 0) {
                categories.push_back(text_of(shape.values[field]));
            }
        }
        std::ranges::sort(categories);
        categories.erase(std::unique(categories.begin(), categories.end()), categories.end());
        if (categories.size() > most_categories) {
            throw Usage_Error(settings_.place + "fill-by " + settings_.fill_by + ": expected at most " +
                              std::to_string(most_categories) + " categories, found " + std::to_string(categories.size()));
        }
        const std::vector<VT_RGB32> colors = colors_for(categories.size());
        for (std::size_t s = 0; s < fills.size(); ++s) {
            const Value& value = map_.shapes[s].values[field];
            const auto at = std::ranges::lower_bound(categories, text_of(value)) - categories.begin();
            fills[s] = value.index() == 0 ? no_value_color : colors[static_cast<std::size_t>(at)];
            has_grey = has_grey || value.index() == 0;
        }
        for (std::size_t i = 0; i < categories.size(); ++i) {
            legend_.push_back({colors[i], categories[i]});
        }
    } else {
        const std::vector<double> numbers = numbers_of(map_, field);
        if (numbers.empty()) {
            throw Usage_Error(settings_.place + "fill-by " + settings_.fill_by + ": expected numbers in " + file_ +
                              ", found none; classes categories takes texts");
        }
        std::vector<double> limits = classing.breaks;
        if (limits.empty()) {
            const auto method = class_method_of(classing.method);
            limits = class_limits(numbers, method.value_or(Class_Method::quantiles), classing.count);
        }
        const std::vector<VT_RGB32> colors = colors_for(limits.size() + 1);
        for (std::size_t s = 0; s < fills.size(); ++s) {
            const auto* number = std::get_if<double>(&map_.shapes[s].values[field]);
            const bool has_class = number && std::isfinite(*number);
            fills[s] = has_class ? colors[class_of(*number, limits)] : no_value_color;
            has_grey = has_grey || !has_class;
        }
        const auto [least, most] = std::ranges::minmax(numbers);
        for (std::size_t i = 0; i <= limits.size(); ++i) {
            const double from = i == 0 ? std::min(least, limits.empty() ? least : limits[0]) : limits[i - 1];
            const double to = i == limits.size() ? std::max(most, limits.empty() ? most : limits.back()) : limits[i];
            legend_.push_back({colors[i], short_text_of(from) + " – " + short_text_of(to)});
        }
    }
    if (has_grey) {
        legend_.push_back({no_value_color, "no value"});
    }
    return fills;
}

// From the least to the greatest value, widths grow in proportion.
std::vector<std::int32_t> Map_Sheet::widths_by_field() const {
    const std::size_t field = index_of(settings_.width_by);
    const std::vector<double> numbers = numbers_of(map_, field);
    if (numbers.empty()) {
        throw Usage_Error(settings_.place + "width-by " + settings_.width_by + ": expected numbers in " + file_ + ", found none");
    }
    const auto [least, most] = std::ranges::minmax(numbers);
    std::vector<std::int32_t> widths;
    for (const Shape& shape : map_.shapes) {
        const auto* number = std::get_if<double>(&shape.values[field]);
        const double share =
            number && std::isfinite(*number) && most > least ? (*number / 2 - least / 2) / (most / 2 - least / 2) : 0;
        const double width = settings_.width_from + (settings_.width_to - settings_.width_from) * share;
        widths.push_back(static_cast<std::int32_t>(std::lround(width)));
    }
    return widths;
}

Layer_Style Map_Sheet::style_of(VT_RGB32 background) {
    using Kind = Map_Fill::Kind;
    const Map_Fill& fill = settings_.fill;
    const Kind kind = fill.kind != Kind::automatic ? fill.kind : map_.drawing ? Kind::own : Kind::palette;
    std::vector<std::size_t> numbers;
    if (kind == Kind::palette) {
        numbers = numbers_unlike_neighbours(layer_->neighbours(), palette_colors.size());
    }
    const VT_RGB32 foreground = map_.drawing ? contrast_to(background) : border_color;
    Layer_Style style;
    style.borders = settings_.border;
    style.outlines = settings_.outline;
    style.casing_width = settings_.casing_width;
    style.casing = settings_.casing;
    style.fills.reserve(map_.shapes.size());
    style.strokes.reserve(map_.shapes.size());
    style.widths.reserve(map_.shapes.size());
    style.markers.reserve(map_.shapes.size());
    for (std::size_t s = 0; s < map_.shapes.size(); ++s) {
        const Shape& shape = map_.shapes[s];
        const std::optional<VT_RGB32> color =
            !data_fills_.empty() ? data_fills_[s]
                                 : own_fill(fill, kind, shape, kind == Kind::palette ? numbers[s] : 0, foreground);
        Marker_Paint marker = settings_.marker;
        marker.color = shape.marker_color.value_or(marker.color);
        marker.size = shape.marker_size.value_or(marker.size);
        marker.symbol = shape.marker_symbol.value_or(marker.symbol);
        VT_RGB32 stroke = settings_.border_color ? *settings_.border_color : shape.stroke.value_or(foreground);
        if (shape.pen.contrasts) {
            marker.color = foreground;
        }
        if (!data_fills_.empty()) {
            marker.color = *data_fills_[s];
            stroke = shape.faces.empty() ? *data_fills_[s] : stroke;
        }
        if (color) {
            style.fills.emplace_back(with_opacity(*color, settings_.opacity));
        } else {
            style.fills.emplace_back();
        }
        style.strokes.push_back(stroke);
        style.widths.push_back(data_widths_.empty() ? shape.stroke_width.value_or(settings_.border_width) : data_widths_[s]);
        style.markers.push_back(marker);
    }
    return style;
}

} // namespace vorna::drawing::map
