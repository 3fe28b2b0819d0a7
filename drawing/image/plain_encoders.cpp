// Image files without compression.
#include <algorithm>
#include <vector>

#include "drawing/image/color_rows.h"
#include "drawing/image/image_encoders.h"

namespace vorna::drawing {

namespace {

constexpr std::size_t block_bytes = std::size_t{1} << 18;

std::uint32_t rows_of_block(const Image_Form& form) {
    return static_cast<std::uint32_t>(std::clamp<std::size_t>(block_bytes / form.row_bytes(), 1, form.height));
}

class Raw_Encoder : public Image_Encoder {
public:
    explicit Raw_Encoder(const Image_Form& form) : form_(form) {}

    std::uint32_t block_rows() const override { return rows_of_block(form_); }
    std::string join(const Sample_Rows& rows, Packed_Rows) override {
        return {reinterpret_cast<const char*>(rows.samples), (rows.end - rows.first) * form_.row_bytes()};
    }

private:
    Image_Form form_;
};

class Ppm_Encoder : public Image_Encoder {
public:
    explicit Ppm_Encoder(const Image_Form& form) : form_(form) {}

    std::uint32_t block_rows() const override { return rows_of_block(form_); }
    std::string head() override { return "P6\n" + std::to_string(form_.width) + ' ' + std::to_string(form_.height) + "\n255\n"; }
    Packed_Rows pack(const Sample_Rows& rows) const override {
        const std::size_t row_bytes = std::size_t{3} * form_.width;
        Packed_Rows packed{std::string((rows.end - rows.first) * row_bytes, '\0'), 0};
        for (std::uint32_t row = 0; row < rows.end - rows.first; ++row) {
            store_colors(form_, rows.samples + row * form_.row_bytes(), 3,
                         reinterpret_cast<std::uint8_t*>(packed.bytes.data()) + row * row_bytes);
        }
        return packed;
    }
    std::string join(const Sample_Rows&, Packed_Rows packed) override { return std::move(packed.bytes); }

private:
    Image_Form form_;
};

} // namespace

std::unique_ptr<Image_Encoder> raw_encoder(const Image_Form& form) {
    return std::make_unique<Raw_Encoder>(form);
}

std::unique_ptr<Image_Encoder> ppm_encoder(const Image_Form& form) {
    return std::make_unique<Ppm_Encoder>(form);
}

} // namespace vorna::drawing
