// The pixels of a row of a strip, drawn through the slots.
#include "vorna/standard/row_output.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "vorna/draw.h"
#include "vorna/standard/lines.h"
#include "vorna/standard/merging.h"

namespace vorna {

Combination combination_of(VT_Renderer_Data& renderer, const VT_Rendition& rendition, Strip_Kind kind) {
    const VT_Renderer_Options& options = renderer.current_renderer_options();
    const bool merging = merges(renderer, rendition.face.mode);
    const bool has_depth = has_depth_in_force(renderer, rendition);
    const bool has_colors = options.color_system() == 1;
    const bool is_flat = kind == Strip_Kind::flat;
    const Combination by_option = options.alpha_blending() ? Combination::blend : Combination::store;
    if (kind == Strip_Kind::textured) {
        return has_colors ? Combination::blend : by_option;
    }
    if (!has_colors) {
        return is_flat && !has_depth && merging ? Combination::merge : Combination::store;
    }
    if (has_depth) {
        return by_option;
    }
    if (merging && (is_flat || (kind == Strip_Kind::colorized && options.alpha_blending()))) {
        return Combination::merge;
    }
    const bool is_translucent = kind != Strip_Kind::colorized && (rendition.face.flags & face_flag::translucent);
    return is_translucent ? Combination::blend : by_option;
}

Row_Output::Row_Output(VT_Renderer_Data& renderer, const VT_Rendition& rendition, Combination combination)
    : renderer_(renderer), rendition_(new VT_Rendition(rendition)), combination_(combination),
      has_colors_(renderer.current_renderer_options().color_system() == 1), has_depth_(has_depth_in_force(renderer, rendition)) {
    VT_Line_Attributes& line = rendition_->line; // which dots take
    line = {};
    line.mode = combination == Combination::merge ? merge_drawing_mode : 0;
    rendition_->drawing_flags = 0;
}

void Row_Output::draw(std::int32_t first_column, std::int32_t row, std::vector<Pixel>& pixels) {
    if (combination_ == Combination::blend) {
        blend(first_column, row, pixels);
    }
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const std::size_t first = i;
        while (i < pixels.size() && pixels[i].is_drawn) {
            ++i;
        }
        if (first < i) {
            draw_run({first_column + static_cast<std::int32_t>(first), row, 0}, {&pixels[first], i - first});
        }
    }
}

void Row_Output::blend(std::int32_t first_column, std::int32_t row, std::vector<Pixel>& pixels) {
    const auto is_opaque = [](const Pixel& pixel) { return !pixel.is_drawn || pixel.color.alpha == 255; };
    if (std::all_of(pixels.begin(), pixels.end(), is_opaque)) {
        return;
    }
    const std::uint8_t* const stored = read_row(first_column, row, pixels.size());
    const VT_Palette& palette = renderer_.current_renderer_options().palette();
    for (std::size_t i = 0; stored && i < pixels.size(); ++i) {
        VT_RGB32 under{};
        if (has_colors_) {
            std::memcpy(&under, stored + 4 * i, 4);
        } else {
            under = palette.color(stored[i]);
        }
        pixels[i].color = blended(pixels[i].color, under);
    }
}

void Row_Output::draw_run(VT_DCI_Point at, std::span<const Pixel> pixels) {
    if (combination_ == Combination::merge && !has_colors_) {
        merge_indices(at, pixels);
    } else if (combination_ == Combination::merge || !has_colors_) {
        draw_dots(at, pixels);
    } else {
        std::vector<VT_RGB32> colors;
        for (const Pixel& pixel : pixels) {
            colors.push_back(pixel.color);
        }
        if (has_depth_) {
            std::vector<VT_DCI_Point> points;
            for (const Pixel& pixel : pixels) {
                points.push_back({at.x++, at.y, pixel.z});
            }
            draw_level_line(renderer_, *rendition_, std::move(points), std::move(colors));
        } else {
            const VT_DCI_Point end{at.x + static_cast<std::int32_t>(pixels.size()) - 1, at.y, 0};
            VD_Draw_DCI_RGB32_Image(renderer_, *rendition_, &at, &end, 0, colors.data(), 0, nullptr);
        }
    }
}

void Row_Output::draw_dots(VT_DCI_Point at, std::span<const Pixel> pixels) const {
    for (const Pixel& pixel : pixels) {
        at.z = pixel.z;
        VD_Draw_DCI_Dot(renderer_, *rendition_, &at, &pixel.color);
        ++at.x;
    }
}

// Dots in given colours do not merge, and indices that merge are not dithered. So the row is dithered first, then restored,
// and the dithered indices are merged.
void Row_Output::merge_indices(VT_DCI_Point at, std::span<const Pixel> pixels) {
    const VT_DCI_Point end{at.x + static_cast<std::int32_t>(pixels.size()) - 1, at.y, 0};
    const auto row = [&]() -> std::vector<std::uint8_t> {
        const std::uint8_t* const stored = read_row(at.x, at.y, pixels.size());
        return {stored, stored ? stored + pixels.size() : stored};
    };
    const std::vector<std::uint8_t> before = row();
    draw_dots(at, pixels);
    const std::vector<std::uint8_t> dithered = row();
    if (!before.empty()) {
        VD_Draw_DCI_Index8_Image(renderer_, *rendition_, &at, &end, 0, before.data());
    }
    for (const std::uint8_t index : dithered) {
        rendition_->line.index = index;
        VD_Draw_DCI_Dot(renderer_, *rendition_, &at, nullptr);
        ++at.x;
    }
}

const std::uint8_t* Row_Output::read_row(std::int32_t first_column, std::int32_t row, std::size_t count) {
    constexpr Buffer_Format format = Buffer_Format::whatever_is_there;
    const VT_DCI_Point start{first_column, row, 0};
    const VT_DCI_Point end{first_column + static_cast<std::int32_t>(count) - 1, row, 0};
    VD_Read_Color_Image(renderer_, *rendition_, &start, &end, &format, stored_);
    return stored_ ? stored_->row(0) : nullptr;
}

} // namespace vorna
