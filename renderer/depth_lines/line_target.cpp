// What the line members gather for their kernels, once a call.
#include "renderer/depth_lines/line_target.h"

#include "renderer/core/pixel_target.h"

namespace krb {

Line_Call::Line_Call(Case c, Software_Z_Buffer& renderer, const VT_Rendition& rendition, const Line_Rules& rules) : target{} {
    const Depth_Rules follows{rules.follows_test_mode, rules.follows_test_mode};
    static_cast<Pixel_Target&>(target) = pixel_target_of(c, renderer, follows);
    if (rules.consults_mask && find_mask(renderer, rendition)) {
        target.mask_rows = renderer.mask_cache->newest->rows();
    }
    if (rules.dither == Line_Dither::additive) {
        // The matrix stands still in device coordinates.
        target.dither_row = renderer.window_origin.y;
    }
    kernels_ = &(*renderer.kernels->lines)[{rules.shading, is_index8(c) ? Pixel_Format::index8 : Pixel_Format::rgb32,
                                            rules.dither, depth_rule_of(c, renderer, follows), rules.pixel,
                                            masked() ? Clip_Rule::masked : Clip_Rule::open}];
}

} // namespace krb
