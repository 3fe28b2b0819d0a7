// Draws faces, lines and markers of a projected map through a renderer.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "drawing/map/lettering.h"
#include "drawing/map/map_paint.h"
#include "drawing/map/shapes.h"
#include "host/renderer_data.h"
#include "host/rendition.h"

namespace vorna::drawing::map {

// From a projection's plane to pixels: pixel (i, j) lies between i and i + 1, j and j + 1.
struct View {
    Position middle; // of the image
    double scale = 1;
    VT_Int_Pair size;

    // The same part of the plane, supersampled.
    View enlarged(std::int32_t times) const noexcept { return {middle, scale * times, {size.x * times, size.y * times}}; }

    Position device_place(Position p) const noexcept {
        return {(p.x - middle.x) * scale + size.x * 0.5, (p.y - middle.y) * scale + size.y * 0.5};
    }
    Face device_face(Face face) const {
        for (Path& ring : face) {
            std::ranges::transform(ring, ring.begin(), [this](Position p) { return device_place(p); });
        }
        return face;
    }
};

// Longer lines, in pixels, are not drawn: their ends lie too far from the image.
inline constexpr double farthest_pixel = 0x20000000;

// The colours between letters and what lies below them, in images of 8 bits.
std::vector<VT_RGB32> mixed_colors(const Text_Paint& paint);

class Map_Painter {
public:
    // base: clips, modes and flags for all items, copied; its hard clip is the image, its window rectangle the drawn part of the
    // image. With a margin of tile_margin pixels around the kept ones, every window shows the pixels of the whole image.
    Map_Painter(VT_Renderer_Data& renderer, const VT_Rendition& base, const View& view);

    // The columns and rows that a window needs around its kept pixels: lines of one pixel that cross the image's edge lose pixels
    // in the window's outermost columns, and dashes at the window's edge are drawn as if it were the image's.
    static std::int32_t tile_margin(const Line_Paint& paint);
    // The dashes of segments longer than this, in pixels, depend on the window.
    static double longest_dashed_segment(const Line_Paint& paint);

    // Draws every pixel once, see for_each_rectangle. In 32-bit images translucent colours are blended.
    void fill(const Face& face, VT_RGB32 color);
    // The same for a face in pixels.
    void fill_pixels(const Face& pixels, VT_RGB32 color);
    // Dashes continue from segment to segment.
    void draw(const Path& line, const Line_Paint& paint);
    // Equal markers, in the order of their places.
    void mark(std::span<const Position> places, const Marker_Paint& paint);
    // Letters in an image `times` as large. In 32-bit images their edges are smooth; in 8-bit images they are so where they have
    // a halo or a ground, by mixed_colors.
    void write(const Lettering& lettering, std::int32_t times);

private:
    void blend(const Letter_Pixels& pixels, const Text_Paint& paint);
    void draw_rows(const Letter_Pixels& pixels, const Text_Paint& paint);
    std::uint8_t index_of(VT_RGB32 color);
    void set_line(const Line_Paint& paint);
    void draw_points(const std::vector<VT_DCI_Point>& points, const Line_Paint& paint);

    VT_Renderer_Data& renderer_;
    VT_Reference<VT_Rendition> rendition_;
    View view_;
    VT_Int_Rectangle visible_;                                 // pixels of the image in the window
    bool is_part_;                                             // of the image
    std::optional<std::pair<VT_RGB32, std::uint8_t>> indexed_; // the last colour with its index
};

} // namespace vorna::drawing::map
