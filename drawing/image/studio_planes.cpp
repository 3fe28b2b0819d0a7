// The images of a tile that the studio look is made of.
#include "drawing/image/studio_planes.h"

#include <algorithm>
#include <cstring>

namespace vorna::drawing {

void Studio_Planes::resize(std::int32_t columns, std::int32_t rows, std::int32_t room_around) {
    if (columns == width && rows == height && room_around == room) {
        return;
    }
    width = columns;
    height = rows;
    room = room_around;
    stride = static_cast<std::size_t>(width + 2 * room + block);
    const std::size_t count = stride * static_cast<std::size_t>(height + 2 * room);
    colors.assign(count, 0);
    normals.assign(count, 0);
    faces.assign(count, 0);
    patches.assign(count, no_patch);
    depths.assign(count, 65535.0F);
}

void Studio_Planes::take_words(const Raster& drawn, std::vector<std::uint32_t>& plane) {
    for (std::int32_t row = 0; row < height; ++row) {
        std::uint32_t* const words = &plane[place(0, row)];
        std::memcpy(words, drawn.top + row * drawn.row_bytes, 4 * static_cast<std::size_t>(width));
        std::transform(words, words + width, words, pixel_word);
    }
}

void Studio_Planes::take_faces(const Raster& drawn, const Raster& drawn_depths, const std::vector<Studio_Face>& by_number) {
    take_words(drawn, faces);
    for (std::int32_t row = 0; row < height; ++row) {
        const std::size_t first = place(0, row);
        const std::uint8_t* depth = drawn_depths.top + row * drawn_depths.row_bytes;
        for (std::size_t i = 0; i < static_cast<std::size_t>(width); ++i) {
            std::uint16_t value;
            std::memcpy(&value, depth + 2 * i, 2);
            depths[first + i] = value;
        }
        std::uint32_t last = 0, patch = no_patch;
        for (std::size_t i = 0; i < static_cast<std::size_t>(width); ++i) {
            const std::uint32_t number = faces[first + i] &= 0xFFFFFF;
            if (number != last) {
                last = number;
                patch = by_number[number].patch;
            }
            patches[first + i] = patch;
        }
    }
}

} // namespace vorna::drawing
