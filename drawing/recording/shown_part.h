// The part of the window that a recording shows.
#pragma once

#include "drawing/image/image_file.h"
#include "drawing/recording/recording.h"
#include "drawing/recording/session.h"

namespace vorna::drawing::recording {

// raster: of the whole window. Throws Recording_Error for a part that is not inside the window.
Raster shown(const Raster& raster, const Session& session, const Recording& recording);
Raster shown(const Raster& raster, const VT_Int_Rectangle& window, const Recording& recording);

} // namespace vorna::drawing::recording
