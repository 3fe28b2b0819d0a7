// JPEG images, decoded by libjpeg.
#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <string>

#include <jerror.h>
#include <jpeglib.h>

#include "drawing/image/image_decoders.h"

namespace vorna::drawing {
namespace {

// The library reports by calling back; errors must not return to it and leave by a jump.
class Jpeg_Reader {
public:
    Jpeg_Reader() {
        codec_.err = jpeg_std_error(&errors_.base);
        errors_.base.error_exit = [](j_common_ptr codec) {
            auto* errors = reinterpret_cast<Errors*>(codec->err);
            codec->err->format_message(codec, errors->message.data());
            std::longjmp(errors->place, 1);
        };
        errors_.base.emit_message = [](j_common_ptr codec, int level) {
            // Other warnings leave an image worth showing; after an early end there would be grey.
            if (level < 0 && codec->err->msg_code == JWRN_JPEG_EOF) {
                codec->err->error_exit(codec);
            }
        };
    }
    Jpeg_Reader(const Jpeg_Reader&) = delete;
    Jpeg_Reader& operator=(const Jpeg_Reader&) = delete;
    ~Jpeg_Reader() { jpeg_destroy_decompress(&codec_); }

    Image read(std::string_view bytes, const Before_Pixels& before) {
        if (!start(bytes)) {
            fail();
        }
        // Those in several scans are held as coefficients besides.
        check_sides(codec_.image_width, codec_.image_height, [&](std::uint64_t pixels) {
            if (before) {
                before(pixels * (jpeg_has_multiple_scans(&codec_) ? 3 : 1));
            }
        });
        Image image(static_cast<std::int32_t>(codec_.image_width), static_cast<std::int32_t>(codec_.image_height));
        if (!finish(image)) {
            fail();
        }
        if (codec_.out_color_space == JCS_CMYK) {
            std::ranges::transform(image.pixels, image.pixels.begin(), color_of_inks);
        }
        return image;
    }

private:
    struct Errors {
        jpeg_error_mgr base;
        std::jmp_buf place;
        std::array<char, JMSG_LENGTH_MAX> message;
    };

    [[noreturn]] void fail() const { throw Image_Error(std::string("expected a JPEG image: ") + errors_.message.data()); }

    // Neither has objects that a jump would have to destroy.
    bool start(std::string_view bytes) {
        if (setjmp(errors_.place) != 0) {
            return false;
        }
        jpeg_create_decompress(&codec_);
        codec_.progress = &progress_;
        progress_.progress_monitor = [](j_common_ptr codec) {
            constexpr int most_scans = 100; // each of them goes through the whole image, however short it is
            if (reinterpret_cast<j_decompress_ptr>(codec)->input_scan_number > most_scans) {
                ERREXIT(codec, JERR_BAD_PROGRESSION);
            }
        };
        jpeg_mem_src(&codec_, reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned long>(bytes.size()));
        jpeg_read_header(&codec_, TRUE);
        return true;
    }

    bool finish(Image& image) {
        if (setjmp(errors_.place) != 0) {
            return false;
        }
        const bool inks = codec_.jpeg_color_space == JCS_CMYK || codec_.jpeg_color_space == JCS_YCCK;
        codec_.out_color_space = inks ? JCS_CMYK : JCS_EXT_BGRA;
        jpeg_start_decompress(&codec_);
        while (codec_.output_scanline < codec_.output_height) {
            JSAMPROW row = reinterpret_cast<JSAMPROW>(image.row(static_cast<std::int32_t>(codec_.output_scanline)));
            jpeg_read_scanlines(&codec_, &row, 1);
        }
        jpeg_finish_decompress(&codec_);
        return true;
    }

    // Inks are stored inverted, cyan first.
    static VT_RGB32 color_of_inks(VT_RGB32 inks) {
        const auto printed = [&](int ink) { return static_cast<std::uint8_t>(ink * inks.alpha / 255); };
        return {printed(inks.red), printed(inks.green), printed(inks.blue), 255};
    }

    jpeg_decompress_struct codec_ = {};
    jpeg_progress_mgr progress_ = {};
    Errors errors_ = {};
};

} // namespace

Image decode_jpeg(std::string_view bytes, const Before_Pixels& before) {
    return Jpeg_Reader().read(bytes, before);
}

} // namespace vorna::drawing
