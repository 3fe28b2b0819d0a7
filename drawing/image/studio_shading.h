// Shades an object in a tile from its colours, normals, faces and depths.
#pragma once

#include <cstdint>
#include <vector>

#include "drawing/image/studio_ground.h"
#include "drawing/image/studio_light.h"
#include "drawing/image/studio_planes.h"
#include "host/geometry.h"

namespace vorna::drawing {

// Distances in pixels as they are drawn.
struct Studio_Sizes {
    std::int32_t reach;    // of ambient occlusion
    std::int32_t line;     // width of outlines
    std::int32_t row_sets; // how many sets of places the rows take in turn to look for occlusion

    // height: of the image. supersample: columns and rows of drawn pixels to one of its pixels.
    static Studio_Sizes of(std::int32_t height, std::int32_t supersample);
    // Nothing farther away from a pixel is looked at.
    std::int32_t margin() const noexcept { return reach > line ? reach : line; }
};

// Of one frame. Several threads may shade tiles at once.
//
// Every value of a pixel follows from what lies within the reach around it and from its place in the image, by additions,
// multiplications, divisions and square roots in one order: tiles, threads and instruction sets make no difference.
class Studio_Shading {
public:
    // supersample: columns and rows of drawn pixels to a pixel of the image. image: all pixels that are shown, in tiles or not.
    // faces: by number, see Studio_Face. pixels_per_step: by depth, how many pixels wide one step of the depth buffer is there.
    Studio_Shading(const Studio_Sizes& sizes, std::int32_t supersample, const VT_Int_Rectangle& image,
                   const Studio_Lights& lights, std::vector<Studio_Face> faces, std::vector<float> pixels_per_step,
                   Studio_Ground ground);

    const std::vector<Studio_Face>& faces() const noexcept { return faces_; }
    const Studio_Sizes& sizes() const noexcept { return sizes_; }

    // Shades a rectangle of the planes' window, whose place in the image is given, in rows of a 32-bit buffer that hold colours
    // without light; top: the row of the window's highest pixels.
    void shade(const Studio_Planes& planes, const VT_Int_Rectangle& window, const VT_Int_Rectangle& kept, std::uint8_t* top,
               std::ptrdiff_t row_bytes) const;

private:
    // A place beside a pixel, upwards and to the right, and what it counts.
    struct Sample {
        std::int32_t across, up;
        float over_distance; // 1 / its distance
        float weight;
    };
    struct Block;

    void gather(const Studio_Planes& planes, Block& block) const;
    void add_occlusion(const Studio_Planes& planes, const std::vector<Sample>& samples, Block& block) const;
    void add_lines(const Studio_Planes& planes, std::int32_t x, std::int32_t y, Block& block) const;
    void light(const Studio_Planes& planes, Block& block) const;
    void shade_row(const Studio_Planes& planes, std::int32_t x, std::int32_t y, const Column_Range& columns, Block& block,
                   std::uint8_t* pixels) const;

    Studio_Sizes sizes_;
    std::int32_t supersample_;
    VT_Int_Rectangle image_;
    const Studio_Lights& lights_;
    std::vector<Studio_Face> faces_;
    std::vector<float> pixels_per_step_;
    Studio_Ground ground_;
    std::vector<std::vector<Sample>> samples_; // by set
};

} // namespace vorna::drawing
