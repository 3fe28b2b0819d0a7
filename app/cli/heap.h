// How the command's heap is kept.
#pragma once

namespace vorna::app {

// For a program that does one thing: memory that is given back stays mapped for the next block, and all threads take theirs from
// one heap, where it is mapped already. To be called once, at the beginning.
void keep_one_heap() noexcept;

// For threads that work on their own: they do not wait for each other's allocations.
void allow_several_heaps() noexcept;

} // namespace vorna::app
