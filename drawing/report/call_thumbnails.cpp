// Small images of what calls of a recording changed.
//
// A thumbnail shows the part of the window that holds all changed pixels, enlarged by a whole factor or reduced. Changed pixels
// have their new colour, others are pale. A reduced pixel of which a part has changed has the mean of that part, so that thin
// lines stay visible.
#include "drawing/report/call_thumbnails.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "drawing/image/png_writer.h"

namespace vorna::drawing::report {

namespace {

using recording::Recording_Steps;
using recording::Step_Change;

// The range of `size` places around a smaller one, inside the limits, which hold the smaller one.
std::pair<std::int32_t, std::int32_t> widened(std::int32_t first, std::int32_t last, std::int32_t size, std::int32_t lowest,
                                              std::int32_t highest) {
    const std::int32_t wanted = std::min(std::max(size, last - first + 1), highest - lowest + 1);
    const std::int32_t start = std::clamp(first - (wanted - (last - first + 1)) / 2, lowest, highest - wanted + 1);
    return {start, start + wanted - 1};
}

VT_RGB32 pale(VT_RGB32 color) {
    const auto lift = [](std::uint8_t level) { return static_cast<std::uint8_t>((3 * 255 + level) / 4); };
    return {lift(color.blue), lift(color.green), lift(color.red), color.alpha};
}

class Thumbnail_Painter {
public:
    explicit Thumbnail_Painter(const Recording_Steps& steps)
        : change_(steps.change()), window_(steps.window()), colors_(steps.colors()), depths_(steps.depths()),
          palette_(steps.palette()) {
        const VT_Int_Rectangle& bounds = change_.bounds;
        std::tie(shown_.left, shown_.right) =
            widened(bounds.left, bounds.right, thumbnail_width / 4, window_.left, window_.right);
        std::tie(shown_.bottom, shown_.top) =
            widened(bounds.bottom, bounds.top, thumbnail_height / 4, window_.bottom, window_.top);
    }

    std::vector<VT_RGB32> painted() const {
        std::vector<VT_RGB32> pixels(std::size_t{thumbnail_width} * thumbnail_height, VT_RGB32{0, 0, 0, 0});
        const std::int64_t columns = shown_.right - shown_.left + 1, rows = shown_.top - shown_.bottom + 1;
        std::int64_t width = thumbnail_width, height = thumbnail_height;
        if (const std::int64_t factor = std::min(width / columns, height / rows); factor >= 1) {
            width = columns * factor;
            height = rows * factor;
        } else if (columns * height >= rows * width) {
            height = std::max<std::int64_t>(1, rows * width / columns);
        } else {
            width = std::max<std::int64_t>(1, columns * height / rows);
        }
        const std::int64_t left = (thumbnail_width - width) / 2, top = (thumbnail_height - height) / 2;
        // Columns or rows behind a thumbnail's pixel.
        const auto range_of = [](std::int64_t i, std::int64_t from, std::int64_t to) {
            const std::int64_t first = i * from / to;
            return std::pair(static_cast<std::int32_t>(first),
                             static_cast<std::int32_t>(std::max(first, (i + 1) * from / to - 1)));
        };
        for (std::int64_t y = 0; y < height; ++y) {
            const auto [above, below] = range_of(y, rows, height);
            for (std::int64_t x = 0; x < width; ++x) {
                const auto [first, last] = range_of(x, columns, width);
                pixels[static_cast<std::size_t>((top + y) * thumbnail_width + left + x)] =
                    color_of({shown_.left + first, shown_.left + last, shown_.top - below, shown_.top - above});
            }
        }
        return pixels;
    }

private:
    // Of device pixels.
    VT_RGB32 color_of(const VT_Int_Rectangle& area) const {
        std::uint64_t sums[4] = {}, count = 0;
        const VT_Int_Rectangle& bounds = change_.bounds;
        const VT_Int_Rectangle part = common_part(area, bounds);
        const auto columns = static_cast<std::size_t>(bounds.right - bounds.left + 1);
        for (std::int32_t y = part.top; y >= part.bottom; --y) {
            const std::uint8_t* const row =
                change_.pixels.data() + static_cast<std::size_t>(bounds.top - y) * columns - bounds.left;
            for (std::int32_t x = part.left; x <= part.right; ++x) {
                if (row[x] != 0) {
                    const VT_RGB32 color = (row[x] & Step_Change::color) != 0 ? color_at(x, y) : depth_color_at(x, y);
                    const std::uint8_t levels[] = {color.blue, color.green, color.red, color.alpha};
                    std::transform(levels, levels + 4, sums, sums, std::plus<>());
                    ++count;
                }
            }
        }
        if (count == 0) {
            return pale(color_at(area.left + (area.right - area.left) / 2, area.bottom + (area.top - area.bottom) / 2));
        }
        const auto mean = [&](int i) { return static_cast<std::uint8_t>((sums[i] + count / 2) / count); };
        return {mean(0), mean(1), mean(2), mean(3)};
    }

    template <class Pixel> Pixel pixel_of(const Raster& raster, std::int32_t x, std::int32_t y) const {
        Pixel pixel;
        std::memcpy(&pixel,
                    raster.top + (window_.top - y) * raster.row_bytes +
                        std::ptrdiff_t{x - window_.left} * std::ptrdiff_t{sizeof pixel},
                    sizeof pixel);
        return pixel;
    }

    VT_RGB32 color_at(std::int32_t x, std::int32_t y) const {
        return colors_.format == Buffer_Format::index8 ? palette_.color(pixel_of<std::uint8_t>(colors_, x, y))
                                                       : pixel_of<VT_RGB32>(colors_, x, y);
    }

    // Depths that change without a colour are blue, the nearest ones darkest.
    VT_RGB32 depth_color_at(std::int32_t x, std::int32_t y) const {
        const auto level = static_cast<std::uint8_t>(depths_.top ? 64 + (pixel_of<std::uint16_t>(depths_, x, y) >> 9) : 64);
        return {.blue = 255, .green = level, .red = level, .alpha = 255};
    }

    const Step_Change& change_;
    const VT_Int_Rectangle window_;
    const Raster colors_, depths_;
    const VT_Palette& palette_;
    VT_Int_Rectangle shown_; // device pixels
};

} // namespace

void Call_Thumbnails::add(const Recording_Steps& steps) {
    const Step_Change& change = steps.change();
    if (is_empty(change.bounds)) {
        return;
    }
    ++changing_;
    const Weight weight{std::max(change.colors, change.depths), std::numeric_limits<std::size_t>::max() - steps.position()};
    if (most_ == 0 || (kept_.size() == most_ && weight < kept_.begin()->first)) {
        return;
    }
    if (kept_.size() == most_) {
        kept_.erase(kept_.begin());
    }
    kept_.emplace(weight, Thumbnail_Painter(steps).painted());
}

Call_Thumbnails::Atlas Call_Thumbnails::atlas() const {
    std::map<std::size_t, const Pixels*> by_call;
    for (const auto& [weight, pixels] : kept_) {
        by_call.emplace(std::numeric_limits<std::size_t>::max() - weight.second - 1, &pixels);
    }
    Atlas atlas;
    std::vector<const Pixels*> thumbnails;
    for (const auto& [call, pixels] : by_call) {
        atlas.calls.push_back(call);
        thumbnails.push_back(pixels);
    }
    if (thumbnails.empty()) {
        return atlas;
    }
    // About as wide as high.
    const double side = std::sqrt(static_cast<double>(thumbnails.size()) * thumbnail_height / thumbnail_width);
    atlas.columns = static_cast<std::int32_t>(std::ceil(side));
    const auto columns = static_cast<std::size_t>(atlas.columns), rows = (thumbnails.size() + columns - 1) / columns;
    const Image_Form form{.width = static_cast<std::uint32_t>(columns * thumbnail_width),
                          .height = static_cast<std::uint32_t>(rows * thumbnail_height),
                          .reducible = true,
                          .compression = Compression::best};
    atlas.png = png_file(form, [&](std::uint32_t y, std::uint8_t* samples) {
        std::memset(samples, 0, form.row_bytes());
        const std::size_t first = y / thumbnail_height * columns, line = y % thumbnail_height;
        for (std::size_t i = first; i < std::min(first + columns, thumbnails.size()); ++i) {
            store_samples(reinterpret_cast<const std::uint8_t*>(thumbnails[i]->data() + line * thumbnail_width), thumbnail_width,
                          Buffer_Format::rgb32, samples + (i - first) * thumbnail_width * form.pixel_bytes());
        }
    });
    return atlas;
}

} // namespace vorna::drawing::report
