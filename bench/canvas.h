// A surface that scenes are drawn on.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "bench/scene.h"
#include "vorna/module.h"

namespace bench {

enum class Shading { flat, gouraud, textured };

struct Surface {
    Shading shading = Shading::flat;
    bool depth = false;
    bool alpha = false;
    bool palette = false;         // 8-bit indices instead of colours
    std::optional<Circle> clip{}; // drawn through the complex clip of a mask
};

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

// The scene must outlive the canvas.
std::unique_ptr<Canvas> make_own_canvas(const vorna::Module& module, const Surface& surface, const Scene& scene);

// Mesa's software rasterizer through OSMesa, on one thread, drawing the same strips from vertex buffers into a framebuffer object
// with a 32-bit colour and a 16-bit depth attachment. Surfaces with a palette or a clip and scenes with a polygon are not for it.
// Throws std::runtime_error.
std::unique_ptr<Canvas> make_llvmpipe_canvas(const Surface& surface, const Scene& scene);
// What the peer calls itself, its version and its vector width.
const char* llvmpipe_description();

} // namespace bench
