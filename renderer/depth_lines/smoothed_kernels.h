// What the members for smoothed lines hand to their kernels, and the table of kernels of one instruction set.
#pragma once

#include "host/geometry.h"
#include "renderer/core/pixel_target.h"
#include "renderer/depth_lines/line_kernels.h"
#include "renderer/kernels/pixel_rules.h"

namespace krb {

struct Smoothed_Target : Pixel_Target {
    // The part of the clip rectangle that lies in the window, in columns and rows, all inclusive. Pixels beside a sloped segment
    // are drawn inside it only; with left beyond right or bottom beyond top none are.
    VT_Int_Rectangle visible;
    // The clip rectangle itself, whose far parts may be cut. Axis-aligned segments have pixels beside them strictly inside it.
    VT_Int_Rectangle clip;
};

// Every segment without its last pixel, then the last point.
using Smoothed_Kernel = void(const Smoothed_Target& target, const Polyline& polyline);

// 32-bit pixels without depth. Store and blend, open and masked.
struct Smoothed_Kernel_Table {
    Smoothed_Kernel* kernel[2][2];

    constexpr Smoothed_Kernel* operator()(Pixel_Rule pixel, Clip_Rule clip) const noexcept {
        return kernel[static_cast<int>(pixel)][static_cast<int>(clip)];
    }
};

} // namespace krb
