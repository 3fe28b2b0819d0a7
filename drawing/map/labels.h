// Where labels find room.
#pragma once

#include <optional>
#include <vector>

#include "drawing/map/shapes.h"
#include "host/geometry.h"

namespace vorna::drawing::map {

// The lower left pixel of a box of the given size all of whose pixels lie in the face and in the window: near to the middle of
// what is seen of the face, with some room at its sides where there is any. Nothing when the box fits nowhere.
std::optional<VT_Int_Pair> place_in_face(const Face& pixels, const VT_Int_Rectangle& window, VT_Int_Pair size);

// Boxes that share no pixel.
class Free_Room {
public:
    // False, and nothing is taken, when some of it is taken already.
    bool take(const VT_Int_Rectangle& box);

private:
    std::vector<VT_Int_Rectangle> taken_;
};

} // namespace vorna::drawing::map
