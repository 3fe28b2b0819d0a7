// How the command's heap is kept.
#include "app/cli/heap.h"

#include <cstdlib>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace vorna::app {

#if defined(__GLIBC__)

void keep_one_heap() noexcept {
    mallopt(M_MMAP_THRESHOLD, 32 << 20); // the most that it takes
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    mallopt(M_TOP_PAD, 16 << 20);
    mallopt(M_ARENA_MAX, 1);
}

void allow_several_heaps() noexcept {
    mallopt(M_ARENA_MAX, 256);
}

#else

void keep_one_heap() noexcept {
}

void allow_several_heaps() noexcept {
}

#endif

} // namespace vorna::app
