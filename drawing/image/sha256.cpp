// The digest SHA-256.
#include "drawing/image/sha256.h"

#include <algorithm>
#include <array>
#include <bit>

namespace vorna::drawing {

namespace {

constexpr std::array<std::uint32_t, 64> round_constants{
    0x428A2F98, 0x71374491, 0xB5C0FBCF, 0xE9B5DBA5, 0x3956C25B, 0x59F111F1, 0x923F82A4, 0xAB1C5ED5, 0xD807AA98, 0x12835B01,
    0x243185BE, 0x550C7DC3, 0x72BE5D74, 0x80DEB1FE, 0x9BDC06A7, 0xC19BF174, 0xE49B69C1, 0xEFBE4786, 0x0FC19DC6, 0x240CA1CC,
    0x2DE92C6F, 0x4A7484AA, 0x5CB0A9DC, 0x76F988DA, 0x983E5152, 0xA831C66D, 0xB00327C8, 0xBF597FC7, 0xC6E00BF3, 0xD5A79147,
    0x06CA6351, 0x14292967, 0x27B70A85, 0x2E1B2138, 0x4D2C6DFC, 0x53380D13, 0x650A7354, 0x766A0ABB, 0x81C2C92E, 0x92722C85,
    0xA2BFE8A1, 0xA81A664B, 0xC24B8B70, 0xC76C51A3, 0xD192E819, 0xD6990624, 0xF40E3585, 0x106AA070, 0x19A4C116, 0x1E376C08,
    0x2748774C, 0x34B0BCB5, 0x391C0CB3, 0x4ED8AA4A, 0x5B9CCA4F, 0x682E6FF3, 0x748F82EE, 0x78A5636F, 0x84C87814, 0x8CC70208,
    0x90BEFFFA, 0xA4506CEB, 0xBEF9A3F7, 0xC67178F2};

} // namespace

// After FIPS 180-4.
struct Sha256::State {
    void add(const std::uint8_t* bytes, std::size_t count);
    std::string finish();

private:
    void add_block(const std::uint8_t* block);

    std::array<std::uint32_t, 8> state_{0x6A09E667, 0xBB67AE85, 0x3C6EF372, 0xA54FF53A,
                                        0x510E527F, 0x9B05688C, 0x1F83D9AB, 0x5BE0CD19};
    std::array<std::uint8_t, 64> block_{};
    std::uint64_t count_ = 0;
};

Sha256::Sha256() : state_(std::make_unique<State>()) {
}

Sha256::~Sha256() = default;

void Sha256::add(const std::uint8_t* bytes, std::size_t count) {
    state_->add(bytes, count);
}

std::string Sha256::finish() {
    return state_->finish();
}

void Sha256::State::add(const std::uint8_t* bytes, std::size_t count) {
    while (count > 0) {
        const auto filled = static_cast<std::size_t>(count_ % block_.size());
        if (filled == 0 && count >= block_.size()) {
            add_block(bytes);
            bytes += block_.size();
            count -= block_.size();
            count_ += block_.size();
            continue;
        }
        const std::size_t taken = std::min(count, block_.size() - filled);
        std::copy_n(bytes, taken, block_.begin() + static_cast<std::ptrdiff_t>(filled));
        bytes += taken;
        count -= taken;
        count_ += taken;
        if (filled + taken == block_.size()) {
            add_block(block_.data());
        }
    }
}

std::string Sha256::State::finish() {
    const std::uint64_t bits = count_ * 8;
    constexpr std::uint8_t end = 0x80, zero = 0;
    add(&end, 1);
    while (count_ % block_.size() != 56) {
        add(&zero, 1);
    }
    for (int shift = 56; shift >= 0; shift -= 8) {
        const auto byte = static_cast<std::uint8_t>(bits >> shift);
        add(&byte, 1);
    }
    std::string text;
    for (const std::uint32_t word : state_) {
        for (int shift = 28; shift >= 0; shift -= 4) {
            text += "0123456789abcdef"[word >> shift & 0xF];
        }
    }
    return text;
}

void Sha256::State::add_block(const std::uint8_t* block) {
    std::array<std::uint32_t, 64> w;
    for (std::size_t i = 0; i < 16; ++i) {
        w[i] = std::uint32_t{block[4 * i]} << 24 | std::uint32_t{block[4 * i + 1]} << 16 | std::uint32_t{block[4 * i + 2]} << 8 |
               block[4 * i + 3];
    }
    for (std::size_t i = 16; i < w.size(); ++i) {
        const std::uint32_t a = w[i - 15], b = w[i - 2];
        w[i] = w[i - 16] + w[i - 7] + (std::rotr(a, 7) ^ std::rotr(a, 18) ^ a >> 3) +
               (std::rotr(b, 17) ^ std::rotr(b, 19) ^ b >> 10);
    }
    auto [a, b, c, d, e, f, g, h] = state_;
    for (std::size_t i = 0; i < w.size(); ++i) {
        const std::uint32_t t1 =
            h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) + ((e & f) ^ (~e & g)) + round_constants[i] + w[i];
        const std::uint32_t t2 = (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + t1;
        d = c;
        c = b;
        b = a;
        a = t1 + t2;
    }
    const std::array<std::uint32_t, 8> change{a, b, c, d, e, f, g, h};
    std::transform(state_.begin(), state_.end(), change.begin(), state_.begin(),
                   [](std::uint32_t s, std::uint32_t t) { return s + t; });
}

} // namespace vorna::drawing
