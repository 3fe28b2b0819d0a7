// Files to draw: models, maps and drawings.
#pragma once

#include <optional>
#include <string>

#include "drawing/files/format.h"

namespace vorna::drawing {

struct Input {
    std::string name;                   // the file's path; what messages call it
    std::string suffix;                 // the format's usual one in lower case without its dot; empty = not known
    const Format* format = nullptr;     // null: not in the table of formats
    std::optional<std::string> content; // none = the file holds it; standard input and compressed files have it here
};

inline bool is_map(const Input& input) {
    return input.format && input.format->kind == Input_Kind::map;
}

} // namespace vorna::drawing
