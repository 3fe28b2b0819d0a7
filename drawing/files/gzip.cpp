// Compressed bytes in gzip's format.
#include "drawing/files/gzip.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <vector>

#include <zlib.h>

namespace vorna::drawing {

namespace {

constexpr int gzip_window = 15 + 16; // the largest window, and gzip's frame around the stream
constexpr int memory_level = 8;
constexpr int quick = 3; // numbers shrink nearly as much as at higher levels, in a third of the time

// A stream takes its input in parts that its counter can hold.
void feed(z_stream& stream, std::string_view& rest) {
    if (stream.avail_in == 0) {
        const std::size_t part = std::min<std::size_t>(rest.size(), std::numeric_limits<uInt>::max());
        stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(rest.data()));
        stream.avail_in = static_cast<uInt>(part);
        rest.remove_prefix(part);
    }
}

class Stream_End {
public:
    Stream_End(z_stream& stream, int (*end)(z_streamp)) noexcept : stream_(stream), end_(end) {}
    Stream_End(const Stream_End&) = delete;
    Stream_End& operator=(const Stream_End&) = delete;
    ~Stream_End() { end_(&stream_); }

private:
    z_stream& stream_;
    int (*end_)(z_streamp);
};

} // namespace

bool is_gzip(std::string_view bytes) noexcept {
    return bytes.starts_with("\x1F\x8B");
}

std::string gzip(std::string_view content) {
    z_stream stream = {};
    if (deflateInit2(&stream, quick, Z_DEFLATED, gzip_window, memory_level, Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::runtime_error("data cannot be compressed");
    }
    const Stream_End end(stream, deflateEnd);
    std::string packed;
    std::vector<char> block(std::size_t{1} << 16);
    int status = Z_OK;
    while (status != Z_STREAM_END) {
        feed(stream, content);
        stream.next_out = reinterpret_cast<Bytef*>(block.data());
        stream.avail_out = static_cast<uInt>(block.size());
        status = deflate(&stream, content.empty() ? Z_FINISH : Z_NO_FLUSH);
        packed.append(block.data(), block.size() - stream.avail_out);
    }
    return packed;
}

std::string gunzip(std::string_view packed, std::size_t most, const std::function<void(std::size_t)>& grow) {
    z_stream stream = {};
    if (inflateInit2(&stream, gzip_window) != Z_OK) {
        throw std::runtime_error("compressed data cannot be read");
    }
    const Stream_End end(stream, inflateEnd);
    std::string content;
    std::vector<char> block(std::size_t{1} << 16);
    int status = Z_OK;
    while (status != Z_STREAM_END) {
        feed(stream, packed);
        stream.next_out = reinterpret_cast<Bytef*>(block.data());
        stream.avail_out = static_cast<uInt>(block.size());
        status = inflate(&stream, Z_NO_FLUSH);
        if (status != Z_OK && status != Z_STREAM_END) {
            throw std::runtime_error(status == Z_BUF_ERROR ? "compressed data that ends too early"
                                                           : "compressed data is damaged");
        }
        const std::size_t unpacked = block.size() - stream.avail_out;
        if (grow) {
            grow(unpacked);
        }
        content.append(block.data(), unpacked);
        if (content.size() > most) {
            throw std::runtime_error("expected at most " + std::to_string(most >> 20) + " MiB when unpacked, found more");
        }
    }
    if (stream.avail_in > 0 || !packed.empty()) {
        throw std::runtime_error("there is more behind the end of the compressed data");
    }
    return content;
}

} // namespace vorna::drawing
