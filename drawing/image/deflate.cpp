// Deflate streams that are made of pieces.
#include "drawing/image/deflate.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

#if defined(VORNA_WITH_IMAGE_LIBRARIES)
#include <libdeflate.h>
#else
#include <zlib.h>
#endif

namespace vorna::drawing {

namespace {

// None when the piece is to be searched.
std::optional<std::string> piece_of_runs(std::span<const std::uint8_t> bytes, Compression compression, std::size_t step,
                                         bool last, bool prefers_runs) {
    constexpr std::size_t least_ratio = 40;
    if (compression == Compression::fast || (compression == Compression::standard && prefers_runs)) {
        const bool is_fast = compression == Compression::fast;
        const std::size_t most = is_fast ? SIZE_MAX : (std::max<std::size_t>(bytes.size(), 1) - 1) / least_ratio;
        std::string runs = deflate_runs(bytes, step, last, most);
        if (!runs.empty()) {
            return runs;
        }
    }
    return {};
}

} // namespace

#if defined(VORNA_WITH_IMAGE_LIBRARIES)

namespace {

// A thread keeps its compressor from piece to piece.
libdeflate_compressor* compressor_of(int level) {
    struct Free {
        void operator()(libdeflate_compressor* compressor) const noexcept { libdeflate_free_compressor(compressor); }
    };
    thread_local std::unique_ptr<libdeflate_compressor, Free> compressor;
    thread_local int compressor_level = 0;
    if (!compressor || compressor_level != level) {
        compressor.reset(libdeflate_alloc_compressor(level));
        compressor_level = level;
        if (!compressor) {
            throw std::bad_alloc();
        }
    }
    return compressor.get();
}

} // namespace

std::string deflate_piece(std::span<const std::uint8_t> bytes, Compression compression, std::size_t step, bool last,
                          bool prefers_runs) {
    if (std::optional<std::string> runs = piece_of_runs(bytes, compression, step, last, prefers_runs)) {
        return std::move(*runs);
    }
    // Indices have fewer bytes, and more to find among them.
    const int standard_level = step == 1 ? 6 : 4;
    libdeflate_compressor* compressor = compressor_of(compression == Compression::best ? 9 : standard_level);
    const std::size_t bound = libdeflate_deflate_compress_bound(compressor, bytes.size());
    const auto buffer = std::make_unique_for_overwrite<char[]>(bound);
    const std::size_t size = libdeflate_deflate_compress(compressor, bytes.data(), bytes.size(), buffer.get(), bound);
    if (size == 0) {
        throw std::runtime_error("an image cannot be compressed");
    }
    std::string result(buffer.get(), size);
    if (!last) {
        open_stream(result);
    }
    return result;
}

std::uint32_t adler32_of(std::span<const std::uint8_t> bytes) {
    return libdeflate_adler32(1, bytes.data(), bytes.size());
}

std::uint32_t crc32_of(std::span<const std::uint8_t> bytes) {
    return libdeflate_crc32(0, bytes.data(), bytes.size());
}

#else

std::string deflate_piece(std::span<const std::uint8_t> bytes, Compression compression, std::size_t step, bool last,
                          bool prefers_runs) {
    if (std::optional<std::string> runs = piece_of_runs(bytes, compression, step, last, prefers_runs)) {
        return std::move(*runs);
    }
    struct Stream : z_stream {
        explicit Stream(int level) : z_stream{} {
            if (deflateInit2(this, level, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
                throw std::runtime_error("an image cannot be compressed");
            }
        }
        Stream(const Stream&) = delete;
        Stream& operator=(const Stream&) = delete;
        ~Stream() { deflateEnd(this); }
    } stream(compression == Compression::best ? 9 : 6);
    constexpr std::size_t for_flush = 16;
    std::string result(deflateBound(&stream, static_cast<uLong>(bytes.size())) + for_flush, '\0');
    stream.next_in = const_cast<Bytef*>(bytes.data());
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(result.data());
    stream.avail_out = static_cast<uInt>(result.size());
    const int status = deflate(&stream, last ? Z_FINISH : Z_SYNC_FLUSH);
    if (status != (last ? Z_STREAM_END : Z_OK) || stream.avail_in > 0) {
        throw std::runtime_error("an image cannot be compressed");
    }
    result.resize(result.size() - stream.avail_out);
    return result;
}

std::uint32_t adler32_of(std::span<const std::uint8_t> bytes) {
    return static_cast<std::uint32_t>(adler32_z(1, bytes.data(), bytes.size()));
}

std::uint32_t crc32_of(std::span<const std::uint8_t> bytes) {
    return static_cast<std::uint32_t>(crc32_z(0, bytes.data(), bytes.size()));
}

#endif

} // namespace vorna::drawing
