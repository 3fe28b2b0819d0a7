// Every format that assimp knows.
#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <new>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include <assimp/GltfMaterial.h>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include "drawing/files/memory.h"
#include "drawing/files/path.h"
#include "drawing/model/assimp_files.h"
#include "drawing/model/assimp_library.h"
#include "drawing/model/model_reader.h"
#include "drawing/model/polygon.h"
#include "drawing/model/separate_process.h"

namespace vorna::drawing::model {
namespace {

std::uint8_t channel(float value) {
    return value > 0 ? static_cast<std::uint8_t>(std::min(value, 1.0F) * 255.0F + 0.5F) : std::uint8_t{0}; // for no number, too
}

VT_RGB32 color_from(const aiColor4D& color) {
    return {channel(color.b), channel(color.g), channel(color.r), 255};
}

// glTF gives colours as intensities of light; pixels hold their square roots.
VT_RGB32 color_of_light(const aiColor4D& light) {
    const auto root = [](float value) { return std::sqrt(std::max(value, 0.0F)); };
    return color_from({root(light.r), root(light.g), root(light.b), 1});
}

// Moves texture coordinates: scales and turns them around the image's upper left corner, then shifts them, v downwards.
struct Coordinate_Transform {
    double scale_u = 1, scale_v = 1, cosine = 1, sine = 0, shift_u = 0, shift_v = 0;

    // glTF's own transform. Assimp tells it as one around the image's middle, but with shifts that its own step for applying
    // transforms gets wrong for scales; they are turned back into what the file says.
    static Coordinate_Transform of_gltf(const aiUVTransform& told) {
        Coordinate_Transform result;
        result.scale_u = told.mScaling.x;
        result.scale_v = told.mScaling.y;
        result.cosine = std::cos(-told.mRotation);
        result.sine = std::sin(-told.mRotation);
        result.shift_u = told.mTranslation.x - 0.5 * result.scale_u * (1 - result.cosine + result.sine);
        result.shift_v = 0.5 * result.scale_v * (result.sine + result.cosine - 1) + 1 - result.scale_v - told.mTranslation.y;
        return result;
    }

    Texture_Point operator()(double u, double v) const {
        const double x = scale_u * u, y = scale_v * (1 - v);
        return {static_cast<float>(cosine * x + sine * y + shift_u), static_cast<float>(1 + sine * x - cosine * y - shift_v)};
    }
};

// What a material says, beyond what the mesh needs to know of it.
struct Paint {
    Material material;
    VT_RGB32 color{0, 0, 0, 0};
    unsigned channel = 0; // of texture coordinates
    std::optional<Coordinate_Transform> transform;
    bool gltf = false; // colours are light, and those of vertices are multiplied with the material's
};

Wrap wrap_of(const aiMaterial& material, const char* key, aiTextureType type) {
    int mode = aiTextureMapMode_Wrap;
    material.Get(key, static_cast<unsigned>(type), 0, mode);
    return mode == aiTextureMapMode_Mirror                                    ? Wrap::mirror
           : mode == aiTextureMapMode_Clamp || mode == aiTextureMapMode_Decal ? Wrap::clamp
                                                                              : Wrap::repeat;
}

// An image inside the model: in memory as a file, or as rows of pixels. Images of the same bytes are one.
std::uint32_t embedded_image_number(Mesh& mesh, const std::string& name, const aiTexture& texture) {
    Image_Source source;
    source.name = name;
    source.embedded = true;
    std::size_t size = texture.mWidth;
    if (texture.mHeight > 0 && texture.mWidth > 0 && texture.mWidth <= largest_image_side &&
        texture.mHeight <= largest_image_side) {
        source.width = static_cast<std::int32_t>(texture.mWidth);
        source.height = static_cast<std::int32_t>(texture.mHeight);
        static_assert(sizeof(aiTexel) == sizeof(VT_RGB32) && offsetof(aiTexel, b) == 0 && offsetof(aiTexel, r) == 2);
        size = sizeof(aiTexel) * texture.mWidth * texture.mHeight;
    }
    const std::string_view bytes(reinterpret_cast<const char*>(texture.pcData), size);
    const auto found = std::ranges::find_if(mesh.images, [&](const Image_Source& image) {
        return image.embedded && image.width == source.width && image.height == source.height && image.bytes == bytes;
    });
    if (found != mesh.images.end()) {
        return static_cast<std::uint32_t>(found - mesh.images.begin());
    }
    source.bytes = bytes;
    mesh.images.push_back(std::move(source));
    return static_cast<std::uint32_t>(mesh.images.size() - 1);
}

bool is_gltf(const aiMaterial& material) {
    aiString mode;
    return material.Get(AI_MATKEY_GLTF_ALPHAMODE, mode) == AI_SUCCESS;
}

void read_image(Mesh& mesh, const aiScene& scene, const aiMaterial& from, const std::string& file, Paint& paint) {
    for (const aiTextureType type : {aiTextureType_BASE_COLOR, aiTextureType_DIFFUSE}) {
        aiString path;
        if (from.GetTexture(type, 0, &path) != AI_SUCCESS || path.length == 0) {
            continue;
        }
        const aiTexture* embedded = scene.GetEmbeddedTexture(path.C_Str());
        paint.material.image = embedded ? embedded_image_number(mesh, file + ": image " + path.C_Str(), *embedded)
                                        : image_number(mesh, path.C_Str(), file);
        paint.material.wrap_u = wrap_of(from, "$tex.mapmodeu", type);
        paint.material.wrap_v = wrap_of(from, "$tex.mapmodev", type);
        int channel_number = 0;
        from.Get("$tex.uvwsrc", static_cast<unsigned>(type), 0, channel_number);
        paint.channel = static_cast<unsigned>(channel_number);
        aiUVTransform transform;
        if (is_gltf(from) && from.Get("$tex.uvtrafo", static_cast<unsigned>(type), 0, transform) == AI_SUCCESS) {
            paint.transform = Coordinate_Transform::of_gltf(transform);
        }
        return;
    }
}

// Metal and roughness where glTF and others state them, else the specular colour of older formats. An image that says where
// metal is makes the numbers useless, and one that glows in places the colour of the glow.
void read_finish(const aiMaterial& from, Paint& paint) {
    constexpr float usual_roughness = 0.5F;
    const auto number_of = [&from](const char* key, unsigned type, unsigned index) -> std::optional<float> {
        float number = 0;
        return from.Get(key, type, index, number) == AI_SUCCESS && std::isfinite(number) ? std::optional(number) : std::nullopt;
    };
    const auto color_of = [&from](const char* key, unsigned type, unsigned index) -> std::optional<std::array<float, 3>> {
        aiColor4D color;
        const bool known = from.Get(key, type, index, color) == AI_SUCCESS && std::isfinite(color.r + color.g + color.b);
        return known ? std::optional(std::array{color.r, color.g, color.b}) : std::nullopt;
    };
    const auto has_image = [&from](aiTextureType type) { return from.GetTextureCount(type) > 0; };
    const bool textured = paint.material.image != no_image;
    Finish& finish = paint.material.finish;
    const auto emission = has_image(aiTextureType_EMISSIVE) ? std::nullopt : color_of(AI_MATKEY_COLOR_EMISSIVE);
    const auto metal = number_of(AI_MATKEY_METALLIC_FACTOR), roughness = number_of(AI_MATKEY_ROUGHNESS_FACTOR);
    if (paint.gltf || metal || roughness) {
        const bool mapped = has_image(aiTextureType_METALNESS) || has_image(aiTextureType_UNKNOWN);
        finish = mapped ? finish_of_metal(0, usual_roughness)
                        : finish_of_metal(metal.value_or(0), roughness.value_or(usual_roughness));
        if (emission) {
            std::ranges::transform(*emission, finish.emission.begin(), [](float light) { return std::clamp(light, 0.0F, 1.0F); });
        }
        int mode = 0;
        finish.lit = from.Get(AI_MATKEY_SHADING_MODEL, mode) != AI_SUCCESS || mode != aiShadingMode_NoShading || !paint.gltf;
        return;
    }
    Phong phong;
    const bool colored = paint.color.alpha != 0 && !textured;
    if (colored) {
        phong.diffuse = {static_cast<float>(paint.color.red) / 255, static_cast<float>(paint.color.green) / 255,
                         static_cast<float>(paint.color.blue) / 255};
    }
    phong.exponent = number_of(AI_MATKEY_SHININESS);
    if (phong.exponent.value_or(0) > 0) {
        phong.specular = color_of(AI_MATKEY_COLOR_SPECULAR);
    }
    phong.emission = emission.value_or(phong.emission);
    finish = finish_of(phong);
    if (colored) {
        paint.color = color_from({phong.diffuse[0], phong.diffuse[1], phong.diffuse[2], 1});
    }
}

Paint read_paint(Mesh& mesh, const aiScene& scene, const aiMaterial& from, const std::string& file) {
    Paint paint;
    read_image(mesh, scene, from, file, paint);
    const bool textured = paint.material.image != no_image;
    aiColor4D color;
    paint.gltf = is_gltf(from);
    const bool has_base = from.Get(AI_MATKEY_BASE_COLOR, color) == AI_SUCCESS;
    if (has_base) {
        paint.material.opacity = color.a;
    }
    if (has_base || from.Get(AI_MATKEY_COLOR_DIFFUSE, color) == AI_SUCCESS) {
        // Black under an image stands for nothing said, where exporters write it so.
        const bool said = !textured || paint.gltf || color.r > 0 || color.g > 0 || color.b > 0;
        paint.color = !said ? VT_RGB32{0, 0, 0, 0} : paint.gltf ? color_of_light(color) : color_from(color);
    }
    aiString mode;
    if (from.Get(AI_MATKEY_GLTF_ALPHAMODE, mode) == AI_SUCCESS) {
        const std::string_view name = mode.C_Str();
        paint.material.transparency = name == "BLEND"  ? Transparency::blended
                                      : name == "MASK" ? Transparency::cut_out
                                                       : Transparency::none;
        from.Get(AI_MATKEY_GLTF_ALPHACUTOFF, paint.material.cut_off);
    } else {
        from.Get(AI_MATKEY_OPACITY, paint.material.opacity);
        paint.material.opacity = shown_opacity(paint.material.opacity);
    }
    if (paint.material.transparency == Transparency::none || paint.material.transparency == Transparency::cut_out) {
        paint.material.opacity = 1;
    }
    for (float* number : {&paint.material.opacity, &paint.material.cut_off}) {
        *number = std::isfinite(*number) ? *number : 1;
    }
    read_finish(from, paint);
    return paint;
}

std::uint8_t product(std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>((a * b + 127) / 255);
}

VT_RGB32 vertex_color(const aiMesh& part, unsigned v, const Paint& paint) {
    if (!part.HasVertexColors(0)) {
        return paint.color;
    }
    if (!paint.gltf) {
        return color_from(part.mColors[0][v]);
    }
    const VT_RGB32 own = color_of_light(part.mColors[0][v]);
    if (paint.color.alpha == 0) {
        return own;
    }
    return {product(own.blue, paint.color.blue), product(own.green, paint.color.green), product(own.red, paint.color.red), 255};
}

Texture_Point coordinate(const aiMesh& part, unsigned v, const Paint& paint) {
    if (paint.channel >= AI_MAX_NUMBER_OF_TEXTURECOORDS || !part.HasTextureCoords(paint.channel)) {
        return {};
    }
    const aiVector3D& place = part.mTextureCoords[paint.channel][v];
    return paint.transform ? (*paint.transform)(place.x, place.y) : Texture_Point{place.x, place.y};
}

void append(Mesh& mesh, const aiMesh& part, const std::vector<Paint>& paints, const std::string& file, Load_Limits& limits) {
    const auto base = static_cast<std::uint32_t>(mesh.positions.size());
    const bool known = part.mMaterialIndex < paints.size();
    const Paint paint = known ? paints[part.mMaterialIndex] : Paint{};
    for (unsigned v = 0; v < part.mNumVertices; ++v) {
        const aiVector3D& p = part.mVertices[v];
        const aiVector3D n = part.HasNormals() ? part.mNormals[v] : aiVector3D{};
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) {
            throw Model_Error(file + ": mesh '" + part.mName.C_Str() + "', vertex " + std::to_string(v) +
                              ": expected finite coordinates");
        }
        const bool finite_normal = std::isfinite(n.x) && std::isfinite(n.y) && std::isfinite(n.z);
        mesh.positions.push_back({p.x, p.y, p.z});
        mesh.normals.push_back(finite_normal ? VT_Vector{n.x, n.y, n.z} : VT_Vector{});
        mesh.colors.push_back(vertex_color(part, v, paint));
        mesh.coordinates.push_back(coordinate(part, v, paint));
    }
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
            corners.push_back(base + face.mIndices[i]);
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
    constexpr unsigned steps =
        aiProcess_JoinIdenticalVertices | aiProcess_PreTransformVertices | aiProcess_SortByPType | aiProcess_GenUVCoords;
    const aiScene* scene = library.aiImportFileEx(name.c_str(), steps, files);
    if (!scene && input.content && !is_assimp_format(input.suffix)) {
        throw Model_Error(file + ": expected a model, map or drawing that its content makes known, found " +
                          (input.content->empty() ? "nothing" : "another one; --input-format names it"));
    }
    if (!scene) {
        std::string reason = library.aiGetErrorString();
        std::ranges::replace(reason, '\n', ' ');
        throw Model_Error(file + ": expected a model file: " + reason);
    }
    if (scene->mNumMaterials > 0 && !is_gltf(*scene->mMaterials[0])) {
        library.aiApplyPostProcessing(scene, aiProcess_TransformUVCoords);
    }
    Mesh mesh;
    std::vector<Paint> paints;
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
    std::vector<Image_Source> named = std::exchange(mesh.images, {});
    std::vector<std::uint32_t> numbers;
    for (Image_Source& image : named) {
        numbers.push_back(image_number(mesh, image.embedded ? image.name : named_path(file, file, image.name, limits), file));
        if (image.embedded) {
            mesh.images[numbers.back()] = std::move(image);
        }
    }
    for (Material& material : mesh.materials) {
        material.image = material.image == no_image ? no_image : numbers[material.image];
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

// For a file of so many bytes: time, and addresses besides those in use.
Process_Limits limits_for(const Load_Limits& limits, std::uintmax_t file_size) {
    constexpr unsigned seconds = 60; // and one more for each megabyte
    const std::uint64_t used = address_space(), left = limits.memory_left();
    return {static_cast<std::size_t>(left > UINT64_MAX - used ? UINT64_MAX : used + left),
            seconds + static_cast<unsigned>(std::min<std::uintmax_t>(file_size >> 20, 86400))};
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
            limits_for(limits, unknown ? 0 : size), [&](const std::string& wanted) { return files.open_file(wanted); }, work,
            take);
    } catch (const Broken_Off& error) {
        throw Model_Error(file + ": expected a model file: the library for its format came to its end by " + error.what());
    }
    if (!failure.empty()) {
        throw Model_Error(files.refusal().empty() ? failure : files.refusal());
    }
    if (!is_consistent(mesh)) {
        throw Model_Error(file + ": expected a model file: the library for its format has made no model of it");
    }
    find_images(mesh, file, limits);
    return mesh;
}

} // namespace vorna::drawing::model
