// The layers of a file that GDAL reads, as bytes. Runs in a process of its own.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

struct Gdal_Format {
    std::string_view suffix;   // of the file, and under which the driver knows it, where that is another one
    std::string_view drivers;  // names of registering functions without "Register", between commas
    std::string_view siblings; // suffixes of the files that belong to it, between commas
    std::string_view known_as = {};
};

// Null for a suffix that is not GDAL's.
const Gdal_Format* find_gdal_format(std::string_view suffix);

// A file in memory under its name without folder.
struct Named_Content {
    std::string name;
    std::string_view bytes;
};

// Packs every chosen layer, its shapes following all layers: the number of layers, the layers, then shapes to the end. Values are
// those of `fields` and, last, the style that the library states. files: the first is opened, the others are found by their
// names. Throws Map_Error, whose message names `file`.
std::string pack_gdal_layers(const std::string& file, const Gdal_Format& format, std::span<const Named_Content> files,
                             const std::string& layers, std::span<const std::string> fields);

} // namespace vorna::drawing::map
