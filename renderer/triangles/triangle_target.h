// The target and the kernel of a call of a triangle member.
#pragma once

#include "host/attributes.h"
#include "host/scratch.h"
#include "renderer/core/cases.h"
#include "renderer/core/software_z_buffer.h"
#include "renderer/triangles/triangle_kernels.h"

namespace krb {

using vorna::drawn_by_renderer;

// Rows of the window, half-open.
struct Row_Limits {
    std::int32_t first, end;
};

// One call's drawing: its kernels, and all that they read. Stays where it is made, since the kernels' target points into it.
class Triangle_Call {
public:
    Triangle_Call(Case c, Software_Z_Buffer& renderer, const VT_Rendition& rendition, Shading shading, Pixel_Rule pixel,
                  bool consults_mask = true);
    Triangle_Call(const Triangle_Call&) = delete;
    Triangle_Call& operator=(const Triangle_Call&) = delete;

    // The kernel of the same case and clip for another shading and pixel rule.
    Strip_Kernel* kernel(Shading shading, Pixel_Rule pixel) const noexcept;
    // The strip may reach anywhere: what lies outside the target's columns and rows is cut off, and inside them appears what the
    // whole strip would show there. Triangles of more than 32767 columns or 2^30 rows are cut first, at the same places whichever
    // part of the picture is drawn; cuts move their edges by less than a pixel.
    void draw_any(const Triangle_Strip& strip) const;

    const Row_Limits rows; // the target's if all rows were drawable
    Triangle_Target target;

private:
    // The strip lies inside the target's columns and rows.
    void draw(const Triangle_Strip& strip) const { kernel_(target, strip); }
    void draw_scissored(const Triangle_Strip& strip) const;
    // A strip that is not too large, wherever it lies.
    void draw_apart(const Triangle_Strip& strip) const;
    // One triangle.
    void draw_in_cells(const Triangle_Strip& whole) const;
    bool is_flat() const noexcept { return configuration_.shading == Shading::flat; }

    const Kernel_Set* kernels_;
    VT_Int_Pair tile_origin_;
    Triangle_Configuration configuration_;
    Face_Pattern pattern_;
    Strip_Kernel* kernel_;
};

// How the colorized member of a case combines its colour with a pixel: only the alpha member without depth merges.
inline Pixel_Rule colorized_pixel_rule(Case c, const Software_Z_Buffer& renderer, const VT_Rendition& rendition) noexcept {
    if (c == Case::rgb32_alpha && renderer.merges(rendition.face.mode)) {
        return Pixel_Rule::merge;
    }
    return is_alpha(c) ? Pixel_Rule::blend : Pixel_Rule::store;
}

// Colour and pixel rule of a flat face.
struct Flat_Face {
    VT_RGB32 color;
    Pixel_Rule pixel;
};

Flat_Face flat_face(Case c, const Software_Z_Buffer& renderer, const VT_Rendition& rendition) noexcept;

// Device points from floats, rounded to whole pixels.
vorna::Scratch<VT_DCI_Point> rounded_points(std::int32_t count, const VT_Point* points);

} // namespace krb
