// The mask of a rendition's complex clip, from the renderer's cache.
#pragma once

#include "host/rendition.h"
#include "renderer/core/mask_cache_data.h"
#include "renderer/core/software_z_buffer.h"

namespace krb {

// Brings the mask of the rendition's complex clip to the head of the renderer's cache, rasterizing it only when it is not there.
// The fifth region takes the place of the one unused for longest. False when there is no clip or no cache.
bool find_mask(Software_Z_Buffer& renderer, const VT_Rendition& rendition);

// find_mask for the many calls that have no clip region, or the same as the call before.
inline bool is_masked(Software_Z_Buffer& renderer, const VT_Rendition& rendition) {
    const VT_Clip_Attributes& clip = rendition.clip;
    if (!clip.complex_clip || !renderer.mask_cache) {
        return false;
    }
    const Frame_Buffer_Mask* newest = renderer.mask_cache->newest;
    const bool is_shifted = clip.window_offset.x < 0 || clip.window_offset.y < 0;
    return (newest && !is_shifted && newest->key() == clip.complex_clip->serial() &&
            newest->is_for(renderer.window_size, renderer.window_origin)) ||
           find_mask(renderer, rendition);
}

} // namespace krb
