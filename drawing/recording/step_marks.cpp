// What a call did to the pixels of an area.
#include "drawing/recording/step_marks.h"

#include <algorithm>

namespace vorna::drawing::recording {

Step_Change change_of(const Marks& marks, const VT_Int_Rectangle& window) {
    const auto width = static_cast<std::size_t>(marks.part.width);
    std::size_t left = width, right = 0, top = SIZE_MAX, bottom = 0;
    Step_Change change;
    for (std::size_t i = 0; i < marks.bits.size(); ++i) {
        const std::uint8_t bits = marks.bits[i] & (Step_Change::color | Step_Change::depth);
        if (bits != 0) {
            change.colors += (bits & Step_Change::color) != 0;
            change.depths += (bits & Step_Change::depth) != 0;
            left = std::min(left, i % width);
            right = std::max(right, i % width);
            top = std::min(top, i / width);
            bottom = i / width;
        }
    }
    if (top == SIZE_MAX) {
        return change;
    }
    for (std::size_t y = top; y <= bottom; ++y) {
        for (std::size_t x = left; x <= right; ++x) {
            change.pixels.push_back(marks.bits[y * width + x] & (Step_Change::color | Step_Change::depth));
        }
    }
    const std::int32_t left_column = window.left + marks.part.left, top_row = window.top - marks.part.top;
    change.bounds = {left_column + static_cast<std::int32_t>(left), left_column + static_cast<std::int32_t>(right),
                     top_row - static_cast<std::int32_t>(bottom), top_row - static_cast<std::int32_t>(top)};
    return change;
}

void add(Step_Heat& heat, const Marks& marks, std::int32_t width, double microseconds) {
    const auto is_drawn = [](std::uint8_t bits) { return bits != 0; };
    const auto count = std::ranges::count_if(marks.bits, is_drawn);
    const auto cost = static_cast<float>(count > 0 ? microseconds / static_cast<double>(count) : 0);
    auto bits = marks.bits.begin();
    for (std::int32_t y = 0; y < marks.part.height; ++y) {
        auto i = static_cast<std::size_t>(marks.part.top + y) * static_cast<std::size_t>(width) +
                 static_cast<std::size_t>(marks.part.left);
        for (std::int32_t x = 0; x < marks.part.width; ++x, ++i, ++bits) {
            std::uint16_t& draws = heat.draws[i];
            draws =
                static_cast<std::uint16_t>(draws + ((*bits & (Marks::drawn | Step_Change::color)) != 0 && draws < UINT16_MAX));
            heat.costs[i] += is_drawn(*bits) ? cost : 0;
        }
    }
}

} // namespace vorna::drawing::recording
