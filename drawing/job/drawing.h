// What a job draws: a model or a map, prepared once and drawn tile by tile.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "drawing/image/background.h"
#include "drawing/model/tiles.h"
#include "drawing/recording/session.h"
#include "host/rendition.h"

namespace vorna::drawing {

using model::Tile_Grid;

// What a plan must know of a drawing.
struct Drawing_Needs {
    std::int32_t beyond = 0;           // columns and rows of the frame to the right of the image and above it
    std::int32_t margin = 0;           // of tiles, see Tile_Grid
    std::int32_t spare = 0;            // with it, for what reaches over the border of a tile; a multiple of 8
    std::int32_t overhang = 0;         // columns and rows by which points of device shapes may lie outside the frame
    std::string one_piece;             // why it can be drawn as one tile only; empty = it can be cut
    std::uint64_t pixel_memory = 4;    // bytes of a renderer's buffers for each pixel of the window
    std::uint64_t thread_memory = 0;   // bytes that drawing takes in each thread, roughly
    std::uint64_t prepared_memory = 0; // bytes that prepare takes, roughly
    double work = 0;                   // nanoseconds that one thread takes to draw it, roughly
};

class Drawing {
public:
    Drawing() = default;
    Drawing(const Drawing&) = delete;
    Drawing& operator=(const Drawing&) = delete;
    virtual ~Drawing() = default;

    // How large it is, in words.
    virtual std::string summary() const = 0;
    // So many images, each prepared and drawn by itself.
    virtual std::int32_t frame_count() const { return 1; }
    // size: of the image; supersample: columns and rows of drawn pixels for one of its pixels.
    virtual Drawing_Needs needs(VT_Int_Pair size, std::int32_t supersample) const = 0;

    // Calls visit for places of vertices that the first frame shows: 0 to 1 from its left to its right, from below upwards. By
    // them parts of the image get equal work; a drawing whose vertices take little leaves them out.
    virtual void visit_places(const std::function<void(double x, double y)>&) const {}

    // Does what a frame needs once. The grid is that of the drawn pixels.
    virtual void prepare(const Tile_Grid& grid, std::int32_t supersample, std::int32_t frame) = 0;
    // Options of a renderer that draws it, but for the window; before the session is established.
    virtual void set_options(Session& session) const = 0;
    // Attributes of everything that is drawn; the rendition's clip and window are set.
    virtual void set_attributes(VT_Rendition& rendition) const = 0;
    // Draws what touches a tile of the prepared frame, in a picture that has begun with this background. Several threads may draw
    // at once, each through a session and a rendition of its own.
    virtual void draw(Session& session, const VT_Rendition& rendition, std::size_t tile, const Background& background) const = 0;
};

// Fits a session and a rendition to a tile of a prepared drawing.
void establish(Session& session, VT_Rendition& rendition, const Drawing& drawing, const Tile_Grid& grid, std::size_t tile);
// Paints the rendition's window; a gradient spans the hard clip.
void paint_background(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Background& background);
// Draws the tile as a picture of its own.
void draw_picture(Session& session, VT_Rendition& rendition, const Drawing& drawing, std::size_t tile,
                  const Background& background);

// A renderer with a window for one tile at a time. Every thread has its own.
class Tile_Renderer {
public:
    explicit Tile_Renderer(const Module_Choice& module) : session_(module) {}

    void draw(const Drawing& drawing, const Tile_Grid& grid, std::size_t tile, const Background& background);
    // The drawing's options or attributes have changed.
    void forget_options() noexcept { window_ = {0, -1, 0, -1}; }
    Session& session() noexcept { return session_; }

private:
    Session session_;
    VT_Reference<VT_Rendition> rendition_;
    VT_Int_Rectangle window_{0, -1, 0, -1};
};

} // namespace vorna::drawing
