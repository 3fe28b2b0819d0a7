// PNG files, read by libpng: as they are stored, and as colours. Colours come from the library's own conversion, which applies
// the file's gamma and reduces 16 bits a sample to 8.
#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstring>

#include <png.h>

#include "drawing/image/image_decoders.h"
#include "drawing/image/png_reader.h"
#include "drawing/image/png_size.h"

namespace vorna::drawing {

namespace {

constexpr png_uint_32 largest_side = 16384;

// The library reports errors by calling back; they leave it by a jump.
class Reading {
public:
    explicit Reading(std::string_view file) : rest_(file) {
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, keep_error, [](png_structp, png_const_charp) {});
        info_ = png_ ? png_create_info_struct(png_) : nullptr;
        if (!info_) {
            throw std::bad_alloc();
        }
        png_set_read_fn(png_, this, give_bytes);
        png_set_user_limits(png_, largest_side, largest_side);
    }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;
    ~Reading() { png_destroy_read_struct(&png_, &info_, nullptr); }

    Png_Image image(const std::string& name, Load_Limits& limits) {
        if (!read_header()) {
            fail();
        }
        Png_Image image;
        image.width = static_cast<std::int32_t>(png_get_image_width(png_, info_));
        image.height = static_cast<std::int32_t>(png_get_image_height(png_, info_));
        image.colors = static_cast<Png_Image::Colors>(png_get_color_type(png_, info_));
        image.sample_bits = sample_bits_;
        png_colorp colors = nullptr;
        int count = 0;
        if (png_get_PLTE(png_, info_, &colors, &count) != 0) {
            for (int i = 0; i < count; ++i) {
                image.palette.append(
                    {static_cast<char>(colors[i].red), static_cast<char>(colors[i].green), static_cast<char>(colors[i].blue)});
            }
        }
        png_bytep alphas = nullptr;
        png_color_16p key = nullptr;
        if (png_get_tRNS(png_, info_, &alphas, &count, &key) != 0) {
            if (image.colors == Png_Image::Colors::palette) {
                image.transparency.assign(reinterpret_cast<const char*>(alphas), static_cast<std::size_t>(count));
            } else {
                const bool is_grey = image.colors == Png_Image::Colors::grey;
                for (const png_uint_16 level : is_grey ? std::vector{key->gray} : std::vector{key->red, key->green, key->blue}) {
                    image.transparency.append({static_cast<char>(level >> 8), static_cast<char>(level & 0xFF)});
                }
            }
        }
        const std::size_t row_bytes = static_cast<std::size_t>(image.width) * image.pixel_bytes();
        limits.take_memory(name, row_bytes * static_cast<std::size_t>(image.height));
        limits.take_work(name, row_bytes * static_cast<std::size_t>(image.height) / 2); // about two for a pixel
        image.samples.resize(row_bytes * static_cast<std::size_t>(image.height));
        std::vector<png_bytep> rows;
        for (std::size_t start = 0; start < image.samples.size(); start += row_bytes) {
            rows.push_back(image.samples.data() + start);
        }
        if (!read_rows(rows.data())) {
            fail();
        }
        return image;
    }

private:
    [[noreturn]] void fail() const { throw Png_Error(std::string("expected a PNG file: ") + message_.data()); }

    // Neither has objects with destructors, which the jump would leave out.
    bool read_header() {
        if (setjmp(png_jmpbuf(png_)) != 0) {
            return false;
        }
        png_read_info(png_, info_);
        sample_bits_ = png_get_bit_depth(png_, info_); // packing changes it
        png_set_packing(png_);
        png_set_interlace_handling(png_);
        png_read_update_info(png_, info_);
        return true;
    }
    bool read_rows(png_bytepp rows) {
        if (setjmp(png_jmpbuf(png_)) != 0) {
            return false;
        }
        png_read_image(png_, rows);
        png_read_end(png_, nullptr);
        return true;
    }

    static void keep_error(png_structp png, png_const_charp message) {
        auto& self = *static_cast<Reading*>(png_get_error_ptr(png));
        std::snprintf(self.message_.data(), self.message_.size(), "%s", message);
        png_longjmp(png, 1);
    }
    static void give_bytes(png_structp png, png_bytep target, std::size_t count) {
        auto& self = *static_cast<Reading*>(png_get_io_ptr(png));
        if (count > self.rest_.size()) {
            png_error(png, "it ends too early");
        }
        std::memcpy(target, self.rest_.data(), count);
        self.rest_.remove_prefix(count);
    }

    std::string_view rest_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    int sample_bits_ = 0;
    std::array<char, 200> message_ = {};
};

} // namespace

Png_Image read_png(const std::string& name, std::string_view file, Load_Limits& limits) {
    if (!png_can_hold(file)) {
        throw Png_Error("expected a PNG file: it is too short for the size that it states");
    }
    return Reading(file).image(name, limits);
}

Image decode_png(std::string_view bytes, const Before_Pixels& before) {
    struct Reader {
        png_image png = {};
        ~Reader() { png_image_free(&png); }
    } reader;
    reader.png.version = PNG_IMAGE_VERSION;
    const auto fail = [&] { throw Image_Error(std::string("expected a PNG image: ") + reader.png.message); };
    if (!png_image_begin_read_from_memory(&reader.png, bytes.data(), bytes.size())) {
        fail();
    }
    check_sides(reader.png.width, reader.png.height, before);
    reader.png.format = PNG_FORMAT_BGRA;
    Image image(static_cast<std::int32_t>(reader.png.width), static_cast<std::int32_t>(reader.png.height));
    if (!png_image_finish_read(&reader.png, nullptr, image.pixels.data(), 0, nullptr)) {
        fail();
    }
    return image;
}

} // namespace vorna::drawing
