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

// Columns of a row, the last one excluded.
struct Column_Range {
    std::int32_t first = 0, end = 0;

    bool is_empty() const noexcept { return first >= end; }
    std::int32_t size() const noexcept { return end - first; }
};

// Rows from the top down, with room around them that shows nothing. All that is looked up beside a shaded pixel must lie in the
// window or in this room. Of each row only the columns from its first face to its last one are stored: what a tile costs depends
// on what it shows.
struct Studio_Planes {
    // Columns of a row that are shaded at a time, also where fewer are left.
    static constexpr std::int32_t block = 128;
    // Bytes for a pixel of the window, and besides, for as much room as is usual.
    static constexpr std::uint64_t pixel_memory = 4 * 4 * 7 / 5, other_memory = std::uint64_t{2} << 20;

    void resize(std::int32_t columns, std::int32_t rows, std::int32_t room_around);
    std::size_t place(std::int32_t column, std::int32_t row) const noexcept {
        return static_cast<std::size_t>(row + room) * stride + static_cast<std::size_t>(column + room);
    }
    // Takes the numbers that have been drawn into a window of the planes' size; 0 where nothing is.
    void take_numbers(const Raster& drawn);
    // The columns and rows that hold all faces: what the other pictures must show.
    VT_Int_Rectangle box() const noexcept { return box_; }
    bool is_empty() const noexcept { return box_.left > box_.right; }
    // Of the same faces. depths: of the box only.
    void take_faces(const Raster& depths_of_box, const std::vector<Studio_Face>& by_number);
    void take_normals(const Raster& drawn);

    std::int32_t width = 0, height = 0, room = 0;
    std::size_t stride = 0;
    std::vector<Column_Range> rows;            // the columns from the first face to the last one
    std::vector<std::uint32_t> normals;        // as drawn, see surface_tints.h of models
    std::vector<std::uint32_t> faces, patches; // the number, and the patch
    std::vector<float> depths;                 // as in the depth buffer

private:
    void clear(std::int32_t row, const Column_Range& columns);

    VT_Int_Rectangle box_{0, -1, 0, -1}; // rows from the top down
};

} // namespace vorna::drawing
