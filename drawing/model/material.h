// What surfaces are made of, as model files say it.
#pragma once

#include <algorithm>
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

// Images of a surface besides that of its colour, by number of the mesh's images. All are placed and wrapped as the colour is.
struct Surface_Images {
    std::uint32_t metal = no_image;     // blue: a factor for metal
    std::uint32_t roughness = no_image; // green: a factor for roughness
    std::uint32_t emission = no_image;
    std::uint32_t occlusion = no_image; // red: the part of the light of the surroundings that reaches the surface
    std::uint32_t opacity = no_image;   // its alpha, or its green where it has none
};

struct Material {
    std::uint32_t image = no_image; // the colour, of the mesh's images
    Surface_Images images;
    float metal = 0, roughness = 1;  // with an image for them
    std::array<float, 3> emission{}; // with an image for it: intensities that are multiplied with the image's
    float occlusion = 1;             // strength of the image, 0 to 1
    Wrap wrap_u = Wrap::repeat, wrap_v = Wrap::repeat;
    Transparency transparency = Transparency::by_image;
    float opacity = 1;
    float cut_off = 0.5F; // the least alpha of a cut-out texel that is there
    Finish finish;        // without the images

    // All numbers of images.
    std::array<std::uint32_t*, 6> image_numbers() {
        return {&image, &images.metal, &images.roughness, &images.emission, &images.occlusion, &images.opacity};
    }
    std::array<std::uint32_t, 6> all_images() const {
        return {image, images.metal, images.roughness, images.emission, images.occlusion, images.opacity};
    }
    bool has_image() const {
        return std::ranges::any_of(all_images(), [](std::uint32_t number) { return number != no_image; });
    }
    // Calls renumber(number) for each image, and takes the number that it returns.
    template <class Renumber> void renumber_images(Renumber renumber) {
        for (std::uint32_t* number : image_numbers()) {
            *number = *number == no_image ? no_image : renumber(*number);
        }
    }
};

} // namespace vorna::drawing::model
