// Smoothed device polylines.
#include "renderer/depth_lines/smoothed_polylines.h"

#include <algorithm>

#include "renderer/core/pixel_target.h"
#include "renderer/depth_lines/smoothed_kernels.h"

namespace krb {

void draw_smoothed_polyline(Case c, Software_Z_Buffer& renderer, const VT_Rendition& rendition, const Polyline& polyline) {
    Smoothed_Target target{pixel_target_of(c, renderer, {}), {}, {}};
    const VT_Int_Rectangle visible = renderer.visible_rectangle(rendition);
    target.visible = {visible.left - target.origin_x, visible.right - target.origin_x, visible.bottom - target.origin_y,
                      visible.top - target.origin_y};
    const auto beside_window = [](std::int32_t side, std::int32_t origin, std::int32_t size) {
        return static_cast<std::int32_t>(std::clamp<std::int64_t>(std::int64_t{side} - origin, -2, std::int64_t{size} + 1));
    };
    const VT_Int_Rectangle& clip = rendition.clip.hard_clip;
    target.clip = {
        beside_window(clip.left, target.origin_x, target.width), beside_window(clip.right, target.origin_x, target.width),
        beside_window(clip.bottom, target.origin_y, target.height), beside_window(clip.top, target.origin_y, target.height)};
    if (is_masked(renderer, rendition)) {
        target.mask_rows = renderer.mask_cache->newest->rows();
    }
    const Smoothed_Kernel_Table& kernels = *renderer.kernels->smoothed;
    Smoothed_Kernel* draw =
        kernels(is_alpha(c) ? Pixel_Rule::blend : Pixel_Rule::store, target.mask_rows ? Clip_Rule::masked : Clip_Rule::open);
    draw(target, polyline);
}

} // namespace krb
