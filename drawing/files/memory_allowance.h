// Memory that is taken from the limits in large parts and given out in small ones: what every line of a file asks for.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

#include "drawing/files/load_limits.h"

namespace vorna::drawing {

// Belongs to one thread. file: for messages; it outlives the object. Throws Load_Error as the limits do. What is not given out in
// the end, less than a part, stays taken.
class Memory_Allowance {
public:
    Memory_Allowance(Load_Limits& limits, const std::string& file) noexcept : limits_(limits), file_(file) {}

    void take(std::uint64_t bytes) {
        if (bytes > remaining_) {
            refill(bytes - remaining_);
        }
        remaining_ -= bytes;
    }

private:
    // Near the limit no more than is needed.
    void refill(std::uint64_t needed) {
        constexpr std::uint64_t part = std::uint64_t{1} << 18;
        const std::uint64_t taken = limits_.memory_left() < part ? needed : std::max(needed, part);
        limits_.take_memory(file_, taken);
        remaining_ += taken;
    }

    Load_Limits& limits_;
    const std::string& file_;
    std::uint64_t remaining_ = 0;
};

} // namespace vorna::drawing
