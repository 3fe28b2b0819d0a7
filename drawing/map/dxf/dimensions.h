// Dimensions without a block of their own, and leaders.
#pragma once

#include "drawing/map/dxf/drawing.h"
#include "drawing/map/dxf/form.h"
#include "drawing/map/dxf/texts.h"

namespace vorna::drawing::map::dxf {

// A line with an arrow at its start.
void add_leader(const Entity& leader, const Values& values, const Drawing& drawing, Forms& forms);

// Lines with arrows that lead to a text. False without a font.
bool add_multileader(const Entity& leader, const Values& values, Text_Maker& texts, Forms& forms);

// The lines, arrows and text of a linear or aligned dimension, a radius or a diameter. False for other kinds.
bool add_dimension(const Entity& dimension, const Values& values, const Drawing& drawing, Text_Maker& texts, Forms& forms);

} // namespace vorna::drawing::map::dxf
