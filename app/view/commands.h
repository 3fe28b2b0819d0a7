// What the keys of a viewer do.
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

// By a key's letter or sign; reversed: with shift or control.
std::optional<Command> command_of(char key, bool reversed);

// Lines that tell what mouse and keys do, for people.
std::vector<std::string> help_lines();
std::vector<std::string> map_help_lines();

} // namespace vorna::app::view
