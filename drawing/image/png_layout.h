// How PNG files store samples: as they are, or in fewer bits.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "drawing/image/image_form.h"
#include "host/color.h"

namespace vorna::drawing {

// Whether all samples are looked at before any is stored, which small images of reducible forms are.
bool looks_at_samples(const Image_Form& form) noexcept;

// Opaque colours are stored without alpha, and palettes of up to 16 colours in 1, 2 or 4 bits a pixel.
class Png_Layout {
public:
    enum class Colors : std::uint8_t { grey = 0, red_green_blue = 2, palette = 3, red_green_blue_alpha = 6 };

    explicit Png_Layout(const Image_Form& form);
    // samples: of the whole image. Colours become a palette when they are 256 or fewer; whether all are opaque is seen from them.
    Png_Layout(const Image_Form& form, const std::uint8_t* samples);

    Colors colors() const noexcept { return colors_; }
    int sample_bits() const noexcept { return sample_bits_; }
    const std::string& palette() const noexcept { return palette_; }
    // The alphas of the palette's first colours; the others are opaque.
    const std::string& transparency() const noexcept { return transparency_; }
    std::size_t row_bytes() const noexcept;
    // Bytes from a sample to the same sample of the next pixel, 1 at least.
    std::size_t step() const noexcept;
    // Throws std::runtime_error for a pixel that is not opaque in a form that says so.
    void store_row(const std::uint8_t* samples, std::uint8_t* row) const;
    // The inverse, of forms whose colours have not become a palette.
    void load_row(const std::uint8_t* row, std::uint8_t* samples) const;

private:
    using Color = std::uint32_t; // as it lies in memory

    std::size_t channels() const noexcept;
    bool is_opaque(const std::uint8_t* samples) const noexcept;
    bool find_colors(const std::uint8_t* samples);
    void use_palette(std::vector<Color> colors);
    std::size_t place_of(Color color) const noexcept;
    void store_opaque(const std::uint8_t* samples, std::uint8_t* row) const;
    void store_indices(const std::uint8_t* samples, std::uint8_t* row) const;

    std::size_t width_, height_, sample_row_bytes_;
    Colors colors_;
    int sample_bits_;
    std::string palette_, transparency_;
    bool maps_colors_ = false; // samples are colours, and stored are indices
    std::vector<Color> keys_;  // a table by hash, with an index beside each colour
    std::vector<std::int16_t> indices_;
};

} // namespace vorna::drawing
