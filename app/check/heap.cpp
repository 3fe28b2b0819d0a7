// The memory that this process has allocated.
#include "app/check/heap.h"

#include <algorithm>
#include <array>

#include "drawing/files/address_sanitizer.h"

#if defined(HAS_ADDRESS_SANITIZER)
#include <sanitizer/allocator_interface.h>
#elif defined(_WIN32)
#include <windows.h>
#elif defined(__GLIBC__)
#include <malloc.h>
#else
#include <cstdio>

#include <unistd.h>
#endif

namespace vorna::app::check {

std::size_t heap_in_use() {
#if defined(HAS_ADDRESS_SANITIZER)
    return __sanitizer_get_current_allocated_bytes();
#elif defined(_WIN32)
    // Run-time libraries allocate from the process heap or from their own heaps.
    std::size_t bytes = 0;
    std::array<HANDLE, 64> heaps{};
    const DWORD count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    for (DWORD i = 0; i < std::min<DWORD>(count, static_cast<DWORD>(heaps.size())); ++i) {
        PROCESS_HEAP_ENTRY entry{};
        HeapLock(heaps[i]);
        while (HeapWalk(heaps[i], &entry)) {
            if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) {
                bytes += entry.cbData;
            }
        }
        HeapUnlock(heaps[i]);
    }
    return bytes;
#elif defined(__GLIBC__)
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#else
    // The resident pages, which show only large leaks.
    unsigned long total = 0, resident = 0;
    if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%lu %lu", &total, &resident) != 2) {
            resident = 0;
        }
        std::fclose(file);
    }
    return resident * static_cast<unsigned long>(sysconf(_SC_PAGESIZE));
#endif
}

} // namespace vorna::app::check
