// An image cut into tiles.
#include "drawing/model/tiles.h"

#include <numeric>

namespace vorna::drawing::model {

VT_Int_Rectangle Tile_Grid::window(std::size_t tile) const noexcept {
    const auto across = static_cast<std::size_t>(columns());
    const std::int32_t left = area.left + static_cast<std::int32_t>(tile % across) * tile_size.x - margin,
                       bottom = area.bottom + static_cast<std::int32_t>(tile / across) * tile_size.y - margin;
    return {left, left + tile_size.x + 2 * margin - 1, bottom, bottom + tile_size.y + 2 * margin - 1};
}

VT_Int_Rectangle Tile_Grid::needed(std::size_t tile) const noexcept {
    const VT_Int_Rectangle drawn = window(tile);
    return {drawn.left + spare, drawn.right - spare, drawn.bottom + spare, drawn.top - spare};
}

VT_Int_Rectangle Tile_Grid::pixels(std::size_t tile) const noexcept {
    const VT_Int_Rectangle drawn = window(tile);
    return common_part(area, {drawn.left + margin, drawn.right - margin, drawn.bottom + margin, drawn.top - margin});
}

std::vector<std::size_t> tiles_from_middle(const Tile_Grid& grid) {
    std::vector<std::size_t> order(grid.count());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const auto columns = static_cast<std::int64_t>(grid.columns()), rows = static_cast<std::int64_t>(grid.rows());
    std::ranges::stable_sort(order, {}, [&](std::size_t tile) {
        const std::int64_t x = 2 * (static_cast<std::int64_t>(tile) % columns) + 1 - columns,
                           y = 2 * (static_cast<std::int64_t>(tile) / columns) + 1 - rows;
        return x * x + y * y;
    });
    return order;
}

void Tile_Bins::start(const Tile_Grid& grid, std::int32_t beside) {
    area_ = grid.area;
    tile_size_ = grid.tile_size;
    // A pixel more to each side for rounding.
    reach_ = grid.margin - grid.spare + beside + 1;
    columns_ = grid.columns();
    rows_ = grid.rows();
    tile_count_ = grid.count();
    added_.clear();
    starts_.clear();
    items_.clear();
}

bool Tile_Bins::add(std::uint32_t item, const Extent& extent) {
    if (extent.is_empty()) {
        return false;
    }
    // Tiles are rounded down, also of what lies left of the area or below it.
    const auto tile_of = [](std::int32_t place, std::int32_t size) {
        return place < 0 ? -((size - 1 - place) / size) : place / size;
    };
    const std::int32_t left = tile_of(extent.box.left - reach_ - area_.left, tile_size_.x),
                       right = tile_of(extent.box.right + reach_ - area_.left, tile_size_.x),
                       bottom = tile_of(extent.box.bottom - reach_ - area_.bottom, tile_size_.y),
                       top = tile_of(extent.box.top + reach_ - area_.bottom, tile_size_.y);
    for (std::int32_t row = std::max(bottom, 0); row <= std::min(top, rows_ - 1); ++row) {
        for (std::int32_t column = std::max(left, 0); column <= std::min(right, columns_ - 1); ++column) {
            added_.emplace_back(static_cast<std::uint32_t>(row * columns_ + column), item);
        }
    }
    return left == right && bottom == top;
}

void Tile_Bins::finish() {
    if (!sorts()) {
        return;
    }
    starts_.assign(tile_count_ + 1, 0);
    for (const auto& [tile, item] : added_) {
        ++starts_[tile + 1];
    }
    for (std::size_t tile = 0; tile < tile_count_; ++tile) {
        starts_[tile + 1] += starts_[tile];
    }
    items_.resize(added_.size());
    std::vector<std::size_t> next(starts_.begin(), starts_.end() - 1);
    for (const auto& [tile, item] : added_) {
        items_[next[tile]++] = item;
    }
    added_.clear();
}

} // namespace vorna::drawing::model
