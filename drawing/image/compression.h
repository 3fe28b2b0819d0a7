// How much time compression may take.
#pragma once

#include <cstdint>

namespace vorna::drawing {

enum class Compression : std::uint8_t { fast, standard, best };

} // namespace vorna::drawing
