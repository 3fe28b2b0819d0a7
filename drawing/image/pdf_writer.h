// PDF files of one page with an image.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "drawing/image/png_writer.h"

namespace vorna::drawing {

// A pixel is 1/96 inch wide, less where the page would be wider or higher than PDF allows.
class Pdf_Encoder : public Row_Packer {
public:
    using Row_Packer::Row_Packer;

    std::string head() override;
    std::string join(const Sample_Rows& rows, Packed_Rows packed) override;
    std::string tail() override;

private:
    // Begins an object at the end of the text.
    void begin_object(std::string& text);

    std::vector<std::uint64_t> places_;    // of the objects
    std::uint64_t size_ = 0, content_ = 0; // bytes so far, of the file and of the image
};

} // namespace vorna::drawing
