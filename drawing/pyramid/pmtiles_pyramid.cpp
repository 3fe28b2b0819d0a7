// A pyramid as a PMTiles file, version 3: a header, directories, a description in JSON, and the images in the order of the tiles'
// numbers. A directory lists runs of tiles with the same image; the root directory, which readers get with their first request,
// lists tiles or leaf directories.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/files/gzip.h"
#include "drawing/files/interruption.h"
#include "drawing/files/output_file.h"
#include "drawing/files/path.h"
#include "drawing/pyramid/pyramid_file.h"

namespace vorna::drawing::pyramid {
namespace {

constexpr std::size_t header_size = 127, first_request = 16384;
constexpr std::string_view magic = "PMTiles\x03";

// run 0: a leaf directory.
struct Entry {
    std::uint64_t tile, offset;
    std::uint32_t size, run;
};

void append(std::string& bytes, std::uint64_t number, int count) {
    for (int i = 0; i < count; ++i) {
        bytes += static_cast<char>(number >> 8 * i & 0xFF);
    }
}

// Seven bits a byte, the low ones first.
void append_variable(std::string& bytes, std::uint64_t number) {
    for (; number >= 0x80; number >>= 7) {
        bytes += static_cast<char>((number & 0x7F) | 0x80);
    }
    bytes += static_cast<char>(number);
}

void append_degrees(std::string& bytes, double degrees) {
    append(bytes, static_cast<std::uint32_t>(std::lround(degrees * 1e7)), 4);
}

// Column by column: differences of tiles' numbers, runs, sizes, and offsets, where 0 says behind the image before.
std::string directory_of(const Entry* entries, std::size_t count) {
    std::string bytes;
    append_variable(bytes, count);
    for (std::size_t i = 0; i < count; ++i) {
        append_variable(bytes, entries[i].tile - (i > 0 ? entries[i - 1].tile : 0));
    }
    for (std::size_t i = 0; i < count; ++i) {
        append_variable(bytes, entries[i].run);
    }
    for (std::size_t i = 0; i < count; ++i) {
        append_variable(bytes, entries[i].size);
    }
    for (std::size_t i = 0; i < count; ++i) {
        const bool follows = i > 0 && entries[i].offset == entries[i - 1].offset + entries[i - 1].size;
        append_variable(bytes, follows ? 0 : entries[i].offset + 1);
    }
    return gzip(bytes);
}

// The root directory and the leaves, which are as large as it takes for the root to come with the first request.
struct Directories {
    std::string root, leaves;

    explicit Directories(const std::vector<Entry>& entries) : root(directory_of(entries.data(), entries.size())) {
        for (std::size_t leaf_size = 4096; header_size + root.size() > first_request; leaf_size *= 2) {
            leaves.clear();
            std::vector<Entry> top;
            for (std::size_t first = 0; first < entries.size(); first += leaf_size) {
                const std::string leaf = directory_of(&entries[first], std::min(leaf_size, entries.size() - first));
                top.push_back({entries[first].tile, leaves.size(), static_cast<std::uint32_t>(leaf.size()), 0});
                leaves += leaf;
            }
            root = directory_of(top.data(), top.size());
        }
    }
};

std::string description_of(const Pyramid_Facts& facts) {
    nlohmann::ordered_json text{{"format", facts.image_format}, {"type", "baselayer"}};
    for (const auto& [key, value] :
         {std::pair("name", &facts.name), {"attribution", &facts.attribution}, {key_member, &facts.key}}) {
        if (!value->empty()) {
            text[key] = *value;
        }
    }
    return gzip(text.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

} // namespace

std::string pmtiles_key(const std::string& output) {
    constexpr std::size_t place_of_description = 24;
    std::ifstream file(path_of(output), std::ios::binary);
    std::string header(header_size, '\0');
    file.read(header.data(), static_cast<std::streamsize>(header.size()));
    const auto number = [&](std::size_t place) {
        std::uint64_t value = 0;
        for (std::size_t i = 8; i-- > 0;) {
            value = value << 8 | static_cast<unsigned char>(header[place + i]);
        }
        return value;
    };
    const std::uint64_t start = number(place_of_description), size = number(place_of_description + 8);
    if (!file || !header.starts_with(magic) || size > longest_description || start >> 40 != 0) {
        return {};
    }
    std::string packed(size, '\0');
    file.seekg(static_cast<std::streamoff>(start));
    file.read(packed.data(), static_cast<std::streamsize>(packed.size()));
    return nlohmann::json::parse(gunzip(packed, longest_description)).value(key_member, std::string());
}

void write_pmtiles(Tile_Log& log, const Pyramid_Facts& facts, const std::string& output) {
    constexpr std::uint64_t nowhere = std::numeric_limits<std::uint64_t>::max();
    std::vector<std::uint64_t> offsets(log.content_count(), nowhere);
    std::vector<std::uint32_t> order; // of the contents in the file
    std::vector<Entry> entries;
    std::uint64_t data_size = 0, tile_count = 0;
    for (const Logged_Tile& logged : log.tiles()) {
        const std::uint32_t size = log.content_size(logged.content);
        std::uint64_t& offset = offsets[logged.content];
        if (offset == nowhere) {
            offset = data_size;
            data_size += size;
            order.push_back(logged.content);
        }
        const std::uint64_t tile = hilbert_number(logged.tile);
        ++tile_count;
        if (!entries.empty() && entries.back().tile + entries.back().run == tile && entries.back().offset == offset) {
            ++entries.back().run;
        } else {
            entries.push_back({tile, offset, size, 1});
        }
    }
    const Directories directories(entries);
    const std::string description = description_of(facts);

    std::string header(magic);
    std::uint64_t place = header_size;
    for (const std::uint64_t size : {std::uint64_t{directories.root.size()}, std::uint64_t{description.size()},
                                     std::uint64_t{directories.leaves.size()}, data_size}) {
        append(header, place, 8);
        append(header, size, 8);
        place += size;
    }
    for (const std::uint64_t count : {tile_count, std::uint64_t{entries.size()}, std::uint64_t{order.size()}}) {
        append(header, count, 8);
    }
    constexpr unsigned clustered = 1, uncompressed = 1, gzipped = 2, png = 2, webp = 4;
    for (const unsigned byte : {clustered, gzipped, uncompressed, facts.image_format == "png" ? png : webp,
                                static_cast<unsigned>(facts.first_zoom), static_cast<unsigned>(facts.last_zoom)}) {
        append(header, byte, 1);
    }
    for (const double degrees : {facts.extent.west, facts.extent.south, facts.extent.east, facts.extent.north}) {
        append_degrees(header, degrees);
    }
    append(header, static_cast<unsigned>(facts.first_zoom), 1);
    append_degrees(header, facts.center().x);
    append_degrees(header, facts.center().y);

    Output_File file(output);
    file.write(header + directories.root + description + directories.leaves);
    for (const std::uint32_t content : order) {
        Interruption::check();
        file.write(log.content(content));
    }
    file.commit();
}

} // namespace vorna::drawing::pyramid
