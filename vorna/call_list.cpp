// Calls of drawing functions that are kept with all that they read.
#include "vorna/call_list.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace vorna {

namespace {

bool have_same_values(const VT_Rendition& a, const VT_Rendition& b) noexcept {
    return a.line == b.line && a.face == b.face && a.clip == b.clip && a.marker == b.marker && a.window == b.window &&
           a.drawing_flags == b.drawing_flags;
}

// Asks for what is soon read: the line of the address, and the one before it, where the lists of arguments lie.
inline void fetch_early([[maybe_unused]] const void* address) noexcept {
#if defined(__GNUC__)
    __builtin_prefetch(address);
    __builtin_prefetch(static_cast<const std::byte*>(address) - 64);
#endif
}

} // namespace

void Call_List::clear() noexcept {
    used_ = 0;
    calls_.clear();
    for (std::vector<std::uint32_t>& band : bands_) {
        band.clear();
    }
    renditions_.clear();
    std::fill(std::begin(known_), std::end(known_), Known_Rendition{});
}

void* Call_List::take(std::size_t bytes) {
    if (!memory_) {
        calls_.reserve(most_calls);
        memory_ = std::make_unique_for_overwrite<std::byte[]>(most_bytes);
    }
    assert(used_ + bytes <= most_bytes);
    void* const taken = memory_.get() + used_;
    used_ += rounded(bytes);
    return taken;
}

const VT_Rendition& Call_List::kept(const VT_Rendition& rendition) {
    // Applications draw with one rendition that they change, or with a few by turns.
    Known_Rendition& known = known_[reinterpret_cast<std::uintptr_t>(&rendition) / sizeof(VT_Rendition) % std::size(known_)];
    if (known.given != &rendition || !have_same_values(*known.kept, rendition)) {
        const VT_Reference<const VT_Rendition> copy(new VT_Rendition(rendition));
        renditions_.push_back(copy);
        known = {&rendition, copy.get()};
    }
    return *known.kept;
}

void Call_List::set_bands(std::int32_t rows, std::int32_t band_height) {
    assert(is_empty() && rows > 0 && band_height > 0);
    if (rows == height_ && band_height == band_height_) {
        return;
    }
    std::vector<std::vector<std::uint32_t>> bands(static_cast<std::size_t>((rows - 1) / band_height + 1));
    for (std::vector<std::uint32_t>& band : bands) {
        band.reserve(most_calls);
    }
    bands_ = std::move(bands);
    height_ = rows;
    band_height_ = band_height;
}

Row_Range Call_List::band(std::size_t number) const noexcept {
    const std::int32_t first = static_cast<std::int32_t>(number) * band_height_;
    return {first, std::min(first + band_height_, height_) - 1};
}

void Call_List::add(Row_Range rows, Draw draws, const VT_Rendition& kept_rendition, const void* arguments) noexcept {
    assert(calls_.size() < most_calls && rows.first < height_ && rows.last >= 0);
    const auto number = static_cast<std::uint32_t>(calls_.size());
    const auto last = static_cast<std::size_t>(std::min(rows.last, height_ - 1) / band_height_);
    for (auto band = static_cast<std::size_t>(std::max(rows.first, 0) / band_height_); band <= last; ++band) {
        bands_[band].push_back(number);
    }
    calls_.push_back({draws, &kept_rendition, arguments});
}

void Call_List::draw(VT_Renderer_Data& renderer, std::size_t band) const {
    const std::vector<std::uint32_t>& numbers = bands_[band];
    for (std::size_t k = 0; k < numbers.size(); ++k) {
        // The calls of a band lie apart in memory.
        constexpr std::size_t calls_ahead = 8;
        if (k + 2 * calls_ahead < numbers.size()) {
            fetch_early(&calls_[numbers[k + 2 * calls_ahead]]);
            fetch_early(calls_[numbers[k + calls_ahead]].arguments);
        }
        const Call& call = calls_[numbers[k]];
        call.draw(renderer, *call.rendition, call.arguments);
    }
}

} // namespace vorna
