// What surfaces are made of, as model files say it.
#pragma once

#include <cstdint>
#include <string>

#include "drawing/image/image.h"

namespace vorna::drawing::model {

// A texture image that has not been looked at yet.
struct Image_Source {
    std::string name;  // the file's path, or where in the model it is
    std::string model; // that names it
    bool embedded = false;
    std::string bytes; // of an embedded image: a file's bytes, or rows of pixels from the top down when it has a size
    std::int32_t width = 0, height = 0;
};

enum class Transparency {
    none,     // alpha means nothing
    cut_out,  // texels are there or not
    blended,  // what lies behind shines through
    by_image, // blended or cut out as alpha says
};

inline constexpr std::uint32_t no_image = 0xFFFFFFFF;

struct Material {
    std::uint32_t image = no_image; // of the mesh's images
    Wrap wrap_u = Wrap::repeat, wrap_v = Wrap::repeat;
    Transparency transparency = Transparency::by_image;
    float opacity = 1;
    float cut_off = 0.5F; // the least alpha of a cut-out texel that is there
};

} // namespace vorna::drawing::model
