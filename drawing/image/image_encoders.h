// Encoders of image files by format: jpeg_encoder.cpp, webp_encoder.cpp and tiff_encoder.cpp need libraries.
#pragma once

#include <memory>

#include "drawing/image/image_encoder.h"
#include "drawing/image/image_form.h"

namespace vorna::drawing {

// The samples themselves, which digests are of.
std::unique_ptr<Image_Encoder> raw_encoder(const Image_Form& form);
// Eight bits of red, green and blue.
std::unique_ptr<Image_Encoder> ppm_encoder(const Image_Form& form);
// Quality 92 of 100, without fewer samples for colours than for light.
std::unique_ptr<Image_Encoder> jpeg_encoder(const Image_Form& form);
// Lossless.
std::unique_ptr<Image_Encoder> webp_encoder(const Image_Form& form);
// Tiles of 256 pixels each way; BigTIFF where the samples have 2 GiB or more.
std::unique_ptr<Image_Encoder> tiff_encoder(const Image_Form& form);

} // namespace vorna::drawing
