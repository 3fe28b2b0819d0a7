// The target and the kernel of a call of a line member.
#pragma once

#include <type_traits>

#include "host/attributes.h"
#include "renderer/core/cases.h"
#include "renderer/core/software_z_buffer.h"
#include "renderer/depth_lines/line_kernels.h"
#include "renderer/kernels/call_target.h"
#include "renderer/kernels/kernel_sets.h"
#include "renderer/mask/mask_cache.h"
#include "renderer/mask/region_mask.h"

namespace krb {

using vorna::drawn_by_renderer;

// What tells the members of a case apart.
struct Line_Rules {
    Line_Shading shading;
    Pixel_Rule pixel;
    bool masked = false;            // by the mask at the head of the cache
    bool follows_test_mode = false; // the renderer's test mode and write flag, where the format follows them
};

// One call's drawing of polylines or of cut segments. Defined here because most of the time for a short line is spent on
// gathering: where case and rules are known to the compiler little is left of it.
template <class Shape> class Line_Call {
public:
    Line_Call(Case c, const Software_Z_Buffer& renderer, const Line_Rules& rules) noexcept
        : target{pixel_target_of(c, renderer, {rules.follows_test_mode, rules.follows_test_mode}), nullptr, nullptr, {}} {
        const Depth_Rules follows{rules.follows_test_mode, rules.follows_test_mode};
        if (rules.masked) {
            const auto& mask = static_cast<const Region_Mask&>(*renderer.mask_cache->newest);
            target.mask_rows = mask.rows();
            target.clipped_cells = mask.clipped_cells();
        }
        if constexpr (dithers_additively) {
            // The matrix stands still in device coordinates.
            target.dither_row = renderer.window_origin.y;
        }
        const bool is_additive = dithers_additively && !facts_of(c).stores_words;
        kernel_ = renderer.kernels->lines->of<Shape>()[Line_Configuration{
            rules.shading, format_of(c), is_additive ? Line_Dither::additive : Line_Dither::ordered,
            depth_rule_of(c, renderer, follows), rules.pixel, rules.masked ? Clip_Rule::masked : Clip_Rule::open}];
    }

    void draw(const Shape& shape) const { kernel_(target, shape); }

    Line_Target target;

private:
    static constexpr bool dithers_additively = std::is_same_v<Shape, Cut_Segment>;

    Line_Kernel<Shape>* kernel_;
};

} // namespace krb
