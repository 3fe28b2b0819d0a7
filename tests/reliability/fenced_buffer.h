// Frame buffers between pages that nobody may read or write.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/frame_buffer.h"

// The rows lie one right behind the other: the last byte of the lowest row ends at the fence behind the buffer, or the first byte
// of the highest row begins at the fence before it. A touch beyond ends the process. What is left of the pages holds guard bytes.
class Fenced_Buffer final : public Frame_Buffer {
public:
    enum class Side { front, back };

    // Throws std::bad_alloc.
    Fenced_Buffer(std::int32_t buffer_width, std::int32_t buffer_height, Buffer_Format buffer_format, Side side);
    ~Fenced_Buffer() override;

    bool is_intact() const noexcept;
    std::size_t size() const noexcept { return size_; }
    const std::uint8_t* bytes() const noexcept { return first_; }
    std::uint8_t* bytes() noexcept { return first_; }

private:
    std::uint8_t* pages_; // the fences included
    std::size_t all_, size_;
    std::uint8_t* first_;
    std::vector<std::uint8_t*> row_starts_;
};
