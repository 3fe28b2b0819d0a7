// The light of a photographer's studio: a large key light, a cool fill light from the other side, the reflection of a bright
// ceiling and a dark floor, and a strip behind the object that lights its rim.
#include "drawing/image/studio_light.h"

#include <algorithm>
#include <cmath>

namespace vorna::drawing {
namespace {

struct Direction {
    double x, y, z;

    double along(const Direction& other) const { return x * other.x + y * other.y + z * other.z; }
    Direction unit() const {
        const double scale = 1 / std::sqrt(x * x + y * y + z * z);
        return {x * scale, y * scale, z * scale};
    }
};

struct Amounts {
    double red, green, blue;
};

double positive(double value) {
    return std::max(value, 0.0);
}

// 0 up to a value, 1 from another one on, smooth between them.
double smooth_step(double from, double to, double value) {
    const double t = std::clamp((value - from) / (to - from), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

std::uint16_t level(double amount) {
    return static_cast<std::uint16_t>(std::clamp(amount, 0.0, 1.0) * 65535 + 0.5);
}

} // namespace

// Only +, -, *, / and square roots, which are the same on every machine.
Studio_Lights::Studio_Lights(double x, double y, double z) : table_(std::size_t{side} * side) {
    constexpr Amounts key_color{0.92, 0.885, 0.83}, fill_color{0.13, 0.145, 0.165}, sky_color{0.25, 0.26, 0.27},
        floor_color{0.055, 0.05, 0.047}, rim_color{0.10, 0.11, 0.12};
    constexpr double wrap = 0.22; // how far the key light reaches beyond the horizon of the form
    const Direction viewer{0, 0, 1}, key = Direction{x, y, z}.unit();
    const Direction fill = Direction{-key.x * 1.4, -0.15, 0.55}.unit();
    const Direction half_way = Direction{key.x, key.y, key.z + 1}.unit();
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            Direction n{(column - 128) / 127.0, (row - 128) / 127.0, 0};
            n.z = std::sqrt(positive(1 - n.x * n.x - n.y * n.y));
            n = n.unit();
            const double toward_key = positive((n.along(key) + wrap) / (1 + wrap));
            const double toward_fill = 0.5 + 0.5 * n.along(fill);
            const double toward_sky = 0.5 + 0.5 * n.y;
            const double horizon = 1 - positive(n.along(viewer));
            const double rim = horizon * horizon * horizon * smooth_step(-0.35, 0.6, n.y);
            const auto channel = [&](double Amounts::*c) {
                return level(key_color.*c * toward_key + fill_color.*c * toward_fill * toward_fill + floor_color.*c +
                             (sky_color.*c - floor_color.*c) * toward_sky + rim_color.*c * rim);
            };
            const double toward_half_way = positive(n.along(half_way));
            const double second = toward_half_way * toward_half_way, fourth = second * second, eighth = fourth * fourth;
            const double glow = 0.055 * eighth, gloss = 0.20 * (eighth * eighth) * (eighth * eighth) * eighth;
            table_[static_cast<std::size_t>(row) * side + static_cast<std::size_t>(column)] = {
                channel(&Amounts::red), channel(&Amounts::green), channel(&Amounts::blue), level(glow + gloss + 0.05 * rim)};
        }
    }
}

} // namespace vorna::drawing
