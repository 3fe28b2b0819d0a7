// Pixels of buffers and images of the host as samples, and textures of samples.
#pragma once

#include "drawing/image/image_file.h"
#include "drawing/image_samples.h"
#include "host/color.h"

namespace vorna::drawing {

// A copy: colours, indices with the 256 colours of the palette, or depths.
Image_Samples samples_of(const Raster& raster, const VT_Palette& palette);

} // namespace vorna::drawing
