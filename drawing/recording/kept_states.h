// States of a replay that are kept, at intervals of drawing time and within a bound of memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "drawing/recording/tiled_copies.h"

namespace vorna::drawing::recording {

struct Kept_State {
    std::size_t position = 0; // the number of calls that have been made
    std::size_t epoch = 0;    // the number of those that have made the buffers anew
    bool depth_write = true;
    std::int32_t depth_test = 2;
    Tiled_Copies::Copy copy = {};
};

class Kept_States {
public:
    // memory: bytes of all states; 0 = none is kept. interval: microseconds.
    Kept_States(std::uint64_t memory, double interval) noexcept : memory_(memory), interval_(interval) {}

    // The planes whose states are kept.
    Tiled_Copies& copies() noexcept { return copies_; }

    // The time that a call has taken.
    void add_time(double microseconds) noexcept { pending_ += microseconds; }
    // Keeps the state when the calls since the last one have taken long enough. Where memory is short, every second state is
    // given up, and the interval is twice as long from then on.
    void consider(Kept_State state);

    // The last state of at most that position; null = none. Valid until a state is considered.
    const Kept_State* find_last(std::size_t position) const noexcept;
    // Null: the planes become zero.
    void put_back(const Kept_State* state);

    std::uint64_t bytes() const noexcept;

private:
    void thin_out();

    const std::uint64_t memory_;
    double interval_, pending_ = 0;
    double copy_time_ = 0; // of the last copy; the calls after it take as long at least
    Tiled_Copies copies_;
    std::vector<Kept_State> states_; // by position
};

} // namespace vorna::drawing::recording
