// Places for labels.
#pragma once

#include <optional>
#include <vector>

#include "drawing/map/shapes.h"
#include "host/geometry.h"

namespace vorna::drawing::map {

// The lower left pixel of a box of the given size inside the face and the window: near the middle of the visible part of the
// face, with a margin where there is room. Empty when the box fits nowhere.
std::optional<VT_Int_Pair> place_in_face(const Face& pixels, const VT_Int_Rectangle& window, VT_Int_Pair size);

// A set of boxes without common pixels.
class Free_Room {
public:
    // Adds the box; false when it overlaps another one.
    bool take(const VT_Int_Rectangle& box);

private:
    std::vector<VT_Int_Rectangle> taken_;
};

} // namespace vorna::drawing::map
