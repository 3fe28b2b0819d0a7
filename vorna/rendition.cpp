// Renditions.
#include "host/rendition.h"

#include <algorithm>

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
    const VT_Int_Rectangle before = clip.hard_clip;
    clip.hard_clip = rectangle;
    if (restrict) {
        clip.hard_clip.left = std::max(rectangle.left, before.left);
        clip.hard_clip.right = std::min(rectangle.right, before.right);
        clip.hard_clip.bottom = std::max(rectangle.bottom, before.bottom);
        clip.hard_clip.top = std::min(rectangle.top, before.top);
    }
}

VT_Reference<const VT_Contour_Set> VT_Rendition::shifted_complex_clip() const {
    return clip.complex_clip ? clip.complex_clip->moved(clip.window_offset) : nullptr;
}
