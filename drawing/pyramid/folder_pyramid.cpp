// A pyramid as a folder of image files.
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <system_error>
#include <vector>
#if defined(__linux__)
#include <fcntl.h>
#include <unistd.h>
#endif

#include "drawing/files/helpers.h"
#include "drawing/files/output_file.h"
#include "drawing/files/path.h"
#include "drawing/pyramid/pyramid_file.h"

namespace vorna::drawing::pyramid {
namespace {

namespace fs = std::filesystem;

void write_tile(const fs::path& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        throw std::runtime_error(path.string() + ": cannot be written");
    }
}

// On the disk, so that the description never stands beside tiles that a loss of power has taken.
void synchronise(const fs::path& folder) {
#if defined(__linux__)
    const int number = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (number >= 0) {
        syncfs(number);
        close(number);
    }
#else
    static_cast<void>(folder);
#endif
}

std::string description_of(const Pyramid_Facts& facts) {
    const map::Extent& extent = facts.extent;
    const map::Position center = facts.center();
    nlohmann::ordered_json text{{"tilejson", "3.0.0"},
                                {"tiles", {"{z}/{x}/{y}." + facts.image_format}},
                                {"minzoom", facts.first_zoom},
                                {"maxzoom", facts.last_zoom},
                                {"bounds", {extent.west, extent.south, extent.east, extent.north}},
                                {"center", {center.x, center.y, facts.first_zoom}},
                                {"tileSize", facts.tile_side},
                                {"format", facts.image_format},
                                {"scheme", "xyz"}};
    for (const auto& [key, value] :
         {std::pair("name", &facts.name), {"attribution", &facts.attribution}, {key_member, &facts.key}}) {
        if (!value->empty()) {
            text[key] = *value;
        }
    }
    return text.dump(1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
}

} // namespace

std::string folder_key(const std::string& output) {
    std::ifstream file(path_of(output) / "tiles.json", std::ios::binary);
    std::string text(longest_description, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return nlohmann::json::parse(text).value(key_member, std::string());
}

void write_folder(Tile_Log& log, const Pyramid_Facts& facts, const std::string& output) {
    const fs::path root = path_of(output);
    const auto path_in_root = [&](const Map_Tile& tile) {
        return root / std::to_string(tile.zoom) / std::to_string(tile.x) / (std::to_string(tile.y) + '.' + facts.image_format);
    };
    std::vector<std::vector<Map_Tile>> tiles(log.content_count()); // by content
    fs::path folder;
    for (const Logged_Tile& logged : log.tiles()) {
        tiles[logged.content].push_back(logged.tile);
        if (fs::path own = path_in_root(logged.tile).parent_path(); own != folder) {
            fs::create_directories(own);
            folder = std::move(own);
        }
    }
    share_tasks(tiles.size(), processor_count(), [&](std::size_t content, std::size_t) {
        const std::string bytes = log.content(static_cast<std::uint32_t>(content));
        fs::path first;
        for (const Map_Tile& tile : tiles[content]) {
            const fs::path path = path_in_root(tile);
            std::error_code error;
            fs::remove(path, error); // writing into it would change all tiles that share the file
            if (!first.empty()) {
                fs::create_hard_link(first, path, error);
            }
            if (first.empty() || error) { // or the file has as many names as it may have
                write_tile(path, bytes);
                first = path;
            }
        }
    });
    synchronise(root);
    write_file((root / "tiles.json").string(), description_of(facts));
}

} // namespace vorna::drawing::pyramid
