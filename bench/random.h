// Random numbers that are the same with every standard library.
#pragma once

#include <cmath>
#include <cstdint>
#include <random>

#include "host/color.h"

namespace bench {

// How a drawing departs from the one that is measured: other places and colours by the seed, and sizes by up to the spread's
// share up or down, each by itself.
struct Variation {
    std::uint32_t seed = 1;
    double spread = 0;
};

class Random {
public:
    explicit Random(const Variation& variation = {}) : engine_(variation.seed), spread_(variation.spread) {}

    std::int32_t below(std::int32_t end) { return static_cast<std::int32_t>(engine_() % static_cast<std::uint32_t>(end)); }
    std::int32_t depth() { return below(65536); }
    // From 0 to 0.999.
    float thousandths() { return static_cast<float>(below(1000)) / 1000.0F; }
    // The size itself, or one near it.
    std::int32_t varied(std::int32_t size) {
        if (spread_ == 0) {
            return size;
        }
        const double change = spread_ * (2 * static_cast<double>(thousandths()) - 1);
        return static_cast<std::int32_t>(std::lround(size * (1 + change)));
    }
    // Alphas between a quarter and three quarters; neighbouring colours so far apart that nothing is drawn flat.
    VT_RGB32 color() {
        const auto byte = [this] { return static_cast<std::uint8_t>(below(256)); };
        return {byte(), byte(), byte(), static_cast<std::uint8_t>(64 + below(128))};
    }
    VT_RGB32 opaque_color() {
        VT_RGB32 opaque = color();
        opaque.alpha = 255;
        return opaque;
    }

private:
    std::mt19937 engine_;
    double spread_;
};

} // namespace bench
