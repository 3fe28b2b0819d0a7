// Single pixels of members: dots, markers and outlines, by the rules that kernels apply to groups of lanes.
#pragma once

#include "renderer/core/cases.h"
#include "renderer/kernels/call_target.h"
#include "renderer/kernels/pixel_rules.h"
#include "renderer/mask/mask_cache.h"

// The vocabulary of one lane, in a namespace of its own: what members compile runs on every processor.
#define KRB_KERNEL_SET one_lane
#include "renderer/kernels/lanes_portable.inl"
#include "renderer/kernels/pixel_formats.inl"
#include "renderer/kernels/single_pixel.inl"
#include "renderer/kernels/span.inl"
#undef KRB_KERNEL_SET

namespace krb {
namespace {

template <Pixel_Rule> struct Single_Pixel_Of;
template <> struct Single_Pixel_Of<Pixel_Rule::store> { using type = one_lane::Store; };
template <> struct Single_Pixel_Of<Pixel_Rule::blend> { using type = one_lane::Line_Blend; };
template <> struct Single_Pixel_Of<Pixel_Rule::merge> { using type = one_lane::Merge; };

template <Pixel_Format pixel_format, Depth_Rule depth_rule, Pixel_Rule pixel_rule, Clip_Rule clip_rule> struct Single_Rules {
    using Target = Pixel_Target;
    using Format = one_lane::Format_Type<pixel_format>;
    using Depth = typename one_lane::Depth_Of<depth_rule>::type;
    using Pixel = typename Single_Pixel_Of<pixel_rule>::type;
    static constexpr Clip_Rule clip = clip_rule;
};

// The pixels of one call: draw them in a colour, or in a palette index of formats that have such.
template <Case c> class Single_Pixels {
public:
    // masked: by the mask at the head of the cache.
    Single_Pixels(const Software_Z_Buffer& renderer, bool masked, bool merges) noexcept
        : target_(pixel_target_of(c, renderer, follows)), masked_(masked), merges_(merges),
          by_mode_(depth_rule_of(c, renderer, follows) == Depth_Rule::by_mode) {
        target_.mask_rows = masked ? renderer.mask_cache->newest->rows() : nullptr;
    }

    KRB_ALWAYS_INLINE void draw(std::int32_t row, std::int32_t column, std::int32_t z, VT_RGB32 color) const {
        draw_by_rules(row, column, z, typename Format::Flat(target_, color));
    }
    KRB_ALWAYS_INLINE void draw(std::int32_t row, std::int32_t column, std::int32_t z, std::uint8_t index) const {
        draw_by_rules(row, column, z, one_lane::Index_Source(index));
    }

private:
    using Format = one_lane::Format_Type<format_of(c)>;
    static constexpr Depth_Rules follows{true, true};
    static constexpr Pixel_Rule unmerged = is_alpha(c) ? Pixel_Rule::blend : Pixel_Rule::store;
    static constexpr Depth_Rule fixed = has_depth(c) ? Depth_Rule::less_or_equal : Depth_Rule::none;

    template <class Source>
    KRB_ALWAYS_INLINE void draw_by_rules(std::int32_t row, std::int32_t column, std::int32_t z, const Source& source) const {
        if constexpr (has_depth(c) && facts_of(c).follows_depth_modes) {
            if (by_mode_) {
                draw_with_depth<Depth_Rule::by_mode>(row, column, z, source);
                return;
            }
        }
        draw_with_depth<fixed>(row, column, z, source);
    }
    template <Depth_Rule depth, class Source>
    KRB_ALWAYS_INLINE void draw_with_depth(std::int32_t row, std::int32_t column, std::int32_t z, const Source& source) const {
        if (merges_) {
            draw_clipped<depth, Pixel_Rule::merge>(row, column, z, source);
        } else {
            draw_clipped<depth, unmerged>(row, column, z, source);
        }
    }
    template <Depth_Rule depth, Pixel_Rule pixel, class Source>
    KRB_ALWAYS_INLINE void draw_clipped(std::int32_t row, std::int32_t column, std::int32_t z, const Source& source) const {
        if (masked_) {
            one_lane::draw_pixel<Single_Rules<format_of(c), depth, pixel, Clip_Rule::masked>>(target_, row, column, z, source);
        } else {
            one_lane::draw_pixel<Single_Rules<format_of(c), depth, pixel, Clip_Rule::open>>(target_, row, column, z, source);
        }
    }

    Pixel_Target target_;
    bool masked_, merges_, by_mode_;
};

} // namespace
} // namespace krb
