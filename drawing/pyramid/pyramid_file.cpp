// A drawn pyramid as a folder or as one file.
#include "drawing/pyramid/pyramid_file.h"

#include <exception>
#include <filesystem>

#include "drawing/files/output_file.h"
#include "drawing/files/path.h"
#include "drawing/files/usage_error.h"
#include "drawing/pyramid/mbtiles_library.h"

namespace vorna::drawing::pyramid {

Pyramid_Format format_of(const std::string& output) {
    const std::filesystem::path suffix = path_of(output).extension();
    return suffix == ".mbtiles"   ? Pyramid_Format::mbtiles
           : suffix == ".pmtiles" ? Pyramid_Format::pmtiles
                                  : Pyramid_Format::folder;
}

void check_pyramid(const std::string& output, Pyramid_Format format, bool replaces) {
    namespace fs = std::filesystem;
    if (format == Pyramid_Format::mbtiles) {
        load_mbtiles_library(output);
    }
    if (format != Pyramid_Format::folder) {
        Output_File::check(output);
        return;
    }
    std::error_code none;
    const fs::path path = path_of(output);
    const bool is_there = fs::exists(path, none);
    if (is_there && !fs::is_directory(path, none)) {
        throw Usage_Error(output + ": expected a folder, or a file that ends with .mbtiles or .pmtiles");
    }
    if (is_there && !replaces && !fs::is_empty(path, none)) {
        throw Usage_Error(output + ": expected a new or empty folder, found files in it");
    }
}

std::string pyramid_key(const std::string& output, Pyramid_Format format) {
    try {
        return format == Pyramid_Format::folder    ? folder_key(output)
               : format == Pyramid_Format::mbtiles ? mbtiles_key(output)
                                                   : pmtiles_key(output);
    } catch (const std::exception&) {
        return {}; // a file of another kind
    }
}

void write_pyramid(Tile_Log& log, const Pyramid_Facts& facts, const std::string& output, Pyramid_Format format) {
    switch (format) {
    case Pyramid_Format::folder:
        return write_folder(log, facts, output);
    case Pyramid_Format::mbtiles:
        return write_mbtiles(log, facts, output);
    case Pyramid_Format::pmtiles:
        return write_pmtiles(log, facts, output);
    }
}

} // namespace vorna::drawing::pyramid
