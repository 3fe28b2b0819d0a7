// A square with a texture, as files.
#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace vorna::drawing::model {

// A square whose texture coordinates run from low to high along both sides.
inline std::string square_obj(float low, float high) {
    std::ostringstream text;
    text << "mtllib paint.mtl\nusemtl paint\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\n";
    text << "vt " << low << ' ' << low << "\nvt " << high << ' ' << low << "\nvt " << high << ' ' << high << "\nvt " << low << ' '
         << high << "\nf 1/1 2/2 3/3 4/4\n";
    return text.str();
}

// The same square as a binary glTF file that holds its image. v runs downwards there.
inline std::string square_glb(float low, float high, int wrap, const std::string& image, const std::string& material = "") {
    const float numbers[] = {-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0, low, 1 - low, high, 1 - low, high, 1 - high, low, 1 - high};
    const std::uint16_t indices[] = {0, 1, 2, 0, 2, 3};
    std::string binary(reinterpret_cast<const char*>(numbers), sizeof numbers);
    binary.append(reinterpret_cast<const char*>(indices), sizeof indices);
    binary += image;
    binary.resize((binary.size() + 3) / 4 * 4);
    const auto view = [](std::size_t offset, std::size_t size) {
        return R"({"buffer":0,"byteOffset":)" + std::to_string(offset) + R"(,"byteLength":)" + std::to_string(size) + "}";
    };
    std::string json =
        R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],"meshes":[{"primitives":[{)"
        R"("attributes":{"POSITION":0,"TEXCOORD_0":1},"indices":2,"material":0}]}],"buffers":[{"byteLength":)" +
        std::to_string(binary.size()) + R"(}],"bufferViews":[)" + view(0, 48) + "," + view(48, 32) + "," + view(80, 12) + "," +
        view(92, image.size()) +
        R"(],"accessors":[{"bufferView":0,"componentType":5126,"count":4,"type":"VEC3","min":[-1,-1,0],"max":[1,1,0]},)"
        R"({"bufferView":1,"componentType":5126,"count":4,"type":"VEC2"},)"
        R"({"bufferView":2,"componentType":5123,"count":6,"type":"SCALAR"}],"images":[{"bufferView":3,"mimeType":"image/png"}],)"
        R"("samplers":[{"wrapS":)" +
        std::to_string(wrap) + R"(,"wrapT":)" + std::to_string(wrap) +
        R"(}],"textures":[{"sampler":0,"source":0}],"materials":[{)" + material +
        R"("pbrMetallicRoughness":{"baseColorFactor":[1,1,1,1],"baseColorTexture":{"index":0}}}]})";
    json.resize((json.size() + 3) / 4 * 4, ' ');
    std::string file;
    const auto word = [&](std::size_t value) {
        for (int shift = 0; shift < 32; shift += 8) {
            file += static_cast<char>(value >> shift);
        }
    };
    file += "glTF";
    word(2);
    word(12 + 8 + json.size() + 8 + binary.size());
    word(json.size());
    file += "JSON" + json;
    word(binary.size());
    file += std::string("BIN\0", 4) + binary;
    return file;
}

// Seen so that the square takes 0.94 of the image.
inline const std::vector<std::string> straight{"--view", "front", "--ortho", "--size", "120x120", "--background", "white"};

inline std::vector<std::string> with(std::vector<std::string> options, const std::vector<std::string>& more) {
    options.insert(options.end(), more.begin(), more.end());
    return options;
}

} // namespace vorna::drawing::model
