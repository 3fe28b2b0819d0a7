// A type of the name that drawing/model/paints.h gives to another.
#pragma once

namespace vorna::drawing::model {

struct Paint {
    double thickness;
};

} // namespace vorna::drawing::model
