// Memory in large pages.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace vorna::drawing {

inline constexpr std::size_t large_page = std::size_t{2} << 20;

// Asks the system for pages of 2 MB for the whole ones among the bytes, where it has them: a page is mapped and cleared when it
// is first written, which takes a tenth of the time for 2 MB at once. To be called before anything is written there.
inline void map_in_large_pages([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t bytes) noexcept {
#if defined(MADV_HUGEPAGE)
    const std::size_t before = (large_page - reinterpret_cast<std::uintptr_t>(memory) % large_page) % large_page;
    if (bytes >= before + large_page) {
        madvise(static_cast<char*>(memory) + before, (bytes - before) / large_page * large_page, MADV_HUGEPAGE);
    }
#endif
}

} // namespace vorna::drawing
