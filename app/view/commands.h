// The commands of a viewer and their keys.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vorna::app::view {

enum class Command {
    front,
    back,
    right,
    left,
    top,
    bottom,
    projection,
    shading,
    edges,
    antialias,
    palette,
    depth,
    larger,
    smaller,
    home,
    screenshot,
    record,
    help,
    full_screen,
    quit,
};

// The command of a key, as Controls::press gets it. reversed: with shift or control.
std::optional<Command> command_of(char key, bool reversed);

// The lines of the help panel.
std::vector<std::string> help_lines();
std::vector<std::string> map_help_lines();

} // namespace vorna::app::view
