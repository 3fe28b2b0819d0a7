// Chooses the reader of a model file.
#include "app/scene/model_reader.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <new>
#include <stdexcept>
#include <system_error>

#include "app/path.h"

namespace app::scene {
namespace {

constexpr std::uintmax_t most_bytes = std::uintmax_t{1} << 32; // of a file

std::string lower_case(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

Mesh read_model(const std::string& file) {
    const std::string extension = lower_case(path_of(file).extension().string());
    if (extension == ".obj") {
        return read_obj(file, read_file(file));
    }
    if (extension == ".stl") {
        return read_stl(file, read_file(file));
    }
    std::ifstream stream(file, std::ios::binary);
    char magic[4] = {};
    if (extension == ".ply" ||
        (stream.read(magic, 4) && std::string_view(magic, 3) == "ply" && (magic[3] == '\n' || magic[3] == '\r'))) {
        return read_ply(file, read_file(file));
    }
    return read_with_assimp(file);
}

} // namespace

std::string read_file(const std::string& file) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path_of(file), error);
    if (error) {
        throw Model_Error(file + ": cannot be read: " + error.message());
    }
    if (size > most_bytes) {
        throw Model_Error(file + ": expected at most 4096 MiB, found " + std::to_string(size >> 20));
    }
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    std::string content(size, '\0');
    if (!stream.read(content.data(), static_cast<std::streamsize>(size))) {
        throw Model_Error(file + ": cannot be read" + (errno != 0 ? ": " + std::generic_category().message(errno) : ""));
    }
    return content;
}

std::string image_path(const std::string& file, std::string name) {
    namespace fs = std::filesystem;
    std::ranges::replace(name, '\\', '/');
    const fs::path folder = path_of(file).parent_path(), given = (folder / path_of(name)).lexically_normal();
    std::error_code error;
    if (fs::exists(given, error)) {
        return given.string();
    }
    const std::string wanted = lower_case(path_of(name).filename().string());
    for (const fs::directory_entry& beside : fs::directory_iterator(folder.empty() ? "." : folder, error)) {
        if (lower_case(beside.path().filename().string()) == wanted) {
            return (folder / beside.path().filename()).string();
        }
    }
    return given.string();
}

std::uint32_t image_number(Mesh& mesh, const std::string& path) {
    const auto found = std::ranges::find(mesh.images, path, &Image_Source::name);
    const auto number = static_cast<std::uint32_t>(found - mesh.images.begin());
    if (found == mesh.images.end()) {
        mesh.images.emplace_back().name = path;
    }
    return number;
}

Mesh load_model(const std::string& file) {
    try {
        Mesh mesh = read_model(file);
        finish_mesh(mesh, file);
        return mesh;
    } catch (const std::bad_alloc&) {
        throw std::runtime_error(file + ": not enough memory to read it");
    }
}

} // namespace app::scene
