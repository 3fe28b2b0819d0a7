// Calls of drawing functions that are kept with all that they read, so that they can be drawn later, by several renderers.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "host/renderer_data.h"
#include "host/rendition.h"
#include "vorna/call_queue.h"
#include "vorna/kept_renditions.h"

namespace vorna {

// Rows of the buffers, both inclusive; none when the first is greater.
struct Row_Range {
    std::int32_t first, last;
};

// The head of a call in a block. The arguments follow, and the lists that only this call refers to.
struct Kept_Call {
    // Draws the call with one of the renderers.
    void (*draw)(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const void* arguments);
    const VT_Rendition* rendition;
    std::size_t bytes; // with the head

    const void* arguments() const noexcept { return this + 1; }
};

// Calls by the bands of rows that they touch, in each band in the order in which they were added. One thread adds calls, others
// may draw those that have been handed over.
class Call_List {
public:
    explicit Call_List(std::size_t most_bands) : queues_(new Call_Queue[most_bands]), most_bands_(most_bands) {}

    static constexpr std::size_t alignment = alignof(std::max_align_t) < 8 ? alignof(std::max_align_t) : 8;
    static constexpr std::size_t rounded(std::size_t bytes) noexcept { return (bytes + alignment - 1) / alignment * alignment; }

    // Lists of more bytes are stored once for all bands, others in each of them.
    static constexpr std::size_t most_bytes_of_band = 1024;
    // Bytes of lists that are stored once.
    static constexpr std::size_t most_shared_bytes = std::size_t{1} << 20;
    // Larger ones are not worth a copy.
    static constexpr std::size_t most_bytes_of_call = most_shared_bytes / 4;

    // Not begun since the last clear().
    bool is_empty() const noexcept { return is_empty_; }
    // All that was handed over has been drawn.
    bool is_drawn() const noexcept;
    // Forgets renditions and shared lists; all calls must have been drawn.
    void clear() noexcept;

    // Begins a list of calls on so many rows, cut into bands of band_height each, at most as many as the list was made for. The
    // list must be empty.
    void begin(std::int32_t rows, std::int32_t band_height) noexcept;
    // Hands over the calls of all bands.
    void hand_over() noexcept;
    Row_Range band(std::size_t number) const noexcept;
    // The band of the row, or the one next to it.
    std::size_t band_of(std::int32_t row) const noexcept {
        return static_cast<std::size_t>(static_cast<std::uint64_t>(std::clamp(row, 0, rows_ - 1)) * band_factor_ >> 32);
    }
    Call_Queue& queue(std::size_t band) noexcept { return queues_[band]; }

    Kept_Renditions& renditions() noexcept { return renditions_; }

    bool has_shared_room(std::size_t bytes) const noexcept { return shared_used_ + bytes <= most_shared_bytes; }
    // There must be room. Throws std::bad_alloc.
    std::byte* take_shared(std::size_t bytes);

private:
    const std::unique_ptr<Call_Queue[]> queues_; // by band
    const std::size_t most_bands_;
    std::int32_t rows_ = 0, band_height_ = 1;
    std::uint64_t band_factor_ = 0; // 2^32 / band_height_, rounded up
    bool is_empty_ = true;
    Kept_Renditions renditions_;
    std::unique_ptr<std::byte[]> shared_;
    std::size_t shared_used_ = 0;
};

} // namespace vorna
