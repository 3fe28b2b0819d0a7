// What messages call the settings of a drawing.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace vorna::drawing {

// The settings that messages of this library name.
enum class Setting {
    allow_empty,
    bbox,
    center,
    clip_to,
    dpi,
    flip_y,
    font,
    format,
    graticule,
    kernels,
    layer,
    layout,
    map_scale,
    max_memory,
    outside_of_folder,
    overlay,
    paper,
    part,
    projection,
    record,
    scale,
    size,
    unit,
    water,
    count
};

// A name for each setting, in the order of the enumeration.
using Setting_Names = std::array<const char*, static_cast<std::size_t>(Setting::count)>;

// The setting's name: that of the library's member, or the one that call_settings has set.
std::string name_of(Setting setting);

// The names with commas between them.
std::string list_of_names(const std::vector<std::string>& names);

// Replaces the names, for programs whose users know the settings by others, as options. The names must outlive all calls of the
// library.
void call_settings(const Setting_Names& names) noexcept;

} // namespace vorna::drawing
