// Members of the image slots.
#include "renderer/primitives/images.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "renderer/core/fixed_point.h"
#include "renderer/kernels/call_target.h"
#include "renderer/kernels/kernel_sets.h"
#include "renderer/kernels/span_kernels.h"
#include "renderer/mask/mask_cache.h"
#include "renderer/mask/mask_cursor.h"

namespace krb {

namespace {

// (source * a + stored * (255 - a)) / 255 for the colour bytes. Full alpha copies the pixel, none leaves it; else it becomes
// opaque.
void blend_pixel(std::uint8_t* to, const std::uint8_t* source) {
    const int alpha = source[3];
    if (alpha == 255) {
        std::memcpy(to, source, 4);
        return;
    }
    for (int i = 0; i < 3; ++i) {
        to[i] = static_cast<std::uint8_t>((source[i] * alpha + to[i] * (255 - alpha)) / 255);
    }
    to[3] = 255;
}

// One drawing of an image, row by row.
template <Case c> class Image_Copy {
public:
    Image_Copy(Software_Z_Buffer& renderer, const VT_Rendition& rendition, const VT_DCI_Point& start, const VT_DCI_Point& end)
        : renderer_(renderer),
          blends_(facts_of(c).has_alpha && (rendition.drawing_flags & vorna::drawing_flag::translucent) != 0),
          tests_depth_(has_depth(c) && renderer.draws_with_depth(rendition)),
          mask_(is_masked(renderer, rendition) ? renderer.mask_cache->newest : nullptr),
          column_(start.x - renderer.window_origin.x), target_(pixel_target_of(without_depth(c), renderer, {})) {
        depth_.setup_15(start.z, end.z, wrapping_subtract(end.x, start.x));
        target_.mask_rows = mask_ ? mask_->rows() : nullptr;
        copy_ = renderer.kernels->spans
                    ->copy[Span_Configuration{format_of(c), Depth_Rule::none, blends_ ? Pixel_Rule::blend : Pixel_Rule::store,
                                              mask_ ? Clip_Rule::masked : Clip_Rule::open}];
    }

    void copy_row(std::int32_t row, std::int32_t count, const std::uint8_t* source) {
        if (tests_depth_) {
            copy_with_depth(row, count, source);
        } else {
            copy_(target_, {row, column_, count}, source);
        }
    }

private:
    static constexpr std::int64_t pixel_bytes = facts_of(c).pixel_bytes;

    // The depth moves on from pixel to pixel and, deliberately, from the end of a row to the start of the next.
    void copy_with_depth(std::int32_t row, std::int32_t count, const std::uint8_t* source) {
        std::uint8_t* to = renderer_.color_buffer->rows[row] + column_ * pixel_bytes;
        for (std::int32_t i = 0; i < count; ++i, to += pixel_bytes, source += pixel_bytes) {
            const bool drawn = !(blends_ && source[3] == 0) && (!mask_ || Mask_Cursor::at(*mask_, row, column_ + i).drawable()) &&
                               passes_depth(row, i);
            if (drawn && blends_) {
                blend_pixel(to, source);
            } else if (drawn) {
                std::memcpy(to, source, static_cast<std::size_t>(pixel_bytes));
            }
            if (i + 1 < count) {
                depth_.advance();
            }
        }
    }

    bool passes_depth(std::int32_t row, std::int32_t i) {
        const auto candidate = static_cast<std::uint16_t>(depth_.value >> 15);
        std::uint8_t* at = renderer_.depth_buffer->rows[row] + std::int64_t{2} * (column_ + i);
        std::uint16_t stored;
        std::memcpy(&stored, at, 2);
        if (candidate > stored) {
            return false;
        }
        std::memcpy(at, &candidate, 2);
        return true;
    }

    Software_Z_Buffer& renderer_;
    bool blends_, tests_depth_;
    const Frame_Buffer_Mask* mask_; // null = none
    std::int32_t column_;
    Pixel_Target target_;
    Copy_Kernel* copy_;
    Fixed_Interpolator depth_;
};

template <Case c>
void copy_image(VT_Renderer_Data& data, const VT_Rendition& rendition, const VT_DCI_Point& start, const VT_DCI_Point& end,
                std::int32_t stride, const std::uint8_t* source) {
    Software_Z_Buffer& renderer = renderer_of(data);
    const std::int64_t window_right = std::int64_t{renderer.window_origin.x} - 1 + renderer.window_size.x;
    const std::int64_t count = std::min<std::int64_t>(end.x, window_right) - start.x + 1;
    if (!renderer.color_buffer || count < 1) {
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

} // namespace

template <Case c>
void draw_dci_index8_image(VT_Renderer_Data& data, const VT_Rendition& rendition, const VT_DCI_Point* start,
                           const VT_DCI_Point* end, std::int32_t stride, const std::uint8_t* pixels) {
    copy_image<c>(data, rendition, *start, *end, stride, pixels);
}

template <Case c>
void draw_dci_rgb32_image(VT_Renderer_Data& data, const VT_Rendition& rendition, const VT_DCI_Point* start,
                          const VT_DCI_Point* end, std::int32_t stride, const VT_RGB32* pixels, std::int32_t, const VT_Packing*) {
    copy_image<c>(data, rendition, *start, *end, stride, reinterpret_cast<const std::uint8_t*>(pixels));
}

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
    const std::int32_t top = std::min({clip.top, start->y, image->height() - 1});
    for (std::int32_t row = std::max(clip.bottom, 0); row <= top && left <= right; ++row) {
        const std::uint8_t* source = image->row(image->bottom_up() ? row : image->height() - 1 - row);
        std::memcpy(renderer.color_buffer->rows[row] + std::int64_t{4} * left, source + std::int64_t{4} * left,
                    std::size_t{4} * static_cast<std::size_t>(right - left + 1));
    }
}

template VT_Draw_Index8_Image draw_dci_index8_image<Case::index8>;
template VT_Draw_Index8_Image draw_dci_index8_image<Case::depth_index8>;
template VT_Draw_RGB32_Image draw_dci_rgb32_image<Case::rgb32>;
template VT_Draw_RGB32_Image draw_dci_rgb32_image<Case::depth_rgb32>;

} // namespace krb
