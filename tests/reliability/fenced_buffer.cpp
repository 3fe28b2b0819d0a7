// Frame buffers between fences.
#include "tests/reliability/fenced_buffer.h"

#include <algorithm>
#include <new>

#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr std::uint8_t guard = 0xA5;

} // namespace

Fenced_Buffer::Fenced_Buffer(std::int32_t buffer_width, std::int32_t buffer_height, Buffer_Format buffer_format, Side side) {
    width = buffer_width;
    height = buffer_height;
    format = buffer_format;
    bytes_per_row = width * vorna::bytes_per_pixel(format);
    size_ = static_cast<std::size_t>(bytes_per_row) * static_cast<std::size_t>(height);
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t inner = (size_ + page - 1) / page * page;
    all_ = inner + 2 * page;
    void* const pages = mmap(nullptr, all_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) {
        throw std::bad_alloc();
    }
    pages_ = static_cast<std::uint8_t*>(pages);
    mprotect(pages_ + page, inner, PROT_READ | PROT_WRITE);
    std::fill_n(pages_ + page, inner, guard);
    first_ = pages_ + page + (side == Side::back ? inner - size_ : 0);
    std::fill_n(first_, size_, std::uint8_t{0});
    for (std::int32_t row = 0; row < height; ++row) {
        row_starts_.push_back(first_ + static_cast<std::ptrdiff_t>(height - 1 - row) * bytes_per_row);
    }
    rows = row_starts_.data();
}

Fenced_Buffer::~Fenced_Buffer() {
    munmap(pages_, all_);
}

bool Fenced_Buffer::is_intact() const noexcept {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::uint8_t* const inner = pages_ + page;
    const std::uint8_t* const end = pages_ + all_ - page;
    const auto is_guard = [](std::uint8_t byte) { return byte == guard; };
    return std::all_of(inner, bytes(), is_guard) && std::all_of(bytes() + size_, end, is_guard);
}
