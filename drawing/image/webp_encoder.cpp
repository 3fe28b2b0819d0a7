// WebP files, written by libwebp.
#include <algorithm>
#include <stdexcept>
#include <vector>

#include <webp/encode.h>

#include "drawing/files/interruption.h"
#include "drawing/image/color_rows.h"
#include "drawing/image/image_encoders.h"
#include "drawing/image/loaded_library.h"

namespace vorna::drawing {

namespace {

// What is used of the library.
#define VORNA_WEBP_FUNCTIONS(LIST)                                                                                               \
    LIST(WebPConfigInitInternal)                                                                                                 \
    LIST(WebPConfigLosslessPreset)                                                                                               \
    LIST(WebPEncode)                                                                                                             \
    LIST(WebPPictureFree)                                                                                                        \
    LIST(WebPPictureImportRGB)                                                                                                   \
    LIST(WebPPictureImportRGBA)                                                                                                  \
    LIST(WebPPictureInitInternal)

// The functions under their own names.
struct Webp_Functions {
#define DECLARE(function) decltype(&::function) function;
    VORNA_WEBP_FUNCTIONS(DECLARE)
#undef DECLARE

    Webp_Functions() {
        const Loaded_Library library(VORNA_WEBP_LIBRARY, "WebP");
#define LOAD(function) library.load(function, #function);
        VORNA_WEBP_FUNCTIONS(LOAD)
#undef LOAD
    }
};
#undef VORNA_WEBP_FUNCTIONS

const Webp_Functions& webp() {
    static const Webp_Functions functions;
    return functions;
}

// The library takes an image as a whole.
class Webp_Encoder : public Image_Encoder {
public:
    explicit Webp_Encoder(const Image_Form& form) : form_(form), channels_(color_channels(form)) {}

    std::uint32_t block_rows() const override { return std::min(form_.height, 64U); }
    // The rows, the library's copy and its work on it.
    std::uint64_t memory() const override { return std::uint64_t{form_.width} * form_.height * (channels_ + 4 + 16); }

    std::string join(const Sample_Rows& rows, Packed_Rows) override {
        const std::size_t row_bytes = channels_ * form_.width;
        colors_.resize(row_bytes * form_.height);
        for (std::uint32_t row = rows.first; row < rows.end; ++row) {
            store_colors(form_, rows.samples + (row - rows.first) * form_.row_bytes(), channels_, &colors_[row * row_bytes]);
        }
        return {};
    }

    std::string tail() override {
        const auto check = [](bool is_done) {
            if (!is_done) {
                throw std::runtime_error("a WebP image cannot be compressed");
            }
        };
        struct Picture : WebPPicture {
            Picture() : WebPPicture{} {}
            Picture(const Picture&) = delete;
            Picture& operator=(const Picture&) = delete;
            ~Picture() { webp().WebPPictureFree(this); }
        } image;
        WebPConfig settings;
        check(webp().WebPPictureInitInternal(&image, WEBP_ENCODER_ABI_VERSION) != 0 &&
              webp().WebPConfigInitInternal(&settings, WEBP_PRESET_DEFAULT, 75, WEBP_ENCODER_ABI_VERSION) != 0);
        const int level = form_.compression == Compression::fast ? 0 : form_.compression == Compression::best ? 9 : 3;
        check(webp().WebPConfigLosslessPreset(&settings, level) != 0);
        settings.exact = 1; // colours of transparent pixels are kept
        image.use_argb = 1;
        image.width = static_cast<int>(form_.width);
        image.height = static_cast<int>(form_.height);
        const int row_bytes = static_cast<int>(channels_ * form_.width);
        check((channels_ == 4 ? webp().WebPPictureImportRGBA(&image, colors_.data(), row_bytes)
                              : webp().WebPPictureImportRGB(&image, colors_.data(), row_bytes)) != 0);
        colors_ = {};
        std::string file;
        image.custom_ptr = &file;
        image.writer = [](const std::uint8_t* bytes, std::size_t count, const WebPPicture* written) {
            static_cast<std::string*>(written->custom_ptr)->append(reinterpret_cast<const char*>(bytes), count);
            return 1;
        };
        image.progress_hook = [](int, const WebPPicture*) { return Interruption::is_asked() ? 0 : 1; };
        const bool is_done = webp().WebPEncode(&settings, &image) != 0;
        Interruption::check();
        check(is_done);
        return file;
    }

private:
    Image_Form form_;
    std::size_t channels_;
    std::vector<std::uint8_t> colors_;
};

} // namespace

std::unique_ptr<Image_Encoder> webp_encoder(const Image_Form& form) {
    return std::make_unique<Webp_Encoder>(form);
}

} // namespace vorna::drawing
