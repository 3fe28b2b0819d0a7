// Members of the image slots.
#include "renderer/primitives/images.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "renderer/core/entry.h"
#include "renderer/core/fixed_point.h"
#include "renderer/kernels/call_target.h"
#include "renderer/kernels/kernel_sets.h"
#include "renderer/kernels/span_kernels.h"
#include "renderer/mask/mask_cache.h"

namespace krb {

namespace {

// One drawing of an image, row by row.
template <Case c> class Image_Copy {
public:
    Image_Copy(Software_Z_Buffer& renderer, const VT_Rendition& rendition, const VT_DCI_Point& start, const VT_DCI_Point& end)
        : column_(start.x - renderer.window_origin.x), target_(pixel_target_of(c, renderer, {})) {
        const bool blends = facts_of(c).has_alpha && (rendition.drawing_flags & vorna::drawing_flag::translucent) != 0;
        const bool tests_depth = has_depth(c) && renderer.draws_with_depth(rendition);
        depth_ = Fixed_Interpolator::between<15, std::int64_t>(start.z, end.z, wrapping_subtract(end.x, start.x));
        target_.mask_rows = is_masked(renderer, rendition) ? renderer.mask_cache->newest->rows() : nullptr;
        kernel_ = renderer.kernels->spans->copy[Span_Configuration{
            format_of(c), tests_depth ? Depth_Rule::less_or_equal : Depth_Rule::none,
            blends ? Pixel_Rule::blend : Pixel_Rule::store, target_.mask_rows ? Clip_Rule::masked : Clip_Rule::open}];
    }

    // The depth moves on from pixel to pixel and, deliberately, from the end of a row to the start of the next.
    void copy_row(std::int32_t row, std::int32_t count, const std::uint8_t* source) {
        if (target_.first_row <= row && row < target_.end_row) {
            kernel_(target_, {row, column_, count}, source, depth_);
        }
        depth_.skip(count - 1);
    }

private:
    std::int32_t column_;
    Pixel_Target target_;
    Copy_Kernel* kernel_;
    Fixed_Interpolator depth_;
};

template <Case c>
void copy_image(Software_Z_Buffer& renderer, const VT_Rendition& rendition, const VT_DCI_Point& start, const VT_DCI_Point& end,
                std::int32_t stride, const std::uint8_t* source) {
    const std::int64_t window_right = std::int64_t{renderer.window_origin.x} - 1 + renderer.window_size.x;
    const std::int64_t count = std::min<std::int64_t>(end.x, window_right) - start.x + 1;
    if (count < 1) {
        return;
    }
    // Without a source every row is zeros.
    std::vector<std::uint8_t> zeros;
    if (!source) {
        zeros.resize(static_cast<std::size_t>(count * facts_of(c).pixel_bytes));
        source = zeros.data();
        stride = 0;
    }
    Image_Copy<c> copy(renderer, rendition, start, end);
    for (std::int32_t y = start.y; y >= end.y; --y) {
        copy.copy_row(y - renderer.window_origin.y, static_cast<std::int32_t>(count), source);
        source += stride;
    }
}

// The member with depth draws images that are not depth-tested too.
template <Case c> struct Image_Entry : Entry_Rules<c> { static constexpr bool has_sibling = false; };

} // namespace

template <Case c> struct Entry<slots::Draw_DCI_Index8_Image, c> : Image_Entry<c> {
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, const VT_DCI_Point* start,
                     const VT_DCI_Point* end, std::int32_t stride, const std::uint8_t* pixels) {
        copy_image<c>(renderer, rendition, *start, *end, stride, pixels);
    }
};

template <Case c> struct Entry<slots::Draw_DCI_RGB32_Image, c> : Image_Entry<c> {
    static void draw(Software_Z_Buffer& renderer, const VT_Rendition& rendition, const VT_DCI_Point* start,
                     const VT_DCI_Point* end, std::int32_t stride, const VT_RGB32* pixels, std::int32_t, const VT_Packing*) {
        copy_image<c>(renderer, rendition, *start, *end, stride, reinterpret_cast<const std::uint8_t*>(pixels));
    }
};

template struct Member<slots::Draw_DCI_Index8_Image, Case::index8>;
template struct Member<slots::Draw_DCI_Index8_Image, Case::depth_index8>;
template struct Member<slots::Draw_DCI_RGB32_Image, Case::rgb32>;
template struct Member<slots::Draw_DCI_RGB32_Image, Case::depth_rgb32>;

void draw_dci_image(VT_Renderer_Data& data, const VT_Rendition& rendition, const VT_DCI_Point* start,
                    const VT_Shared_Image* image) {
    if (!image) {
        return;
    }
    const Software_Z_Buffer& renderer = renderer_of(data);
    const bool for_presentation = image->format() == Buffer_Format::presentation_rgb32;
    const bool fits = renderer.color_buffer && image->width() == renderer.color_buffer->width &&
                      image->height() == renderer.color_buffer->height;
    if (for_presentation && !fits) {
        return;
    }
    // Pixels of 32 bits have no place in an 8-bit buffer.
    if (!for_presentation || renderer.color_buffer->format != Buffer_Format::rgb32) {
        VD_Standard_Draw_DCI_Image(data, rendition, start, image);
        return;
    }
    const VT_Int_Rectangle& clip = rendition.clip.hard_clip;
    const std::int32_t left = std::max({start->x, 0, clip.left});
    const std::int32_t right = std::min(clip.right, image->width() - 1);
    const std::int32_t top = std::min({clip.top, start->y, renderer.target.end_row - 1});
    for (std::int32_t row = std::max(clip.bottom, renderer.target.first_row); row <= top && left <= right; ++row) {
        const std::uint8_t* source = image->row(image->bottom_up() ? row : image->height() - 1 - row);
        std::memcpy(renderer.color_buffer->rows[row] + std::int64_t{4} * left, source + std::int64_t{4} * left,
                    std::size_t{4} * static_cast<std::size_t>(right - left + 1));
    }
}

} // namespace krb
