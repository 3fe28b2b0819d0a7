// Which pixels of an image are compared.
#include "drawing/image/pixel_mask.h"

#include <algorithm>

#include "drawing/image/pixel_values.h"

namespace vorna::drawing {

Pixel_Mask::Pixel_Mask(const Png_Image& image)
    : width_(image.width), height_(image.height),
      counts_(static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height)) {
    const Pixel_Values colors(image, true);
    for (std::size_t i = 0; i < counts_.size(); ++i) {
        const auto [red, green, blue, alpha] = colors.at(i);
        counts_[i] = (red | green | blue) != 0 && alpha != 0;
    }
}

bool Pixel_Mask::counts_any() const noexcept {
    return std::ranges::find(counts_, true) != counts_.end();
}

} // namespace vorna::drawing
