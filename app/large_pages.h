// Memory of the command: see large_pages.cpp.
#pragma once

namespace vorna::app {

// Makes the allocator keep memory that is given back, which spares the next block the time to map pages. To be called once, at
// the beginning.
void keep_freed_memory() noexcept;

} // namespace vorna::app
