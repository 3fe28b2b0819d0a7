// Points of a model as points of a window.
#pragma once

#include <cstdint>

#include "drawing/files/long_list.h"
#include "drawing/model/camera.h"
#include "drawing/model/lighting.h"
#include "host/geometry.h"

namespace vorna::drawing::model {

struct Projected_Points {
    Long_List<VT_DCI_Point> device_points;       // at the window's border for points outside the view volume
    Long_List<std::uint8_t> planes;              // that each point lies beyond, see clipper.h
    bool any_beyond = false, any_before = false; // the view volume at all, its near plane

    // The same for every number of threads.
    void project(const Vector_Columns& positions, const Camera& camera, const VT_Int_Rectangle& window, unsigned threads = 1);
};

} // namespace vorna::drawing::model
