// Every format that assimp knows.
#include <algorithm>
#include <assimp/Importer.hpp>
#include <cmath>
#include <memory>

#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include "app/scene/model_reader.h"

namespace app::scene {
namespace {

std::uint8_t channel(float value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0.0F, 1.0F) * 255.0F + 0.5F);
}

VT_RGB32 color_from(const aiColor4D& color) {
    return {channel(color.b), channel(color.g), channel(color.r), 255};
}

VT_RGB32 material_color(const aiScene& scene, const aiMesh& part) {
    aiColor4D diffuse;
    if (part.mMaterialIndex < scene.mNumMaterials &&
        scene.mMaterials[part.mMaterialIndex]->Get(AI_MATKEY_COLOR_DIFFUSE, diffuse) == AI_SUCCESS) {
        return color_from(diffuse);
    }
    return {0, 0, 0, 0};
}

void append(Mesh& mesh, const aiScene& scene, const aiMesh& part, const std::string& file) {
    const auto base = static_cast<std::uint32_t>(mesh.positions.size());
    const VT_RGB32 color = material_color(scene, part);
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
        mesh.colors.push_back(part.HasVertexColors(0) ? color_from(part.mColors[0][v]) : color);
    }
    for (unsigned f = 0; f < part.mNumFaces; ++f) {
        const aiFace& face = part.mFaces[f];
        if (face.mNumIndices != 3) {
            continue;
        }
        for (unsigned i = 0; i < 3; ++i) {
            if (face.mIndices[i] >= part.mNumVertices) {
                throw Model_Error(file + ": mesh '" + part.mName.C_Str() + "', face " + std::to_string(f) +
                                  ": expected a vertex below " + std::to_string(part.mNumVertices) + ", found " +
                                  std::to_string(face.mIndices[i]));
            }
            mesh.triangles.push_back(base + face.mIndices[i]);
        }
    }
}

} // namespace

Mesh read_with_assimp(const std::string& file) {
    Assimp::Importer importer;
    importer.SetPropertyInteger(AI_CONFIG_PP_SBP_REMOVE, aiPrimitiveType_POINT | aiPrimitiveType_LINE);
    const aiScene* scene = importer.ReadFile(file, aiProcess_Triangulate | aiProcess_JoinIdenticalVertices |
                                                       aiProcess_PreTransformVertices | aiProcess_SortByPType);
    if (!scene) {
        std::string reason = importer.GetErrorString();
        std::ranges::replace(reason, '\n', ' ');
        throw Model_Error(file + ": expected a model file: " + reason);
    }
    Mesh mesh;
    for (unsigned m = 0; m < scene->mNumMeshes; ++m) {
        append(mesh, *scene, *scene->mMeshes[m], file);
    }
    return mesh;
}

} // namespace app::scene
