// Pictures in memory, for textures.
#include "drawing/image/image.h"

#include <algorithm>
#include <string>

#include "drawing/image/image_decoders.h"
#include "drawing/image/light_roots.h"
#include "drawing/image/png_size.h"

namespace vorna::drawing {
namespace {

// The pixels that one pixel of the other size is made of, along one axis. Their weights add up to 65536.
struct Taps {
    struct Tap {
        std::int32_t place;
        std::uint32_t weight;
    };
    static constexpr std::int64_t whole = 65536;
    std::vector<Tap> taps;
    std::vector<std::size_t> starts{0}; // by target pixel, and the end

    Taps(std::int32_t source, std::int32_t target, Wrap wrap) {
        for (std::int32_t i = 0; i < target; ++i) {
            if (target < source) {
                add_covered(source, target, i);
            } else {
                // The pixel's centre, in halves of target pixels from the centre of the first source pixel.
                const std::int64_t center = (2 * std::int64_t{i} + 1) * source - target, side = 2 * std::int64_t{target};
                const auto place = static_cast<std::int32_t>((center + side) / side - 1); // rounded down
                const std::int64_t after = (center - place * side) * whole / side;
                add(beyond_border(place, source, wrap), whole - after);
                add(beyond_border(place + 1, source, wrap), after);
            }
            starts.push_back(taps.size());
        }
    }

    std::size_t size() const noexcept { return starts.size() - 1; }

private:
    void add(std::int32_t place, std::int64_t weight) {
        if (weight > 0) {
            taps.push_back({place, static_cast<std::uint32_t>(weight)});
        }
    }

    // Target pixel i covers i * source to (i + 1) * source, where a source pixel is target wide.
    void add_covered(std::int32_t source, std::int32_t target, std::int32_t i) {
        const std::int64_t first = std::int64_t{i} * source, last = first + source;
        std::int64_t before = 0; // weight of what is covered so far
        for (std::int64_t place = first / target; place * target < last; ++place) {
            const std::int64_t covered = std::min(last, (place + 1) * target) - first;
            const std::int64_t weight = covered * whole / source;
            add(static_cast<std::int32_t>(place), weight - before);
            before = weight;
        }
    }

    static std::int32_t beyond_border(std::int32_t place, std::int32_t size, Wrap wrap) {
        return wrap == Wrap::repeat ? (place + size) % size : std::clamp(place, 0, size - 1);
    }
};

// Light, the squares of channels, times alpha; and alpha. Both times weights of one or two axes: below 2^56.
struct Sum {
    std::uint64_t blue = 0, green = 0, red = 0, alpha = 0;

    void add(VT_RGB32 color, std::uint32_t weight) {
        const std::uint64_t weighted = std::uint64_t{weight} * color.alpha;
        blue += weighted * static_cast<std::uint32_t>(color.blue * color.blue);
        green += weighted * static_cast<std::uint32_t>(color.green * color.green);
        red += weighted * static_cast<std::uint32_t>(color.red * color.red);
        alpha += weighted;
    }
    void add(const Sum& other, std::uint32_t weight) {
        blue += weight * other.blue;
        green += weight * other.green;
        red += weight * other.red;
        alpha += weight * other.alpha;
    }
    VT_RGB32 color(const std::vector<std::uint8_t>& roots) const {
        if (alpha == 0) {
            return {0, 0, 0, 0};
        }
        const auto root = [&](std::uint64_t light) { return roots[(light + alpha / 2) / alpha]; };
        return {root(blue), root(green), root(red), static_cast<std::uint8_t>((alpha + (std::uint64_t{1} << 31)) >> 32)};
    }
};

} // namespace

void check_sides(std::uint32_t width, std::uint32_t height, const Before_Pixels& before) {
    if (width < 1 || width > largest_image_side || height < 1 || height > largest_image_side) {
        throw Image_Error("expected sides from 1 to " + std::to_string(largest_image_side) + " pixels, found " +
                          std::to_string(width) + "x" + std::to_string(height));
    }
    if (before) {
        before(std::uint64_t{width} * height);
    }
}

Image decode_image(std::string_view bytes, const Before_Pixels& before) {
    if (bytes.starts_with("\x89PNG")) {
        if (!png_can_hold(bytes)) {
            throw Image_Error("expected a PNG image: it is too short for the size that it states");
        }
        return decode_png(bytes, before);
    }
    if (bytes.starts_with("\xFF\xD8")) {
        return decode_jpeg(bytes, before);
    }
    if (bytes.starts_with("RIFF") && bytes.size() > 12 && bytes.substr(8, 4) == "WEBP") {
        return decode_webp(bytes, before);
    }
    if (bytes.starts_with("DDS ")) {
        return decode_dds(bytes, before);
    }
    if (std::optional<Image> image = decode_tga_or_bmp(bytes, before)) {
        return std::move(*image);
    }
    throw Image_Error("expected a PNG, JPEG, WebP, TGA, BMP or DDS image");
}

Image resampled(const Image& image, std::int32_t width, std::int32_t height, Wrap across, Wrap along) {
    if (image.width == width && image.height == height) {
        return image;
    }
    const Taps columns(image.width, width, across), rows(image.height, height, along);
    Image result(width, height);
    static const std::vector<std::uint8_t> roots = make_light_roots();
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
            target[c] = sum.color(roots);
        }
    }
    return result;
}

} // namespace vorna::drawing
