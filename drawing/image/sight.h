// Pictures in which nothing is to be seen.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace vorna::drawing {

// Whether anything is seen: pixels of a file that differ from those where nothing is drawn.
class Sight {
public:
    // sample: of a pixel where nothing is drawn.
    explicit Sight(std::vector<std::uint8_t> sample) : sample_(std::move(sample)) {}

    bool is_empty() const noexcept { return !seen_; }
    // Some pixels in a row, 1 or more. Several threads may look at once.
    void look_at(const std::uint8_t* samples, std::size_t pixels) {
        // All pixels are the same when each is like the one before it.
        const std::size_t size = sample_.size();
        if (!seen_ &&
            (std::memcmp(samples, sample_.data(), size) != 0 || std::memcmp(samples, samples + size, (pixels - 1) * size) != 0)) {
            seen_ = true;
        }
    }

private:
    std::vector<std::uint8_t> sample_;
    std::atomic<bool> seen_{false};
};

inline std::string nothing_seen(const std::string& input) {
    return input + ": nothing to be seen: no pixel differs from the background; --allow-empty writes such pictures";
}

} // namespace vorna::drawing
