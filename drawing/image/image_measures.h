// How much two images differ, as measures of quality.
#pragma once

#include <optional>

#include "drawing/image/pixel_mask.h"
#include "drawing/image/png_reader.h"

namespace vorna::drawing {

// Of the pixels that are compared.
struct Image_Measures {
    // Peak signal-to-noise ratio in decibels, over red, green, blue, and alpha where one of the images is not opaque. None: it is
    // infinite, because no channel differs.
    std::optional<double> psnr;
    // Structural similarity, 1 for equal images: Wang, Bovik, Sheikh and Simoncelli 2004, K1 = 0.01, K2 = 0.03, of the luminance
    // 0.299 R + 0.587 G + 0.114 B times alpha. The mean over all places of the 11 x 11 window (Gaussian, sigma 1.5) that lie
    // wholly in the image, and whose centre is compared; pixels that are not compared count as equal. None: there is no such
    // place.
    std::optional<double> ssim;
};

// None for images of different sizes, and of 16 bits beside 8. mask: null = all pixels; else of the same size.
std::optional<Image_Measures> measure(const Png_Image& a, const Png_Image& b, const Pixel_Mask* mask = nullptr);

} // namespace vorna::drawing
