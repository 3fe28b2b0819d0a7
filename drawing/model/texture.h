// A texture as the renderer can draw it.
#pragma once

#include <array>
#include <map>
#include <shared_mutex>
#include <string>
#include <utility>

#include "drawing/files/load_limits.h"
#include "drawing/image/image.h"
#include "drawing/model/material.h"
#include "host/rendition.h"

namespace vorna::drawing::model {

// The renderer draws images whose sides are powers of two, with the nearest texel, and nothing beyond their borders. So images
// are resampled: each side to the next power of two, at most 4096. Triangles that show several texels in one pixel get a smaller
// level, halved along either axis as often as they need: what is seen at a flat angle is squeezed along one axis only. Triangles
// that reach beyond the border get an image that shows the texture several times, as it wraps: cutting them at the border instead
// would put points on their edges that their neighbours lack.
class Texture {
public:
    // Throws Load_Error when there is no memory left for it; so does cut.
    Texture(std::string name, const Image& image, const Material& material, Load_Limits& limits);

    const std::string& name() const noexcept { return name_; }
    // Sizes, as given and as drawn, in words.
    std::string summary() const;
    // Never by_image.
    Transparency transparency() const noexcept { return transparency_; }

    // What texture coordinates from low to high are drawn with.
    struct Cut {
        VT_Reference<const VT_Basic_Material> material;
        std::int32_t first[2];  // coordinates at its lower left corner
        double scale[2];        // from there to the image's coordinates
        double texel[2];        // size of a texel in coordinates
        double low[2], high[2]; // the image's coordinates a hair inside its borders
    };
    // covered: how much of either coordinate a pixel covers. Several threads may ask at once.
    Cut cut(const double (&covered)[2], const double (&low)[2], const double (&high)[2]);

private:
    // Whole textures along one axis: as many as the logarithm to base 2 says, from the first on.
    struct Tiles {
        std::int32_t first, log2_count;
    };

    // How often either side is halved.
    using Level = std::array<std::int32_t, 2>;
    // With the memory that it takes.
    using Made = std::pair<VT_Reference<const VT_Basic_Material>, Load_Limits::Loan>;

    static Tiles tiles(double low, double high, Wrap wrap);
    Level chosen_level(const double (&covered)[2], const std::array<Tiles, 2>& tiles) const;
    const Image& image(const Level& level);
    VT_Reference<const VT_Basic_Material> material(const Level& level, const std::array<Tiles, 2>& tiles);
    Made made_material(const Level& level, const std::array<Tiles, 2>& tiles, VT_Int_Pair origin);

    Load_Limits::Loan memory_of(std::int32_t width, std::int32_t height) const {
        return {limits_, name_, std::uint64_t{4} * static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height)};
    }

    std::string name_;
    Load_Limits& limits_;
    VT_Int_Pair given_size_;
    std::array<Wrap, 2> wraps_;
    Transparency transparency_;
    std::int32_t least_alpha_ = 0; // of texels that are there
    std::array<std::int32_t, 2> log2_sides_;
    std::shared_mutex lock_; // of the images, which are made when they are first asked for
    std::map<Level, std::pair<Image, Load_Limits::Loan>> levels_;
    // By level, then first tile and logarithm of the count along either axis.
    std::map<std::array<std::int32_t, 6>, Made> materials_;
};

} // namespace vorna::drawing::model
