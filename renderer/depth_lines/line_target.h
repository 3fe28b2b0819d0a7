// What the line members gather for their kernels, once a call.
#pragma once

#include "host/attributes.h"
#include "renderer/core/cases.h"
#include "renderer/core/software_z_buffer.h"
#include "renderer/depth_lines/line_kernels.h"
#include "renderer/kernels/pixel_target.h"

namespace krb {

using vorna::drawn_by_renderer;

// What tells the members of a case apart.
struct Line_Rules {
    Line_Shading shading;
    Pixel_Rule pixel;
    Line_Dither dither = Line_Dither::ordered;
    bool masked = false;            // by the mask at the head of the cache
    bool follows_test_mode = false; // the renderer's test mode and write flag, where there is a depth buffer of 32-bit pixels
};

// One call's drawing. Defined here because lines are often so short that gathering is what they cost: where case and rules are
// known to the compiler little is left of it.
class Line_Call {
public:
    Line_Call(Case c, const Software_Z_Buffer& renderer, const Line_Rules& rules) noexcept
        : target{pixel_target_of(c, renderer, {rules.follows_test_mode, rules.follows_test_mode}), nullptr, nullptr} {
        const Depth_Rules follows{rules.follows_test_mode, rules.follows_test_mode};
        if (rules.masked) {
            target.mask_rows = renderer.mask_cache->newest->rows();
        }
        if (rules.dither == Line_Dither::additive) {
            // The matrix stands still in device coordinates.
            target.dither_row = renderer.window_origin.y;
        }
        kernels_ = &(*renderer.kernels->lines)[{rules.shading, is_index8(c) ? Pixel_Format::index8 : Pixel_Format::rgb32,
                                                rules.dither, depth_rule_of(c, renderer, follows), rules.pixel,
                                                rules.masked ? Clip_Rule::masked : Clip_Rule::open}];
    }

    void draw(const Polyline& polyline) const { kernels_->polyline(target, polyline); }
    void draw(const Cut_Segment& segment) const { kernels_->cut_segment(target, segment); }

    Line_Target target;

private:
    const Line_Kernels* kernels_;
};

} // namespace krb
