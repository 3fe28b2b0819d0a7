// The tiles that have been drawn so far.
//
// The file is a line with the key and then records: the payload's size and checksum, and the payload: the number of
// tiles, and for each its place, the digest of its bytes, their number, and the bytes unless an earlier tile has them. Numbers
// are of 32 bits, the low byte first.
#include "drawing/pyramid/tile_log.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <utility>

#include "drawing/files/path.h"
#include "drawing/files/usage_error.h"
#include "drawing/image/deflate.h"
#include "drawing/image/sha256.h"

namespace vorna::drawing::pyramid {
namespace {

constexpr std::size_t digest_size = 64, frame_size = 8;

void append_number(std::string& bytes, std::uint32_t number) {
    for (int shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>(number >> shift & 0xFF);
    }
}

void append_tile(std::string& bytes, const Map_Tile& tile) {
    append_number(bytes, static_cast<std::uint32_t>(tile.zoom));
    append_number(bytes, tile.x);
    append_number(bytes, tile.y);
}

// Takes a record's payload apart; nothing where it ends too early.
class Payload {
public:
    explicit Payload(std::string_view bytes) : bytes_(bytes) {}

    std::size_t place() const noexcept { return place_; }
    bool is_at_end() const noexcept { return place_ == bytes_.size(); }

    std::optional<std::string_view> take(std::size_t count) {
        if (bytes_.size() - place_ < count) {
            return std::nullopt;
        }
        place_ += count;
        return bytes_.substr(place_ - count, count);
    }
    std::optional<std::uint32_t> number() {
        const auto bytes = take(4);
        std::uint32_t number = 0;
        for (int i = 3; bytes && i >= 0; --i) {
            number = number << 8 | static_cast<std::uint8_t>((*bytes)[static_cast<std::size_t>(i)]);
        }
        return bytes ? std::optional(number) : std::nullopt;
    }
    std::optional<Map_Tile> tile() {
        const auto zoom = number(), x = number(), y = number();
        if (!y || *zoom > largest_zoom || std::max(*x, *y) >> *zoom != 0) {
            return std::nullopt;
        }
        return Map_Tile{static_cast<int>(*zoom), *x, *y};
    }

private:
    std::string_view bytes_;
    std::size_t place_ = 0;
};

std::uint32_t checksum_of(std::string_view bytes) {
    return crc32_of({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

std::string digest_of(const std::string& bytes) {
    Sha256 sum;
    sum.add(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    return sum.finish();
}

// The first line.
std::string head_of(const std::string& key) {
    return "vorna tiles 1 " + key + '\n';
}

} // namespace

bool Tile_Log::is_log(const std::string& file, const std::string& key) {
    const std::string head = head_of(key);
    std::string found(head.size(), '\0');
    std::ifstream stream(path_of(file), std::ios::binary);
    return stream.read(found.data(), static_cast<std::streamsize>(found.size())) && found == head;
}

Tile_Log::Tile_Log(std::string file, const std::string& key, bool resumes) : file_(std::move(file)) {
    const std::filesystem::path path = path_of(file_);
    const std::string head = head_of(key);
    std::error_code none;
    constexpr auto both = std::ios::in | std::ios::out | std::ios::binary;
    // A link may lead to a file of somebody else.
    if (resumes && std::filesystem::is_regular_file(std::filesystem::symlink_status(path, none))) {
        stream_.open(path, both);
        std::string found(head.size(), '\0');
        stream_.read(found.data(), static_cast<std::streamsize>(found.size()));
        if (!stream_ || found != head) {
            throw Usage_Error(file_ + ": expected tiles of the same files and options, found those of others; without resuming "
                                      "the drawing begins anew");
        }
        read_records(head.size());
        return;
    }
    std::filesystem::remove(path, none);
    stream_.open(path, both | std::ios::trunc);
    stream_ << head << std::flush;
    size_ = head.size();
    if (!stream_) {
        fail();
    }
}

void Tile_Log::fail() const {
    throw std::runtime_error(file_ + ": cannot be written or read");
}

// What follows a damaged record is written over.
void Tile_Log::read_records(std::uint64_t place) {
    const std::uint64_t end = std::filesystem::file_size(path_of(file_));
    size_ = place;
    while (end - size_ >= frame_size) {
        std::string frame(frame_size, '\0');
        stream_.seekg(static_cast<std::streamoff>(size_));
        stream_.read(frame.data(), frame_size);
        Payload numbers(frame);
        const std::uint32_t size = *numbers.number(), checksum = *numbers.number();
        if (!stream_ || size > end - size_ - frame_size) {
            break;
        }
        std::string payload(size, '\0');
        stream_.read(payload.data(), static_cast<std::streamsize>(size));
        if (!stream_ || checksum_of(payload) != checksum || !read_record(payload, size_ + frame_size)) {
            break;
        }
        size_ += frame_size + size;
    }
    stream_.clear();
}

// False for what no record holds; then nothing of it counts.
bool Tile_Log::read_record(const std::string& payload, std::uint64_t place) {
    Payload rest(payload);
    const auto count = rest.number();
    std::vector<Logged_Tile> tiles;
    for (std::uint32_t i = 0; count && i < *count; ++i) {
        const auto tile = rest.tile();
        const auto digest = rest.take(digest_size);
        const auto size = rest.number();
        if (!tile || !size) {
            return false;
        }
        const auto known = numbers_.find(*digest);
        if (known == numbers_.end()) {
            const std::uint64_t start = place + rest.place();
            if (!rest.take(*size)) {
                return false;
            }
            numbers_.emplace(*digest, static_cast<std::uint32_t>(contents_.size()));
            tiles.push_back({*tile, static_cast<std::uint32_t>(contents_.size())});
            contents_.push_back({start, *size});
        } else {
            tiles.push_back({*tile, known->second});
        }
    }
    if (!count || !rest.is_at_end()) {
        return false;
    }
    std::ranges::for_each(tiles, [this](const Logged_Tile& tile) { note(tile); });
    return true;
}

void Tile_Log::note(const Logged_Tile& tile) {
    const std::uint64_t number = hilbert_number(tile.tile);
    is_there_.resize(std::max<std::size_t>(is_there_.size(), number + 1));
    if (!is_there_[number]) {
        is_there_[number] = true;
        tiles_.push_back(tile);
    }
}

void Tile_Log::add(const std::vector<Drawn_Tile>& tiles) {
    std::vector<std::string> digests;
    std::ranges::transform(tiles, std::back_inserter(digests), [](const Drawn_Tile& tile) { return digest_of(*tile.image); });
    const std::lock_guard lock(mutex_);
    std::string payload;
    append_number(payload, static_cast<std::uint32_t>(tiles.size()));
    for (std::size_t i = 0; i < tiles.size(); ++i) {
        const std::string& image = *tiles[i].image;
        append_tile(payload, tiles[i].tile);
        payload += digests[i];
        append_number(payload, static_cast<std::uint32_t>(image.size()));
        const auto [known, is_new] = numbers_.emplace(digests[i], static_cast<std::uint32_t>(contents_.size()));
        if (is_new) {
            contents_.push_back({size_ + frame_size + payload.size(), static_cast<std::uint32_t>(image.size())});
            payload += image;
        }
        note({tiles[i].tile, known->second});
    }
    std::string frame;
    append_number(frame, static_cast<std::uint32_t>(payload.size()));
    append_number(frame, checksum_of(payload));
    stream_.seekp(static_cast<std::streamoff>(size_));
    stream_ << frame << payload << std::flush;
    if (!stream_) {
        fail();
    }
    size_ += frame_size + payload.size();
}

void Tile_Log::add(Tile_Log& other) {
    constexpr std::size_t most_tiles = 64; // of a record
    std::vector<Drawn_Tile> record;
    const std::vector<Logged_Tile> all = other.tiles();
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (!has(all[i].tile)) {
            record.push_back({all[i].tile, std::make_shared<const std::string>(other.content(all[i].content))});
        }
        if (record.size() == most_tiles || (i + 1 == all.size() && !record.empty())) {
            add(record);
            record.clear();
        }
    }
}

std::vector<Logged_Tile> Tile_Log::tiles() const {
    std::vector<std::pair<std::uint64_t, std::size_t>> order;
    for (std::size_t i = 0; i < tiles_.size(); ++i) {
        order.emplace_back(hilbert_number(tiles_[i].tile), i);
    }
    std::ranges::sort(order);
    std::vector<Logged_Tile> tiles;
    std::ranges::transform(order, std::back_inserter(tiles), [this](const auto& number) { return tiles_[number.second]; });
    return tiles;
}

std::string Tile_Log::content(std::uint32_t number) {
    const std::lock_guard lock(mutex_);
    std::string bytes(contents_[number].size, '\0');
    stream_.seekg(static_cast<std::streamoff>(contents_[number].place));
    stream_.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!stream_) {
        fail();
    }
    return bytes;
}

void Tile_Log::remove() {
    stream_.close();
    std::error_code none;
    std::filesystem::remove(path_of(file_), none);
}

} // namespace vorna::drawing::pyramid
