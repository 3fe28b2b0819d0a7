// Triangles with a texture or a colour, which run evenly over the screen where perspective lets them.
#pragma once

#include <array>
#include <cstdint>

#include "drawing/model/clipper.h"
#include "drawing/model/texture.h"
#include "drawing/model/viewport.h"
#include "host/renderer_data.h"
#include "host/rendition.h"

namespace vorna::drawing::model {

// A point on a triangle.
struct Textured_Corner {
    Clip_Point clip;
    double u, v;
    float blue, green, red, alpha;
    double x, y; // pixels from the window's corner, not rounded
    VT_DCI_Point device;

    void place(const Viewport& viewport);
    VT_RGB32 color() const;
};

// Draws triangles in the window of a tile. The renderer runs colours and textures evenly over the screen; in perspective, edges
// on which the middle would be wrong by half a pixel or more are halved there. That is decided for each edge by its two ends
// alone, so that triangles that share one agree and no crack opens between them.
class Textured_Triangles {
public:
    // The rendition's material changes.
    Textured_Triangles(VT_Renderer_Data& renderer, VT_Rendition& rendition, const Viewport& viewport)
        : renderer_(renderer), rendition_(rendition), viewport_(viewport), window_(rendition.window.rectangle) {}

    // Of the triangles to come, null for none; must outlive them.
    void set_texture(Texture* texture) { texture_ = texture; }
    // In pieces that can be drawn evenly.
    void draw(const Textured_Corner& a, const Textured_Corner& b, const Textured_Corner& c);

private:
    bool shows(const Textured_Corner& a, const Textured_Corner& b, const Textured_Corner& c) const;
    void draw_piece(const std::array<const Textured_Corner*, 3>& corners);
    Texture::Cut choose_texture(const std::array<const Textured_Corner*, 3>& corners,
                                std::array<VT_Parameter, 6>& parameters) const;

    VT_Renderer_Data& renderer_;
    VT_Rendition& rendition_;
    const Viewport& viewport_;
    VT_Int_Rectangle window_;
    Texture* texture_ = nullptr;
};

} // namespace vorna::drawing::model
