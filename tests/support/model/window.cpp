// The model's buffers: what establish settles, painting the window, clearing, writing and reading back.
#include <algorithm>

#include "tests/support/model/model.h"

namespace model {

Model::Model(const Renderer_Setup& wanted)
    : setup(wanted), color(wanted.size, 0), depth(wanted.size, 0), row_addresses(static_cast<std::size_t>(wanted.size.y), 0) {
    if (!setup.palette) {
        setup.palette = VT_Reference<const VT_Palette>(new VT_Palette);
    }
    const auto byte = [](std::int32_t value) { return static_cast<std::uint8_t>(value & 0xFF); };
    const VT_RGB32 wanted_background{byte(setup.background.blue), byte(setup.background.green), byte(setup.background.red), 255};
    if (setup.has_indices()) {
        background = closest_index(wanted_background);
        alternate = find_alternate_index();
    } else {
        VT_RGB32 other = wanted_background;
        other.blue = other.blue == 0 ? 1 : byte(other.blue - 1);
        background = vorna::word_of(wanted_background);
        alternate = vorna::word_of(other);
    }
}

// Walks away from the background's colour until another index is closest. Channels turn round at their ends.
std::uint32_t Model::find_alternate_index() const {
    const VT_RGB32 start = setup.palette->color(static_cast<std::uint8_t>(background));
    std::array<int, 3> channels{start.red, start.green, start.blue};
    std::array<int, 3> directions{};
    for (std::size_t i = 0; i < 3; ++i) {
        directions[i] = channels[i] < 251 ? 5 : -5;
    }
    for (int round = 0; round < 103; ++round) {
        for (std::size_t i = 0; i < 3; ++i) {
            if (channels[i] >= 251) {
                directions[i] = -5;
            } else if (channels[i] < 5) {
                directions[i] = 5;
            }
            channels[i] = (channels[i] + directions[i]) & 0xFF;
        }
        const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(channels[i]); };
        const std::uint32_t found = closest_index({byte(2), byte(1), byte(0), 255});
        if (found != background) {
            return found;
        }
    }
    return background;
}

Model::Handed_Over Model::draw_window(const VT_Rendition& rendition) {
    const VT_Window_Attributes& window = rendition.window;
    if (window.fill != vorna::face_pattern::solid) {
        return {"VD_Span_DC_Rectangle"};
    }
    for (std::int32_t row = 0; row < setup.size.y; ++row) {
        for (std::int32_t column = 0; column < setup.size.x; ++column) {
            const std::int32_t x = column + setup.origin.x, y = row + setup.origin.y;
            if (contains(window.rectangle, x, y)) {
                color.at(column, row) = setup.has_indices() ? window.index : vorna::word_of(window.color);
            }
        }
    }
    return {};
}

void Model::clear_depth_rectangle(const VT_Rendition& rendition) {
    const VT_Int_Rectangle& r = rendition.window.rectangle;
    for (std::int32_t y = r.bottom; y <= r.top; ++y) {
        for (std::int32_t x = r.left; x <= r.right; ++x) {
            depth.at(column_of(x), row_of(y)) = 0xFFFF;
        }
    }
}

void Model::write_depth_rectangle(const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right,
                                  const std::vector<std::uint16_t>& depths) {
    const std::int32_t width = bottom_right.x - top_left.x + 1;
    const std::int32_t last = std::min(bottom_right.x, setup.origin.x + setup.size.x - 1);
    for (std::int32_t y = top_left.y; y >= bottom_right.y; --y) {
        for (std::int32_t x = top_left.x; x <= last; ++x) {
            const std::int32_t source = (top_left.y - y) * width + (x - top_left.x);
            depth.at(column_of(x), row_of(y)) = depths.empty() ? 0 : depths[static_cast<std::size_t>(source)];
        }
    }
}

std::vector<std::uint32_t> Model::read(const Plane& plane, const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right) const {
    std::vector<std::uint32_t> pixels;
    for (std::int32_t y = top_left.y; y >= bottom_right.y; --y) {
        for (std::int32_t x = top_left.x; x <= bottom_right.x; ++x) {
            pixels.push_back(plane.at(column_of(x), row_of(y)));
        }
    }
    return pixels;
}

} // namespace model
