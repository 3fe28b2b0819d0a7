// How the formats of files to draw are recognised by their contents.
#pragma once

#include <string_view>

#include "drawing/files/format.h"

namespace vorna::drawing {

constexpr bool is_ply(const Content_Probe& content) {
    return content.text.starts_with("ply\n") || content.text.starts_with("ply\r");
}

constexpr bool is_glb(const Content_Probe& content) {
    return content.text.starts_with("glTF");
}

constexpr bool is_gltf(const Content_Probe& content) {
    return content.has_asset;
}

constexpr bool is_other_json(const Content_Probe& content) {
    return content.is_json && !content.has_asset;
}

constexpr bool is_vrml(const Content_Probe& content) {
    return content.text.starts_with("#VRML");
}

inline bool is_geopackage(const Content_Probe& content) {
    return content.text.starts_with("SQLite format 3") && content.text.find("GP", 68) == 68;
}

constexpr bool is_flatgeobuf(const Content_Probe& content) {
    return content.text.starts_with("fgb\3fgb");
}

// The name of the first element.
bool is_kml(const Content_Probe& content);
bool is_gpx(const Content_Probe& content);
bool is_gml(const Content_Probe& content);

bool is_dxf(const Content_Probe& content);
bool is_stl(const Content_Probe& content);
bool is_obj(const Content_Probe& content);

// Whether a DXF file has more faces in space than other shapes: a model, and not a drawing.
bool is_dxf_model(std::string_view text);

} // namespace vorna::drawing
