// Random numbers that are the same with every standard library.
#pragma once

#include <cstdint>
#include <random>

#include "renderer/host/color.h"

namespace bench {

class Random {
public:
    std::int32_t below(std::int32_t end) { return static_cast<std::int32_t>(engine_() % static_cast<std::uint32_t>(end)); }
    std::int32_t depth() { return below(65536); }
    // From 0 to 0.999.
    float thousandths() { return static_cast<float>(below(1000)) / 1000.0F; }
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
    std::mt19937 engine_{1};
};

} // namespace bench
