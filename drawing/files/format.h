// What is known of a file format.
#pragma once

#include <string>
#include <string_view>

#include "drawing/files/load_limits.h"

namespace vorna::drawing {

namespace model {
struct Mesh;
}
namespace map {
struct Map;
struct Map_Query;
} // namespace map

struct Input;

enum class Input_Kind { model, map }; // maps: drawings too

// The beginning of every test of contents: JSON is parsed once for all of them.
struct Content_Probe {
    std::string_view text;
    bool is_json = false;   // begins as an object
    bool has_asset = false; // a JSON object with the key of glTF
};

struct Format {
    std::string_view suffix; // in lower case, without the dot
    Input_Kind kind;
    bool has_z_up = false; // whether z points up in the coordinates that its reader gives; y does otherwise
    // Whether contents are of the format; null: contents cannot tell.
    bool (*detect)(const Content_Probe& content) = nullptr;
    // The reader of the kind; of models null: the general reader, where there is one. Reading gives up the content.
    model::Mesh (*read_model)(Input& input, Load_Limits& limits) = nullptr;
    map::Map (*read_map)(const Input& input, const map::Map_Query& query, Load_Limits& limits) = nullptr;
};

} // namespace vorna::drawing
