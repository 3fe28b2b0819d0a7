// Maps and drawings of fuzzers, drawn as the command does it.
#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "app/map_command.h"
#include "tests/fuzz/fuzzing.h"

namespace fuzzing {

// The command reads maps from files.
class Map_File {
public:
    explicit Map_File(const char* suffix)
        : path_(std::filesystem::temp_directory_path() / ("vorna-fuzz-" + std::to_string(std::random_device()()) + suffix)) {}
    Map_File(const Map_File&) = delete;
    Map_File& operator=(const Map_File&) = delete;
    ~Map_File() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }

    // style: chooses among options.
    void draw(std::string_view content, std::size_t style, bool is_drawing) const {
        std::ofstream(path_, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
        constexpr const char* projections[] = {"", "plane", "mercator", "equirectangular"};
        constexpr const char* borders[] = {"solid", "dashed", "3,2", "none"};
        app::Map_Picture picture;
        picture.file = path_.string();
        picture.output = "/dev/null";
        picture.size = {40, (style & 1) != 0 ? 30 : 0};
        picture.background = {255, 255, 255, 255};
        picture.colors = (style & 2) != 0 ? 8 : 32;
        picture.antialias = picture.colors == 32 && (style & 4) != 0;
        app::Map_Options options;
        options.projection = is_drawing ? "" : projections[style / 8 % 4];
        options.border = borders[style / 32 % 4];
        options.border_width = (style & 128) != 0 ? 3 : 1;
        options.bbox = (style & 512) != 0 ? "0,0,1e-9,1e-9" : "";
        options.casing = (style & 256) != 0 ? "red" : "";
        app::render_map(picture, options, renderer_module());
    }

private:
    std::filesystem::path path_;
};

} // namespace fuzzing
