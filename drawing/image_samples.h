// Images in memory as files have them: written, read, compared and summed up.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/export.h"
#include "host/color.h"

namespace vorna::drawing {

// Rows from the top down without gaps. Copies share the samples.
struct Image_Samples {
    enum class Kind {
        colors,  // red, green, blue and alpha, a byte each
        indices, // a byte, of the palette
        depths,  // std::uint16_t
        faces,   // std::int32_t: the number of a triangle, -1 where there is none; no file holds them
    };

    Kind kind = Kind::colors;
    std::int32_t width = 0, height = 0;
    std::shared_ptr<std::uint8_t[]> bytes;
    std::vector<VT_RGB32> palette;      // of indices: 1 to 256 colours
    std::uint32_t pixels_per_metre = 0; // on paper, for files to state; 0 = not stated

    std::size_t pixel_bytes() const noexcept { return kind == Kind::indices ? 1 : kind == Kind::depths ? 2 : 4; }
    std::size_t size() const noexcept {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * pixel_bytes();
    }
};

// Pixels of four bytes in the order of samples, red first, as the host has them, blue first; and the reverse. Both may be the
// same memory.
inline void exchange_red_and_blue(const std::uint8_t* from, std::size_t pixels, std::uint8_t* to) noexcept {
    for (std::size_t i = 0; i < 4 * pixels; i += 4) {
        const std::uint8_t pixel[] = {from[i + 2], from[i + 1], from[i], from[i + 3]};
        std::copy_n(pixel, 4, to + i);
    }
}

// Without values. Throws Usage_Error for sides outside 1 to 262144, and std::bad_alloc.
VORNA_DRAWING_API Image_Samples make_samples(Image_Samples::Kind kind, std::int32_t width, std::int32_t height);

// A PNG file.
VORNA_DRAWING_API std::string png_of(const Image_Samples& image);
// Writes a file in the format of its suffix, PNG for any other, which appears whole or not at all. The bytes are those of the
// command's files.
VORNA_DRAWING_API void write_samples(const std::string& file, const Image_Samples& image);
// The SHA-256 of the samples in the order of files, which write_image returns and the command prints.
VORNA_DRAWING_API std::string digest_of(const Image_Samples& image);
// A PNG file in its own kind, or the colours of a file in another format that textures may have. max_memory: bytes; 0 = as
// Reading has it.
VORNA_DRAWING_API Image_Samples read_samples(const std::string& file, std::uint64_t max_memory = 0);
// The same of a file's bytes. name: what messages call it.
VORNA_DRAWING_API Image_Samples decode_samples(const std::string& name, std::string_view content, std::uint64_t max_memory = 0);

// Pixels that may differ: no channel by more than `difference`, no more pixels than `count`.
struct Tolerance {
    std::int32_t difference = 0;
    std::int64_t count = 0;
};

struct Comparison {
    bool is_same = false;
    std::string text;       // one line, as the command prints it before PSNR and SSIM
    std::int64_t count = 0; // pixels that differ
    std::int32_t most = 0;  // the largest difference of a channel
};

// As the command compares files. Face numbers compare as equal or not.
VORNA_DRAWING_API Comparison compare_samples(const Image_Samples& a, const Image_Samples& b,
                                             const std::optional<Tolerance>& tolerance = {});
// Of two PNG files.
VORNA_DRAWING_API Comparison compare_files(const std::string& a, const std::string& b,
                                           const std::optional<Tolerance>& tolerance = {});

// #rgb, #rrggbb or a common name. Throws Usage_Error for anything else.
VORNA_DRAWING_API VT_RGB32 parsed_color(const std::string& text);

} // namespace vorna::drawing
