// The depths of a window.
#include "drawing/model/window_depths.h"

#include <algorithm>
#include <cstring>

#include "vorna/draw.h"

namespace vorna::drawing::model {
namespace {

// The farther depth of each pair, into farthest.
void take_farther(std::uint16_t* farthest, const std::uint16_t* depths, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        farthest[i] = std::max(farthest[i], depths[i]);
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

void Window_Depths::recede(std::int32_t reach) {
    recede_across(reach);
    recede_upwards(reach);
}

void Window_Depths::recede_across(std::int32_t reach) {
    std::vector<std::uint16_t> given(width_);
    for (std::size_t r = 0; r < height_; ++r) {
        std::uint16_t* depths = &depths_[r * width_];
        std::copy_n(depths, width_, given.begin());
        for (std::size_t shift = 1; shift <= static_cast<std::size_t>(reach) && shift < width_; ++shift) {
            take_farther(depths, &given[shift], width_ - shift);
            take_farther(depths + shift, given.data(), width_ - shift);
        }
    }
}

void Window_Depths::recede_upwards(std::int32_t reach) {
    const auto ring_rows = static_cast<std::size_t>(reach) + 1;
    std::vector<std::uint16_t> ring(ring_rows * width_); // the rows above and this one, as they were given
    for (std::size_t r = 0; r < height_; ++r) {
        std::uint16_t* depths = &depths_[r * width_];
        std::copy_n(depths, width_, &ring[r % ring_rows * width_]);
        for (std::size_t shift = 1; shift < ring_rows; ++shift) {
            if (r + shift < height_) {
                take_farther(depths, depths + shift * width_, width_);
            }
            if (shift <= r) {
                take_farther(depths, &ring[(r - shift) % ring_rows * width_], width_);
            }
        }
    }
}

void Window_Depths::write(VT_Renderer_Data& renderer, const VT_Rendition& rendition) const {
    const VT_DCI_Point top_left{area_.left, area_.top, 0}, bottom_right{area_.right, area_.bottom, 0};
    VD_Write_Depth_Rectangle(renderer, rendition, &top_left, &bottom_right, static_cast<std::int32_t>(2 * width_),
                             depths_.data());
}

} // namespace vorna::drawing::model
