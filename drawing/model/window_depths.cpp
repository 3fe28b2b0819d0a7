// The depths of a window.
#include "drawing/model/window_depths.h"

#include <algorithm>
#include <cstring>

#include "vorna/draw.h"

namespace vorna::drawing::model {
namespace {

// The farther depth of each pair, into farthest, which may lie before depths in the same rows: those are read first, block by
// block.
void take_farther(std::uint16_t* farthest, const std::uint16_t* depths, std::size_t count) {
    constexpr std::size_t block = 256;
    std::uint16_t read[block];
    for (std::size_t start = 0; start < count; start += block) {
        const std::size_t end = std::min(block, count - start);
        std::copy_n(depths + start, end, read);
        for (std::size_t i = 0; i < end; ++i) {
            farthest[start + i] = std::max(farthest[start + i], read[i]);
        }
    }
}

} // namespace

Window_Depths::Window_Depths(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_Int_Rectangle& area)
    : area_(area), width_(static_cast<std::size_t>(area.right - area.left + 1)),
      height_(static_cast<std::size_t>(area.top - area.bottom + 1)), depths_(width_ * height_) {
    const VT_DCI_Point top_left{area.left, area.top, 0}, bottom_right{area.right, area.bottom, 0};
    const Buffer_Format format = Buffer_Format::depth16;
    VT_Reference<VT_Shared_Image> image;
    VD_Read_Depth_Image(renderer, rendition, &top_left, &bottom_right, &format, image);
    for (std::size_t r = 0; r < height_; ++r) {
        const auto source = static_cast<std::int32_t>(image->bottom_up() ? height_ - 1 - r : r);
        std::memcpy(&depths_[r * width_], image->row(source), 2 * width_);
    }
}

// The farthest depths of 2, 4, 8 and so on columns, then rows, from each place on: two of these cover any number of them. Around
// the area lies a border of depths nearer than all others.
void Window_Depths::recede(std::int32_t reach) {
    const auto border = static_cast<std::size_t>(reach);
    const std::size_t count = 2 * border + 1, width = width_ + 2 * border, height = height_ + 2 * border;
    std::vector<std::uint16_t> farthest(width * height);
    for (std::size_t r = 0; r < height_; ++r) {
        std::uint16_t* depths = &farthest[(r + border) * width];
        std::copy_n(&depths_[r * width_], width_, depths + border);
        std::size_t covered = 1;
        for (; 2 * covered <= count; covered *= 2) {
            take_farther(depths, depths + covered, width - covered);
        }
        take_farther(depths, depths + count - covered, width_);
    }
    std::size_t covered = 1;
    for (; 2 * covered <= count; covered *= 2) {
        take_farther(farthest.data(), &farthest[covered * width], (height - covered) * width);
    }
    for (std::size_t r = 0; r < height_; ++r) {
        take_farther(&farthest[r * width], &farthest[(r + count - covered) * width], width_);
        std::copy_n(&farthest[r * width], width_, &depths_[r * width_]);
    }
}

void Window_Depths::write(VT_Renderer_Data& renderer, const VT_Rendition& rendition) const {
    const VT_DCI_Point top_left{area_.left, area_.top, 0}, bottom_right{area_.right, area_.bottom, 0};
    VD_Write_Depth_Rectangle(renderer, rendition, &top_left, &bottom_right, static_cast<std::int32_t>(2 * width_),
                             depths_.data());
}

} // namespace vorna::drawing::model
