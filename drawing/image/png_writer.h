// PNG files, written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "drawing/image/image_encoder.h"
#include "drawing/image/image_form.h"
#include "drawing/image/png_layout.h"

namespace vorna::drawing {

// The type of the chunk with the place.
inline constexpr char png_place_type[] = "vtIL";

// The rows of an image as one zlib stream.
class Row_Packer : public Image_Encoder {
public:
    Row_Packer(const Image_Form& form, Png_Layout layout);

    std::uint32_t block_rows() const override;
    Packed_Rows pack(const Sample_Rows& rows) const override;

protected:
    const Image_Form& form() const noexcept { return form_; }
    const Png_Layout& layout() const noexcept { return layout_; }
    // The stream's next bytes.
    std::string joined(const Sample_Rows& rows, const Packed_Rows& packed);

private:
    Image_Form form_;
    Png_Layout layout_;
    std::uint32_t checksum_ = 1; // of all rows so far
};

class Png_Encoder : public Row_Packer {
public:
    using Row_Packer::Row_Packer;

    std::string head() override;
    std::string join(const Sample_Rows& rows, Packed_Rows packed) override;
    std::string tail() override;
};

// The bytes of a file. fill(row, samples) is called for each row from the top down and stores row_bytes() bytes. The same bytes
// on every machine that has the same library. Throws std::runtime_error when the library fails.
std::string png_file(const Image_Form& form, const std::function<void(std::uint32_t, std::uint8_t*)>& fill);

} // namespace vorna::drawing
