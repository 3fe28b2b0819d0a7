// How smoothed lines are stepped: the pixel on the line at every step along the major axis, and the weights of the three pixels
// across the line.
//
// A line's minor coordinate is a 32.32 fixed-point number. The pixel on the line is the rounded one, halves upwards. A diagonal
// goes row by row.

#include <cstdint>

#include "host/geometry.h"

namespace krb::KRB_KERNEL_SET {
namespace {

inline std::int32_t least(std::int32_t a, std::int32_t b) {
    return a < b ? a : b;
}

inline std::int32_t most(std::int32_t a, std::int32_t b) {
    return a < b ? b : a;
}

// By the distance from the ideal line in 1/256 pixel: linear, from the whole colour on the line to nothing at 313, rounded. Two
// entries are one lower; pictures depend on them.
constexpr std::int32_t distance_weight(std::int32_t distance) {
    constexpr std::int32_t reach = 313;
    if (distance == 162 || distance == 173) {
        return distance == 162 ? 123 : 114;
    }
    return distance < reach ? (512 * (reach - distance) + reach) / (2 * reach) : 0;
}

static_assert(distance_weight(0) == 256 && distance_weight(256) == 47 && distance_weight(313) == 0);

// The weights of the three pixels across a line.
struct Weights_Across {
    std::uint16_t weight[4];
};

// By the line's position between pixels; see weights_at.
struct Weight_Table {
    Weights_Across across[512];
};

// Distances are cut off to 1/256 pixel, so that a position counts by the 1/256 it lies in and by whether it lies exactly on its
// edge.
constexpr Weight_Table weight_table() {
    Weight_Table table{};
    for (std::int32_t entry = 0; entry < 512; ++entry) {
        const std::int32_t low = (entry >> 1) - 128; // the position relative to the rounded pixel, rounded down and up
        const std::int32_t high = low + (entry & 1);
        const std::int32_t on = low < 0 ? -high : low;
        table.across[entry] = {{static_cast<std::uint16_t>(distance_weight(256 + low)),
                                static_cast<std::uint16_t>(distance_weight(on)),
                                static_cast<std::uint16_t>(distance_weight(256 - high)), 0}};
    }
    return table;
}

constexpr Weight_Table weights_by_position = weight_table();
constexpr const Weights_Across& weights_on_pixel = weights_by_position.across[256];

inline const Weights_Across& weights_at(std::uint32_t fraction) {
    const std::uint32_t from_lowest = fraction + 0x80000000U;
    return weights_by_position.across[(from_lowest >> 24) * 2 + static_cast<std::uint32_t>((from_lowest & 0xFFFFFF) != 0)];
}

// The steps of short lines, by the steps along the major axis less 2 and the movement along the minor one less 1. Diagonals,
// which fill no 32 bits, have none.
constexpr std::int32_t longest_tabled = 33;

struct Step_Table {
    std::uint32_t step[longest_tabled - 1][longest_tabled - 1];
};

constexpr Step_Table step_table() {
    Step_Table table{};
    for (std::uint32_t count = 2; count <= longest_tabled; ++count) {
        for (std::uint32_t movement = 1; movement < count; ++movement) {
            table.step[count - 2][movement - 1] = static_cast<std::uint32_t>((std::uint64_t{movement} << 32) / count);
        }
    }
    return table;
}

constexpr Step_Table short_steps = step_table();

// 32.32; 0 < movement <= count.
inline std::int64_t step_of(std::int32_t movement, std::int32_t count) {
    if (count <= longest_tabled && movement < count) {
        return short_steps.step[count - 2][movement - 1];
    }
    return static_cast<std::int64_t>((static_cast<std::uint64_t>(movement) << 32) / static_cast<std::uint64_t>(count));
}

// The steps of a segment that is neither level nor upright. Of pairs, x is the major coordinate and y the minor one.
struct Smooth_Stepper {
    std::int32_t major, direction;
    std::int32_t remaining; // steps, this one among them
    std::int64_t position, step;

    Smooth_Stepper(VT_Int_Pair from, VT_Int_Pair to)
        : major(from.x), direction(from.x < to.x ? 1 : -1), remaining((to.x - from.x) * direction),
          position(std::int64_t{from.y} * (INT64_C(1) << 32)) {
        const std::int32_t movement = to.y - from.y;
        step = step_of(movement < 0 ? -movement : movement, remaining);
        step = movement < 0 ? -step : step;
    }

    std::int32_t minor() const { return rounded(position); }
    const Weights_Across& weights() const { return weights_at(static_cast<std::uint32_t>(position)); }
    // So many steps on.
    std::int32_t major_after(std::int32_t steps) const { return major + direction * steps; }
    std::int32_t minor_after(std::int32_t steps) const { return rounded(position + step * steps); }
    void advance() {
        major += direction;
        position += step;
        --remaining;
    }
    // Leaves the steps whose major coordinates are 0 to last.
    void limit_to(std::int32_t last) {
        const std::int32_t skipped = most(direction > 0 ? -major : major - last, 0);
        remaining = least(remaining, direction > 0 ? last - major + 1 : major + 1) - skipped;
        major += direction * skipped;
        position += step * skipped;
    }

private:
    static std::int32_t rounded(std::int64_t coordinate) { return static_cast<std::int32_t>((coordinate + 0x80000000) >> 32); }
};

} // namespace
} // namespace krb::KRB_KERNEL_SET
