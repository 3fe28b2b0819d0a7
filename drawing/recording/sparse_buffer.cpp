// Buffers of which few rows are drawn.
#include "drawing/recording/sparse_buffer.h"

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

namespace vorna::drawing::recording {

namespace {

class Sparse_Buffer final : public Frame_Buffer {
public:
    Sparse_Buffer(std::int32_t columns, std::int32_t row_count, Buffer_Format of_format) {
        constexpr std::size_t alignment = 64;
        width = columns;
        height = row_count;
        format = of_format;
        const auto pixels = static_cast<std::size_t>(columns) * static_cast<std::size_t>(bytes_per_pixel(format));
        const std::size_t row_bytes = (pixels + alignment - 1) / alignment * alignment;
        bytes_per_row = static_cast<std::int32_t>(row_bytes);
        std::size_t room = row_bytes * static_cast<std::size_t>(row_count) + alignment;
        bytes_.reset(std::calloc(room, 1)); // unlike operator new and memset it leaves fresh pages untouched
        void* first = bytes_.get();
        if (!first || !std::align(alignment, room - alignment, first, room)) {
            throw std::bad_alloc();
        }
        row_starts_.resize(static_cast<std::size_t>(row_count));
        auto* row = static_cast<std::uint8_t*>(first);
        for (auto start = row_starts_.rbegin(); start != row_starts_.rend(); ++start, row += row_bytes) {
            *start = row;
        }
        rows = row_starts_.data();
    }

private:
    struct Free {
        void operator()(void* bytes) const noexcept { std::free(bytes); }
    };

    std::unique_ptr<void, Free> bytes_;
    std::vector<std::uint8_t*> row_starts_;
};

void create_sparse(void*, std::int32_t width, std::int32_t height, const Buffer_Format* format,
                   VT_Reference<Frame_Buffer>& buffer) {
    buffer = nullptr;
    const auto is_possible = [](std::int32_t size) { return size >= 1 && size <= largest_buffer_side; };
    if (is_possible(width) && is_possible(height) && bytes_per_pixel(*format) != 0) {
        buffer = VT_Reference<Frame_Buffer>(new Sparse_Buffer(width, height, *format));
    }
}

} // namespace

VT_Buffer_Creation sparse_buffer_creation() noexcept {
    return {create_sparse, nullptr};
}

} // namespace vorna::drawing::recording
