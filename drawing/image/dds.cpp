// DDS images without compression. No library of a usual system reads them alone, and their pixels need no decoding: a mask says
// which bits of a pixel belong to each channel.
#include <array>
#include <bit>

#include "drawing/image/image_decoders.h"

namespace vorna::drawing {
namespace {

std::uint32_t word_at(std::string_view bytes, std::size_t place, std::size_t size = 4) {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < size; ++i) {
        word |= std::uint32_t{static_cast<std::uint8_t>(bytes[place + i])} << 8 * i;
    }
    return word;
}

// The bits of a mask, spread to 0 to 255; 255 without a mask for alpha, 0 for colours.
struct Channel {
    std::uint32_t mask;
    std::uint8_t without;

    std::uint8_t of(std::uint32_t pixel) const {
        if (mask == 0) {
            return without;
        }
        const int low = std::countr_zero(mask);
        const std::uint64_t most = mask >> low;
        return static_cast<std::uint8_t>((((pixel & mask) >> low) * std::uint64_t{255} + most / 2) / most);
    }
};

} // namespace

Image decode_dds(std::string_view bytes, const Before_Pixels& before) {
    constexpr std::size_t header = 128, height_place = 12, width_place = 16, flags_place = 80, code_place = 84, bits_place = 88,
                          masks_place = 92;
    constexpr std::uint32_t has_alpha = 1, has_code = 4, has_colors = 0x40, has_grey = 0x20000;
    if (bytes.size() < header) {
        throw Image_Error("expected a DDS image: it ends in its header");
    }
    const std::uint32_t flags = word_at(bytes, flags_place), bits = word_at(bytes, bits_place);
    if ((flags & has_code) != 0) {
        std::string code(bytes.substr(code_place, 4));
        for (char& c : code) {
            c = c >= ' ' && c <= '~' ? c : '?';
        }
        throw Image_Error("expected a DDS image without compression, found " + code);
    }
    const std::size_t pixel_bytes = bits / 8;
    if ((flags & (has_colors | has_grey)) == 0 || bits % 8 != 0 || pixel_bytes < 1 || pixel_bytes > 4) {
        throw Image_Error("expected a DDS image with colours or greys of 8 to 32 bits, found " + std::to_string(bits));
    }
    const std::uint32_t width = word_at(bytes, width_place), height = word_at(bytes, height_place);
    check_sides(width, height, before);
    if (bytes.size() - header < std::uint64_t{width} * height * pixel_bytes) {
        throw Image_Error("expected a DDS image: it ends before its last pixel");
    }
    std::array<Channel, 4> channels;
    for (std::size_t i = 0; i < channels.size(); ++i) {
        const bool is_alpha = i == 3, is_used = !is_alpha || (flags & has_alpha) != 0;
        const std::size_t from = (flags & has_grey) != 0 && !is_alpha ? 0 : i;
        channels[i] = {is_used ? word_at(bytes, masks_place + 4 * from) : 0, is_alpha ? std::uint8_t{255} : std::uint8_t{0}};
    }
    Image image(static_cast<std::int32_t>(width), static_cast<std::int32_t>(height));
    std::size_t place = header;
    for (VT_RGB32& pixel : image.pixels) {
        const std::uint32_t word = word_at(bytes, place, pixel_bytes);
        pixel = {channels[2].of(word), channels[1].of(word), channels[0].of(word), channels[3].of(word)};
        place += pixel_bytes;
    }
    return image;
}

} // namespace vorna::drawing
