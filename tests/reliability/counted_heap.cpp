// Every form of operator new and delete. Libraries and modules that are loaded at run time use these of the program.
#include "tests/reliability/counted_heap.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

thread_local std::int64_t live = 0;
thread_local std::int64_t all = 0;
thread_local std::int64_t until_failure = 0; // 0 = none is to fail

// Of all threads. Relaxed, so that counting does not order what threads do and hide a race.
std::atomic<std::int64_t> passes_left = 0, failures_left = 0;

bool fails() noexcept {
    constexpr auto relaxed = std::memory_order_relaxed;
    if (failures_left.load(relaxed) > 0 && passes_left.fetch_sub(1, relaxed) <= 0) {
        return failures_left.fetch_sub(1, relaxed) > 0;
    }
    return until_failure > 0 && --until_failure == 0;
}

void* counted(void* block) noexcept {
    if (block) {
        ++live;
        ++all;
    }
    return block;
}

void* allocate(std::size_t size) noexcept {
    return fails() ? nullptr : counted(std::malloc(size > 0 ? size : 1));
}

void* allocate(std::size_t size, std::align_val_t alignment) noexcept {
    const auto unit = static_cast<std::size_t>(alignment);
    return fails() ? nullptr : counted(std::aligned_alloc(unit, (size + unit) / unit * unit));
}

// As the standard's operator new, but for the loop: the handler throws.
void* or_throw(void* block) {
    if (!block) {
        if (const std::new_handler handler = std::get_new_handler()) {
            handler();
        }
        throw std::bad_alloc();
    }
    return block;
}

void give_back(void* block) noexcept {
    if (block) {
        --live;
        std::free(block);
    }
}

} // namespace

std::int64_t live_allocations() noexcept {
    return live;
}

std::int64_t all_allocations() noexcept {
    return all;
}

Failing_Allocation::Failing_Allocation(std::int64_t count) noexcept {
    until_failure = count;
}

Failing_Allocation::~Failing_Allocation() {
    until_failure = 0;
}

bool Failing_Allocation::has_failed() const noexcept {
    return until_failure == 0;
}

Failing_Allocations::Failing_Allocations(std::int64_t before, std::int64_t count) noexcept : before_(before) {
    passes_left = before;
    failures_left = count;
}

Failing_Allocations::~Failing_Allocations() {
    failures_left = 0;
}

std::int64_t Failing_Allocations::passed() const noexcept {
    return before_ - std::max<std::int64_t>(passes_left, 0);
}

void* operator new(std::size_t size) {
    return or_throw(allocate(size));
}
void* operator new[](std::size_t size) {
    return or_throw(allocate(size));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return or_throw(allocate(size, alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return or_throw(allocate(size, alignment));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return allocate(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return allocate(size, alignment);
}

void operator delete(void* block) noexcept {
    give_back(block);
}
void operator delete[](void* block) noexcept {
    give_back(block);
}
void operator delete(void* block, std::size_t) noexcept {
    give_back(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    give_back(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    give_back(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
    give_back(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    give_back(block);
}
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
    give_back(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    give_back(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    give_back(block);
}
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept {
    give_back(block);
}
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept {
    give_back(block);
}
