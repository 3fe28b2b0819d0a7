// Materials that assimp has read.
#include "drawing/model/assimp_paint.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <utility>

#include <assimp/GltfMaterial.h>

#include "drawing/model/assimp_library.h"
#include "drawing/model/model_reader.h"

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

// The image of the first of the types that has one. The first image of a material says where all of them lie; one that takes
// other texture coordinates is left out.
std::uint32_t read_image(Mesh& mesh, const aiScene& scene, const aiMaterial& from, const std::string& file, Assimp_Paint& paint,
                         std::initializer_list<aiTextureType> types) {
    for (const aiTextureType type : types) {
        aiString path;
        if (from.GetTexture(type, 0, &path) != AI_SUCCESS || path.length == 0) {
            continue;
        }
        int channel_number = 0;
        from.Get("$tex.uvwsrc", static_cast<unsigned>(type), 0, channel_number);
        if (!paint.material.has_image()) {
            paint.material.wrap_u = wrap_of(from, "$tex.mapmodeu", type);
            paint.material.wrap_v = wrap_of(from, "$tex.mapmodev", type);
            paint.channel = static_cast<unsigned>(channel_number);
            aiUVTransform transform;
            if (is_gltf(from) && from.Get("$tex.uvtrafo", static_cast<unsigned>(type), 0, transform) == AI_SUCCESS) {
                paint.transform = Coordinate_Transform::of_gltf(transform);
            }
        } else if (paint.channel != static_cast<unsigned>(channel_number)) {
            continue;
        }
        const aiTexture* embedded = scene.GetEmbeddedTexture(path.C_Str());
        return embedded ? embedded_image_number(mesh, file + ": image " + path.C_Str(), *embedded)
                        : image_number(mesh, path.C_Str(), file);
    }
    return no_image;
}

// In glTF one image holds metal and roughness, and assimp calls that of occlusion a light map. Elsewhere light maps hold light.
void read_images(Mesh& mesh, const aiScene& scene, const aiMaterial& from, const std::string& file, Assimp_Paint& paint) {
    const auto read = [&](std::initializer_list<aiTextureType> types) {
        return read_image(mesh, scene, from, file, paint, types);
    };
    Material& material = paint.material;
    material.image = read({aiTextureType_BASE_COLOR, aiTextureType_DIFFUSE});
    Surface_Images& images = material.images;
    images.emission = read({aiTextureType_EMISSION_COLOR, aiTextureType_EMISSIVE});
    if (paint.gltf) {
        images.metal = images.roughness = read({aiTextureType_UNKNOWN, aiTextureType_METALNESS});
        images.occlusion = read({aiTextureType_LIGHTMAP});
    } else {
        images.metal = read({aiTextureType_METALNESS});
        images.roughness = read({aiTextureType_DIFFUSE_ROUGHNESS});
        images.occlusion = read({aiTextureType_AMBIENT_OCCLUSION});
        images.opacity = read({aiTextureType_OPACITY});
    }
}

// Metal and roughness where glTF and others state them, else the specular colour of older formats. What images hold is multiplied
// with the numbers; a surface that is drawn without its images is no metal and does not glow.
void read_finish(const aiMaterial& from, Assimp_Paint& paint) {
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
    Material& material = paint.material;
    const bool textured = material.image != no_image;
    Finish& finish = material.finish;
    auto emission = color_of(AI_MATKEY_COLOR_EMISSIVE);
    if (material.images.emission != no_image) {
        // Black beside an image stands for nothing said where exporters write it so.
        const bool is_black = !emission || std::ranges::all_of(*emission, [](float light) { return !(light > 0); });
        material.emission = is_black && !paint.gltf ? std::array{1.0F, 1.0F, 1.0F} : emission.value_or(material.emission);
        emission.reset();
    }
    material.occlusion = number_of("$tex.strength", aiTextureType_LIGHTMAP, 0).value_or(1);
    const auto metal = number_of(AI_MATKEY_METALLIC_FACTOR), roughness = number_of(AI_MATKEY_ROUGHNESS_FACTOR);
    if (paint.gltf || metal || roughness) {
        const auto has_image = [&from](aiTextureType type) { return from.GetTextureCount(type) > 0; };
        const bool mapped = has_image(aiTextureType_METALNESS) || has_image(aiTextureType_UNKNOWN);
        material.metal = metal.value_or(1);
        material.roughness = roughness.value_or(1);
        finish = mapped ? finish_of_metal(0, usual_roughness)
                        : finish_of_metal(metal.value_or(0), roughness.value_or(usual_roughness));
        if (emission) {
            std::ranges::transform(*emission, finish.emission.begin(), [](float light) { return std::clamp(light, 0.0F, 1.0F); });
        }
        int mode = 0;
        finish.lit = from.Get(AI_MATKEY_SHADING_MODEL, mode) != AI_SUCCESS || mode != aiShadingMode_NoShading || !paint.gltf;
        if (!finish.lit) {
            // Shown in its own colour: nothing else that the file says of the surface counts.
            material.images = {};
            material.emission = {};
            finish.emission = {};
        }
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

std::uint8_t product(std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>((a * b + 127) / 255);
}

} // namespace

bool is_gltf(const aiMaterial& material) {
    aiString mode;
    return material.Get(AI_MATKEY_GLTF_ALPHAMODE, mode) == AI_SUCCESS;
}

Assimp_Paint read_paint(Mesh& mesh, const aiScene& scene, const aiMaterial& from, const std::string& file) {
    Assimp_Paint paint;
    paint.gltf = is_gltf(from);
    read_images(mesh, scene, from, file, paint);
    const bool textured = paint.material.image != no_image;
    aiColor4D color;
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

VT_RGB32 vertex_color(const aiMesh& part, unsigned v, const Assimp_Paint& paint) {
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

Texture_Point coordinate(const aiMesh& part, unsigned v, const Assimp_Paint& paint) {
    if (paint.channel >= AI_MAX_NUMBER_OF_TEXTURECOORDS || !part.HasTextureCoords(paint.channel)) {
        return {};
    }
    const aiVector3D& place = part.mTextureCoords[paint.channel][v];
    return paint.transform ? (*paint.transform)(place.x, place.y) : Texture_Point{place.x, place.y};
}

} // namespace vorna::drawing::model
