// Numbers distinct tuples of words in the order of their first appearance: how readers share vertices.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "drawing/files/hash_seed.h"
#include "host/geometry.h"

namespace vorna::drawing::model {

template <std::size_t words> class Tuple_Table {
public:
    using Tuple = std::array<std::uint32_t, words>;

    std::uint32_t index_of(const Tuple& tuple) {
        if (keys_.size() * 2 >= slots_.size()) {
            grow();
        }
        return index_at(slot_of(tuple), tuple);
    }

    // Numbers of many tuples; faster than one after the other, because memory is fetched ahead.
    void append_indices(std::span<const Tuple> tuples, std::vector<std::uint32_t>& indices) {
        constexpr std::size_t ahead = 32; // tuples
        for (; !tuples.empty(); tuples = tuples.subspan(std::min(ahead, tuples.size()))) {
            while ((keys_.size() + ahead) * 2 >= slots_.size()) {
                grow();
            }
            const auto block = tuples.first(std::min(ahead, tuples.size()));
            std::array<std::size_t, ahead> places;
            const std::size_t mask = slots_.size() - 1;
            for (std::size_t i = 0; i < block.size(); ++i) {
                places[i] = hash(block[i]) & mask;
                fetch_ahead(&slots_[places[i]]);
            }
            for (std::size_t i = 0; i < block.size(); ++i) {
                if (const std::uint32_t key = slots_[places[i]]; key != empty) {
                    fetch_ahead(&keys_[key]);
                }
            }
            for (std::size_t i = 0; i < block.size(); ++i) {
                indices.push_back(index_at(slot_from(places[i], block[i]), block[i]));
            }
        }
    }

    // Makes room for so many tuples at once.
    void reserve(std::size_t count) {
        keys_.reserve(count);
        resize(std::max<std::size_t>(std::bit_ceil(2 * count + 1), slots_.size()));
    }

    const std::vector<Tuple>& keys() const noexcept { return keys_; }

private:
    static constexpr std::uint32_t empty = 0xFFFFFFFF;

    std::uint64_t hash(const Tuple& tuple) const noexcept {
        std::uint64_t h = seed_;
        for (const std::uint32_t word : tuple) {
            h = (h ^ word) * 0x9E3779B97F4A7C15;
            h ^= h >> 29;
        }
        return h;
    }

    // The array's own comparison calls memcmp, which takes longer for so few words.
    static bool are_equal(const Tuple& a, const Tuple& b) noexcept {
        std::uint32_t difference = 0;
        for (std::size_t i = 0; i < words; ++i) {
            difference |= a[i] ^ b[i];
        }
        return difference == 0;
    }

    static void fetch_ahead([[maybe_unused]] const void* place) noexcept {
#if defined(__GNUC__)
        __builtin_prefetch(place);
#endif
    }

    std::uint32_t index_at(std::uint32_t& slot, const Tuple& tuple) {
        if (slot == empty) {
            slot = static_cast<std::uint32_t>(keys_.size());
            keys_.push_back(tuple);
        }
        return slot;
    }

    // Linear probing; at most half of the slots are ever taken.
    std::uint32_t& slot_from(std::size_t place, const Tuple& tuple) noexcept {
        const std::size_t mask = slots_.size() - 1;
        while (slots_[place] != empty && !are_equal(keys_[slots_[place]], tuple)) {
            place = (place + 1) & mask;
        }
        return slots_[place];
    }

    std::uint32_t& slot_of(const Tuple& tuple) noexcept {
        return slot_from(hash(tuple) & (slots_.size() - 1), tuple);
    }

    void grow() {
        resize(slots_.empty() ? 1024 : slots_.size() * 2);
    }

    void resize(std::size_t count) {
        slots_.assign(count, empty);
        for (std::size_t i = 0; i < keys_.size(); ++i) {
            slot_of(keys_[i]) = static_cast<std::uint32_t>(i);
        }
    }

    std::uint64_t seed_ = hash_seed();
    std::vector<Tuple> keys_;
    std::vector<std::uint32_t> slots_;
};

using Triple_Table = Tuple_Table<3>;

// A place as words. Adding zero turns -0 into 0, so that both are the same place.
inline Triple_Table::Tuple words_of(const VT_Vector& place) noexcept {
    return {std::bit_cast<std::uint32_t>(place.x + 0.0F), std::bit_cast<std::uint32_t>(place.y + 0.0F),
            std::bit_cast<std::uint32_t>(place.z + 0.0F)};
}

} // namespace vorna::drawing::model
