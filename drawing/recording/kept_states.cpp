// States of a replay that are kept.
#include "drawing/recording/kept_states.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace vorna::drawing::recording {

void Kept_States::consider(Kept_State state) {
    const auto place = std::ranges::lower_bound(states_, state.position, {}, &Kept_State::position);
    if (place != states_.end() && place->position == state.position) {
        pending_ = 0;
        return;
    }
    if (pending_ < std::max(interval_, copy_time_) || memory_ == 0) {
        return;
    }
    pending_ = 0;
    const std::uint64_t needed = copies_.most_bytes();
    if (needed > memory_) {
        interval_ *= 2;
        return;
    }
    while (bytes() + needed > memory_ && !states_.empty()) {
        thin_out();
    }
    const auto start = std::chrono::steady_clock::now();
    state.copy = copies_.copy();
    states_.insert(std::ranges::upper_bound(states_, state.position, {}, &Kept_State::position), std::move(state));
    copy_time_ = std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

const Kept_State* Kept_States::find_last(std::size_t position) const noexcept {
    const auto after = std::ranges::upper_bound(states_, position, {}, &Kept_State::position);
    return after == states_.begin() ? nullptr : &*std::prev(after);
}

void Kept_States::put_back(const Kept_State* state) {
    copies_.put_back(state ? state->copy : Tiled_Copies::Copy(copies_.tiles()));
    pending_ = 0;
}

std::uint64_t Kept_States::bytes() const noexcept {
    std::uint64_t bytes = copies_.bytes();
    for (const Kept_State& state : states_) {
        bytes += state.copy.size() * sizeof(Tiled_Copies::Tile);
    }
    return bytes;
}

void Kept_States::thin_out() {
    std::size_t kept = 0;
    for (std::size_t i = 1; i < states_.size(); i += 2) {
        states_[kept++] = std::move(states_[i]);
    }
    states_.resize(kept);
    interval_ *= 2;
}

} // namespace vorna::drawing::recording
