// Kept calls of one band of rows, on their way from the thread that keeps them to one that draws them.
#pragma once

#include <array>
#include <atomic>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace vorna {

// A ring of blocks of memory. One thread fills blocks and hands them over; meanwhile others empty them, one thread at a time.
class Call_Queue {
public:
    static constexpr std::size_t block_bytes = std::size_t{1} << 14;

    Call_Queue() = default;
    Call_Queue(const Call_Queue&) = delete;
    Call_Queue& operator=(const Call_Queue&) = delete;

    // For the filling thread.

    bool has_room(std::size_t bytes) const noexcept { return static_cast<std::size_t>(end_ - next_) >= bytes; }
    // There must be room.
    std::byte* take(std::size_t bytes) noexcept {
        assert(has_room(bytes));
        std::byte* const taken = next_;
        next_ += bytes;
        return taken;
    }
    // Begins a block. False while all blocks wait to be emptied. Throws std::bad_alloc.
    bool open();
    // Hands the open block over. Returns whether there was one.
    bool hand_over() noexcept;
    bool is_empty() const noexcept { return ready() == 0 && !is_claimed(); }

    // For all threads. What they return may have changed since.
    std::uint32_t ready() const noexcept { return handed_over_.load() - emptied_.load(); }
    bool is_claimed() const noexcept { return is_claimed_.load(); }

    // The thread that had the last claim.
    std::size_t last_thread() const noexcept { return last_thread_.load(); }

    // For an emptying thread: false when another one has claimed the queue.
    bool claim(std::size_t thread) noexcept {
        if (is_claimed_.exchange(true)) {
            return false;
        }
        last_thread_.store(thread);
        return true;
    }
    void release() noexcept { is_claimed_.store(false); }
    // Calls take(block, bytes) for each block that is ready, in order, while the thread has the claim.
    template <class Take> void empty(const Take& take) {
        for (std::uint32_t n = emptied_.load(); n != handed_over_.load(); emptied_.store(++n)) {
            take(static_cast<const std::byte*>(block(n)), used_[n % block_count]);
        }
    }

private:
    static constexpr std::uint32_t block_count = 8;
    // Of cache lines, so that filling and emptying threads do not wait for each other's.
    static constexpr std::size_t line_bytes = 64;

    std::byte* block(std::uint32_t number) const noexcept { return memory_.get() + number % block_count * block_bytes; }

    std::unique_ptr<std::byte[]> memory_;
    std::byte* next_ = nullptr; // in the open block; null = none
    std::byte* end_ = nullptr;
    std::array<std::size_t, block_count> used_{}; // bytes of each block, written before it is handed over
    alignas(line_bytes) std::atomic<std::uint32_t> handed_over_{0};
    alignas(line_bytes) std::atomic<std::uint32_t> emptied_{0};
    std::atomic<bool> is_claimed_{false};
    std::atomic<std::size_t> last_thread_{0};
};

inline bool Call_Queue::open() {
    assert(!next_);
    if (!memory_) {
        memory_ = std::make_unique_for_overwrite<std::byte[]>(block_count * block_bytes);
    }
    if (ready() == block_count) {
        return false;
    }
    next_ = block(handed_over_.load());
    end_ = next_ + block_bytes;
    return true;
}

inline bool Call_Queue::hand_over() noexcept {
    if (!next_) {
        return false;
    }
    const std::uint32_t number = handed_over_.load();
    used_[number % block_count] = static_cast<std::size_t>(next_ - block(number));
    next_ = end_ = nullptr;
    handed_over_.store(number + 1);
    return true;
}

} // namespace vorna
