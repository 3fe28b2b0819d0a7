// The choice of what a call draws.
#include "app/check/call_arguments.h"

#include <algorithm>
#include <numbers>

namespace vorna::app::check {

namespace {

constexpr double turn = 2 * std::numbers::pi;
constexpr std::int32_t plain_depth = 100;

// A block of the rectangle's size with unset bytes. extra: pixels between the end of a row and the start of the next.
Block unset_block(const VT_Int_Rectangle& place, std::int32_t depth, std::int32_t extra, std::int32_t pixel_bytes) {
    Block block{{place.left, place.top, depth}, {place.right, place.bottom, depth}, 0, {}};
    block.stride = (place.right - place.left + 1 + extra) * pixel_bytes;
    block.bytes.resize(static_cast<std::size_t>(block.stride) * static_cast<std::size_t>(place.top - place.bottom + 1));
    return block;
}

// The longest radius with which an ellipse about the centre stays in a window of the size, however it is turned.
std::int32_t longest_radius(const VT_DCI_Point& center, VT_Int_Pair size) {
    return std::min({center.x, center.y, size.x - 1 - center.x, size.y - 1 - center.y});
}

} // namespace

bool clips_to_hard_clip(std::string_view slot) {
    return slot.starts_with("draw_2d_") || slot.starts_with("draw_2di_") || slot.starts_with("draw_3d_");
}

VT_Int_Pair Call_Arguments::window_size() const noexcept {
    return {window_.right - window_.left + 1, window_.top - window_.bottom + 1};
}

VT_Point_D Call_Arguments::next_point(Coordinates, const std::vector<VT_Point_D>& earlier) {
    const VT_Int_Pair size = window_size();
    const VT_Int_Pair corners[] = {{window_.left + size.x / 4, window_.bottom + size.y / 4},
                                   {window_.right - size.x / 4, window_.bottom + size.y / 3},
                                   {window_.left + size.x / 2, window_.top - size.y / 4}};
    const VT_Int_Pair corner = corners[earlier.size() % std::size(corners)];
    return {double(corner.x), double(corner.y), double(plain_depth)};
}

std::vector<VT_RGB32> Call_Arguments::colors(std::size_t count) {
    return std::vector<VT_RGB32>(count, {40, 120, 250, 255});
}

Ellipse Call_Arguments::ellipse() {
    const VT_Int_Pair size = window_size();
    const VT_DCI_Point center{size.x / 2, size.y / 2, 0};
    const std::int32_t radius = longest_radius(center, size) / 2;
    return {center, {radius, radius, 0}, 0, turn, 0};
}

Block Call_Arguments::block(std::int32_t pixel_bytes) {
    Block block = unset_block(window_, plain_depth, 0, pixel_bytes);
    std::fill(block.bytes.begin(), block.bytes.end(), std::uint8_t{180});
    return block;
}

Placed_Image Call_Arguments::image() {
    Random noise(1);
    return {{window_.left, window_.top, plain_depth}, random_image(noise, window_size(), Buffer_Format::rgb32)};
}

VT_Point_D Random_Arguments::next_point(Coordinates type, const std::vector<VT_Point_D>& earlier) {
    if (earlier.empty()) {
        constexpr std::int32_t plane_distances[] = {0, 0, 10, 100, 3000};
        constexpr std::int32_t space_distances[] = {0, 10, 100, 3000, 30'000};
        const std::int32_t distance = type == Coordinates::float64 ? random_.one_of(space_distances)
                                      : clips_to_hard_clip(slot_)  ? random_.one_of(plane_distances)
                                                                   : 0;
        cloud_.emplace(random_, grown(window(), distance));
    }
    const VT_DCI_Point place = cloud_->next({});
    VT_Point_D point{double(place.x), double(place.y), double(place.z)};
    // Fractions too small to lead out of the window.
    if (type != Coordinates::int32) {
        point.x += random_.number(-1, 1) / 4.0;
        point.y += random_.number(-1, 1) / 4.0;
    }
    repeat_coordinates(random_, point, earlier);
    return point;
}

// Inside the window; the centre is a column and row of the buffer.
Ellipse Random_Arguments::ellipse() {
    const VT_Int_Pair size = window_size();
    const VT_DCI_Point center{random_.number(0, size.x - 1), random_.number(0, size.y - 1), 0};
    const std::int32_t longest = longest_radius(center, size);
    Ellipse ellipse{center, {random_.number(0, longest), random_.number(0, longest), 0}, 0, turn, 0};
    if (random_.chance(40)) {
        ellipse.rotation = random_.number(0, 8) * turn / 8;
    }
    if (random_.chance(30)) {
        ellipse.start = random_.number(0, 100) * turn / 100;
        ellipse.end = ellipse.start + random_.number(0, 100) * turn / 100;
    }
    return ellipse;
}

Block Random_Arguments::block(std::int32_t pixel_bytes) {
    const VT_Int_Rectangle place = random_rectangle(random_, window());
    const std::int32_t depth = random_.number(0, 65535);
    Block block = unset_block(place, depth, random_.number(0, 3), pixel_bytes);
    std::generate(block.bytes.begin(), block.bytes.end(), [this] { return random_.byte(); });
    return block;
}

// Images made for presentation are as large as the window and lie on it; their start is a column and a row.
Placed_Image Random_Arguments::image() {
    const VT_Int_Pair size = window_size();
    if (random_.chance(30)) {
        const VT_DCI_Point start{random_.number(-5, size.x), random_.number(-5, size.y), 0};
        return {start, random_image(random_, size, Buffer_Format::presentation_rgb32)};
    }
    const VT_Int_Rectangle place = random_rectangle(random_, window());
    const VT_DCI_Point start{place.left, place.top, random_.number(0, 65535)};
    const Buffer_Format format = random_.chance(50) ? Buffer_Format::index8 : Buffer_Format::rgb32;
    return {start, random_image(random_, {place.right - place.left + 1, place.top - place.bottom + 1}, format)};
}

} // namespace vorna::app::check
