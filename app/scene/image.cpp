// Pictures in memory, for textures.
#include "app/scene/image.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <string>

#include <jerror.h>
#include <jpeglib.h>
#include <png.h>

namespace app::scene {
namespace {

void check_sides(std::uint32_t width, std::uint32_t height) {
    if (width < 1 || width > largest_image_side || height < 1 || height > largest_image_side) {
        throw Image_Error("expected sides from 1 to " + std::to_string(largest_image_side) + " pixels, found " +
                          std::to_string(width) + "x" + std::to_string(height));
    }
}

Image decode_png(std::string_view bytes) {
    struct Reader {
        png_image png = {};
        ~Reader() { png_image_free(&png); }
    } reader;
    reader.png.version = PNG_IMAGE_VERSION;
    const auto fail = [&] { throw Image_Error(std::string("expected a PNG image: ") + reader.png.message); };
    if (!png_image_begin_read_from_memory(&reader.png, bytes.data(), bytes.size())) {
        fail();
    }
    check_sides(reader.png.width, reader.png.height);
    reader.png.format = PNG_FORMAT_BGRA;
    Image image(static_cast<std::int32_t>(reader.png.width), static_cast<std::int32_t>(reader.png.height));
    if (!png_image_finish_read(&reader.png, nullptr, image.pixels.data(), 0, nullptr)) {
        fail();
    }
    return image;
}

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

    Image read(std::string_view bytes) {
        if (!start(bytes)) {
            fail();
        }
        check_sides(codec_.image_width, codec_.image_height);
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
    Errors errors_ = {};
};

// The pixels that one pixel of the other size is made of, along one axis.
struct Taps {
    struct Tap {
        std::int32_t place;
        float weight;
    };
    std::vector<Tap> taps;
    std::vector<std::size_t> starts{0}; // by target pixel, and the end

    Taps(std::int32_t source, std::int32_t target, Wrap wrap) {
        const double ratio = static_cast<double>(source) / target;
        for (std::int32_t i = 0; i < target; ++i) {
            if (target < source) {
                const double first = i * ratio, last = first + ratio;
                for (auto place = static_cast<std::int32_t>(first); place < source && place < last; ++place) {
                    const double covered = std::min(last, place + 1.0) - std::max(first, static_cast<double>(place));
                    add(place, covered / ratio);
                }
            } else {
                const double center = (i + 0.5) * ratio - 0.5;
                const double before = std::floor(center);
                const auto place = static_cast<std::int32_t>(before);
                add(beyond_border(place, source, wrap), 1 - (center - before));
                add(beyond_border(place + 1, source, wrap), center - before);
            }
            starts.push_back(taps.size());
        }
    }

    std::size_t size() const noexcept { return starts.size() - 1; }

private:
    void add(std::int32_t place, double weight) {
        if (weight > 0) {
            taps.push_back({place, static_cast<float>(weight)});
        }
    }

    static std::int32_t beyond_border(std::int32_t place, std::int32_t size, Wrap wrap) {
        return wrap == Wrap::repeat ? (place + size) % size : std::clamp(place, 0, size - 1);
    }
};

// Colours times alpha, and alpha.
struct Sum {
    float blue = 0, green = 0, red = 0, alpha = 0;

    void add(VT_RGB32 color, float weight) {
        const float weighted = weight * static_cast<float>(color.alpha);
        blue += weighted * static_cast<float>(color.blue);
        green += weighted * static_cast<float>(color.green);
        red += weighted * static_cast<float>(color.red);
        alpha += weighted;
    }
    void add(const Sum& other, float weight) {
        blue += weight * other.blue;
        green += weight * other.green;
        red += weight * other.red;
        alpha += weight * other.alpha;
    }
    VT_RGB32 color() const {
        const auto byte = [](float value) { return static_cast<std::uint8_t>(std::min(value + 0.5F, 255.0F)); };
        const float scale = alpha > 0 ? 1 / alpha : 0.0F;
        return {byte(blue * scale), byte(green * scale), byte(red * scale), byte(alpha)};
    }
};

} // namespace

Image decode_image(std::string_view bytes) {
    if (bytes.starts_with("\x89PNG")) {
        return decode_png(bytes);
    }
    if (bytes.starts_with("\xFF\xD8")) {
        return Jpeg_Reader().read(bytes);
    }
    throw Image_Error("expected a PNG or JPEG image");
}

Image resampled(const Image& image, std::int32_t width, std::int32_t height, Wrap across, Wrap along) {
    if (image.width == width && image.height == height) {
        return image;
    }
    const Taps columns(image.width, width, across), rows(image.height, height, along);
    Image result(width, height);
    std::vector<Sum> sums(static_cast<std::size_t>(image.width));
    for (std::size_t r = 0; r < rows.size(); ++r) {
        std::ranges::fill(sums, Sum{});
        for (std::size_t tap = rows.starts[r]; tap < rows.starts[r + 1]; ++tap) {
            const VT_RGB32* row = image.row(rows.taps[tap].place);
            for (std::size_t i = 0; i < sums.size(); ++i) {
                sums[i].add(row[i], rows.taps[tap].weight);
            }
        }
        VT_RGB32* target = result.row(static_cast<std::int32_t>(r));
        for (std::size_t c = 0; c < columns.size(); ++c) {
            Sum sum;
            for (std::size_t tap = columns.starts[c]; tap < columns.starts[c + 1]; ++tap) {
                sum.add(sums[static_cast<std::size_t>(columns.taps[tap].place)], columns.taps[tap].weight);
            }
            target[c] = sum.color();
        }
    }
    return result;
}

} // namespace app::scene
