// The peers that draw images only: pixman and memcpy.
#include <cstring>
#include <stdexcept>

#include <SDL_version.h>
#include <cairo.h>
#include <pixman.h>

#include "bench/memory_canvas.h"

namespace bench {

namespace {

class Pixman_Canvas final : public Memory_Canvas {
public:
    Pixman_Canvas(const Surface& surface, const Image& image)
        : image_(image), operator_(surface.alpha ? PIXMAN_OP_OVER : PIXMAN_OP_SRC), source_pixels_(premultiplied(image)),
          source_(surface_on(source_pixels_.data(), image.size, 4 * image.size.x,
                             surface.alpha ? PIXMAN_a8r8g8b8 : PIXMAN_x8r8g8b8)) {}

    void draw() override {
        const auto y = static_cast<std::int16_t>(from_top(image_.place.y + image_.size.y - 1));
        pixman_image_composite(operator_, source_.get(), nullptr, target_.get(), 0, 0, 0, 0,
                               static_cast<std::int16_t>(image_.place.x), y, static_cast<std::uint16_t>(image_.size.x),
                               static_cast<std::uint16_t>(image_.size.y));
    }

private:
    using Holder = std::unique_ptr<pixman_image_t, decltype(&pixman_image_unref)>;

    static Holder surface_on(std::uint32_t* pixels, VT_Int_Pair size, std::int32_t row_bytes, pixman_format_code_t format) {
        Holder surface{pixman_image_create_bits(format, size.x, size.y, pixels, row_bytes), pixman_image_unref};
        if (!surface) {
            throw std::runtime_error("pixman: no memory for an image");
        }
        return surface;
    }

    const Image& image_;
    pixman_op_t operator_;
    std::vector<std::uint32_t> source_pixels_;
    Holder source_, target_ = surface_on(pixels(), window_size, bytes_per_row(), PIXMAN_x8r8g8b8);
};

class Memcpy_Canvas final : public Memory_Canvas {
public:
    explicit Memcpy_Canvas(const Image& image) : image_(image) {}

    void draw() override {
        const std::int32_t top = from_top(image_.place.y + image_.size.y - 1);
        for (std::int32_t row = 0; row < image_.size.y; ++row) {
            std::memcpy(Memory_Canvas::row(from_top(top + row)) + image_.place.x, image_.row(row),
                        sizeof(VT_RGB32) * static_cast<std::size_t>(image_.size.x));
        }
    }

private:
    const Image& image_;
};

} // namespace

std::vector<std::uint32_t> premultiplied(const Image& image) {
    std::vector<std::uint32_t> words;
    words.reserve(image.pixels.size());
    for (const VT_RGB32 pixel : image.pixels) {
        const auto by_alpha = [&](std::uint8_t channel) {
            return static_cast<std::uint8_t>((channel * pixel.alpha + 127) / 255);
        };
        words.push_back(vorna::word_of({by_alpha(pixel.blue), by_alpha(pixel.green), by_alpha(pixel.red), pixel.alpha}));
    }
    return words;
}

std::unique_ptr<Canvas> make_pixman_canvas(const Surface& surface, const Subject& subject) {
    return std::make_unique<Pixman_Canvas>(surface, std::get<Image>(subject));
}

std::unique_ptr<Canvas> make_memcpy_canvas(const Surface&, const Subject& subject) {
    return std::make_unique<Memcpy_Canvas>(std::get<Image>(subject));
}

std::string raster_peers_description() {
    return "SDL " + std::to_string(SDL_MAJOR_VERSION) + '.' + std::to_string(SDL_MINOR_VERSION) + '.' +
           std::to_string(SDL_PATCHLEVEL) + ", cairo " + cairo_version_string() + ", pixman " + pixman_version_string();
}

} // namespace bench
