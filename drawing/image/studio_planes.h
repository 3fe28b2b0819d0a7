// The images of a tile that the studio look is made of.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "drawing/image/image_file.h"

namespace vorna::drawing {

inline constexpr std::uint32_t no_patch = 0xFFFFFFFF;

// The word of a pixel, blue in its low byte, from its four bytes as they are in memory, or these from the word.
inline std::uint32_t pixel_word(std::uint32_t native) noexcept {
    if constexpr (std::endian::native == std::endian::big) {
        return native >> 24 | (native >> 8 & 0xFF00) | (native << 8 & 0xFF0000) | native << 24;
    }
    return native;
}

// A face as the camera of an image sees it, by the number that is drawn for it; number 0 is no face.
struct Studio_Face {
    float across = 0, up = 0; // what its depth in the buffer grows by from a pixel to the next one to the right, and upwards
    std::uint32_t patch = no_patch;
};

// Rows from the top down, with room around them that shows nothing. All that is looked up beside a shaded pixel must lie in the
// window or in this room.
struct Studio_Planes {
    // Columns of a row that are shaded at a time, also where fewer are left.
    static constexpr std::int32_t block = 128;
    // Bytes for a pixel of the window, and besides, for as much room as is usual.
    static constexpr std::uint64_t pixel_memory = 5 * 4 * 7 / 5, other_memory = std::uint64_t{2} << 20;

    void resize(std::int32_t columns, std::int32_t rows, std::int32_t room_around);
    std::size_t place(std::int32_t column, std::int32_t row) const noexcept {
        return static_cast<std::size_t>(row + room) * stride + static_cast<std::size_t>(column + room);
    }
    // What has been drawn, one image after the other. The window's size is that of the planes.
    void take_colors(const Raster& drawn) { take_words(drawn, colors); }
    void take_normals(const Raster& drawn) { take_words(drawn, normals); }
    void take_faces(const Raster& drawn, const Raster& drawn_depths, const std::vector<Studio_Face>& by_number);

    std::int32_t width = 0, height = 0, room = 0;
    std::size_t stride = 0;
    std::vector<std::uint32_t> colors, normals; // as drawn; normals see surface_tints.h of models
    std::vector<std::uint32_t> faces, patches;  // the number, and the patch
    std::vector<float> depths;                  // as in the depth buffer

private:
    void take_words(const Raster& drawn, std::vector<std::uint32_t>& plane);
};

} // namespace vorna::drawing
