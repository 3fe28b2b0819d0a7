// Renditions.
#include "host/rendition.h"

void VT_Rendition::set_color(VT_RGB32 color) noexcept {
    face.color = color;
    line.color = color;
    marker.color = color;
}

void VT_Rendition::set_contrast_color(VT_RGB32 color) noexcept {
    face.contrast_color = color;
    line.contrast_color = color;
}

void VT_Rendition::set_hard_clip_unrestricted(const VT_Int_Rectangle& rectangle, bool restrict) noexcept {
    clip.hard_clip = restrict ? vorna::common_part(rectangle, clip.hard_clip) : rectangle;
}

VT_Reference<const VT_Contour_Set> VT_Rendition::shifted_complex_clip() const {
    return clip.complex_clip ? clip.complex_clip->moved(clip.window_offset) : nullptr;
}
