// What GML and FlatGeobuf files state about their coordinate systems.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vorna::drawing::map {

// GDAL finds systems by their codes in PROJ's database, which its process cannot open.
struct Stated_System {
    std::string system;  // in the form of Layer_Facts::system
    std::string refusal; // the text of a system that cannot be used; empty = it can be used
    // Whether positions have the latitude first, where the system tells.
    std::optional<bool> north_first;
};

// suffix: of the file's format. Empty for other formats than gml and fgb, and for files that state no code.
std::optional<Stated_System> stated_system(std::string_view suffix, std::string_view bytes);

} // namespace vorna::drawing::map
