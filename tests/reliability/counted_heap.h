// Operator new and delete of a test program and of the libraries that it loads: they count allocations, and fail on request.
#pragma once

#include <cstdint>

// Allocations of this thread that are not freed yet. Other threads have counts of their own.
std::int64_t live_allocations() noexcept;
// Allocations of this thread since it began.
std::int64_t all_allocations() noexcept;

// During its lifetime the count-th allocation of this thread from now on fails, and none after it.
class Failing_Allocation {
public:
    explicit Failing_Allocation(std::int64_t count) noexcept;
    Failing_Allocation(const Failing_Allocation&) = delete;
    Failing_Allocation& operator=(const Failing_Allocation&) = delete;
    ~Failing_Allocation();

    // Whether that allocation was made.
    bool has_failed() const noexcept;
};

// During its lifetime some allocations fail in whichever threads make them: after the first `before`, the next `count`. One at a
// time.
class Failing_Allocations {
public:
    Failing_Allocations(std::int64_t before, std::int64_t count) noexcept;
    Failing_Allocations(const Failing_Allocations&) = delete;
    Failing_Allocations& operator=(const Failing_Allocations&) = delete;
    ~Failing_Allocations();

    // Allocations so far that have not failed, up to `before`.
    std::int64_t passed() const noexcept;

private:
    std::int64_t before_;
};
