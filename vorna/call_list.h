// Calls of drawing functions that are kept with all that they read, so that they can be drawn later, by several renderers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <vector>

#include "host/renderer_data.h"
#include "host/rendition.h"

namespace vorna {

// Rows of the buffers, both inclusive; none when the first is greater.
struct Row_Range {
    std::int32_t first, last;
};

// In the order in which they were added. Its memory is allocated once.
class Call_List {
public:
    // Draws a call with one of the renderers.
    using Draw = void (*)(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const void* arguments);

    // Bytes of arguments that a list holds, and calls. Not more, since every band reads some of them, which should still lie in a
    // cache.
    static constexpr std::size_t most_bytes = std::size_t{1} << 20;
    static constexpr std::size_t most_calls = std::size_t{1} << 14;
    // Larger arguments are not worth a copy.
    static constexpr std::size_t most_bytes_of_call = most_bytes / 4;

    bool is_empty() const noexcept { return calls_.empty(); }
    std::size_t size() const noexcept { return calls_.size(); }
    bool has_room(std::size_t bytes, std::size_t calls) const noexcept {
        return used_ + bytes <= most_bytes && calls_.size() + calls <= most_calls;
    }
    void clear() noexcept;

    // Memory for arguments, aligned for all of them, and for a call; there must be room. Throws std::bad_alloc.
    void* take(std::size_t bytes);
    static constexpr std::size_t rounded(std::size_t bytes) noexcept {
        return (bytes + alignof(std::max_align_t) - 1) / alignof(std::max_align_t) * alignof(std::max_align_t);
    }

    // Cuts the rows into bands of band_height each. The list must be empty. Throws std::bad_alloc.
    void set_bands(std::int32_t rows, std::int32_t band_height);
    std::size_t band_count() const noexcept { return bands_.size(); }
    Row_Range band(std::size_t number) const noexcept;

    // A copy of the rendition, one for all calls as long as it keeps its values. Throws std::bad_alloc.
    const VT_Rendition& kept(const VT_Rendition& rendition);

    // rows: touch a band. There must be room.
    void add(Row_Range rows, Draw draws, const VT_Rendition& kept_rendition, const void* arguments) noexcept;

    // Draws the calls that touch the band.
    void draw(VT_Renderer_Data& renderer, std::size_t band) const;

private:
    struct Call {
        Draw draw;
        const VT_Rendition* rendition;
        const void* arguments;
    };
    struct Known_Rendition {
        const VT_Rendition* given = nullptr;
        const VT_Rendition* kept = nullptr;
    };

    std::unique_ptr<std::byte[]> memory_;
    std::size_t used_ = 0;
    std::vector<Call> calls_;
    std::int32_t height_ = 0, band_height_ = 1;
    std::vector<std::vector<std::uint32_t>> bands_; // the numbers of their calls; with room for all
    std::vector<VT_Reference<const VT_Rendition>> renditions_;
    Known_Rendition known_[8];
};

} // namespace vorna
