// The command's operator new. Large blocks lie in large pages. Only the command does so: a library leaves the choice to its
// program. Sanitizers have an operator new of their own, and other systems keep the standard library's.
#include "drawing/files/large_pages.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#include "drawing/files/address_sanitizer.h"

#if defined(__linux__) && defined(__GLIBC__) && !defined(HAS_ADDRESS_SANITIZER) && !defined(HAS_THREAD_SANITIZER)

namespace {

using vorna::drawing::large_page;

// At the beginning of a page, so that the block has as many whole ones as possible. Without such pages it is a block like others.
void* large_block(std::size_t size, std::size_t alignment) noexcept {
    void* const block = std::aligned_alloc(std::max(large_page, alignment), size);
    if (block) {
        vorna::drawing::map_in_large_pages(block, size);
    }
    return block;
}

template <class Allocate> void* allocated(std::size_t size, std::size_t alignment, const Allocate& allocate) {
    for (;;) {
        if (void* const block = size >= large_page ? large_block(size, alignment) : allocate()) {
            return block;
        }
        const std::new_handler handler = std::get_new_handler();
        if (!handler) {
            throw std::bad_alloc();
        }
        handler();
    }
}

} // namespace

// operator delete is the standard library's, which calls std::free for both.
void* operator new(std::size_t size) {
    return allocated(size, 1, [size] { return std::malloc(std::max<std::size_t>(size, 1)); });
}

void* operator new(std::size_t size, std::align_val_t alignment) {
    const auto unit = static_cast<std::size_t>(alignment);
    return allocated(size, unit, [=] { return std::aligned_alloc(unit, (size + unit - 1) / unit * unit); });
}

#endif
