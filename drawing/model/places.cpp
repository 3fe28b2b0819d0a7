// Points at equal places.
//
// Points are sorted by a part of their hash, so that each range of hashes has a table of its own, which stays in the nearest
// caches and belongs to one thread.
#include "drawing/model/places.h"

#include <array>
#include <bit>
#include <memory>
#include <utility>

#include "drawing/files/hash_seed.h"
#include "drawing/model/tuple_table.h"

namespace vorna::drawing::model {
namespace {

struct Entry {
    std::array<std::uint32_t, 3> words;
    std::uint32_t point;
};

std::uint64_t hash_of(const std::array<std::uint32_t, 3>& words, std::uint64_t seed) noexcept {
    std::uint64_t hash = (seed ^ (std::uint64_t{words[0]} << 32 | words[1])) * 0x9E3779B97F4A7C15;
    hash = (hash ^ hash >> 32 ^ words[2]) * 0x9E3779B97F4A7C15;
    return hash ^ hash >> 29;
}

// The array's own comparison calls memcmp, which takes longer.
bool are_equal(const std::array<std::uint32_t, 3>& a, const std::array<std::uint32_t, 3>& b) noexcept {
    return ((a[0] ^ b[0]) | (a[1] ^ b[1]) | (a[2] ^ b[2])) == 0;
}

// Gives by point the first point at its place. Entries are in the order of their points.
class Range_Table {
public:
    void find(std::span<const Entry> entries, std::uint64_t seed, std::vector<std::uint32_t>& firsts) {
        const std::size_t size = std::bit_ceil(2 * entries.size() + 1), mask = size - 1;
        slots_.assign(size, empty);
        for (std::uint32_t i = 0; i < entries.size(); ++i) {
            const Entry& entry = entries[i];
            std::size_t place = hash_of(entry.words, seed) & mask;
            while (slots_[place] != empty && !are_equal(entries[slots_[place]].words, entry.words)) {
                place = (place + 1) & mask;
            }
            if (slots_[place] == empty) {
                slots_[place] = i;
            }
            firsts[entry.point] = entries[slots_[place]].point;
        }
    }

private:
    static constexpr std::uint32_t empty = 0xFFFFFFFF;
    std::vector<std::uint32_t> slots_;
};

// counts: how many elements each block of a list has for each range, block after block. They become the places where the block's
// elements go when the list is sorted by ranges. Gives where the ranges begin and where the last one ends.
std::vector<std::uint32_t> starts_of_ranges(std::span<std::uint32_t> counts, std::size_t ranges) {
    std::vector<std::uint32_t> starts(ranges + 1);
    std::uint32_t total = 0;
    for (std::size_t range = 0; range < ranges; ++range) {
        starts[range] = total;
        for (std::size_t i = range; i < counts.size(); i += ranges) {
            total += std::exchange(counts[i], total);
        }
    }
    starts[ranges] = total;
    return starts;
}

} // namespace

Places find_places(std::span<const VT_Vector> points, unsigned threads) {
    constexpr std::size_t least_block = std::size_t{1} << 14, points_of_range = 8192, most_ranges = 256;
    const std::uint64_t seed = hash_seed();
    const std::size_t blocks = part_count(points.size(), threads, least_block);
    const std::size_t ranges = std::bit_ceil(std::clamp<std::size_t>(points.size() / points_of_range, 1, most_ranges));
    const auto for_block = [&](std::size_t block, const auto& visit) {
        const std::size_t end = points.size() * (block + 1) / blocks;
        for (std::size_t i = points.size() * block / blocks; i < end; ++i) {
            const auto words = words_of(points[i]);
            visit((hash_of(words, seed) >> 40) & (ranges - 1), Entry{words, static_cast<std::uint32_t>(i)});
        }
    };
    // By range and block: how many there are, then where they go.
    std::vector<std::uint32_t> places(blocks * ranges);
    share_tasks(blocks, threads, [&](std::size_t block, std::size_t) {
        for_block(block, [&](std::size_t range, const Entry&) { ++places[block * ranges + range]; });
    });
    const std::vector<std::uint32_t> range_starts = starts_of_ranges(places, ranges);
    const auto entries = std::make_unique_for_overwrite<Entry[]>(points.size());
    share_tasks(blocks, threads, [&](std::size_t block, std::size_t) {
        for_block(block, [&](std::size_t range, const Entry& entry) { entries[places[block * ranges + range]++] = entry; });
    });
    Places result;
    reserve_in_large_pages(result.numbers, points.size());
    result.numbers.resize(points.size());
    std::vector<Range_Table> tables(std::max(threads, 1U));
    share_tasks(ranges, threads, [&](std::size_t range, std::size_t thread) {
        tables[thread].find({&entries[range_starts[range]], range_starts[range + 1] - range_starts[range]}, seed, result.numbers);
    });
    // The first point of a place comes before the others.
    for (std::size_t i = 0; i < points.size(); ++i) {
        const std::uint32_t first = result.numbers[i];
        if (first == i) {
            result.numbers[i] = static_cast<std::uint32_t>(result.firsts.size());
            result.firsts.push_back(first);
        } else {
            result.numbers[i] = result.numbers[first];
        }
    }
    return result;
}

} // namespace vorna::drawing::model
