// Checks of the library's settings. Each throws Usage_Error that names the member and what is expected of it.
#pragma once

#include "drawing/drawing.h"

namespace vorna::drawing {

void check(const Reading& reading);
void check(const model::Camera_Settings& camera);
void check(const Model_View& view);
void check(const map::Map_Settings& settings);
void check(const Print_Settings& settings);
// size and supersample: as they follow from the settings.
void check(const Image_Settings& settings, VT_Int_Pair size, std::int32_t supersample);

} // namespace vorna::drawing
