// How much memory this process has allocated.
#pragma once

#include <cstddef>

namespace vorna::app::check {

// Bytes that are allocated and not yet freed, as near as the system tells.
std::size_t heap_in_use();

} // namespace vorna::app::check
