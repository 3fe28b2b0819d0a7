// Seeded random numbers.
#pragma once

#include <cstdint>
#include <iterator>
#include <random>

namespace vorna::app::check {

// The same integers for a seed on every machine, which the distributions of the standard library do not guarantee.
class Random {
public:
    explicit Random(std::uint64_t seed) : generator_(seed) {}

    // In [least, most].
    std::int32_t number(std::int32_t least, std::int32_t most) {
        const auto range = static_cast<std::uint64_t>(std::int64_t{most} - least) + 1;
        return static_cast<std::int32_t>(least + static_cast<std::int64_t>(generator_() % range));
    }
    bool chance(std::int32_t percent) { return number(1, 100) <= percent; }
    std::uint8_t byte() { return static_cast<std::uint8_t>(number(0, 255)); }
    template <class Values> auto one_of(const Values& values) {
        return values[static_cast<std::size_t>(number(0, static_cast<std::int32_t>(std::size(values)) - 1))];
    }

private:
    std::mt19937_64 generator_;
};

} // namespace vorna::app::check
