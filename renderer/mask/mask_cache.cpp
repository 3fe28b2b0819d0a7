// The cache of complex-clip masks.
#include "renderer/mask/mask_cache.h"

#include <memory>

#include "renderer/core/software_z_buffer.h"
#include "renderer/mask/region_mask.h"

namespace krb {

namespace {

void unlink(Mask_Cache_Data& cache, Frame_Buffer_Mask& mask) noexcept {
    (mask.newer ? mask.newer->older : cache.newest) = mask.older;
    (mask.older ? mask.older->newer : cache.oldest) = mask.newer;
}

void put_at_head(Mask_Cache_Data& cache, Frame_Buffer_Mask& mask) noexcept {
    mask.newer = nullptr;
    mask.older = cache.newest;
    (cache.newest ? cache.newest->newer : cache.oldest) = &mask;
    cache.newest = &mask;
}

} // namespace

bool find_mask(Software_Z_Buffer& renderer, const VT_Rendition& rendition) {
    if (!renderer.mask_cache) {
        return false;
    }
    Mask_Cache_Data& cache = *renderer.mask_cache;
    VT_Reference<const VT_Contour_Set> clip = rendition.clip.complex_clip;
    if (clip && (rendition.clip.window_offset.x < 0 || rendition.clip.window_offset.y < 0)) {
        clip = rendition.shifted_complex_clip();
    }
    if (!clip) {
        return false;
    }
    for (Frame_Buffer_Mask* mask = cache.newest; mask; mask = mask->older) {
        // Renderers that share a cache may have different windows.
        if (mask->key() == clip->serial() && mask->is_for(renderer.window_size, renderer.window_origin)) {
            if (mask != cache.newest) {
                unlink(cache, *mask);
                put_at_head(cache, *mask);
            }
            return true;
        }
    }
    if (cache.count >= cache.capacity) {
        auto& reused = static_cast<Region_Mask&>(*cache.oldest);
        reused.rasterize(renderer.window_size, renderer.window_origin, *clip);
        unlink(cache, reused);
        put_at_head(cache, reused);
    } else {
        auto mask = std::make_unique<Region_Mask>();
        mask->rasterize(renderer.window_size, renderer.window_origin, *clip);
        put_at_head(cache, *mask.release());
        ++cache.count;
    }
    return true;
}

} // namespace krb
