// A shape in the coordinates of its entity.
#pragma once

#include <optional>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map::dxf {

// Empty = the foreground, which contrasts with the background.
using Color = std::optional<VT_RGB32>;

struct Form {
    Shape shape{};
    std::optional<Color> color{}; // none = the entity's
    bool is_solid_line = false;   // without the entity's line type
    Load_Limits::Loan memory{};   // of forms of which one entity has many
};
using Forms = std::vector<Form>;

inline Shape& add_shape(Forms& forms) {
    return forms.emplace_back().shape;
}

} // namespace vorna::drawing::map::dxf
