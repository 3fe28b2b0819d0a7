// What the line members gather for their kernels, once a call.
#pragma once

#include "renderer/core/cases.h"
#include "renderer/core/software_z_buffer.h"
#include "renderer/depth_lines/line_kernels.h"

namespace krb {

// Styled and wide lines go to the host's standard function.
inline bool drawn_by_renderer(const VT_Line_Attributes& line) noexcept {
    return line.style == 0 && line.weight <= 1;
}

// What tells the members of a case apart.
struct Line_Rules {
    Line_Shading shading;
    Pixel_Rule pixel;
    Line_Dither dither = Line_Dither::ordered;
    bool consults_mask = true;
    bool follows_test_mode = false; // the renderer's test mode and write flag, where there is a depth buffer of 32-bit pixels
};

// One call's drawing. Stays where it is made, since the target may point into it.
class Line_Call {
public:
    Line_Call(Case c, Software_Z_Buffer& renderer, const VT_Rendition& rendition, const Line_Rules& rules);
    Line_Call(const Line_Call&) = delete;
    Line_Call& operator=(const Line_Call&) = delete;

    bool masked() const noexcept { return target.mask_rows != nullptr; }
    void draw(const Polyline& polyline) const { kernels_->polyline(target, polyline); }
    void draw(const Cut_Segment& segment) const { kernels_->cut_segment(target, segment); }

    Line_Target target;

private:
    const Line_Kernels* kernels_;
};

} // namespace krb
