// Where an image lies in a window: enlarged or reduced, and moved.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>

#include "app/view/frame.h"
#include "app/view/window.h"

namespace vorna::app::view {

class Image_Place {
public:
    // area: of the window, for the image. The image fills it until it is zoomed or moved.
    void set(const Box& area, VT_Int_Pair image) {
        area_ = area;
        image_ = image;
        if (is_fitted_) {
            fit();
        }
    }

    // As large as possible; whole multiples of its size where it is not reduced.
    void fit() {
        is_fitted_ = true;
        scale_ = std::min(static_cast<double>(area_.width) / image_.x, static_cast<double>(area_.height) / image_.y);
        scale_ = scale_ >= 1 ? std::floor(scale_) : scale_;
        left_ = std::floor(area_.left + (area_.width - image_.x * scale_) / 2);
        top_ = std::floor(area_.top + (area_.height - image_.y * scale_) / 2);
    }

    void move(const Place& by) {
        is_fitted_ = false;
        left_ += by.x;
        top_ += by.y;
    }

    // What is under the pointer stays there.
    void zoom(double factor, const Place& pointer) {
        is_fitted_ = false;
        const double before = scale_;
        scale_ = std::clamp(scale_ * factor, smallest_scale, largest_scale);
        left_ = pointer.x - (pointer.x - left_) * scale_ / before;
        top_ = pointer.y - (pointer.y - top_) * scale_ / before;
    }

    // Pixels of the window for a pixel of the image.
    double scale() const noexcept { return scale_; }
    Place middle() const noexcept { return {area_.left + area_.width / 2.0, area_.top + area_.height / 2.0}; }

    // The column and row of the image at a pixel of the window; none = beside the image.
    std::optional<VT_Int_Pair> pixel_at(const Place& place) const {
        const VT_Int_Pair pixel{column_at(place.x), row_at(place.y)};
        const bool is_inside = pixel.x >= 0 && pixel.y >= 0 && pixel.x < image_.x && pixel.y < image_.y;
        return is_inside && area_.has(static_cast<std::int32_t>(place.x), static_cast<std::int32_t>(place.y))
                   ? std::optional(pixel)
                   : std::nullopt;
    }
    std::int32_t column_at(double x) const noexcept { return at((x - left_) / scale_); }
    std::int32_t row_at(double y) const noexcept { return at((y - top_) / scale_); }

    // The pixels of the window for a part of the image, at least one.
    Box box_of(const Box& part) const noexcept {
        const std::int32_t left = in_window(left_ + part.left * scale_), top = in_window(top_ + part.top * scale_);
        const std::int32_t right = in_window(left_ + part.right() * scale_), bottom = in_window(top_ + part.bottom() * scale_);
        return {left, top, std::max(right - left, 1), std::max(bottom - top, 1)};
    }

private:
    static constexpr double smallest_scale = 1.0 / 32, largest_scale = 128, farthest = 1 << 24;

    static std::int32_t at(double value) noexcept {
        return static_cast<std::int32_t>(std::clamp(std::floor(value), -farthest, farthest));
    }
    // The middle of a window's pixel decides to which pixel of the image it belongs.
    static std::int32_t in_window(double value) noexcept { return at(value + 0.5); }

    Box area_;
    VT_Int_Pair image_{1, 1};
    bool is_fitted_ = true;
    double scale_ = 1, left_ = 0, top_ = 0; // the image's upper left corner
};

} // namespace vorna::app::view
