// A surface that subjects are drawn on.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "bench/primitives.h"
#include "bench/scene.h"
#include "vorna/module.h"

namespace bench {

enum class Shading { flat, gouraud, textured };

// Of the slots that points go through: device points, whole or not, with depth or without, or transformed points in space.
enum class Form { dci, dc, plane_di, plane, space };

struct Surface {
    Shading shading = Shading::flat;
    bool depth = false;
    bool alpha = false;
    bool palette = false;         // 8-bit indices instead of colours
    std::optional<Circle> clip{}; // drawn through the complex clip of a mask
    bool smoothed = false;        // lines
    Form form = Form::dci;        // of flat strips and lines
    VT_Int_Pair size = window_size;
    bool depth_blocks = false; // hidden triangles are left out by the depths of blocks
};

using Subject = std::variant<Scene, Lines, Circles, Image, Polylines>;

class Canvas {
public:
    Canvas() = default;
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;
    virtual ~Canvas() = default;

    // Paints every pixel white, or index 255.
    virtual void clear_color() = 0;
    virtual void clear_depth() = 0;
    virtual void draw() = 0;
    // Waits until everything is in memory.
    virtual void finish() = 0;
    // Row after row from the lowest: whether the pixel is no longer as clear_color left it.
    virtual std::vector<bool> painted_pixels() = 0;
};

// What is drawn must outlive the canvas.
std::unique_ptr<Canvas> make_own_canvas(const vorna::Module& module, const Surface& surface, const Subject& subject);

// The peers, each on one thread, with no palette and no clip. Throw std::runtime_error when the library fails.

// Mesa's software rasterizer through OSMesa, drawing from vertex buffers into a framebuffer object with a 32-bit colour and a
// 16-bit depth attachment: strips as they are, but no polygon; all lines in one call; circles as polygons. No images.
std::unique_ptr<Canvas> make_llvmpipe_canvas(const Surface& surface, const Subject& subject);
// What the peer calls itself, its version and its vector width.
const char* llvmpipe_description();

// SDL2's software renderer: triangles as geometry and lines one by one in a batch, filled circles as rectangles of one row each,
// outlines as polygons. No depth.
std::unique_ptr<Canvas> make_sdl_canvas(const Surface& surface, const Subject& subject);
// cairo's image surface: a stroke or fill a colour, without antialiasing unless smoothed. Flat triangles only.
std::unique_ptr<Canvas> make_cairo_canvas(const Surface& surface, const Subject& subject);
// AGG: its primitives for lines and circles without antialiasing, its outline rasterizer for smoothed lines, its scanline
// rasterizer without antialiasing for triangles, flat or with Gouraud spans; images copied and blended.
std::unique_ptr<Canvas> make_agg_canvas(const Surface& surface, const Subject& subject);
// Images only.
std::unique_ptr<Canvas> make_pixman_canvas(const Surface& surface, const Subject& subject);
std::unique_ptr<Canvas> make_memcpy_canvas(const Surface& surface, const Subject& subject);
std::string raster_peers_description();

} // namespace bench
