// Compressed bytes in gzip's format.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace vorna::drawing {

bool is_gzip(std::string_view bytes) noexcept;

// The same bytes for the same content: no name and no time. Throws std::runtime_error when zlib fails.
std::string gzip(std::string_view content);

// The content of one whole file in that format. Throws std::runtime_error that says what is wrong: damaged, cut off, more behind
// its end, or longer than `most` bytes unpacked. grow: is told of the bytes that are coming, part by part.
std::string gunzip(std::string_view packed, std::size_t most, const std::function<void(std::size_t)>& grow = {});

} // namespace vorna::drawing
