// The heap of the test program and of every library that it loads: operator new counts, and fails when it is told to.
#pragma once

#include <cstdint>

// Allocations of this thread that are not freed yet. Other threads are not looked at.
std::int64_t live_allocations() noexcept;
// Allocations of this thread since it began.
std::int64_t all_allocations() noexcept;

// While it lives, the count-th allocation of this thread from now on fails, and none after it.
class Failing_Allocation {
public:
    explicit Failing_Allocation(std::int64_t count) noexcept;
    Failing_Allocation(const Failing_Allocation&) = delete;
    Failing_Allocation& operator=(const Failing_Allocation&) = delete;
    ~Failing_Allocation();

    // Whether it has been asked for.
    bool has_failed() const noexcept;
};
