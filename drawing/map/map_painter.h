// Draws faces, lines and markers of a projected map through a renderer.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

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

    // The same part of the plane with so many pixels for one.
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

// A line with more steps is not drawn: its ends lie too far from the image.
inline constexpr double farthest_pixel = 0x20000000;

class Map_Painter {
public:
    // base: clips, modes and flags of all that is drawn; its hard clip is the image, its window rectangle the part of the image
    // that is drawn. It is copied. Every window shows the pixels of the whole image when it has tile_margin pixels beside those
    // that are kept.
    Map_Painter(VT_Renderer_Data& renderer, const VT_Rendition& base, const View& view);

    // Columns and rows that a window needs beside the pixels that are kept of it. Lines of one pixel's width that cross the
    // image's edge lose pixels in the window's outermost columns; dashes that cross the window's edge are drawn as if it were the
    // image's.
    static std::int32_t tile_margin(const Line_Paint& paint);
    // Segments of more pixels than this get dashes that depend on the window.
    static double longest_dashed_segment(const Line_Paint& paint);

    // Every pixel once, see for_each_rectangle. A colour that is not opaque is blended in 32-bit images.
    void fill(const Face& face, VT_RGB32 color);
    // The same for a face in pixels.
    void fill_pixels(const Face& pixels, VT_RGB32 color);
    // Dashes run on from segment to segment.
    void draw(const Path& line, const Line_Paint& paint);
    void mark(Position place, const Marker_Paint& paint);

private:
    std::uint8_t index_of(VT_RGB32 color) const;
    void set_line(const Line_Paint& paint);
    void draw_points(const std::vector<VT_DCI_Point>& points, const Line_Paint& paint);

    VT_Renderer_Data& renderer_;
    VT_Reference<VT_Rendition> rendition_;
    View view_;
    VT_Int_Rectangle visible_; // pixels of the image in the window
    bool is_part_;             // of the image
};

} // namespace vorna::drawing::map
