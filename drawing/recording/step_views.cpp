// Images of a recording at a position.
#include "drawing/recording/step_views.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace vorna::drawing::recording {

namespace {

constexpr VT_RGB32 nothing_drawn{24, 20, 20, 255};
constexpr std::uint16_t farthest = UINT16_MAX;

constexpr VT_RGB32 grey(std::uint8_t level) {
    return {level, level, level, 255};
}

// From dark red, 0, by orange and yellow to white, 1.
VT_RGB32 heat_color(double heat) {
    const double t = 0.15 + 0.85 * std::clamp(heat, 0.0, 1.0);
    const auto channel = [t](double from, double to) {
        return static_cast<std::uint8_t>(std::lround(255 * std::clamp((t - from) / (to - from), 0.0, 1.0)));
    };
    return {channel(0.75, 1), channel(0.375, 0.75), channel(0, 0.375), 255};
}

// The pixels of a raster one by one: paint(bytes, its pixel of the image).
template <class Paint> void for_each_pixel(const Raster& raster, std::vector<VT_RGB32>& pixels, const Paint& paint) {
    auto pixel = pixels.begin();
    const std::ptrdiff_t pixel_bytes = bytes_per_pixel(raster.format);
    for (std::int32_t y = 0; y < raster.height; ++y) {
        const std::uint8_t* bytes = raster.top + y * raster.row_bytes;
        for (std::int32_t x = 0; x < raster.width; ++x, ++pixel, bytes += pixel_bytes) {
            paint(bytes, *pixel);
        }
    }
}

void paint_colors(const Recording_Steps& steps, Step_Image& image) {
    const Raster raster = steps.colors();
    const VT_Palette& palette = steps.palette();
    for_each_pixel(raster, image.pixels, [&](const std::uint8_t* bytes, VT_RGB32& pixel) {
        if (raster.format == Buffer_Format::index8) {
            pixel = palette.color(*bytes);
        } else {
            std::memcpy(&pixel, bytes, sizeof pixel);
        }
        pixel.alpha = 255;
    });
}

void paint_depths(const Recording_Steps& steps, Step_Image& image) {
    const Raster raster = steps.depths();
    if (!raster.top) {
        image.legend = "no depth buffer";
        return;
    }
    const auto depth_of = [](const std::uint8_t* bytes) {
        std::uint16_t depth;
        std::memcpy(&depth, bytes, sizeof depth);
        return depth;
    };
    std::uint16_t nearest = farthest, last = 0;
    for_each_pixel(raster, image.pixels, [&](const std::uint8_t* bytes, VT_RGB32&) {
        if (const std::uint16_t depth = depth_of(bytes); depth != farthest) {
            nearest = std::min(nearest, depth);
            last = std::max(last, depth);
        }
    });
    if (nearest == farthest) {
        image.legend = "all depths 65535";
    } else {
        image.legend = "depths " + std::to_string(nearest) + " white to " + std::to_string(last) + " dark, 65535 black";
    }
    constexpr double darkest = 48;
    const double scale = last > nearest ? (255 - darkest) / (last - nearest) : 0;
    for_each_pixel(raster, image.pixels, [&](const std::uint8_t* bytes, VT_RGB32& pixel) {
        const std::uint16_t depth = depth_of(bytes);
        pixel = grey(depth == farthest ? 0 : static_cast<std::uint8_t>(255 - (depth - nearest) * scale));
    });
}

void paint_mask(const Recording_Steps& steps, Step_Image& image) {
    const std::vector<std::uint8_t> clip = steps.clip();
    std::ranges::transform(clip, image.pixels.begin(), [](std::uint8_t is_open) { return grey(is_open != 0 ? 208 : 48); });
    image.legend = "light: " + std::to_string(std::ranges::count(clip, 1)) + " of " + std::to_string(clip.size()) +
                   " pixels that the clips of the call let through";
}

void paint_overdraw(const Step_Heat& heat, Step_Image& image) {
    const std::uint16_t most = std::ranges::max(heat.draws);
    double sum = 0;
    std::size_t drawn = 0;
    for (std::size_t i = 0; i < heat.draws.size(); ++i) {
        const std::uint16_t draws = heat.draws[i];
        if (draws > 0) {
            image.pixels[i] = heat_color(most > 1 ? (draws - 1.0) / (most - 1.0) : 0);
            sum += draws;
            ++drawn;
        }
    }
    char text[96];
    std::snprintf(text, sizeof text, "draws a pixel: 1 dark red to %d white, %.2f on average", int{most},
                  drawn > 0 ? sum / static_cast<double>(drawn) : 0.0);
    image.legend = drawn > 0 ? text : "nothing drawn yet";
}

void paint_cost(const Step_Heat& heat, Step_Image& image) {
    float least = 0, most = 0;
    for (const float cost : heat.costs) {
        if (cost > 0) {
            least = least == 0 ? cost : std::min(least, cost);
            most = std::max(most, cost);
        }
    }
    const double range = most > least ? std::log(most / least) : 1;
    for (std::size_t i = 0; i < heat.costs.size(); ++i) {
        if (heat.costs[i] > 0) {
            image.pixels[i] = heat_color(std::log(heat.costs[i] / least) / range);
        }
    }
    char text[96];
    std::snprintf(text, sizeof text, "time a pixel: %.3g ns dark red to %.3g ns white", least * 1000.0, most * 1000.0);
    image.legend = most > 0 ? text : "nothing drawn yet";
}

} // namespace

Step_Image image_of(const Recording_Steps& steps, Step_View view) {
    const Raster raster = steps.colors();
    Step_Image image{.width = raster.width, .height = raster.height};
    image.pixels.assign(static_cast<std::size_t>(raster.width) * static_cast<std::size_t>(raster.height), nothing_drawn);
    switch (view) {
    case Step_View::colors:
        paint_colors(steps, image);
        break;
    case Step_View::depths:
        paint_depths(steps, image);
        break;
    case Step_View::mask:
        paint_mask(steps, image);
        break;
    case Step_View::overdraw:
        paint_overdraw(*steps.heat(), image);
        break;
    case Step_View::cost:
        paint_cost(*steps.heat(), image);
        break;
    }
    return image;
}

} // namespace vorna::drawing::recording
