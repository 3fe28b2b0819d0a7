// The shadow of an object on the ground. It is the darker and the sharper the nearer the object is: the sum of a narrow shadow of
// what is close to the ground and a wide one of everything.
#include "drawing/image/studio_ground.h"

#include <algorithm>

namespace vorna::drawing {
namespace {

constexpr std::int32_t side = Studio_Ground::side;
constexpr float full = 65536;

// A mean of 2 * reach + 1 values as a product, rounded down.
class Mean {
public:
    explicit Mean(std::int32_t reach) : scale_((std::int64_t{1} << 32) / (2 * reach + 1)) {}
    std::int32_t of(std::int32_t sum) const { return static_cast<std::int32_t>(sum * scale_ >> 32); }

private:
    std::int64_t scale_;
};

// Each value of a row becomes the mean of those up to the reach beside it; beyond the map there is nothing.
void blur_row(std::int32_t* row, std::int32_t reach) {
    std::array<std::int32_t, side> values;
    std::copy_n(row, side, values.begin());
    const auto value = [&](std::int32_t i) { return i >= 0 && i < side ? values[static_cast<std::size_t>(i)] : 0; };
    const Mean mean(reach);
    std::int32_t sum = 0;
    for (std::int32_t i = 0; i < reach; ++i) {
        sum += value(i);
    }
    for (std::int32_t i = 0; i < side; ++i) {
        sum += value(i + reach);
        row[i] = mean.of(sum);
        sum -= value(i - reach);
    }
}

// The same along columns, all of them side by side.
void blur_columns(std::vector<std::int32_t>& map, std::int32_t reach) {
    const std::vector<std::int32_t> values = map;
    const Mean mean(reach);
    std::array<std::int32_t, side> sums{};
    const auto add = [&](std::int32_t row, std::int32_t sign) {
        if (row >= 0 && row < side) {
            const std::int32_t* of_row = &values[static_cast<std::size_t>(row) * side];
            for (std::size_t i = 0; i < side; ++i) {
                sums[i] += sign * of_row[i];
            }
        }
    };
    for (std::int32_t row = 0; row < reach; ++row) {
        add(row, 1);
    }
    for (std::int32_t row = 0; row < side; ++row) {
        add(row + reach, 1);
        std::ranges::transform(sums, &map[static_cast<std::size_t>(row) * side], [&](std::int32_t sum) { return mean.of(sum); });
        add(row - reach, -1);
    }
}

// Three times the mean of a square, which is nearly a bell.
void blur(std::vector<std::int32_t>& map, std::int32_t reach) {
    for (int pass = 0; pass < 3; ++pass) {
        for (std::int32_t row = 0; row < side; ++row) {
            blur_row(&map[static_cast<std::size_t>(row) * side], reach);
        }
        blur_columns(map, reach);
    }
}

} // namespace

Studio_Ground::Studio_Ground(const std::vector<std::uint16_t>& heights, const Homography& map_from_image,
                             const VT_Int_Rectangle& visible, const VT_Int_Rectangle& frame)
    : map_(heights.size()), map_from_image_(map_from_image), visible_(visible), frame_(frame),
      per_pixel_(20.0F / static_cast<float>(frame.top - frame.bottom + 1)) {
    constexpr std::int32_t near_height = 5000; // of 65535
    std::vector<std::int32_t> near(heights.size()), all(heights.size());
    for (std::size_t i = 0; i < heights.size(); ++i) {
        const std::int32_t height = heights[i];
        if (height < 65535) {
            near[i] = 65536 - std::min(height, near_height) * 65536 / near_height;
            all[i] = 65536 - height / 2;
        }
    }
    blur(near, 3);
    blur(all, 14);
    for (std::int32_t row = 1; row < side - 1; ++row) {
        for (std::int32_t column = 1; column < side - 1; ++column) {
            const auto i = static_cast<std::size_t>(row) * side + static_cast<std::size_t>(column);
            map_[i] = (0.42F * static_cast<float>(near[i]) + 0.46F * static_cast<float>(all[i])) * (1 / full);
        }
    }
}

Column_Range Studio_Ground::shade(std::int32_t x, std::int32_t y, std::int32_t step, std::vector<float>& light) const {
    if (y + step <= visible_.bottom || y > visible_.top) {
        return {};
    }
    const auto& m = map_from_image_;
    const Column_Range seen{std::max(visible_.left - x, 0) / step,
                            std::min(static_cast<std::int32_t>(light.size()), (visible_.right - x + step) / step)};
    if (seen.is_empty()) {
        return {}; // beside the columns of the light
    }
    Column_Range darkened{seen.end, seen.first};
    const double half = 0.5 * step, middle = y + half;
    const double u0 = m[0][1] * middle + m[0][2], v0 = m[1][1] * middle + m[1][2], w0 = m[2][1] * middle + m[2][2];
    const std::int32_t above = std::min(y - frame_.bottom, frame_.top - y);
    for (std::int32_t square = seen.first; square < seen.end; ++square) {
        light[static_cast<std::size_t>(square)] = 1;
        const std::int32_t column = x + square * step;
        const double across = column + half;
        const double w = m[2][0] * across + w0;
        if (!(w > 0)) {
            continue;
        }
        const double scale = 1 / w;
        const double u = (m[0][0] * across + u0) * scale - 0.5, v = (m[1][0] * across + v0) * scale - 0.5;
        if (!(u >= 0 && u < side - 1 && v >= 0 && v < side - 1)) {
            continue;
        }
        const auto left = static_cast<std::int32_t>(u), bottom = static_cast<std::int32_t>(v);
        const auto right_part = static_cast<float>(u - left), top_part = static_cast<float>(v - bottom);
        const float* map = &map_[static_cast<std::size_t>(bottom) * side + static_cast<std::size_t>(left)];
        const float low = map[0] + (map[1] - map[0]) * right_part, high = map[side] + (map[side + 1] - map[side]) * right_part;
        const std::int32_t to_border = std::min({column - frame_.left, frame_.right - column, above});
        const float whole = std::min(static_cast<float>(to_border) * per_pixel_, 1.0F);
        const float taken = (low + (high - low) * top_part) * whole;
        if (taken > 0) {
            light[static_cast<std::size_t>(square)] = 1 - taken;
            darkened = {std::min(darkened.first, square), square + 1};
        }
    }
    return darkened;
}

} // namespace vorna::drawing
