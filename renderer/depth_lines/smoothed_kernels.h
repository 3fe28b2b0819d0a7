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

// 32-bit pixels without depth.
struct Smoothed_Configuration {
    Pixel_Rule pixel;
    Clip_Rule clip;

    static constexpr int packed_bits = 4;
    constexpr std::uint32_t packed() const noexcept { return krb::packed(pixel, clip); }
};

inline constexpr auto smoothed_configurations =
    every<Smoothed_Configuration>(Choice{Pixel_Rule::store, Pixel_Rule::blend}, Choice{Clip_Rule::open, Clip_Rule::masked});

struct Smoothed_Kernel_Table {
    Kernel_Table<Smoothed_Kernel, smoothed_configurations> polylines;
};

} // namespace krb
