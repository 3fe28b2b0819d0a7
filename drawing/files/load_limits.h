// What reading files may cost and touch, whatever they say of themselves.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "drawing/files/helpers.h"
#include "drawing/files/interruption.h"
#include "drawing/files/usage_error.h"

namespace vorna::drawing {

// A file asks for more than there is for reading.
struct Load_Error : Usage_Error {
    using Usage_Error::Usage_Error;
};

// Shared by all that a command reads. Readers draw from it wherever memory or work grows beyond the file's own size, before they
// ask for the memory or begin the work. Several threads may take at once.
class Load_Limits {
public:
    // memory: bytes; none = 1 GiB, or 64 times what the files have where that is more. outside: whether files that models name
    // may lie outside of the models' folders. threads: that readers may use, 0 = as many as there are processors.
    explicit Load_Limits(std::optional<std::uint64_t> memory = std::nullopt, bool outside = false, unsigned threads = 1) noexcept
        : given_(memory), outside_(outside), threads_(threads > 0 ? threads : processor_count()) {}
    Load_Limits(const Load_Limits&) = delete;
    Load_Limits& operator=(const Load_Limits&) = delete;

    // A file that is going to be read gives room for what it can hold; each counts once.
    void add_file(const std::string& file, std::uint64_t size);

    // All of them; of some only what messages call them. Not while files are being added.
    const std::set<std::string>& files() const noexcept { return files_; }

    std::uint64_t memory() const noexcept { return given_.value_or(std::max(least_memory, times * size_)); }
    std::uint64_t memory_left() const noexcept;
    unsigned threads() const noexcept { return threads_; }

    // Bytes of a file whose size is known only when it has been read.
    std::uint64_t most_of_a_file() const noexcept { return given_ ? memory_left() : UINT64_MAX; }

    // file: what messages call it. Throw Load_Error that names it and the limit.
    void take_memory(const std::string& file, std::uint64_t bytes) {
        if (taken_.fetch_add(bytes, std::memory_order_relaxed) + bytes > memory()) {
            fail_memory(file, bytes);
        }
    }
    // A step is what takes about 10 ns. Throws Interrupted, too.
    void take_work(const std::string& file, std::uint64_t steps) {
        constexpr std::uint64_t between_looks = std::uint64_t{1} << 20; // 10 ms
        const std::uint64_t before = worked_.fetch_add(steps, std::memory_order_relaxed), after = before + steps;
        if (after > work()) {
            fail_work(file, steps);
        }
        if (before / between_looks != after / between_looks) {
            Interruption::check();
        }
    }
    // What is said when the memory does not suffice.
    std::string memory_refusal(const std::string& file) const;

    // Memory that is given back.
    class Loan {
    public:
        Loan() = default;
        Loan(Load_Limits& limits, const std::string& file, std::uint64_t bytes) : limits_(&limits), bytes_(bytes) {
            limits.take_memory(file, bytes);
        }
        Loan(Loan&& other) noexcept : limits_(std::exchange(other.limits_, nullptr)), bytes_(other.bytes_) {}
        Loan& operator=(Loan&& other) noexcept {
            std::swap(limits_, other.limits_);
            std::swap(bytes_, other.bytes_);
            return *this;
        }
        ~Loan() {
            if (limits_) {
                limits_->taken_ -= bytes_;
            }
        }

    private:
        Load_Limits* limits_ = nullptr;
        std::uint64_t bytes_ = 0;
    };

    // Whether a file that a model names may be read: it lies in the model's folder or below, links followed, or the user has
    // allowed others.
    bool allows(const std::string& model, const std::string& file) const;

private:
    static constexpr std::uint64_t least_memory = std::uint64_t{1} << 30, times = 64;
    static constexpr std::uint64_t bytes_per_step = 8, steps_per_byte = 64;

    std::uint64_t work() const noexcept { return memory() / bytes_per_step + steps_per_byte * size_; }
    [[noreturn]] void fail_memory(const std::string& file, std::uint64_t bytes);
    [[noreturn]] void fail_work(const std::string& file, std::uint64_t steps);

    std::optional<std::uint64_t> given_;
    bool outside_;
    unsigned threads_;
    std::set<std::string> files_;
    std::uint64_t size_ = 0; // of all files
    std::atomic<std::uint64_t> taken_ = 0, worked_ = 0;
};

// The message for a file that Load_Limits does not allow.
std::string outside_message(const std::string& file);

} // namespace vorna::drawing
