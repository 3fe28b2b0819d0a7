// The memory that this process has allocated.
#pragma once

#include <cstddef>

namespace vorna::app::check {

// Bytes that are allocated and not freed, as exactly as the system reports them.
std::size_t heap_in_use();

} // namespace vorna::app::check
