// Frames of a drawing in memory, one after the other, drawn by several threads.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "drawing/files/thread_pool.h"
#include "drawing/job/drawing.h"

namespace vorna::drawing {

class Frame_Drawer {
public:
    // threads: at most; 0 = as many as there are processors.
    Frame_Drawer(const Module_Choice& module, unsigned threads);

    // The tiles that threads share of a frame of this size; none where one thread alone is faster.
    std::optional<Tile_Grid> shared_grid(const Drawing& drawing, VT_Int_Pair size) const;
    // Draws all tiles of a drawing that is prepared for the grid into a buffer, whose lower left pixel is that of the frame. The
    // pixels are those of a single tile. Throws what drawing throws.
    void draw(const Drawing& drawing, const Tile_Grid& grid, const Background& background, const Frame_Buffer& buffer);
    // The depth of a pixel of the grid's area: draws its tile again.
    std::uint16_t depth_at(const Drawing& drawing, const Tile_Grid& grid, const Background& background, VT_Int_Pair pixel);
    // The options of the drawing have changed.
    void forget_options();
    // The threads that drew the last frame.
    unsigned threads_used() const noexcept { return threads_used_; }

private:
    Tile_Renderer& renderer_of(std::size_t thread);

    const Module_Choice module_;
    const unsigned threads_;
    std::vector<std::unique_ptr<Tile_Renderer>> renderers_; // by thread
    unsigned threads_used_ = 1;
    Thread_Pool pool_;
};

} // namespace vorna::drawing
