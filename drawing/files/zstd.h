// Compressed bytes in the format of zstd (RFC 8878).
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace vorna::drawing {

inline bool is_zstd(std::string_view bytes) noexcept {
    return bytes.starts_with("\x28\xB5\x2F\xFD");
}

// Throws std::runtime_error when there is no memory, or when this build is without zstd.
std::string zstd(std::string_view content);

// Bytes that unzstd keeps of the content while it unpacks a frame: the frame's window, or all where that is less. 0 for bytes
// that are no frame.
std::size_t zstd_window(std::string_view packed);

// The content of one whole frame. Throws and tells as gunzip does.
std::string unzstd(std::string_view packed, std::size_t most, const std::function<void(std::size_t)>& grow = {});

} // namespace vorna::drawing
