// The part of the window that a recording shows.
#include "drawing/recording/shown_part.h"

#include "drawing/recording/document.h"

namespace vorna::drawing::recording {

Raster shown(const Raster& raster, const Session& session, const Recording& recording) {
    return shown(raster, session.window(), recording);
}

Raster shown(const Raster& raster, const VT_Int_Rectangle& window, const Recording& recording) {
    if (!recording.output) {
        return raster;
    }
    const VT_Int_Rectangle& area = *recording.output;
    if (is_empty(area) || common_part(area, window) != area) {
        throw Recording_Error("output: expected a rectangle inside the window");
    }
    return cut(raster, window, area);
}

} // namespace vorna::drawing::recording
