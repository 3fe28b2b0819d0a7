// Pictures in memory, for textures.
#include "drawing/image/image.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "drawing/image/image_decoders.h"
#include "drawing/image/png_size.h"

namespace vorna::drawing {
namespace {

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

} // namespace vorna::drawing
