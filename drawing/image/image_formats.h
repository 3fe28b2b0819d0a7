// The formats of image files: one table, which says how each is named, read and written.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/image/image.h"
#include "drawing/image/image_encoder.h"
#include "drawing/image/image_form.h"

namespace vorna::drawing {

struct Image_Format {
    Image_File file;
    std::string_view suffix;       // in lower case, without the dot
    std::string_view other_suffix; // of the same files; may be empty
    std::string_view name;
    bool keeps_alpha;
    std::uint32_t largest_side;
    bool is_rewritten; // whether the beginning is written last, which devices and pipes do not allow
    // Null: this build does not write the format. Throws std::runtime_error.
    std::unique_ptr<Image_Encoder> (*encoder)(const Image_Form& form) = nullptr;
};

// All formats that can be written, PNG first.
std::span<const Image_Format> image_formats();

// Null when no format has the suffix.
const Image_Format* find_image_format(std::string_view suffix);

// The format of a file's name; null when it has no suffix, or none of a format.
const Image_Format* image_format_of(const std::string& file);

const Image_Format& image_format(Image_File file);

// The suffixes of the formats that this build writes.
std::vector<std::string> written_image_suffixes();

// Throws std::runtime_error when this build does not write the format.
std::unique_ptr<Image_Encoder> image_encoder(const Image_Form& form);
// samples: of the whole image, whose colours a PNG or PDF file may so store as a palette.
std::unique_ptr<Image_Encoder> image_encoder(const Image_Form& form, const std::uint8_t* samples);
// The bytes of a file with these samples. Throws std::runtime_error.
std::string image_bytes(const Image_Form& form, const std::uint8_t* samples);

} // namespace vorna::drawing
