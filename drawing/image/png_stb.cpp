// PNG files, read by stb_image where libpng is not available: as they are stored, and as colours. Files whose colours stb_image
// and libpng would decode differently are refused.
#include <algorithm>
#include <memory>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#define STBI_NO_STDIO
#define STBI_MAX_DIMENSIONS 16384
#include <stb/stb_image.h>

#include "drawing/image/image_decoders.h"
#include "drawing/image/png_reader.h"
#include "drawing/image/png_size.h"

namespace vorna::drawing {

namespace {

std::uint32_t number_at(std::string_view bytes, std::size_t place) {
    std::uint32_t number = 0;
    for (const char byte : bytes.substr(place, 4)) {
        number = number << 8 | static_cast<unsigned char>(byte);
    }
    return number;
}

// Whether the file states another gamma than that of sRGB. Libpng takes differences below a twentieth for none.
bool has_own_gamma(std::string_view file) {
    constexpr std::uint32_t of_srgb = 45455;
    bool own = false;
    for (std::size_t chunk = 8; file.size() - chunk >= 12;) {
        const std::size_t size = number_at(file, chunk);
        const std::string_view type = file.substr(chunk + 4, 4);
        if (type == "sRGB" || type == "IDAT") {
            return own && type == "IDAT";
        }
        if (type == "gAMA" && size == 4) {
            const std::uint32_t gamma = number_at(file, chunk + 8);
            own = gamma < of_srgb - of_srgb / 20 || gamma > of_srgb + of_srgb / 20;
        }
        if (size > file.size() - chunk - 12) {
            break;
        }
        chunk += size + 12;
    }
    return own;
}

[[noreturn]] void fail(const std::string& reason) {
    throw Png_Error("expected a PNG file: " + reason);
}

} // namespace

// stb_image converts palettes and transparency to colours. It gets the file without them, as grey or RGB samples, which it keeps
// as they are.
Png_Image read_png(const std::string& name, std::string_view file, Load_Limits& limits) {
    constexpr std::size_t header_end = 33, bits_place = 24, colors_place = 25;
    if (!file.starts_with("\x89PNG\r\n\x1A\n") || file.size() < header_end || file.substr(12, 4) != "IHDR" ||
        file.size() > 0x7FFFFFFF) {
        throw Png_Error("expected a PNG file, found another kind of file");
    }
    if (!png_can_hold(file)) {
        fail("it is too short for the size that it states");
    }
    const std::uint64_t pixels = std::uint64_t{number_at(file, 16)} * number_at(file, 20);
    limits.take_memory(name, 8 * pixels);
    limits.take_work(name, 2 * pixels);
    Png_Image image;
    image.sample_bits = file[bits_place];
    image.colors = static_cast<Png_Image::Colors>(file[colors_place]);
    std::string plain(file.substr(0, header_end));
    if (image.colors == Png_Image::Colors::palette) {
        plain[colors_place] = static_cast<char>(Png_Image::Colors::grey);
    }
    for (std::size_t chunk = header_end; file.size() - chunk >= 12;) {
        const std::size_t size = number_at(file, chunk);
        const std::string_view type = file.substr(chunk + 4, 4);
        if (size > file.size() - chunk - 12) {
            fail("it ends too early");
        }
        if (type == "PLTE") {
            image.palette = file.substr(chunk + 8, size);
        } else if (type == "tRNS") {
            image.transparency = file.substr(chunk + 8, size);
        } else if (type != "CgBI") {
            plain += file.substr(chunk, size + 12);
        }
        chunk += size + 12;
    }
    const auto* bytes = reinterpret_cast<const stbi_uc*>(plain.data());
    const int count = static_cast<int>(plain.size());
    int channels = 0;
    const bool wide = image.sample_bits == 16;
    const std::unique_ptr<void, void (*)(void*)> samples(
        wide ? static_cast<void*>(stbi_load_16_from_memory(bytes, count, &image.width, &image.height, &channels, 0))
             : stbi_load_from_memory(bytes, count, &image.width, &image.height, &channels, 0),
        stbi_image_free);
    if (!samples || channels != image.channels()) {
        fail(samples ? "an unknown kind of pixels" : stbi_failure_reason());
    }
    const std::size_t total =
        static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height) * static_cast<std::size_t>(channels);
    if (wide) {
        const auto* words = static_cast<const stbi_us*>(samples.get());
        for (std::size_t i = 0; i < total; ++i) {
            image.samples.push_back(static_cast<std::uint8_t>(words[i] >> 8));
            image.samples.push_back(static_cast<std::uint8_t>(words[i] & 0xFF));
        }
        return image;
    }
    const auto* levels = static_cast<const stbi_uc*>(samples.get());
    image.samples.assign(levels, levels + total);
    // Samples of fewer bits come stretched over the whole range.
    if (image.sample_bits < 8) {
        const int step = 255 / ((1 << image.sample_bits) - 1);
        std::ranges::transform(image.samples, image.samples.begin(),
                               [step](std::uint8_t level) { return static_cast<std::uint8_t>(level / step); });
    }
    return image;
}

Image decode_png(std::string_view bytes, const Before_Pixels& before) {
    const auto* file = reinterpret_cast<const stbi_uc*>(bytes.data());
    const int size = static_cast<int>(bytes.size());
    const auto refuse = [](const std::string& reason) { throw Image_Error("expected a PNG image: " + reason); };
    if (bytes.size() < 8 || bytes.size() > 0x7FFFFFFF) {
        refuse("its size is out of range");
    }
    int width = 0, height = 0, channels = 0;
    if (!stbi_info_from_memory(file, size, &width, &height, &channels)) {
        refuse(stbi_failure_reason());
    }
    check_sides(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), before);
    if (stbi_is_16_bit_from_memory(file, size) || has_own_gamma(bytes)) {
        throw Image_Error("expected a PNG image of 8 bits a channel without a gamma of its own: this build decodes no others");
    }
    const std::unique_ptr<stbi_uc, void (*)(void*)> pixels(stbi_load_from_memory(file, size, &width, &height, &channels, 4),
                                                           stbi_image_free);
    if (!pixels) {
        refuse(stbi_failure_reason());
    }
    Image image(width, height);
    const stbi_uc* at = pixels.get();
    for (VT_RGB32& pixel : image.pixels) {
        pixel = {at[2], at[1], at[0], at[3]};
        at += 4;
    }
    return image;
}

Image decode_jpeg(std::string_view, const Before_Pixels&) {
    throw Image_Error("expected a PNG image: this build decodes no JPEG images");
}

} // namespace vorna::drawing
