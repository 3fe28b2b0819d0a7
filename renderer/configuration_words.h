// The lists of all kernels with their configurations in words, for tests and benchmarks. Nothing in the renderer includes it.
#pragma once

#include <string>

#include "renderer/depth_lines/line_kernels.h"
#include "renderer/depth_lines/smoothed_kernels.h"
#include "renderer/kernels/span_kernels.h"
#include "renderer/triangles/triangle_kernels.h"

namespace krb {

constexpr const char* word_of(Pixel_Format format) noexcept {
    return format == Pixel_Format::index8 ? "index8" : "rgb32";
}

constexpr const char* word_of(Depth_Rule rule) noexcept {
    constexpr const char* words[] = {"no_depth", "less_or_equal", "by_mode"};
    return words[static_cast<int>(rule)];
}

constexpr const char* word_of(Pixel_Rule rule) noexcept {
    constexpr const char* words[] = {"store", "blend", "merge"};
    return words[static_cast<int>(rule)];
}

constexpr const char* word_of(Clip_Rule rule) noexcept {
    constexpr const char* words[] = {"open", "masked", "patterned"};
    return words[static_cast<int>(rule)];
}

constexpr const char* word_of(Shading shading) noexcept {
    constexpr const char* words[] = {"flat", "gouraud", "textured"};
    return words[static_cast<int>(shading)];
}

constexpr const char* word_of(Line_Shading shading) noexcept {
    constexpr const char* words[] = {"index", "flat", "gouraud"};
    return words[static_cast<int>(shading)];
}

constexpr const char* word_of(Line_Dither dither) noexcept {
    return dither == Line_Dither::ordered ? "ordered" : "additive";
}

template <class First, class... Rules> std::string words_of(First first, Rules... rules) {
    return (std::string(word_of(first)) + ... + (std::string(" ") + word_of(rules)));
}

inline std::string words_of(const Triangle_Configuration& c) {
    return words_of(c.shading, c.format, c.depth, c.pixel, c.clip);
}

inline std::string words_of(const Line_Configuration& c) {
    return words_of(c.shading, c.format, c.dither, c.depth, c.pixel, c.clip);
}

inline std::string words_of(const Smoothed_Configuration& c) {
    return words_of(c.pixel, c.clip);
}

inline std::string words_of(const Span_Configuration& c) {
    return words_of(c.format, c.depth, c.pixel, c.clip);
}

} // namespace krb
