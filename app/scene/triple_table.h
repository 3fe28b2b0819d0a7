// Numbers distinct triples of words in the order of their first appearance: how readers share vertices.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace app::scene {

class Triple_Table {
public:
    using Triple = std::array<std::uint32_t, 3>;

    std::uint32_t index_of(const Triple& triple) {
        if (keys_.size() * 2 >= slots_.size()) {
            grow();
        }
        std::uint32_t& slot = slot_of(triple);
        if (slot == empty) {
            slot = static_cast<std::uint32_t>(keys_.size());
            keys_.push_back(triple);
        }
        return slot;
    }

    const std::vector<Triple>& keys() const noexcept { return keys_; }

private:
    static constexpr std::uint32_t empty = 0xFFFFFFFF;

    static std::uint64_t hash(const Triple& triple) noexcept {
        std::uint64_t h = 0;
        for (const std::uint32_t word : triple) {
            h = (h ^ word) * 0x9E3779B97F4A7C15;
            h ^= h >> 29;
        }
        return h;
    }

    // Linear probing; at most half of the slots are ever taken.
    std::uint32_t& slot_of(const Triple& triple) noexcept {
        const std::size_t mask = slots_.size() - 1;
        std::size_t i = hash(triple) & mask;
        while (slots_[i] != empty && keys_[slots_[i]] != triple) {
            i = (i + 1) & mask;
        }
        return slots_[i];
    }

    void grow() {
        slots_.assign(slots_.empty() ? 1024 : slots_.size() * 2, empty);
        for (std::size_t i = 0; i < keys_.size(); ++i) {
            slot_of(keys_[i]) = static_cast<std::uint32_t>(i);
        }
    }

    std::vector<Triple> keys_;
    std::vector<std::uint32_t> slots_;
};

} // namespace app::scene
