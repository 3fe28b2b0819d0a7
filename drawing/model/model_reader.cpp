// Reads model files, and files that they name.
#include "drawing/model/model_reader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <new>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "drawing/files/path.h"

namespace vorna::drawing::model {
namespace {

constexpr std::uintmax_t most_bytes = std::uintmax_t{1} << 32; // of a file

// Formats that give smoothing groups or angles instead of normals, of which assimp makes normals.
bool has_made_normals(const std::string& suffix) {
    constexpr std::array<std::string_view, 8> suffixes{"3ds", "ase", "ask", "lwo", "lws", "lxo", "prj", "sib"};
    return std::ranges::find(suffixes, suffix) != suffixes.end();
}

// What was wrong, without the file and what every message of assimp's reader begins with.
std::string reason_of(const Model_Error& error, const std::string& file) {
    std::string_view reason = error.what();
    for (const std::string& start : {file + ": ", std::string("expected a model file: ")}) {
        reason.remove_prefix(reason.starts_with(start) ? start.size() : 0);
    }
    return std::string(reason);
}

// assimp is asked when the format's own reader refuses a file, but for files that are cut off: half of a model is none.
Mesh read_model(Input& input, Load_Limits& limits) {
    if (!input.format || !input.format->read_model) {
        return read_with_assimp(input, limits);
    }
    try {
        return input.format->read_model(input, limits);
    } catch (const Cut_Off_Error&) {
        throw;
    } catch (const Model_Error& own) {
        if (!input.content || !is_assimp_format(input.suffix)) {
            throw;
        }
        std::string reason;
        try {
            Mesh mesh = read_with_assimp(input, limits);
            if (!mesh.is_empty()) {
                mesh.notes.push_back(std::string(own.what()) + "; read by assimp instead");
                return mesh;
            }
            reason = "found nothing to draw";
        } catch (const Model_Error& error) {
            reason = reason_of(error, input.name);
        }
        throw Model_Error(std::string(own.what()) + "; assimp: " + reason);
    }
}

} // namespace

std::string read_file(const std::string& file, Load_Limits& limits) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path_of(file), error);
    if (error) {
        throw Model_Error(file + ": cannot be read: " + error.message());
    }
    if (size > most_bytes) {
        throw Model_Error(file + ": expected at most 4096 MiB, found " + std::to_string(size >> 20));
    }
    limits.add_file(std::filesystem::weakly_canonical(path_of(file), error).string(), size);
    limits.take_memory(file, size);
    errno = 0;
    std::ifstream stream(path_of(file), std::ios::binary);
    std::string content(size, '\0');
    if (!stream.read(content.data(), static_cast<std::streamsize>(size))) {
        throw Model_Error(file + ": cannot be read" + (errno != 0 ? ": " + std::generic_category().message(errno) : ""));
    }
    return content;
}

std::string read_reference(const std::string& model, const std::string& file, Load_Limits& limits) {
    if (!limits.allows(model, file)) {
        throw Model_Error(file + outside_text);
    }
    return read_file(file, limits);
}

std::uint32_t image_number(Mesh& mesh, const std::string& path, const std::string& model) {
    const auto found = std::ranges::find(mesh.images, path, &Image_Source::name);
    const auto number = static_cast<std::uint32_t>(found - mesh.images.begin());
    if (found == mesh.images.end()) {
        Image_Source& image = mesh.images.emplace_back();
        image.name = path;
        image.model = model;
    }
    return number;
}

Mesh load_models(std::vector<Input>& inputs, Load_Limits& limits, bool empty, std::optional<double> crease) {
    std::vector<Mesh> meshes;
    std::vector<std::string> names;
    names.reserve(inputs.size());
    for (const Input& input : inputs) {
        names.push_back(input.name);
    }
    std::string reading = names.front();
    try {
        for (Input& input : inputs) {
            reading = input.name;
            meshes.push_back(read_model(input, limits));
            if (crease && has_made_normals(input.suffix)) {
                meshes.back().normals.clear();
            }
            input.content.reset();
        }
        return joined_mesh(std::move(meshes), names, empty, crease);
    } catch (const std::bad_alloc&) {
        throw std::runtime_error(reading + ": not enough memory to read it");
    }
}

} // namespace vorna::drawing::model
