// The part of the flat family that the Gouraud members share.
#pragma once

#include "renderer/triangles/triangle_target.h"

namespace krb {

// How the colorized member of a case combines its colour with a pixel: only the alpha member without depth merges.
inline Pixel_Rule colorized_pixel_rule(Case c, const Software_Z_Buffer& renderer, const VT_Rendition& rendition) noexcept {
    if (c == Case::rgb32_alpha && renderer.merges(rendition.face.mode)) {
        return Pixel_Rule::merge;
    }
    return is_alpha(c) ? Pixel_Rule::blend : Pixel_Rule::store;
}

} // namespace krb
