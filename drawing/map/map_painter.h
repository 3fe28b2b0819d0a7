// Draws faces, lines and markers of a projected map through a renderer.
#pragma once

#include <algorithm>
#include <vector>

#include "drawing/map/shapes.h"
#include "host/renderer_data.h"
#include "host/rendition.h"

namespace vorna::drawing::map {

// From a projection's plane to pixels: pixel (i, j) lies between i and i + 1, j and j + 1.
struct View {
    Position middle; // of the window
    double scale = 1;
    VT_Int_Pair size;

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

// Lengths of dashes and gaps by turns, in pixels for lines of one pixel and growing with the width; a dash of 0 is a dot. Empty:
// a solid line.
using Dashes = std::vector<double>;

struct Line_Paint {
    VT_RGB32 color;
    std::int32_t width = 1;
    Dashes dashes;
};

struct Marker_Paint {
    VT_RGB32 color;
    std::int32_t symbol = vorna::marker_symbol::filled_circle;
    std::int32_t size = 7;
};

class Map_Painter {
public:
    // base: clips, modes and flags of all that is drawn. It is copied.
    Map_Painter(VT_Renderer_Data& renderer, const VT_Rendition& base, const View& view);

    // Every pixel once, see for_each_rectangle. A colour that is not opaque is blended in 32-bit pictures.
    void fill(const Face& face, VT_RGB32 color);
    // The same for a face in pixels.
    void fill_pixels(const Face& pixels, VT_RGB32 color);
    // Dashes run on from segment to segment.
    void draw(const Path& line, const Line_Paint& paint);
    void mark(Position place, const Marker_Paint& paint);

private:
    std::uint8_t index_of(VT_RGB32 color) const;
    void set_line(const Line_Paint& paint);

    VT_Renderer_Data& renderer_;
    VT_Reference<VT_Rendition> rendition_;
    View view_;
};

} // namespace vorna::drawing::map
