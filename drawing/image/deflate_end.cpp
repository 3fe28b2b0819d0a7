// Where a deflate stream ends.
//
// Encoders of whole streams mark the last block and leave some bits of the last byte unused, but tell neither where that block
// begins nor how many bits these are. The codes must be read for both, but nothing has to be unpacked.
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <stdexcept>
#include <vector>

#include "drawing/image/deflate.h"
#include "drawing/image/huffman_code.h"

namespace vorna::drawing {

namespace {

// What a code stands for, by the next bits of the stream: how many bits it has with those that follow it, and what comes then.
struct Step {
    enum class Next : std::uint8_t { none, code, distance, end_of_block };
    std::uint8_t bits = 0;
    Next next = Next::none; // none: no code begins like this
};

// The steps for all values of so many bits.
struct Step_Table {
    std::vector<Step> steps;
    std::uint64_t mask = 0;
};

template <class Step_Of> Step_Table table_of(std::span<const std::uint8_t> lengths, Step_Of step_of) {
    int longest = 1;
    for (const std::uint8_t length : lengths) {
        longest = std::max<int>(longest, length);
    }
    Step_Table table{std::vector<Step>(std::size_t{1} << longest), (std::uint64_t{1} << longest) - 1};
    const std::vector<std::uint16_t> codes = codes_of(lengths);
    for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
        if (lengths[symbol] > 0) {
            for (std::size_t bits = codes[symbol]; bits < table.steps.size(); bits += std::size_t{1} << lengths[symbol]) {
                table.steps[bits] = step_of(symbol, lengths[symbol]);
            }
        }
    }
    return table;
}

Step literal_step(std::size_t symbol, std::uint8_t length) {
    if (symbol < end_of_block) {
        return {length, Step::Next::code};
    }
    if (symbol == end_of_block) {
        return {length, Step::Next::end_of_block};
    }
    const std::size_t code = symbol - first_length;
    return code < length_extra.size() ? Step{static_cast<std::uint8_t>(length + length_extra[code]), Step::Next::distance}
                                      : Step{};
}

Step distance_step(std::size_t symbol, std::uint8_t length) {
    return symbol < distance_extra.size() ? Step{static_cast<std::uint8_t>(length + distance_extra[symbol]), Step::Next::code}
                                          : Step{};
}

class Walk {
public:
    explicit Walk(std::span<const std::uint8_t> stream) : stream_(stream) {}

    Deflate_End run() {
        Deflate_End found;
        for (bool is_last = false; !is_last;) {
            found.last_block = place_;
            is_last = take(1) == 1;
            switch (take(2)) {
            case 0:
                skip_plain();
                break;
            case 1:
                skip_fixed();
                break;
            case 2:
                skip_own();
                break;
            default:
                fail();
            }
        }
        found.end = place_;
        return found;
    }

private:
    [[noreturn]] static void fail() { throw std::runtime_error("an image cannot be compressed: the library's data is wrong"); }

    // At least 56 of the bits ahead; zeros beyond the end.
    std::uint64_t ahead() const noexcept {
        const std::size_t byte = place_ / 8;
        std::uint64_t bits = 0;
        if (std::endian::native == std::endian::little && byte + sizeof bits <= stream_.size()) {
            std::memcpy(&bits, &stream_[byte], sizeof bits);
            return bits >> place_ % 8;
        }
        for (std::size_t i = 0; i < sizeof bits && byte + i < stream_.size(); ++i) {
            bits |= std::uint64_t{stream_[byte + i]} << 8 * i;
        }
        return bits >> place_ % 8;
    }

    void skip(std::size_t count) {
        place_ += count;
        if (place_ > 8 * stream_.size()) {
            fail();
        }
    }

    std::uint32_t take(int count) {
        const auto bits = static_cast<std::uint32_t>(ahead() & ((std::uint64_t{1} << count) - 1));
        skip(static_cast<std::size_t>(count));
        return bits;
    }

    void skip_plain() {
        skip((8 - place_ % 8) % 8);
        const std::uint32_t count = take(16);
        skip(16 + std::size_t{8} * count);
    }

    void skip_fixed() {
        std::array<std::uint8_t, 288> lengths;
        for (std::size_t i = 0; i < lengths.size(); ++i) {
            lengths[i] = i < 144 ? 8 : i < 256 ? 9 : i < 280 ? 7 : 8;
        }
        std::array<std::uint8_t, 32> distances;
        distances.fill(5);
        skip_codes(lengths, distances);
    }

    void skip_own() {
        const std::size_t literals = first_length + take(5), distances = 1 + take(5), count = 4 + take(4);
        std::array<std::uint8_t, length_order.size()> lengths{};
        for (std::size_t i = 0; i < count; ++i) {
            lengths[length_order[i]] = static_cast<std::uint8_t>(take(3));
        }
        const std::vector<std::uint16_t> codes = codes_of(lengths);
        std::vector<std::uint8_t> all;
        while (all.size() < literals + distances) {
            const std::uint64_t bits = ahead();
            std::size_t symbol = 0;
            while (symbol < lengths.size() && (lengths[symbol] == 0 || (bits & ((1U << lengths[symbol]) - 1)) != codes[symbol])) {
                ++symbol;
            }
            if (symbol == lengths.size() || (symbol == 16 && all.empty())) {
                fail();
            }
            skip(lengths[symbol]);
            if (symbol < 16) {
                all.push_back(static_cast<std::uint8_t>(symbol));
            } else {
                const std::uint8_t repeated = symbol == 16 ? all.back() : std::uint8_t{0};
                all.insert(all.end(), symbol == 16 ? 3 + take(2) : symbol == 17 ? 3 + take(3) : 11 + take(7), repeated);
            }
        }
        const std::span<const std::uint8_t> lengths_read(all);
        skip_codes(lengths_read.first(literals), lengths_read.subspan(literals, distances));
    }

    void skip_codes(std::span<const std::uint8_t> literals, std::span<const std::uint8_t> distances) {
        const Step_Table literal_table = table_of(literals, literal_step), distance_table = table_of(distances, distance_step);
        for (;;) {
            // A match has 48 bits at most.
            std::uint64_t bits = ahead();
            Step step = literal_table.steps[bits & literal_table.mask];
            std::size_t count = step.bits;
            if (step.next == Step::Next::distance) {
                bits >>= step.bits;
                step = distance_table.steps[bits & distance_table.mask];
                count += step.bits;
            }
            if (step.next == Step::Next::none) {
                fail();
            }
            skip(count);
            if (step.next == Step::Next::end_of_block) {
                return;
            }
        }
    }

    std::span<const std::uint8_t> stream_;
    std::size_t place_ = 0; // in bits
};

} // namespace

Deflate_End deflate_end(std::span<const std::uint8_t> stream) {
    return Walk(stream).run();
}

void open_stream(std::string& stream) {
    const Deflate_End found = deflate_end({reinterpret_cast<const std::uint8_t*>(stream.data()), stream.size()});
    stream[found.last_block / 8] = static_cast<char>(stream[found.last_block / 8] & ~(1 << found.last_block % 8));
    // An empty block of plain bytes: three zeros, zeros up to the next byte, and its size twice.
    stream.resize((found.end + 3 + 7) / 8);
    stream.append("\0\0\xFF\xFF", 4);
}

} // namespace vorna::drawing
