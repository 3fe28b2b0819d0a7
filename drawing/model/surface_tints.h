// The colours in which the surfaces of a model are drawn: lit, as they are without light, or their normals as colours.
#pragma once

#include <vector>

#include "drawing/model/camera.h"
#include "drawing/model/lighting.h"
#include "drawing/model/model_look.h"
#include "host/color.h"

namespace vorna::drawing::model {

// By surface.
struct Surface_Tints {
    std::vector<VT_RGB32> front, back; // seen from the side that their normals point to, and from the other, if asked for

    void resize(const Surfaces& surfaces, bool has_backs);
    // Those of the surfaces [first, end).
    void set(const Surfaces& surfaces, std::size_t first, std::size_t end, const Camera& camera, const Model_Look& look);
};

// A normal in view space as a colour: red, green and blue are 128 + 127 times its parts to the right, up and towards the viewer.
inline constexpr int normal_color_zero = 128, normal_color_scale = 127;

} // namespace vorna::drawing::model
