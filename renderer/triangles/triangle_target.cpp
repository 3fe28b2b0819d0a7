// What the members gather for their kernels, once a call.
#include "renderer/triangles/triangle_target.h"

#include "renderer/core/fixed_point.h"
#include "renderer/core/pixel_target.h"

namespace krb {

namespace {

// A pattern row has its leftmost cell in the high bit; kernels want it in bit 0, and more than eight bits from any column on.
constexpr std::uint32_t repeated_row(std::uint8_t row) noexcept {
    std::uint32_t bits = 0;
    for (int a = 0; a < 8; ++a) {
        bits |= (row & 0x80U >> a) != 0 ? 1U << a : 0U;
    }
    return bits * 0x01010101U;
}

// Cells, gaps and contrast colour of a face's pattern. Without a bitmap of its own the bitmap pattern has no cells.
Face_Pattern pattern_of(const VT_Face_Attributes& face) noexcept {
    Face_Pattern pattern{};
    if (face.pattern == face_pattern::bitmap) {
        if (face.bitmap && face.bitmap->width() > 0 && face.bitmap->height() > 0) {
            pattern.bitmap = face.bitmap->row(0);
            pattern.width = face.bitmap->width();
            pattern.height = face.bitmap->height();
        }
    } else if (face.pattern >= 0) {
        for (int b = 0; b < 8; ++b) {
            pattern.stock_rows[b] = repeated_row(SHARED.stock_patterns[face.pattern][b]);
        }
    }
    pattern.inverted = (face.flags & face_flag::inverted_pattern) != 0;
    pattern.opaque_gaps = (face.flags & face_flag::opaque_pattern) != 0;
    pattern.contrast = face.contrast_color;
    return pattern;
}

bool is_solid(const VT_Face_Attributes& face) noexcept {
    return face.pattern == face_pattern::solid && !(face.flags & face_flag::inverted_pattern);
}

// Only 32-bit members look at the write flag; the test mode belongs to the opaque ones, and to all textured ones.
Depth_Rules depth_rules_of(Case c, Shading shading) noexcept {
    return {c == Case::depth_rgb32 || (c == Case::depth_rgb32_alpha && shading == Shading::textured), !is_index8(c)};
}

Triangle_Target target_of(Case c, Shading shading, const Software_Z_Buffer& renderer) noexcept {
    Triangle_Target target{};
    static_cast<Pixel_Target&>(target) = pixel_target_of(c, renderer, depth_rules_of(c, shading));
    target.end_column = renderer.window_size.x;
    target.end_row = renderer.window_size.y;
    target.palette = reinterpret_cast<const std::uint8_t*>(renderer.palette_pixels);
    return target;
}

} // namespace

Triangle_Call::Triangle_Call(Case c, Software_Z_Buffer& renderer, const VT_Rendition& rendition, Shading shading,
                             Pixel_Rule pixel, bool consults_mask)
    : target(target_of(c, shading, renderer)), kernels_(renderer.kernels) {
    if (consults_mask && find_mask(renderer, rendition)) {
        target.mask_rows = renderer.mask_cache->newest->rows();
    }
    Clip_Rule clip = target.mask_rows ? Clip_Rule::masked : Clip_Rule::open;
    if (!is_solid(rendition.face)) {
        clip = Clip_Rule::patterned;
        pattern_ = pattern_of(rendition.face);
        target.pattern = &pattern_;
    }
    configuration_ = {shading, is_index8(c) ? Pixel_Format::index8 : Pixel_Format::rgb32, depth_rule_of(c, renderer, depth_rules_of(c, shading)),
                      pixel, clip};
    kernel_ = kernel(shading, pixel);
}

Strip_Kernel* Triangle_Call::kernel(Shading shading, Pixel_Rule pixel) const noexcept {
    Triangle_Configuration configuration = configuration_;
    configuration.shading = shading;
    configuration.pixel = pixel;
    return (*kernels_->triangles)[configuration];
}

Flat_Face flat_face(Case c, const Software_Z_Buffer& renderer, const VT_Rendition& rendition) noexcept {
    const bool merges = renderer.merges(rendition.face.mode);
    const bool translucent = (rendition.face.flags & face_flag::translucent) != 0;
    Flat_Face face{rendition.face.color, colorized_pixel_rule(c, renderer, rendition)};
    if (c == Case::index8) {
        face.pixel = merges ? Pixel_Rule::merge : Pixel_Rule::store;
    } else if (c == Case::rgb32 && (translucent || merges)) {
        // Drawn as the alpha member draws it; a face that only merges is opaque.
        face.pixel = merges ? Pixel_Rule::merge : Pixel_Rule::blend;
        face.color.alpha = translucent ? face.color.alpha : 255;
    }
    return face;
}

Scratch<VT_DCI_Point> rounded_points(std::int32_t count, const VT_Point* points) {
    Scratch<VT_DCI_Point> rounded(count);
    for (std::int32_t i = 0; i < count; ++i) {
        rounded[i] = {rounded_coordinate(points[i].x), rounded_coordinate(points[i].y), rounded_coordinate(points[i].z)};
    }
    return rounded;
}

} // namespace krb
