// Style files: the layers of a map in JSON.
#include "drawing/map/style_file.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <utility>

#include "drawing/files/input_file.h"
#include "drawing/files/json_document.h"
#include "drawing/files/json_memory.h"
#include "drawing/files/path.h"
#include "drawing/image/color_name.h"
#include "drawing/map/classes.h"
#include "drawing/map/color_ramps.h"
#include "drawing/map/filter.h"
#include "drawing/map/json_place.h"
#include "drawing/map/line_styles.h"

namespace vorna::drawing::map {
namespace {

using Json = nlohmann::ordered_json;

// A value that is refused; the reader adds the place.
struct Wrong_Value {
    std::string expected;
};

std::string text_in(const Json& value, const char* expected) {
    if (!value.is_string()) {
        throw Wrong_Value{expected};
    }
    return value.get<std::string>();
}

double number_in(const Json& value, double least, double most) {
    const double number = value.is_number() ? value.get<double>() : NAN;
    if (!(number >= least && number <= most)) {
        char text[64];
        std::snprintf(text, sizeof text, "a number from %g to %g", least, most);
        throw Wrong_Value{text};
    }
    return number;
}

std::int32_t whole_in(const Json& value, std::int32_t least, std::int32_t most) {
    if (!value.is_number_integer()) {
        throw Wrong_Value{"a whole number from " + std::to_string(least) + " to " + std::to_string(most)};
    }
    return static_cast<std::int32_t>(number_in(value, least, most));
}

VT_RGB32 color_in(const Json& value, const char* expected = "a colour") {
    const auto color = value.is_string() ? color_named(value.get<std::string>()) : std::nullopt;
    if (!color) {
        throw Wrong_Value{expected};
    }
    return *color;
}

bool truth_in(const Json& value) {
    if (!value.is_boolean()) {
        throw Wrong_Value{"true or false"};
    }
    return value.get<bool>();
}

template <class Text> std::string one_of(const Json& value, const std::vector<Text>& names) {
    std::string expected;
    for (const Text& name : names) {
        expected += (expected.empty() ? "one of " : ", ") + std::string(name);
    }
    std::string found = text_in(value, expected.c_str());
    if (std::ranges::find(names, found) == names.end()) {
        throw Wrong_Value{expected};
    }
    return found;
}

Map_Fill fill_in(const Json& value) {
    using Kind = Map_Fill::Kind;
    if (is_text(value, "palette") || is_text(value, "none")) {
        return {is_text(value, "none") ? Kind::none : Kind::palette};
    }
    return {Kind::color, color_in(value, "a colour, palette or none")};
}

std::optional<Dashes> dashes_in(const Json& value) {
    if (is_text(value, "none")) {
        return std::nullopt;
    }
    auto dashes = value.is_string() ? dashes_of(value.get<std::string>()) : std::nullopt;
    if (!dashes) {
        std::string expected = "none, ";
        for (const std::string& name : dash_names()) {
            expected += name + ", ";
        }
        throw Wrong_Value{expected + "or lengths of dashes and gaps as \"6,4\""};
    }
    return dashes;
}

std::vector<double> breaks_in(const Json& value) {
    std::vector<double> breaks;
    if (value.is_array()) {
        for (const Json& number : value) { // not of a copy: copying ends the process where memory ends
            breaks.push_back(number.is_number() ? number.get<double>() : NAN);
        }
    }
    const auto rises = [](double a, double b) { return !(a < b); };
    if (breaks.empty() || breaks.size() > 63 || !std::ranges::all_of(breaks, [](double b) { return std::isfinite(b); }) ||
        std::ranges::adjacent_find(breaks, rises) != breaks.end()) {
        throw Wrong_Value{"an array of up to 63 increasing numbers"};
    }
    return breaks;
}

constexpr std::int32_t widest = 1000;

template <class Target> struct Key {
    const char* name;
    std::function<void(Target&, const Json&)> read;
};

struct Layer_Entry : Style_Layer {
    double order = 0;
};

const std::vector<Key<Layer_Entry>>& layer_keys() {
    using Layer = Layer_Entry;
    static const std::vector<Key<Layer>> keys{
        {"source", [](Layer& layer, const Json& value) { layer.source = text_in(value, "the name of a file"); }},
        {"layer", [](Layer& layer, const Json& value) { layer.settings.layer = text_in(value, "the name of a layer"); }},
        {"filter", [](Layer& layer, const Json& value) { layer.settings.filter = text_in(value, "a condition"); }},
        {"order", [](Layer& layer, const Json& value) { layer.order = number_in(value, -1e6, 1e6); }},
        {"fill", [](Layer& layer, const Json& value) { layer.settings.fill = fill_in(value); }},
        {"fill-by", [](Layer& layer, const Json& value) { layer.settings.fill_by = text_in(value, "the name of a field"); }},
        {"classes",
         [](Layer& layer, const Json& value) {
             layer.settings.classing.method = one_of(value, std::vector{"quantiles", "equal", "natural", "categories"});
         }},
        {"class-count",
         [](Layer& layer, const Json& value) {
             layer.settings.classing.count = static_cast<std::size_t>(whole_in(value, 1, 64));
         }},
        {"breaks", [](Layer& layer, const Json& value) { layer.settings.classing.breaks = breaks_in(value); }},
        {"ramp", [](Layer& layer, const Json& value) { layer.settings.classing.ramp = one_of(value, ramp_names()); }},
        {"reverse-ramp", [](Layer& layer, const Json& value) { layer.settings.classing.reversed = truth_in(value); }},
        {"opacity", [](Layer& layer, const Json& value) { layer.settings.opacity = number_in(value, 0, 1); }},
        {"stroke", [](Layer& layer, const Json& value) { layer.settings.border_color = color_in(value); }},
        {"width", [](Layer& layer, const Json& value) { layer.settings.border_width = whole_in(value, 1, widest); }},
        {"width-by", [](Layer& layer, const Json& value) { layer.settings.width_by = text_in(value, "the name of a field"); }},
        {"width-from", [](Layer& layer, const Json& value) { layer.settings.width_from = whole_in(value, 0, widest); }},
        {"width-to", [](Layer& layer, const Json& value) { layer.settings.width_to = whole_in(value, 0, widest); }},
        {"dash", [](Layer& layer, const Json& value) { layer.settings.border = layer.settings.outline = dashes_in(value); }},
        {"outline", [](Layer& layer, const Json& value) { layer.settings.outline = dashes_in(value); }},
        {"casing", [](Layer& layer, const Json& value) { layer.settings.casing = color_in(value); }},
        {"casing-width", [](Layer& layer, const Json& value) { layer.settings.casing_width = whole_in(value, 1, widest); }},
        {"marker",
         [](Layer& layer, const Json& value) { layer.settings.marker.symbol = *symbol_of(one_of(value, symbol_names())); }},
        {"marker-size", [](Layer& layer, const Json& value) { layer.settings.marker.size = whole_in(value, 1, widest); }},
        {"marker-color", [](Layer& layer, const Json& value) { layer.settings.marker.color = color_in(value); }},
        {"label", [](Layer& layer, const Json& value) { layer.settings.label_by = text_in(value, "the name of a field"); }},
        {"label-key", [](Layer& layer, const Json& value) { layer.settings.label_key = text_in(value, "the name of a field"); }},
        {"label-size", [](Layer& layer, const Json& value) { layer.settings.label_size = whole_in(value, 4, widest); }},
        {"label-color", [](Layer& layer, const Json& value) { layer.settings.label_color = color_in(value); }},
        {"halo", [](Layer& layer, const Json& value) { layer.settings.halo = number_in(value, 0, 20); }},
        {"halo-color", [](Layer& layer, const Json& value) { layer.settings.halo_color = color_in(value); }},
    };
    return keys;
}

const std::vector<Key<Map_Style>>& style_keys() {
    using Style = Map_Style;
    static const std::vector<Key<Style>> keys{
        {"title", [](Style& style, const Json& value) { style.settings.title = text_in(value, "a text"); }},
        {"attribution", [](Style& style, const Json& value) { style.settings.attribution = text_in(value, "a text"); }},
        {"legend", [](Style& style, const Json& value) { style.settings.legend = truth_in(value); }},
        {"projection", [](Style& style, const Json& value) { style.settings.projection = text_in(value, "a projection"); }},
        {"water", [](Style& style, const Json& value) { style.settings.water = color_in(value); }},
        {"graticule", [](Style& style, const Json& value) { style.settings.graticule = number_in(value, 0.1, 90); }},
        {"scale-bar",
         [](Style& style, const Json& value) {
             const bool in_miles = one_of(value, std::vector{"km", "miles"}) == "miles";
             style.settings.map_scale = in_miles ? Scale_Unit::miles : Scale_Unit::kilometres;
         }},
        {"layers", {}},
    };
    return keys;
}

class Style_Reader {
public:
    Style_Reader(const std::string& file, const std::string& text) : file_(file), text_(text) {}

    [[noreturn]] void fail(const std::vector<Json_Step>& path, const std::string& what) const {
        throw Map_Error(start_of(path) + what);
    }

    std::string start_of(const std::vector<Json_Step>& path) const {
        std::string key;
        for (const Json_Step& step : path) {
            const auto* name = std::get_if<std::string>(&step);
            key += name ? (key.empty() ? "" : ".") + *name : '[' + std::to_string(std::get<std::size_t>(step)) + ']';
        }
        return file_ + ": " + json_place(text_, path) + ": " + (key.empty() ? "" : key + ": ");
    }

    static std::string shown(const Json& value) {
        const std::string text = value.dump(-1, ' ', false, Json::error_handler_t::replace);
        return text.size() > 40 ? text.substr(0, 40) + "…" : text;
    }

    // Reads all members of an object by their keys.
    template <class Target>
    void read(const Json& object, std::vector<Json_Step> path, const std::vector<Key<Target>>& keys, Target& target) const {
        if (!object.is_object()) {
            fail(path, "expected an object, found " + shown(object));
        }
        path.emplace_back();
        for (const auto& [name, value] : object.items()) {
            path.back() = name;
            const auto key = std::ranges::find(keys, name, [](const Key<Target>& known) { return std::string(known.name); });
            if (key == keys.end()) {
                std::string names;
                for (const Key<Target>& known : keys) {
                    names += (names.empty() ? "" : ", ") + std::string(known.name);
                }
                fail(path, "expected one of the keys " + names);
            }
            try {
                if (key->read) {
                    key->read(target, value);
                }
            } catch (const Wrong_Value& wrong) {
                fail(path, "expected " + wrong.expected + ", found " + shown(value));
            }
        }
    }

private:
    const std::string& file_;
    const std::string& text_;
};

void parse(const std::string& file, const std::string& text, Released_Json<Json>& document) {
    if (json_nesting(text) > deepest_json) {
        throw Map_Error(file + ": nested too deeply");
    }
    try {
        read_json(text, document);
    } catch (const Json::parse_error& error) {
        const std::size_t offset = std::min(error.byte > 0 ? error.byte - 1 : 0, text.size());
        throw Map_Error(file + ": " + line_and_column(text, offset) + ": expected a style file in JSON" +
                        (offset == text.size() ? ", found its end" : ", found a character that cannot stand here"));
    } catch (const Json::exception&) {
        throw Map_Error(file + ": expected a style file in JSON with numbers up to 1e308, found a greater one");
    }
}

} // namespace

Map_Style read_style(const std::string& file, const Map_Settings& base, Load_Limits& limits) {
    const std::string text = read_input(file, limits);
    const Load_Limits::Loan document_memory(limits, file, json_memory(text));
    const std::string name = name_of_input(file);
    Released_Json<Json> owned;
    parse(name, text, owned);
    const Json& document = *owned;
    const Style_Reader reader(name, text);
    Map_Style style{base, {}};
    reader.read(document, {}, style_keys(), style);
    const auto list = document.find("layers");
    if (list == document.end() || !list->is_array() || list->empty()) {
        reader.fail({"layers"}, "expected an array of one layer or more");
    }
    std::vector<Layer_Entry> layers;
    for (std::size_t i = 0; i < list->size(); ++i) {
        const std::vector<Json_Step> path{"layers", i};
        Layer_Entry& layer = layers.emplace_back();
        layer.settings = base;
        reader.read((*list)[i], path, layer_keys(), layer);
        layer.settings.place = reader.start_of(path);
        if (const Classing& classing = layer.settings.classing; classing.method == "categories" && !classing.breaks.empty()) {
            reader.fail(path, "expected either classes categories or breaks, found both");
        }
        if (!layer.settings.filter.empty()) {
            Filter(reader.start_of({"layers", i, "filter"}) + "condition", layer.settings.filter);
        }
        if (!layer.source.empty()) {
            const std::string source = (path_of(file).parent_path() / path_of(layer.source)).string();
            if (file == "-" || !limits.allows(file, source)) {
                throw Map_Error(reader.start_of({"layers", i, "source"}) + outside_message(layer.source));
            }
            layer.source = source;
        }
    }
    std::ranges::stable_sort(layers, {}, &Layer_Entry::order);
    std::ranges::move(layers, std::back_inserter(style.layers));
    return style;
}

} // namespace vorna::drawing::map
