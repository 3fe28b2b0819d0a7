// An image cut into tiles, and what is drawn in each of them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "host/geometry.h"

namespace vorna::drawing::model {

// Tiles are counted in rows from the lower left one on. Their windows begin at multiples of 8 columns and rows of the image, so
// that dither and patterns, which count from the window, go on from tile to tile.
struct Tile_Grid {
    VT_Int_Rectangle frame;  // where an image's points lie: its pixels, and the far sides of the last ones
    VT_Int_Rectangle area;   // the pixels that are wanted; left and bottom are multiples of 8
    VT_Int_Pair tile_size;   // multiples of 8, or that of the frame
    std::int32_t margin = 0; // columns and rows around each tile that are drawn and not kept; a multiple of 8
    // Of the margin, the outer columns and rows, whose pixels nothing needs: they hold what reaches over the border of a tile,
    // so that the renderer need not cut it.
    std::int32_t spare = 0;

    // One tile that is the whole frame, all of it wanted.
    explicit Tile_Grid(const VT_Int_Rectangle& whole)
        : frame(whole), area(whole), tile_size{whole.right - whole.left + 1, whole.top - whole.bottom + 1} {}

    std::int32_t columns() const noexcept { return (area.right - area.left) / tile_size.x + 1; }
    std::int32_t rows() const noexcept { return (area.top - area.bottom) / tile_size.y + 1; }
    std::size_t count() const noexcept { return static_cast<std::size_t>(columns()) * static_cast<std::size_t>(rows()); }
    // What is drawn to get a tile. All windows have the same size.
    VT_Int_Rectangle window(std::size_t tile) const noexcept;
    // The part of the window whose pixels are needed.
    VT_Int_Rectangle needed(std::size_t tile) const noexcept;
    // What is kept of it.
    VT_Int_Rectangle pixels(std::size_t tile) const noexcept;
};

// The tiles of a grid from the middle of the image outwards: models cover the middle, so that what is left last takes little.
std::vector<std::size_t> tiles_from_middle(const Tile_Grid& grid);

using vorna::common_part;

// The smallest rectangle around points.
struct Extent {
    VT_Int_Rectangle box{INT32_MAX, INT32_MIN, INT32_MAX, INT32_MIN};

    void include(const VT_DCI_Point& p) noexcept {
        box = {std::min(box.left, p.x), std::max(box.right, p.x), std::min(box.bottom, p.y), std::max(box.top, p.y)};
    }
    bool is_empty() const noexcept { return box.left > box.right; }
    // Of an extent that is not empty.
    std::int32_t width() const noexcept { return box.right - box.left; }
    std::int32_t height() const noexcept { return box.top - box.bottom; }
};

// Numbered things, sorted by the tiles whose windows they touch. In every tile they keep the order in which they were added.
class Tile_Bins {
public:
    // Forgets what was there. A single tile needs no sorting: it has everything. beside: how far pixels may lie outside extents.
    void start(const Tile_Grid& grid, std::int32_t beside = 0);
    bool sorts() const noexcept { return tile_count_ > 1; }
    // Returns whether the item lies wholly in one tile.
    bool add(std::uint32_t item, const Extent& extent);
    void finish();

    // Calls visit(item) for the items of a tile; total: how many there are in all.
    template <class Visit> void for_each(std::size_t tile, std::size_t total, Visit visit) const {
        if (!sorts()) {
            for (std::size_t item = 0; item < total; ++item) {
                visit(item);
            }
            return;
        }
        for (std::size_t i = starts_[tile]; i < starts_[tile + 1]; ++i) {
            visit(items_[i]);
        }
    }

private:
    VT_Int_Rectangle area_;
    VT_Int_Pair tile_size_{1, 1};
    std::int32_t reach_ = 0, columns_ = 0, rows_ = 0;
    std::size_t tile_count_ = 0;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> added_; // tile, item
    std::vector<std::size_t> starts_;                            // by tile, and the end of the last one
    std::vector<std::uint32_t> items_;
};

} // namespace vorna::drawing::model
