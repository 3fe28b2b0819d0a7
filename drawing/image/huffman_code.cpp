// The codes of deflate's Huffman trees.
#include "drawing/image/huffman_code.h"

#include <algorithm>
#include <functional>
#include <queue>
#include <utility>

namespace vorna::drawing {

namespace {

// The depth of each leaf in a tree of least weight.
std::vector<int> depths_of(std::span<const std::uint32_t> weights) {
    using Node = std::pair<std::uint64_t, std::size_t>; // weight, number; equal weights go by number
    std::priority_queue<Node, std::vector<Node>, std::greater<>> open;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        if (weights[i] > 0) {
            open.emplace(weights[i], i);
        }
    }
    std::vector<int> depths(weights.size());
    if (open.size() == 1) {
        depths[open.top().second] = 1;
        return depths;
    }
    std::vector<std::size_t> parents(2 * weights.size());
    std::size_t next = weights.size();
    while (open.size() > 1) {
        const auto [light, first] = open.top();
        open.pop();
        const auto [heavy, second] = open.top();
        open.pop();
        parents[first] = parents[second] = next;
        open.emplace(light + heavy, next++);
    }
    // Parents have higher numbers than their children.
    std::vector<int> all(next);
    for (std::size_t i = next; i-- > 0;) {
        if (parents[i] != 0) {
            all[i] = all[parents[i]] + 1;
        }
    }
    std::copy_n(all.begin(), depths.size(), depths.begin());
    return depths;
}

} // namespace

// Weights that differ less make a tree that is less deep.
std::vector<std::uint8_t> code_lengths(std::span<const std::uint32_t> counts, int longest) {
    std::vector<std::uint32_t> weights(counts.begin(), counts.end());
    std::vector<int> depths = depths_of(weights);
    while (std::ranges::max(depths) > longest) {
        std::ranges::transform(weights, weights.begin(), [](std::uint32_t w) { return w == 0 ? 0 : (w + 1) / 2 + 1; });
        depths = depths_of(weights);
    }
    return {depths.begin(), depths.end()};
}

std::vector<std::uint16_t> codes_of(std::span<const std::uint8_t> lengths) {
    std::vector<std::uint16_t> codes(lengths.size());
    std::uint32_t code = 0;
    for (int length = 1; length <= longest_code; ++length, code <<= 1) {
        for (std::size_t i = 0; i < lengths.size(); ++i) {
            if (lengths[i] != length) {
                continue;
            }
            for (int bit = 0; bit < length; ++bit) {
                codes[i] = static_cast<std::uint16_t>(codes[i] | (code >> bit & 1U) << (length - 1 - bit));
            }
            ++code;
        }
    }
    return codes;
}

} // namespace vorna::drawing
