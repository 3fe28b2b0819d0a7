// A mask that knows which of its cells have excluded pixels.
#pragma once

#include <cstdint>
#include <vector>

#include "host/frame_buffer.h"
#include "renderer/mask/clipped_cells.h"

namespace krb {

// All masks of a renderer's cache are of this class.
class Region_Mask final : public Frame_Buffer_Mask {
public:
    // Sizes and draws the mask. Throws std::bad_alloc.
    void rasterize(VT_Int_Pair size, VT_Int_Pair origin, const VT_Contour_Set& contours);
    Clipped_Cells clipped_cells() const noexcept { return {before_.data(), row_}; }

private:
    std::vector<std::uint32_t> before_;
    std::int32_t row_ = 0;
};

} // namespace krb
