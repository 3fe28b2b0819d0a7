// The buffers that the host makes.
#include "host/frame_buffer.h"

#include <cstddef>
#include <cstring>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "vorna/raster.h"

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace {

// A cache line: rows share none, and a column has the same address modulo 8 in every row.
constexpr std::int32_t row_alignment = 64;

// An odd number of cache lines, so that the pixels of a column are distributed over all sets of a cache. With 120 or 1024 lines
// in a row they fall into a few sets, and steep lines and narrow shapes take twice as long.
constexpr std::int32_t row_bytes(std::int32_t pixel_bytes) {
    const std::int32_t cache_lines = (pixel_bytes + row_alignment - 1) / row_alignment;
    return (cache_lines | 1) * row_alignment;
}

// Memory of a buffer, zeroed. Large ones get huge pages where the system has them on request: pixels that lie apart, as those of
// steep lines, would each need an entry of their own in the processor's table of pages, and each page an interruption when it is
// touched first.
class Block {
public:
    explicit Block(std::size_t size)
        : alignment_(size < huge_page ? row_alignment : huge_page),
          bytes_(static_cast<std::uint8_t*>(::operator new (size, std::align_val_t{alignment_}))) {
#if defined(MADV_HUGEPAGE)
        if (size >= huge_page) {
            // Whole pages only, so that no more memory is taken. Where the system refuses, pages stay small.
            madvise(bytes_, size / huge_page * huge_page, MADV_HUGEPAGE);
        }
#endif
        std::memset(bytes_, 0, size);
    }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block() {
        ::operator delete (bytes_, std::align_val_t{alignment_});
    }

    std::uint8_t* bytes() const noexcept {
        return bytes_;
    }

private:
    static constexpr std::size_t huge_page = std::size_t{1} << 21;

    std::size_t alignment_;
    std::uint8_t* bytes_;
};

class Host_Frame_Buffer final : public Frame_Buffer {
public:
    Host_Frame_Buffer(std::int32_t buffer_width, std::int32_t buffer_height, Buffer_Format buffer_format)
        : row_starts_(static_cast<std::size_t>(buffer_height)) {
        width = buffer_width;
        height = buffer_height;
        format = buffer_format;
        bytes_per_row = row_bytes(width * vorna::bytes_per_pixel(format));
        block_.emplace(static_cast<std::size_t>(bytes_per_row) * static_cast<std::size_t>(height));
        std::uint8_t* row = block_->bytes();
        for (auto start = row_starts_.rbegin(); start != row_starts_.rend(); ++start) {
            *start = row;
            row += bytes_per_row;
        }
        rows = row_starts_.data();
    }

private:
    std::optional<Block> block_;
    std::vector<std::uint8_t*> row_starts_;
};

} // namespace

VT_Reference<Frame_Buffer> vorna::make_raster(std::int32_t width, std::int32_t height, Buffer_Format format) {
    if (vorna::bytes_per_pixel(format) == 0) {
        throw std::invalid_argument("a buffer cannot be made in format " + std::to_string(static_cast<std::int32_t>(format)));
    }
    return VT_Reference<Frame_Buffer>(new Host_Frame_Buffer(width, height, format));
}

VT_Reference<Frame_Buffer> vorna::make_frame_buffer(std::int32_t width, std::int32_t height, Buffer_Format format) {
    if (width < 1 || width > vorna::largest_buffer_side || height < 1 || height > vorna::largest_buffer_side) {
        throw std::invalid_argument("a buffer has 1 to 16384 columns and rows, not " + std::to_string(width) + " x " +
                                    std::to_string(height));
    }
    return vorna::make_raster(width, height, format);
}
