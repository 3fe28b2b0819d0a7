// The tiles that have been drawn so far, in a file beside the output, so that an interrupted run can be continued.
#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/pyramid/map_tile.h"

namespace vorna::drawing::pyramid {

// A tile with the bytes of its image; tiles that look the same may share them.
struct Drawn_Tile {
    Map_Tile tile;
    std::shared_ptr<const std::string> image;
};

struct Logged_Tile {
    Map_Tile tile;
    std::uint32_t content; // number of its bytes
};

// Tiles that are added together are one record with a checksum. Equal bytes are kept once. The file stays until remove().
class Tile_Log {
public:
    // key: of everything that the images depend on, one line. resumes: whether to keep the records of an existing file, up to the
    // first damaged one. Throws Usage_Error for a file that has another key, and std::runtime_error.
    Tile_Log(std::string file, const std::string& key, bool resumes);

    // Whether there is a file with this key.
    static bool is_log(const std::string& file, const std::string& key);

    bool has(const Map_Tile& tile) const {
        const std::uint64_t number = hilbert_number(tile);
        return number < is_there_.size() && is_there_[number];
    }
    // For any thread. Leaves out tiles that are there. Throws std::runtime_error.
    void add(const std::vector<Drawn_Tile>& tiles);

    // The tiles of another log that are not there. Throws likewise.
    void add(Tile_Log& other);

    // All tiles in the order of their numbers, after the last has been added.
    std::vector<Logged_Tile> tiles() const;
    std::size_t content_count() const noexcept { return contents_.size(); }
    std::uint32_t content_size(std::uint32_t number) const { return contents_[number].size; }
    // The bytes. Throws std::runtime_error.
    std::string content(std::uint32_t number);

    void remove();

private:
    struct Content {
        std::uint64_t place;
        std::uint32_t size;
    };

    void read_records(std::uint64_t place);
    bool read_record(const std::string& payload, std::uint64_t place);
    void note(const Logged_Tile& tile);
    [[noreturn]] void fail() const;

    std::string file_;
    std::fstream stream_;
    std::mutex mutex_;
    std::uint64_t size_ = 0;     // of the records that are whole
    std::vector<bool> is_there_; // by number of a tile
    std::vector<Logged_Tile> tiles_;
    std::vector<Content> contents_;
    std::map<std::string, std::uint32_t, std::less<>> numbers_; // of contents, by digest
};

} // namespace vorna::drawing::pyramid
