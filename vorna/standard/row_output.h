// The pixels of a row of a strip, drawn through the slots.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "host/renderer_data.h"
#include "host/rendition.h"
#include "vorna/standard/strips.h"

namespace vorna {

// How pixels are combined with the contents of the buffer.
enum class Combination { store, blend, merge };

// That of the slots in the same configuration.
Combination combination_of(VT_Renderer_Data& renderer, const VT_Rendition& rendition, Strip_Kind kind);

// Draws the pixels of a row. Without depth as an image, which stores them, with depth as lines, which test it. Palette indices
// are drawn as dots, which dither, and so are pixels that merge.
class Row_Output {
public:
    struct Pixel {
        VT_RGB32 color;
        std::int32_t z;
        bool is_drawn;
    };

    Row_Output(VT_Renderer_Data& renderer, const VT_Rendition& rendition, Combination combination);

    // Changes the colours of pixels that blend.
    void draw(std::int32_t first_column, std::int32_t row, std::vector<Pixel>& pixels);

private:
    void blend(std::int32_t first_column, std::int32_t row, std::vector<Pixel>& pixels);
    void draw_run(VT_DCI_Point at, std::span<const Pixel> pixels);
    void draw_dots(VT_DCI_Point at, std::span<const Pixel> pixels) const;
    void merge_indices(VT_DCI_Point at, std::span<const Pixel> pixels);
    // The contents of a part of a row; null when they cannot be read.
    const std::uint8_t* read_row(std::int32_t first_column, std::int32_t row, std::size_t count);

    VT_Renderer_Data& renderer_;
    VT_Reference<VT_Rendition> rendition_;
    Combination combination_;
    bool has_colors_, has_depth_;
    VT_Reference<VT_Shared_Image> stored_;
};

} // namespace vorna
