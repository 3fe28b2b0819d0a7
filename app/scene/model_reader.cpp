// Chooses the reader of a model file.
#include "app/scene/model_reader.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>

namespace app::scene {
namespace {

std::string lower_case_extension(const std::string& file) {
    std::string extension = std::filesystem::path(file).extension().string();
    std::ranges::transform(extension, extension.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

Mesh read_model(const std::string& file) {
    const std::string extension = lower_case_extension(file);
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
    const auto size = std::filesystem::file_size(file, error);
    if (error) {
        throw Model_Error(file + ": cannot be read: " + error.message());
    }
    std::ifstream stream(file, std::ios::binary);
    std::string content(size, '\0');
    if (!stream.read(content.data(), static_cast<std::streamsize>(size))) {
        throw Model_Error(file + ": cannot be read");
    }
    return content;
}

Mesh load_model(const std::string& file) {
    Mesh mesh = read_model(file);
    finish_mesh(mesh, file);
    return mesh;
}

} // namespace app::scene
