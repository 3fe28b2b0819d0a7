// Smoothed device polylines.
#include "renderer/depth_lines/smoothed_polylines.h"

#include <algorithm>

#include "renderer/depth_lines/smoothed_kernels.h"
#include "renderer/kernels/call_target.h"
#include "renderer/kernels/kernel_sets.h"
#include "renderer/mask/mask_cache.h"

namespace krb {

void draw_smoothed_polyline(Case c, Software_Z_Buffer& renderer, const VT_Rendition& rendition, const Polyline& polyline) {
    Smoothed_Target target{pixel_target_of(c, renderer, {}), {}, {}};
    // Sides farther away make no difference, and these do not overflow.
    const auto side = [](std::int32_t of, std::int32_t origin, std::int32_t size) {
        return static_cast<std::int32_t>(std::clamp<std::int64_t>(std::int64_t{of} - origin, -2, std::int64_t{size} + 1));
    };
    const VT_Int_Rectangle& clip = rendition.clip.hard_clip;
    target.clip = {side(clip.left, target.origin_x, target.width), side(clip.right, target.origin_x, target.width),
                   side(clip.bottom, target.origin_y, target.height), side(clip.top, target.origin_y, target.height)};
    target.visible = {std::max(target.clip.left, 0), std::min(target.clip.right, target.width - 1),
                      std::max(target.clip.bottom, 0), std::min(target.clip.top, target.height - 1)};
    if (is_masked(renderer, rendition)) {
        target.mask_rows = renderer.mask_cache->newest->rows();
    }
    const Smoothed_Configuration configuration{is_alpha(c) ? Pixel_Rule::blend : Pixel_Rule::store,
                                               target.mask_rows ? Clip_Rule::masked : Clip_Rule::open};
    renderer.kernels->smoothed->polylines[configuration](target, polyline);
}

} // namespace krb
