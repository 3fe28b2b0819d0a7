// How an image is cut into tiles and how many threads draw it, so that it fits into memory.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "drawing/image/image_form.h"
#include "drawing/job/image_part.h"
#include "drawing/model/tiles.h"

namespace vorna::drawing {

// Sides of images. Beyond, floats would not tell a sixteenth of a pixel any more.
inline constexpr std::int32_t largest_side = 1 << 18;
// Columns and rows of drawn pixels for one of an image of a model, where nothing else is asked for: 2, but 1 for images of more
// than 2^24 pixels, for which four times the work is noticed. Parts of an image have the same as the whole.
std::int32_t default_supersample(VT_Int_Pair size) noexcept;
// Sides of tiles that users may ask for.
inline constexpr std::int32_t largest_tile = 8192;

struct Plan_Request {
    Image_Part part;
    Image_Form form;                       // of the file with it
    std::int32_t beyond = 0;               // columns and rows of the frame to the right of the image and above it
    std::int32_t margin = 0;               // that tiles need
    std::int32_t spare = 0;                // of tiles besides, see Tile_Grid
    std::int32_t single_margin = 0;        // of an image that is a single tile; a multiple of 8
    std::optional<std::int32_t> tile_size; // in pixels of the image, a multiple of 8
    std::string one_piece;                 // why only one tile will do; empty = any number
    bool prefers_one_piece = false;        // whether one tile is better, however large it is
    std::int32_t supersample = 1;          // columns and rows that are drawn for one
    std::uint64_t pixel_memory = 0;        // bytes for each drawn pixel of a tile
    std::uint64_t thread_memory = 0;       // bytes for each thread, besides
    unsigned threads = 1;                  // at most
    double work = 0;                       // nanoseconds that one thread takes to draw the image, roughly; 0 = not to be shared
    std::uint64_t max_memory = 0;          // bytes
    std::uint64_t other_memory = 0;        // of it, what everything but the image takes
};

struct Image_Plan {
    model::Tile_Grid grid; // of what is drawn
    unsigned threads;
    std::vector<std::uint32_t> band_ends; // rows of tiles, as rows of pixels from the top
    std::uint32_t rows_ahead;
    std::uint64_t memory; // bytes that the image takes at most, without what is drawn
};

// Images that one thread draws are one tile up to some size. Others have several tiles for each thread that pays for its start,
// and tiles as large as memory allows, up to the size that is drawn fastest. Threads are given up last. Throws Usage_Error that
// says what is needed.
Image_Plan plan_image(const Plan_Request& request);
// The tiles that threads share, of an image of any size that is kept in memory; none where one thread alone is faster.
std::optional<model::Tile_Grid> shared_grid(const Plan_Request& request);

} // namespace vorna::drawing
