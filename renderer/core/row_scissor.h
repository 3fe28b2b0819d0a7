// Rows of the buffers that may be drawn, of a renderer that shares its buffers with others.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "host/frame_buffer.h"
#include "host/geometry.h"
#include "renderer/core/pixel_target.h"

namespace krb {

// Rows of a buffer. Those that may not be drawn all lead to one row apart, so that what is drawn there is never seen, and members
// that know nothing of the scissor keep to it.
class Scissored_Rows {
public:
    // Throws std::bad_alloc, and is unchanged then. first <= end, both in the buffer.
    void set(const Frame_Buffer& buffer, std::int32_t first, std::int32_t end);
    void clear() noexcept;
    std::uint8_t* const* data() const noexcept { return rows_.data(); }

private:
    std::vector<std::uint8_t*> rows_;
    std::unique_ptr<std::uint8_t[]> apart_;
    std::uint8_t* apart_row_ = nullptr;       // in it, aligned
    std::uint8_t* const* own_rows_ = nullptr; // of the buffer
    std::int32_t first_ = 0, end_ = 0;
};

class Row_Scissor {
public:
    // Limits the target of both buffers to rows first to last of the window, as far as they lie in it. depth: may be null. Throws
    // std::bad_alloc; the target is unchanged then.
    void limit(Pixel_Target& target, const Frame_Buffer& color, const Frame_Buffer* depth, std::int32_t first, std::int32_t last);
    // For other buffers.
    void clear() noexcept;

private:
    Scissored_Rows color_, depth_;
};

} // namespace krb
