// Compressed bytes in the format of zstd.
#include "drawing/files/zstd.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

#include <zstd.h>

namespace vorna::drawing {

namespace {

constexpr int level = 9; // of 1 to 19; higher ones are slower and smaller

// Larger windows than any level makes for such content; a frame may ask for gigabytes.
constexpr int largest_window_bits = 27;

} // namespace

std::size_t zstd_window(std::string_view frame) {
    constexpr std::size_t descriptor = 4, window = 5;                                 // places
    constexpr std::uint64_t largest_window = std::uint64_t{1} << largest_window_bits; // more is refused
    constexpr unsigned single_segment = 1U << 5, least_bits = 10, mantissa_bits = 3;
    const std::uint64_t content = ZSTD_getFrameContentSize(frame.data(), frame.size());
    if (content == ZSTD_CONTENTSIZE_ERROR || frame.size() <= window) {
        return 0;
    }
    if ((static_cast<std::uint8_t>(frame[descriptor]) & single_segment) != 0) {
        return std::min(content, largest_window);
    }
    const auto byte = static_cast<std::uint8_t>(frame[window]);
    const std::uint64_t size = (8U + (byte & 7U)) * (std::uint64_t{1} << (least_bits + (byte >> mantissa_bits) - mantissa_bits));
    return std::min({size, content, largest_window}); // an unknown content is larger than all
}

std::string zstd(std::string_view content) {
    const std::unique_ptr<ZSTD_CCtx, std::size_t (*)(ZSTD_CCtx*)> context(ZSTD_createCCtx(), ZSTD_freeCCtx);
    std::string packed(ZSTD_compressBound(content.size()), '\0');
    // The checksum finds damage that changes numbers and leaves the rest as it is.
    if (!context || ZSTD_isError(ZSTD_CCtx_setParameter(context.get(), ZSTD_c_compressionLevel, level)) ||
        ZSTD_isError(ZSTD_CCtx_setParameter(context.get(), ZSTD_c_checksumFlag, 1))) {
        throw std::runtime_error("data cannot be compressed");
    }
    const std::size_t size = ZSTD_compress2(context.get(), packed.data(), packed.size(), content.data(), content.size());
    if (ZSTD_isError(size)) {
        throw std::runtime_error("data cannot be compressed");
    }
    packed.resize(size);
    return packed;
}

std::string unzstd(std::string_view packed, std::size_t most, const std::function<void(std::size_t)>& grow) {
    const std::unique_ptr<ZSTD_DCtx, std::size_t (*)(ZSTD_DCtx*)> context(ZSTD_createDCtx(), ZSTD_freeDCtx);
    if (!context || ZSTD_isError(ZSTD_DCtx_setParameter(context.get(), ZSTD_d_windowLogMax, largest_window_bits))) {
        throw std::runtime_error("compressed data cannot be read");
    }
    std::string content;
    std::vector<char> block(ZSTD_DStreamOutSize());
    ZSTD_inBuffer input{packed.data(), packed.size(), 0};
    for (std::size_t left = 1; left != 0;) {
        ZSTD_outBuffer output{block.data(), block.size(), 0};
        const std::size_t before = input.pos;
        left = ZSTD_decompressStream(context.get(), &output, &input);
        if (ZSTD_isError(left)) {
            throw std::runtime_error("compressed data is damaged");
        }
        if (left != 0 && input.pos == before && output.pos == 0) {
            throw std::runtime_error("compressed data that ends too early");
        }
        if (grow) {
            grow(output.pos);
        }
        content.append(block.data(), output.pos);
        if (content.size() > most) {
            throw std::runtime_error("expected at most " + std::to_string(most >> 20) + " MiB when unpacked, found more");
        }
    }
    if (input.pos != input.size) {
        throw std::runtime_error("there is more behind the end of the compressed data");
    }
    return content;
}

} // namespace vorna::drawing
