// Deflate with runs only.
//
// What rows have left after filtering is mostly zeros, and unfiltered rows repeat pixels. So the only distance is that to the
// pixel before, which needs no search: a piece is a list of literals and runs, read eight bytes at a time, then one block with
// codes made for it. That compresses less than a search does, at several times its speed.
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <vector>

#include "drawing/image/deflate.h"
#include "drawing/image/huffman_code.h"

namespace vorna::drawing {

namespace {

// Shorter ones cost as much as their literals.
constexpr std::size_t shortest_run = 6, longest_match = 258;

// Literals, then a run.
struct Stretch {
    std::uint32_t literals, run;
};

// Writes into a string that grows by large steps.
class Bit_Writer {
public:
    explicit Bit_Writer(std::string& bytes) : bytes_(bytes) {}

    // Room for so many bytes more, which following calls fill.
    void reserve(std::size_t count) {
        constexpr std::size_t end = 2 * sizeof waiting_; // of a block, and what is stored behind the last byte
        if (bytes_.size() - size_ < count + end) {
            bytes_.resize(2 * bytes_.size() + count + end);
        }
    }
    // Up to 32 bits, the lowest first.
    void add(std::uint32_t bits, int count) noexcept {
        waiting_ |= std::uint64_t{bits} << count_;
        count_ += count;
        if (count_ >= 32) {
            store();
            size_ += 4;
            waiting_ >>= 32;
            count_ -= 32;
        }
    }
    void fill_byte() {
        store();
        size_ += static_cast<std::size_t>(count_ + 7) / 8;
        count_ = 0;
        waiting_ = 0;
    }
    void finish() { bytes_.resize(size_); }

private:
    void store() noexcept {
        char* const place = bytes_.data() + size_;
        if constexpr (std::endian::native == std::endian::little) {
            std::memcpy(place, &waiting_, sizeof waiting_);
        } else {
            for (std::size_t i = 0; i < sizeof waiting_; ++i) {
                place[i] = static_cast<char>(waiting_ >> 8 * i & 0xFF);
            }
        }
    }

    std::string& bytes_;
    std::size_t size_ = 0; // that is filled
    std::uint64_t waiting_ = 0;
    int count_ = 0;
};

// A match's code and the bits that follow it.
struct Length_Code {
    std::uint16_t symbol = 0;
    std::uint8_t extra_bits = 0, extra = 0;
};

constexpr auto length_table = [] {
    std::array<Length_Code, longest_match + 1> table{};
    std::size_t length = 3;
    for (std::size_t code = 0; code + 1 < length_extra.size(); ++code) {
        for (std::size_t extra = 0; extra < std::size_t{1} << length_extra[code] && length < longest_match; ++extra, ++length) {
            table[length] = {static_cast<std::uint16_t>(first_length + code), length_extra[code],
                             static_cast<std::uint8_t>(extra)};
        }
    }
    table[longest_match] = {literal_codes - 1, 0, 0};
    return table;
}();

// Calls match(length) for the matches of a run, none of them shorter than 3.
template <class Match> void for_matches(std::size_t run, Match match) {
    while (run > 0) {
        std::size_t length = std::min(run, longest_match);
        if (run > length && run - length < 3) {
            length = run - 3;
        }
        match(length);
        run -= length;
    }
}

// The differences to the pixel before, of eight bytes.
std::uint64_t changes_at(const std::uint8_t* bytes, std::size_t step) noexcept {
    std::uint64_t here, before;
    std::memcpy(&here, bytes, sizeof here);
    std::memcpy(&before, bytes - step, sizeof before);
    if constexpr (std::endian::native == std::endian::big) {
        std::uint64_t turned = 0;
        for (std::size_t i = 0; i < sizeof turned; ++i) {
            turned |= static_cast<std::uint64_t>(bytes[i] ^ bytes[i - step]) << 8 * i;
        }
        return turned;
    }
    return here ^ before;
}

std::size_t run_length(std::span<const std::uint8_t> bytes, std::size_t start, std::size_t step) noexcept {
    std::size_t i = start;
    for (; i + 8 <= bytes.size(); i += 8) {
        if (const std::uint64_t changes = changes_at(&bytes[i], step); changes != 0) {
            return i - start + static_cast<std::size_t>(std::countr_zero(changes)) / 8;
        }
    }
    while (i < bytes.size() && bytes[i] == bytes[i - step]) {
        ++i;
    }
    return i - start;
}

std::vector<Stretch> stretches_of(std::span<const std::uint8_t> bytes, std::size_t step) {
    constexpr std::uint64_t mask = (std::uint64_t{1} << 8 * shortest_run) - 1;
    std::vector<Stretch> stretches;
    std::size_t start = 0, i = std::min(step, bytes.size());
    while (i + 8 <= bytes.size()) {
        // A run cannot begin before the last change of these bytes.
        if (const std::uint64_t changes = changes_at(&bytes[i], step) & mask; changes != 0) {
            i += static_cast<std::size_t>(64 - std::countl_zero(changes) + 7) / 8;
            continue;
        }
        const std::size_t run = run_length(bytes, i, step);
        stretches.push_back({static_cast<std::uint32_t>(i - start), static_cast<std::uint32_t>(run)});
        start = i += run;
    }
    stretches.push_back({static_cast<std::uint32_t>(bytes.size() - start), 0});
    return stretches;
}

// The lengths of a block's codes, with codes of their own for the lengths and for runs of zeros.
void add_lengths(Bit_Writer& bits, std::span<const std::uint8_t> literals, std::span<const std::uint8_t> distances) {
    constexpr std::size_t long_zeros = 18, length_codes = 19, most_zeros = 138, least_zeros = 11;
    std::vector<std::uint8_t> all(literals.begin(), literals.end());
    all.insert(all.end(), distances.begin(), distances.end());
    std::vector<std::pair<std::uint8_t, std::uint8_t>> symbols; // with the extra bits of long_zeros
    for (std::size_t i = 0; i < all.size();) {
        const auto end = std::find_if(all.begin() + static_cast<std::ptrdiff_t>(i), all.end(), [](auto l) { return l != 0; });
        const std::size_t zeros = std::min(static_cast<std::size_t>(end - all.begin()) - i, most_zeros);
        if (zeros >= least_zeros) {
            symbols.emplace_back(long_zeros, static_cast<std::uint8_t>(zeros - least_zeros));
            i += zeros;
        } else {
            symbols.emplace_back(all[i++], std::uint8_t{0});
        }
    }
    std::array<std::uint32_t, length_codes> counts{};
    for (const auto& [symbol, extra] : symbols) {
        ++counts[symbol];
    }
    const std::vector<std::uint8_t> lengths = code_lengths(counts, 7);
    const std::vector<std::uint16_t> codes = codes_of(lengths);
    bits.add(static_cast<std::uint32_t>(literals.size() - first_length), 5);
    bits.add(static_cast<std::uint32_t>(distances.size() - 1), 5);
    bits.add(length_codes - 4, 4);
    for (const std::uint8_t symbol : length_order) {
        bits.add(lengths[symbol], 3);
    }
    for (const auto& [symbol, extra] : symbols) {
        bits.add(codes[symbol], lengths[symbol]);
        if (symbol == long_zeros) {
            bits.add(extra, 7);
        }
    }
}

} // namespace

std::string deflate_runs(std::span<const std::uint8_t> bytes, std::size_t step, bool last, std::size_t most) {
    const std::vector<Stretch> stretches = stretches_of(bytes, step);
    std::size_t literals = 0;
    for (const Stretch& stretch : stretches) {
        literals += stretch.literals;
    }
    if (literals / 8 > most) { // a bit each at the least
        return {};
    }
    std::array<std::uint32_t, literal_codes> counts{};
    counts[end_of_block] = 1;
    const std::uint8_t* next = bytes.data();
    for (const Stretch& stretch : stretches) {
        std::for_each_n(next, stretch.literals, [&](std::uint8_t literal) { ++counts[literal]; });
        next += stretch.literals + stretch.run;
        for_matches(stretch.run, [&](std::size_t length) { ++counts[length_table[length].symbol]; });
    }
    const std::vector<std::uint8_t> lengths = code_lengths(counts, longest_code);
    std::size_t bits_of_codes = 0;
    for (std::size_t symbol = 0; symbol < counts.size(); ++symbol) {
        bits_of_codes += std::size_t{counts[symbol]} * lengths[symbol];
    }
    if (bits_of_codes / 8 > most) {
        return {};
    }
    const std::vector<std::uint16_t> codes = codes_of(lengths);
    std::vector<std::uint8_t> distances(step); // the codes up to a distance of 4 stand for one distance each
    distances.back() = 1;

    std::string result;
    Bit_Writer bits(result);
    constexpr std::size_t header = 1024; // more than the lengths of all codes take
    bits.reserve(header);
    bits.add(last ? 1 : 0, 1);
    bits.add(2, 2); // a block with codes of its own
    add_lengths(bits, lengths, distances);
    next = bytes.data();
    for (const Stretch& stretch : stretches) {
        // A code has 15 bits at the most, a match 21.
        bits.reserve(2 * stretch.literals + 3 * (stretch.run / longest_match + 2));
        std::for_each_n(next, stretch.literals, [&](std::uint8_t literal) { bits.add(codes[literal], lengths[literal]); });
        next += stretch.literals + stretch.run;
        for_matches(stretch.run, [&](std::size_t length) {
            const Length_Code& code = length_table[length];
            // The only code of a distance is a zero.
            bits.add(codes[code.symbol] | std::uint32_t{code.extra} << lengths[code.symbol],
                     lengths[code.symbol] + code.extra_bits + 1);
        });
    }
    bits.add(codes[end_of_block], lengths[end_of_block]);
    if (!last) {
        bits.add(0, 3); // an empty block of plain bytes, which ends on a byte
    }
    bits.fill_byte();
    bits.finish();
    if (!last) {
        result.append("\0\0\xFF\xFF", 4);
    }
    return result.size() <= most ? result : std::string();
}

} // namespace vorna::drawing
