#include "bench/measure.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace bench {

namespace {

// Pixels that have none of the other's on or beside them. The window's edge is left out.
std::int64_t number_astray(const Painted& painted, const Painted& others) {
    std::int64_t astray = 0;
    for (std::int32_t y = 1; y < window_size.y - 1; ++y) {
        for (std::int32_t x = 1; x < window_size.x - 1; ++x) {
            const std::ptrdiff_t place = std::ptrdiff_t{y} * window_size.x + x;
            const auto found = [&](std::ptrdiff_t row) {
                const auto pixel = others.begin() + place + row * window_size.x;
                return pixel[-1] || pixel[0] || pixel[1];
            };
            astray += painted[static_cast<std::size_t>(place)] && !found(0) && !found(-1) && !found(1);
        }
    }
    return astray;
}

} // namespace

void draw_frame(Canvas& canvas, Clears clears) {
    if (clears == Clears::all) {
        canvas.clear_color();
    }
    if (clears != Clears::none) {
        canvas.clear_depth();
    }
    canvas.draw();
    canvas.finish();
}

Painted painted_by_one_frame(Canvas& canvas) {
    canvas.clear_color();
    draw_frame(canvas, Clears::depth);
    return canvas.painted_pixels();
}

std::int64_t number_of(const Painted& painted) {
    return std::count(painted.begin(), painted.end(), true);
}

Painted part_inside(const Circle& clip, Painted painted) {
    std::size_t i = 0;
    for (std::int32_t row = 0; row < window_size.y; ++row) {
        for (std::int32_t column = 0; column < window_size.x; ++column, ++i) {
            painted[i] = painted[i] && clip.contains(column, row);
        }
    }
    return painted;
}

void check_places(const std::string& first, const Painted& by_first, const std::string& second, const Painted& by_second,
                  double edge_share) {
    constexpr double largest_share_astray = 0.01;
    const auto number = number_of(by_first), expected = number_of(by_second);
    const double difference = std::abs(static_cast<double>(number - expected)) / static_cast<double>(expected);
    if (!(difference <= edge_share)) {
        throw std::runtime_error(first + " paints " + std::to_string(number) + " pixels, " + second + ' ' +
                                 std::to_string(expected) + ", expected a difference of at most " +
                                 std::to_string(100 * edge_share) + " %");
    }
    const auto check_astray = [](const std::string& who, const Painted& painted, const std::string& other,
                                 const Painted& others) {
        const std::int64_t astray = number_astray(painted, others);
        if (static_cast<double>(astray) > largest_share_astray * static_cast<double>(number_of(painted))) {
            throw std::runtime_error(std::to_string(astray) + " of the pixels that " + who +
                                     " paints are nowhere near those of " + other + ", expected at most " +
                                     std::to_string(100 * largest_share_astray) + " %");
        }
    };
    check_astray(first, by_first, second, by_second);
    check_astray(second, by_second, first, by_first);
}

} // namespace bench
