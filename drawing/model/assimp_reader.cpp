// Every format that assimp knows.
#include <algorithm>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <new>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include "drawing/files/path.h"
#include "drawing/files/setting_names.h"
#include "drawing/model/assimp_files.h"
#include "drawing/model/assimp_library.h"
#include "drawing/model/assimp_paint.h"
#include "drawing/model/model_reader.h"
#include "drawing/model/named_files.h"
#include "drawing/model/polygon.h"
#include "drawing/model/separate_process.h"
#include "drawing/model/tuple_table.h"

namespace vorna::drawing::model {
namespace {

// Adds the vertices of a part, those that are equal once, and returns their numbers. assimp's own step for it takes most of the
// time of reading.
std::vector<std::uint32_t> append_vertices(Mesh& mesh, const aiMesh& part, const Assimp_Paint& paint, const std::string& file) {
    using Vertex_Table = Tuple_Table<9>;
    std::vector<Vertex_Table::Tuple> vertices(part.mNumVertices); // position, normal, texture coordinates, colour
    for (unsigned v = 0; v < part.mNumVertices; ++v) {
        const aiVector3D& p = part.mVertices[v];
        const aiVector3D n = part.HasNormals() ? part.mNormals[v] : aiVector3D{};
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) {
            throw Model_Error(file + ": mesh '" + part.mName.C_Str() + "', vertex " + std::to_string(v) +
                              ": expected finite coordinates");
        }
        const bool finite_normal = std::isfinite(n.x) && std::isfinite(n.y) && std::isfinite(n.z);
        const Triple_Table::Tuple place = words_of({p.x, p.y, p.z}),
                                  normal = words_of(finite_normal ? VT_Vector{n.x, n.y, n.z} : VT_Vector{});
        const Texture_Point at = paint.material.has_image() ? coordinate(part, v, paint) : Texture_Point{};
        vertices[v] = {place[0],
                       place[1],
                       place[2],
                       normal[0],
                       normal[1],
                       normal[2],
                       std::bit_cast<std::uint32_t>(at.u),
                       std::bit_cast<std::uint32_t>(at.v),
                       std::bit_cast<std::uint32_t>(vertex_color(part, v, paint))};
    }
    const auto base = static_cast<std::uint32_t>(mesh.positions.size());
    Vertex_Table table;
    std::vector<std::uint32_t> numbers;
    numbers.reserve(vertices.size());
    table.append_indices(vertices, numbers);
    for (const Vertex_Table::Tuple& vertex : table.keys()) {
        const auto number = [&](std::size_t word) { return std::bit_cast<float>(vertex[word]); };
        mesh.positions.push_back({number(0), number(1), number(2)});
        mesh.normals.push_back({number(3), number(4), number(5)});
        mesh.coordinates.push_back({number(6), number(7)});
        mesh.colors.push_back(std::bit_cast<VT_RGB32>(vertex[8]));
    }
    std::ranges::for_each(numbers, [base](std::uint32_t& one) { one += base; });
    return numbers;
}

void append(Mesh& mesh, const aiMesh& part, const std::vector<Assimp_Paint>& paints, const std::string& file,
            Load_Limits& limits) {
    const bool known = part.mMaterialIndex < paints.size();
    const Assimp_Paint paint = known ? paints[part.mMaterialIndex] : Assimp_Paint{};
    const std::vector<std::uint32_t> numbers = append_vertices(mesh, part, paint, file);
    std::vector<std::uint32_t> corners;
    std::vector<VT_Vector> places;
    for (unsigned f = 0; f < part.mNumFaces; ++f) {
        const aiFace& face = part.mFaces[f];
        corners.clear();
        places.clear();
        for (unsigned i = 0; i < face.mNumIndices; ++i) {
            if (face.mIndices[i] >= part.mNumVertices) {
                throw Model_Error(file + ": mesh '" + part.mName.C_Str() + "', face " + std::to_string(f) +
                                  ": expected a vertex below " + std::to_string(part.mNumVertices) + ", found " +
                                  std::to_string(face.mIndices[i]));
            }
            corners.push_back(numbers[face.mIndices[i]]);
            places.push_back(mesh.positions[corners.back()]);
        }
        if (corners.size() <= 2) {
            std::vector<std::uint32_t>& list = corners.size() == 2 ? mesh.lines : mesh.points;
            list.insert(list.end(), corners.begin(), corners.end());
            continue;
        }
        append_polygon(mesh, corners, places, file, limits);
        mesh.triangle_materials.resize(mesh.triangle_count(), known ? part.mMaterialIndex : no_material);
    }
}

// The name under which assimp asks for the model: its suffix chooses the format.
std::string name_for_assimp(const Input& input) {
    const std::string ending = "." + input.suffix;
    return !input.content || input.suffix.empty() || input.name.ends_with(ending) ? input.name : input.name + ending;
}

// With images under the names that the model gives them.
Mesh read_with(aiFileIO* files, const std::string& name, const Input& input, Load_Limits& limits) {
    const std::string& file = input.name;
    const Assimp_Library& library = assimp();
    constexpr unsigned steps = aiProcess_PreTransformVertices | aiProcess_SortByPType | aiProcess_GenUVCoords;
    const aiScene* scene = library.aiImportFileEx(name.c_str(), steps, files);
    if (!scene && input.content && !is_assimp_format(input.suffix)) {
        throw Model_Error(file + ": expected a model, map or drawing, found " +
                          (input.content->empty()
                               ? "an empty file"
                               : "a file of another kind, or of one that only " + name_of(Setting::format) + " tells"));
    }
    if (!scene) {
        std::string reason = library.aiGetErrorString();
        if (reason.find("std::bad_alloc") != reason.npos || reason.find("std::bad_array_new_length") != reason.npos) {
            throw std::bad_alloc();
        }
        std::ranges::replace(reason, '\n', ' ');
        throw Model_Error(file + ": expected a model file: " + reason);
    }
    if (scene->mNumMaterials > 0 && !is_gltf(*scene->mMaterials[0])) {
        library.aiApplyPostProcessing(scene, aiProcess_TransformUVCoords);
    }
    Mesh mesh;
    std::vector<Assimp_Paint> paints;
    for (unsigned m = 0; m < scene->mNumMaterials; ++m) {
        paints.push_back(read_paint(mesh, *scene, *scene->mMaterials[m], file));
        mesh.materials.push_back(paints.back().material);
    }
    for (unsigned m = 0; m < scene->mNumMeshes; ++m) {
        append(mesh, *scene->mMeshes[m], paints, file, limits);
    }
    if (mesh.images.empty()) {
        mesh.coordinates.clear();
    }
    return mesh;
}

// Finds the images, which may have several names each.
void find_images(Mesh& mesh, const std::string& file, Load_Limits& limits) {
    Named_Files files(file, limits);
    std::vector<Image_Source> named = std::exchange(mesh.images, {});
    std::vector<std::uint32_t> numbers;
    for (Image_Source& image : named) {
        numbers.push_back(image_number(mesh, image.embedded ? image.name : files.path(file, image.name), file));
        if (image.embedded) {
            mesh.images[numbers.back()] = std::move(image);
        }
    }
    for (Material& material : mesh.materials) {
        material.renumber_images([&](std::uint32_t image) { return numbers[image]; });
    }
}

void send(Process_Pipe& pipe, const Mesh& mesh) {
    pipe.write_list(mesh.positions);
    pipe.write_list(mesh.normals);
    pipe.write_list(mesh.colors);
    pipe.write_list(mesh.triangles);
    pipe.write_list(mesh.lines);
    pipe.write_list(mesh.points);
    pipe.write_list(mesh.diagonals);
    pipe.write_list(mesh.coordinates);
    pipe.write_list(mesh.triangle_materials);
    pipe.write_list(mesh.materials);
    pipe.write_value(mesh.images.size());
    for (const Image_Source& image : mesh.images) {
        pipe.write_list(image.name);
        pipe.write_list(image.bytes);
        pipe.write_value(static_cast<char>(image.embedded));
        pipe.write_value(VT_Int_Pair{image.width, image.height});
    }
}

Mesh receive(Process_Pipe& pipe, const std::string& file, Load_Limits& limits) {
    Mesh mesh;
    mesh.positions = pipe.read_list<decltype(mesh.positions)>();
    limits.take_memory(file, vertex_memory * mesh.positions.size());
    mesh.normals = pipe.read_list<decltype(mesh.normals)>();
    mesh.colors = pipe.read_list<decltype(mesh.colors)>();
    mesh.triangles = pipe.read_list<decltype(mesh.triangles)>();
    mesh.lines = pipe.read_list<decltype(mesh.lines)>();
    mesh.points = pipe.read_list<decltype(mesh.points)>();
    limits.take_memory(file, triangle_memory * mesh.triangle_count() +
                                 sizeof(std::uint32_t) * (mesh.lines.size() + mesh.points.size()));
    mesh.diagonals = pipe.read_list<decltype(mesh.diagonals)>();
    mesh.coordinates = pipe.read_list<decltype(mesh.coordinates)>();
    mesh.triangle_materials = pipe.read_list<decltype(mesh.triangle_materials)>();
    mesh.materials = pipe.read_list<decltype(mesh.materials)>();
    for (auto left = pipe.read_value<std::size_t>(); left > 0; --left) {
        Image_Source& image = mesh.images.emplace_back();
        image.name = pipe.read_list<std::string>();
        image.model = file;
        image.bytes = pipe.read_list<std::string>();
        limits.take_memory(file, image.bytes.size());
        image.embedded = pipe.read_value<char>() != 0;
        const auto size = pipe.read_value<VT_Int_Pair>();
        image.width = size.x;
        image.height = size.y;
    }
    return mesh;
}

// Buffers that a glTF file names give room for what they hold.
void add_buffers(const Input& input, Load_Limits& limits) {
    const std::string read = input.content ? std::string() : read_file(input.name, limits);
    const std::string_view text = input.content ? *input.content : read, key = "\"uri\"";
    for (std::size_t at = text.find(key); at != text.npos; at = text.find(key, at + 1)) {
        const std::size_t start = text.find('"', at + key.size()), end = text.find('"', start + 1);
        if (start == text.npos || end == text.npos) {
            return;
        }
        const std::string name(text.substr(start + 1, std::min<std::size_t>(end - start - 1, 4096)));
        std::error_code error;
        const std::filesystem::path file = path_of(input.name).parent_path() / path_of(name);
        if (!name.starts_with("data:") && limits.allows(input.name, file.string()) &&
            std::filesystem::is_regular_file(file, error)) {
            limits.add_file(std::filesystem::weakly_canonical(file, error).string(), std::filesystem::file_size(file, error));
        }
    }
}

void check_readable(const std::string& file, Load_Limits& limits) {
    std::error_code error;
    if (std::filesystem::is_directory(path_of(file), error)) {
        throw Model_Error(file + ": cannot be read: Is a directory");
    }
    errno = 0;
    if (!std::ifstream(path_of(file), std::ios::binary)) {
        throw Model_Error(file + ": cannot be read: " + std::generic_category().message(errno));
    }
    if (const auto size = std::filesystem::file_size(path_of(file), error); !error) {
        limits.add_file(file, size);
    }
}

} // namespace

bool is_assimp_format(const std::string& suffix) {
    return !suffix.empty() && assimp().aiIsExtensionSupported(("." + suffix).c_str()) == AI_TRUE;
}

// In a process of its own, because damaged files make the library crash, run without end, exhaust the memory or run code of
// theirs.
Mesh read_with_assimp(const Input& input, Load_Limits& limits) {
    const std::string &file = input.name, name = name_for_assimp(input);
    std::error_code unknown;
    const std::uintmax_t size = input.content ? input.content->size() : std::filesystem::file_size(path_of(file), unknown);
    if (!input.content) {
        check_readable(file, limits);
    }
    if (size == 0 && is_assimp_format(input.suffix)) {
        throw Model_Error(file + ": expected a model file, found an empty one");
    }
    if (input.suffix == "gltf") {
        add_buffers(input, limits);
    }
    Mesh mesh;
    std::string failure;
    assimp(); // the copy can load nothing
    const auto work = [&](Process_Pipe& pipe) {
        Requested_Files files(pipe, name, input.content ? &*input.content : nullptr);
        try {
            // The scene is not destroyed: that crashes for some models.
            const Mesh read = read_with(files.callbacks(), name, input, limits);
            pipe.write_list(std::string());
            send(pipe, read);
        } catch (const Usage_Error& error) {
            pipe.write_list(std::string(error.what()));
        } catch (const std::bad_alloc&) {
            pipe.write_list(limits.memory_refusal(file));
        }
    };
    const auto take = [&](Process_Pipe& pipe) {
        failure = pipe.read_list<std::string>();
        if (failure.empty()) {
            mesh = receive(pipe, file, limits);
        }
    };
    Files_Of_Model files(file, limits);
    try {
        run_apart(
            limits_of_reader(limits, unknown ? 0 : size), [&](const std::string& wanted) { return files.open_file(wanted); },
            work, take);
    } catch (const Broken_Off& error) {
        throw Model_Error(file + ": expected a model file: the library for its format came to its end by " + error.what());
    }
    if (!failure.empty()) {
        throw Model_Error(files.refusal().empty() ? failure : files.refusal());
    }
    if (!is_consistent(mesh)) {
        throw Model_Error(file + ": expected a model file: the library for its format has made no model of it");
    }
    // Of its own formats the library looks for files in several places, the right one last.
    if (!files.refusal().empty() && input.format && input.format->read_model) {
        mesh.warnings.push_back(files.refusal());
    }
    find_images(mesh, file, limits);
    return mesh;
}

} // namespace vorna::drawing::model
