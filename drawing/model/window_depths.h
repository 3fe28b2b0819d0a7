// The depths of a window, to be looked at and changed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/geometry.h"
#include "host/renderer_data.h"
#include "host/rendition.h"

namespace vorna::drawing::model {

class Window_Depths {
public:
    // area: that lies in the renderer's window, not empty.
    Window_Depths(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_Int_Rectangle& area);

    std::int32_t at(std::int32_t x, std::int32_t y) const noexcept { return row(area_.top - y)[x - area_.left]; }

    // Replaces each depth by the farthest one within so many columns and rows around it.
    void recede(std::int32_t reach);
    void write(VT_Renderer_Data& renderer, const VT_Rendition& rendition) const;

private:
    // Counted from the top.
    const std::uint16_t* row(std::int32_t r) const noexcept { return &depths_[static_cast<std::size_t>(r) * width_]; }
    void recede_across(std::int32_t reach);
    void recede_upwards(std::int32_t reach);

    VT_Int_Rectangle area_;
    std::size_t width_, height_;
    std::vector<std::uint16_t> depths_;
};

} // namespace vorna::drawing::model
