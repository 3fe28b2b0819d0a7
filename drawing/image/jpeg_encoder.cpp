// JPEG files, written by libjpeg.
#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <stdexcept>
#include <vector>

#include <jpeglib.h>

#include "drawing/image/color_rows.h"
#include "drawing/image/image_encoders.h"

namespace vorna::drawing {

namespace {

constexpr int quality = 92;

// The library reports errors by calling back; they leave it by a jump.
struct Errors : jpeg_error_mgr {
    std::jmp_buf place;
    char text[JMSG_LENGTH_MAX] = {};
};

[[noreturn]] void leave(j_common_ptr image) {
    auto* errors = static_cast<Errors*>(image->err);
    errors->format_message(image, errors->text);
    std::longjmp(errors->place, 1);
}

// Where the library leaves what it has compressed.
struct Destination : jpeg_destination_mgr {
    std::array<JOCTET, 65536> piece;
    std::string* bytes = nullptr;

    void take(std::size_t count) { bytes->append(reinterpret_cast<const char*>(piece.data()), count); }
    void begin() {
        next_output_byte = piece.data();
        free_in_buffer = piece.size();
    }
};

Destination& destination_of(j_compress_ptr image) {
    return *static_cast<Destination*>(image->dest);
}

class Jpeg_Encoder : public Image_Encoder {
public:
    explicit Jpeg_Encoder(const Image_Form& form) : form_(form), row_(std::size_t{3} * form.width) {}
    ~Jpeg_Encoder() override {
        if (is_open_) {
            jpeg_destroy_compress(&image_);
        }
    }

    std::uint32_t block_rows() const override { return std::min(form_.height, 64U); }

    std::string head() override {
        return collected([this] {
            image_.err = jpeg_std_error(&errors_);
            errors_.error_exit = leave;
            jpeg_create_compress(&image_);
            is_open_ = true;
            destination_.init_destination = [](j_compress_ptr image) { destination_of(image).begin(); };
            destination_.empty_output_buffer = [](j_compress_ptr image) -> boolean {
                destination_of(image).take(destination_of(image).piece.size());
                destination_of(image).begin();
                return TRUE;
            };
            destination_.term_destination = [](j_compress_ptr image) {
                Destination& destination = destination_of(image);
                destination.take(destination.piece.size() - destination.free_in_buffer);
            };
            image_.dest = &destination_;
            image_.image_width = form_.width;
            image_.image_height = form_.height;
            image_.input_components = 3;
            image_.in_color_space = JCS_RGB;
            jpeg_set_defaults(&image_);
            jpeg_set_quality(&image_, quality, TRUE);
            image_.comp_info[0].h_samp_factor = image_.comp_info[0].v_samp_factor = 1;
            jpeg_start_compress(&image_, TRUE);
        });
    }

    std::string join(const Sample_Rows& rows, Packed_Rows) override {
        return collected([&] {
            for (std::uint32_t row = 0; row < rows.end - rows.first; ++row) {
                store_colors(form_, rows.samples + row * form_.row_bytes(), 3, row_.data());
                JSAMPROW start = row_.data();
                jpeg_write_scanlines(&image_, &start, 1);
            }
        });
    }

    std::string tail() override {
        return collected([this] { jpeg_finish_compress(&image_); });
    }

private:
    // Runs what calls the library; the bytes that it gives. Nothing in it has a destructor that a jump could pass over.
    template <class Work> std::string collected(const Work& work) {
        std::string bytes;
        destination_.bytes = &bytes;
        errors_.error_exit = leave;
        if (setjmp(errors_.place) != 0) {
            throw std::runtime_error(std::string("a JPEG image cannot be compressed: ") + errors_.text);
        }
        work();
        return bytes;
    }

    Image_Form form_;
    std::vector<std::uint8_t> row_;
    jpeg_compress_struct image_ = {};
    Errors errors_;
    Destination destination_;
    bool is_open_ = false;
};

} // namespace

std::unique_ptr<Image_Encoder> jpeg_encoder(const Image_Form& form) {
    return std::make_unique<Jpeg_Encoder>(form);
}

} // namespace vorna::drawing
