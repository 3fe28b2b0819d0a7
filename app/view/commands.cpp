// The commands of a viewer and their keys.
#include "app/view/commands.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "app/view/window.h"

namespace vorna::app::view {
namespace {

struct Key {
    char key;
    Command command, reversed;
};

constexpr std::array keys{
    Key{'1', Command::front, Command::back},
    Key{'3', Command::right, Command::left},
    Key{'7', Command::top, Command::bottom},
    Key{'5', Command::projection, Command::projection},
    Key{'s', Command::shading, Command::shading},
    Key{'e', Command::edges, Command::edges},
    Key{'a', Command::antialias, Command::antialias},
    Key{'p', Command::palette, Command::palette},
    Key{'d', Command::depth, Command::depth},
    Key{'+', Command::larger, Command::larger},
    Key{'-', Command::smaller, Command::smaller},
    Key{'r', Command::home, Command::home},
    Key{key::home, Command::home, Command::home},
    Key{'c', Command::screenshot, Command::screenshot},
    Key{'w', Command::record, Command::record},
    Key{'h', Command::help, Command::help},
    Key{'f', Command::full_screen, Command::full_screen},
    Key{'q', Command::quit, Command::quit},
};

} // namespace

std::optional<Command> command_of(char key, bool reversed) {
    const auto* found = std::ranges::find(keys, key, &Key::key);
    return found == keys.end() ? std::nullopt : std::optional(reversed ? found->reversed : found->command);
}

std::vector<std::string> help_lines() {
    return {
        "left drag      turn",
        "right drag     move, also with middle or shift and left",
        "wheel, + -     zoom towards the pointer, the middle",
        "1 3 7          front, right, top",
        "  with ctrl    back, left, bottom, also with shift",
        "5              perspective or parallel",
        "s              gouraud, flat, textured, wireframe, hidden lines",
        "e              edges: all, features, none",
        "a              smooth edges",
        "p              32 bits a pixel, palettes",
        "d              depth buffer",
        "c              screenshot",
        "w              write a recording for vorna replay",
        "r, home        as at the start",
        "f              full screen",
        "h, F1          this help",
        "q, escape      quit",
    };
}

std::vector<std::string> map_help_lines() {
    return {
        "drag           move",
        "wheel, + -     zoom towards the pointer, the middle",
        "a              smooth lines",
        "p              32 bits a pixel, a palette",
        "c              screenshot",
        "w              write a recording for vorna replay",
        "r, home        as at the start",
        "f              full screen",
        "h, F1          this help",
        "q, escape      quit",
    };
}

} // namespace vorna::app::view
