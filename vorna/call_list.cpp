// Calls of drawing functions that are kept with all that they read.
#include "vorna/call_list.h"

#include <cassert>

#include "host/window.h"

namespace vorna {

bool Call_List::is_drawn() const noexcept {
    return std::all_of(queues_.get(), queues_.get() + most_bands_, [](const Call_Queue& queue) { return queue.is_empty(); });
}

void Call_List::clear() noexcept {
    assert(is_drawn());
    renditions_.clear();
    shared_used_ = 0;
    is_empty_ = true;
}

void Call_List::begin(std::int32_t rows, std::int32_t band_height) noexcept {
    assert(is_empty() && rows > 0 && band_height > 0);
    // The factor divides numbers below 2^16 exactly: it is larger than 2^32 / band_height by less than 1.
    static_assert(largest_buffer_side < 1 << 16);
    rows_ = rows;
    band_height_ = band_height;
    band_factor_ = ((std::uint64_t{1} << 32) - 1) / static_cast<std::uint64_t>(band_height) + 1;
    assert(band_of(rows - 1) < most_bands_);
    is_empty_ = false;
}

void Call_List::hand_over() noexcept {
    std::for_each_n(queues_.get(), most_bands_, [](Call_Queue& queue) { queue.hand_over(); });
}

Row_Range Call_List::band(std::size_t number) const noexcept {
    const std::int32_t first = static_cast<std::int32_t>(number) * band_height_;
    return {first, std::min(first + band_height_, rows_) - 1};
}

std::byte* Call_List::take_shared(std::size_t bytes) {
    assert(has_shared_room(bytes));
    if (!shared_) {
        shared_ = std::make_unique_for_overwrite<std::byte[]>(most_shared_bytes);
    }
    std::byte* const taken = shared_.get() + shared_used_;
    shared_used_ += rounded(bytes);
    return taken;
}

} // namespace vorna
