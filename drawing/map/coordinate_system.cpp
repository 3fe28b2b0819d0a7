// Coordinate systems that files state.
#include "drawing/map/coordinate_system.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <vector>

#include "drawing/files/setting_names.h"
#include "drawing/map/map_reader.h"

namespace vorna::drawing::map {
namespace {

constexpr std::size_t conversion_steps = 60; // of reading work, for a position

bool is_all_of(std::string_view text, bool (*fits)(unsigned char)) {
    return !text.empty() && std::ranges::all_of(text, [&](char c) { return fits(static_cast<unsigned char>(c)); });
}

bool is_code_character(unsigned char c) {
    return std::isalnum(c) != 0;
}

bool is_value_character(unsigned char c) {
    return std::isalnum(c) != 0 || c == '.' || c == ',' || c == '-' || c == '+' || c == '_';
}

// The authority and the code between the separators of a text such as "urn:ogc:def:crs:EPSG::3857".
std::optional<std::string> code_in(std::string_view text, char separator) {
    const std::vector<std::string> parts = parts_between(text, separator);
    const std::size_t count = parts.size(); // authority, version, code
    const std::string authority = count == 2 ? parts[0] : count >= 3 ? parts[count - 3] : "";
    if (!is_all_of(authority, is_code_character) || !is_all_of(parts.back(), is_code_character)) {
        return std::nullopt;
    }
    std::string code = authority + ':' + parts.back();
    std::ranges::transform(code, code.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    // Degrees that differ from those of WGS 84 by less than two metres: ETRS89 and NAD83 among them.
    constexpr std::array same{"EPSG:4326", "EPSG:4979", "EPSG:4258", "EPSG:4269", "OGC:CRS84", "OGC:84"};
    return std::ranges::find(same, code) != same.end() ? "" : code;
}

bool is_harmless(std::string_view parameter) {
    constexpr std::array known{"proj",  "lat_0", "lon_0",    "lat_1",   "lat_2",   "lat_ts", "lonc",  "alpha",
                               "gamma", "k",     "k_0",      "x_0",     "y_0",     "a",      "b",     "rf",
                               "R",     "ellps", "datum",    "towgs84", "units",   "zone",   "south", "pm",
                               "h",     "sweep", "to_meter", "no_uoff", "no_defs", "type",   "lon_1", "lon_2"};
    // The sphere of web maps: no grid of differences, and a word without a meaning.
    if (parameter == "nadgrids=@null" || parameter == "wktext") {
        return true;
    }
    const std::size_t equals = parameter.find('=');
    const std::string_view name = parameter.substr(0, equals);
    return std::ranges::find(known, name) != known.end() &&
           (equals == parameter.npos || is_all_of(parameter.substr(equals + 1), is_value_character));
}

} // namespace

std::optional<std::string> coordinate_system_of(std::string_view text) {
    if (text.starts_with('+')) {
        bool ends = false;
        for (std::size_t start = 0; !ends; ++start) {
            const std::size_t end = text.find(' ', start);
            const std::string_view word = text.substr(start, end - start);
            if (!word.empty() && (!word.starts_with('+') || !is_harmless(word.substr(1)))) {
                return std::nullopt;
            }
            ends = end == text.npos;
            start = end;
        }
        const bool is_degrees = text.find("+proj=longlat") != text.npos && text.find("+datum=WGS84") != text.npos;
        return is_degrees ? "" : std::string(text);
    }
    constexpr std::string_view address = "http://www.opengis.net/def/crs/", secure = "https://www.opengis.net/def/crs/";
    for (const std::string_view start : {address, secure}) {
        if (text.starts_with(start)) {
            return code_in(text.substr(start.size()), '/');
        }
    }
    return code_in(text, ':');
}

void convert_to_degrees(const std::string& file, Map& map, Load_Limits& limits) {
    std::vector<std::unique_ptr<Degree_Conversion>> conversions;
    for (const Layer_Facts& layer : map.layers) {
        const std::string hint = "; " + name_of(Setting::projection) + " plane draws coordinates as they are";
        const std::string start = file + (layer.name.empty() ? "" : ": layer " + layer.name) + ": expected a coordinate system ";
        if (!layer.refusal.empty()) {
            throw Map_Error(start + "with a code or a PROJ string and known axes, found '" + layer.refusal +
                            "'; ogr2ogr -t_srs EPSG:4326 makes degrees of it" + hint);
        }
        conversions.push_back(layer.system.empty() ? nullptr : make_degree_conversion(layer.system));
        if (!layer.system.empty() && !conversions.back()) {
            throw Map_Error(start + "that PROJ knows, found '" + layer.system + "'" + hint);
        }
    }
    for (std::size_t s = 0; s < map.shapes.size(); ++s) {
        Shape& shape = map.shapes[s];
        const Degree_Conversion* conversion = conversions[shape.layer].get();
        if (!conversion) {
            continue;
        }
        for_each_path(shape, [&](Path& path) {
            limits.take_work(file, conversion_steps * path.size());
            for (Position& place : path) {
                const Position before = place;
                if (!conversion->convert(place)) {
                    std::array<char, 80> found;
                    std::snprintf(found.data(), found.size(), "%.10g, %.10g", before.x, before.y);
                    throw Map_Error(file + ": shape " + std::to_string(s) + ": expected coordinates of " +
                                    map.layers[shape.layer].system + ", found " + found.data());
                }
            }
        });
    }
    std::ranges::for_each(map.layers, [](Layer_Facts& layer) { layer.system.clear(); });
    // The extent is one of the former coordinates.
    if (std::ranges::any_of(conversions, [](const auto& conversion) { return conversion != nullptr; })) {
        map.extent = {};
    }
}

} // namespace vorna::drawing::map
