// Materials that assimp has read: what a mesh needs to know of them.
#pragma once

#include <optional>
#include <string>

#include <assimp/scene.h>

#include "drawing/model/mesh.h"

namespace vorna::drawing::model {

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
struct Assimp_Paint {
    Material material;
    VT_RGB32 color{0, 0, 0, 0};
    unsigned channel = 0; // of texture coordinates
    std::optional<Coordinate_Transform> transform;
    bool gltf = false; // colours are light, and those of vertices are multiplied with the material's
};

bool is_gltf(const aiMaterial& material);

// Adds the material's images to those of the mesh, under the names that the model gives them. file: of the model.
Assimp_Paint read_paint(Mesh& mesh, const aiScene& scene, const aiMaterial& from, const std::string& file);

// Of a vertex: its colour, and its place in the material's images.
VT_RGB32 vertex_color(const aiMesh& part, unsigned v, const Assimp_Paint& paint);
Texture_Point coordinate(const aiMesh& part, unsigned v, const Assimp_Paint& paint);

} // namespace vorna::drawing::model
