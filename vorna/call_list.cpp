// Calls of drawing functions that are kept with all that they read.
#include "vorna/call_list.h"

#include <algorithm>
#include <cassert>

namespace vorna {

namespace {

bool have_same_values(const VT_Rendition& a, const VT_Rendition& b) noexcept {
    return a.line == b.line && a.face == b.face && a.clip == b.clip && a.marker == b.marker && a.window == b.window &&
           a.drawing_flags == b.drawing_flags;
}

std::int16_t row_of_16_bits(std::int32_t row) noexcept {
    return static_cast<std::int16_t>(std::clamp<std::int32_t>(row, INT16_MIN, INT16_MAX));
}

} // namespace

void Call_List::clear() noexcept {
    used_ = 0;
    calls_.clear();
    rows_.clear();
    renditions_.clear();
    std::fill(std::begin(known_), std::end(known_), Known_Rendition{});
}

void* Call_List::take(std::size_t bytes) {
    if (!memory_) {
        calls_.reserve(most_calls);
        rows_.reserve(most_calls);
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

void Call_List::add(Row_Range rows, Draw draws, const VT_Rendition& kept_rendition, const void* arguments) noexcept {
    assert(calls_.size() < most_calls);
    rows_.push_back({row_of_16_bits(rows.first), row_of_16_bits(rows.last)});
    calls_.push_back({draws, &kept_rendition, arguments});
}

void Call_List::draw(VT_Renderer_Data& renderer, Row_Range rows) const {
    // The calls of a block are chosen without a branch, which no processor would predict.
    constexpr std::size_t block = 256;
    std::uint32_t chosen[block];
    for (std::size_t first = 0; first < calls_.size(); first += block) {
        const std::size_t end = std::min(first + block, calls_.size());
        std::size_t count = 0;
        for (std::size_t i = first; i < end; ++i) {
            chosen[count] = static_cast<std::uint32_t>(i);
            count += std::size_t{rows_[i].last >= rows.first && rows_[i].first <= rows.last};
        }
        for (std::size_t k = 0; k < count; ++k) {
            const Call& call = calls_[chosen[k]];
            call.draw(renderer, *call.rendition, call.arguments);
        }
    }
}

} // namespace vorna
