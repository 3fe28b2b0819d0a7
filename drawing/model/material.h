// What surfaces are made of, as model files say it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
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

// How a surface reflects light, besides its colour.
struct Finish {
    float mirror = 0;                // share of its colour that reflects the surroundings instead of scattering light
    float highlight = 1;             // strength of the highlight; 1 = of models without materials
    float sharpness = 24;            // of the highlight: the power of a cosine
    bool lit = true;                 // false: its colour is shown as it is
    std::array<float, 3> emission{}; // light of its own, intensities of red, green and blue

    bool operator==(const Finish&) const = default;
};

// An opacity as older formats state it. Where it is 0 the surface is opaque: programs that confuse opacity with transparency
// write it, and the model could not be seen.
inline float shown_opacity(float stated) {
    return stated > 0 ? stated : 1;
}

// A surface of which the roughness is known, 0 for a mirror and 1 for chalk, and how far it is of metal, 0 to 1.
Finish finish_of_metal(float metal, float roughness);

// What older formats say of a surface. Colours are red, green and blue as displayed, 0 to 1.
struct Phong {
    std::array<float, 3> diffuse{1, 1, 1};
    std::optional<std::array<float, 3>> specular;
    std::array<float, 3> emission{};
    std::optional<float> exponent; // of the highlight
};
// A surface that reflects more than it scatters is drawn as metal: diffuse becomes the metal's colour.
Finish finish_of(Phong& phong);

struct Material {
    std::uint32_t image = no_image; // of the mesh's images
    Wrap wrap_u = Wrap::repeat, wrap_v = Wrap::repeat;
    Transparency transparency = Transparency::by_image;
    float opacity = 1;
    float cut_off = 0.5F; // the least alpha of a cut-out texel that is there
    Finish finish;
};

} // namespace vorna::drawing::model
