// The formats of files to draw: one table, which says how each is recognised and read.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "drawing/files/input.h"
#include "drawing/map/map_settings.h"
#include "drawing/model/camera.h"
#include "drawing/model/mesh.h"

namespace vorna::drawing {

// All formats, those first whose content tells most.
std::span<const Format> formats();

// Null when no format has the suffix.
const Format* find_format(std::string_view suffix);

// Throws Usage_Error for a suffix of files that cannot be read; none is given when it is empty.
void check_input_format(const std::string& suffix);

// Finds out about a file; "-" is standard input. suffix: the format that the user names, empty = none; then the name's suffix
// decides, and the content where no format has that suffix. Compressed files (gzip) are unpacked. Throws Usage_Error.
Input open_input(const std::string& path, const std::string& suffix, Load_Limits& limits);

// The axis of a model that points up, by its format.
model::Up_Axis up_axis_of(const Input& input);

// The overlay of a map, when the settings name one. Throws Usage_Error.
std::optional<Input> open_overlay(const map::Map_Settings& settings, Load_Limits& limits);

// A single model, whose name says its format. Throws Model_Error and Load_Error.
model::Mesh load_model(const std::string& file);

} // namespace vorna::drawing
