// Model files in memory, format by format.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/files/input.h"
#include "drawing/model/mesh.h"

namespace vorna::drawing::model {

// Reads models and makes them fit for being drawn together, in one mesh. assimp reads formats without a reader of their own, and
// files that such a reader refuses. Contents are given up. empty: whether empty models are accepted. crease: see
// complete_normals. Throws Model_Error and Load_Error.
Mesh load_models(std::vector<Input>& inputs, Load_Limits& limits, bool empty = false, std::optional<double> crease = {});
// The formats' own readers: file names the text for messages, and OBJ materials are looked for beside it. Memory stays within a
// small multiple of the content's size, whatever counts it declares. Throw Model_Error and Load_Error; the mesh is not finished
// yet.
Mesh read_ply(const std::string& file, std::string_view content, Load_Limits& limits);
Mesh read_obj(const std::string& file, std::string_view content, Load_Limits& limits);
Mesh read_stl(const std::string& file, std::string_view content, Load_Limits& limits);
// Opens the file itself unless there is a content already.
Mesh read_with_assimp(const Input& input, Load_Limits& limits);
bool is_assimp_format(const std::string& suffix);

// The number of an image file among a mesh's images, which the model names.
std::uint32_t image_number(Mesh& mesh, const std::string& path, const std::string& model);

// The whole file, a model or not. Throws Model_Error and Load_Error.
std::string read_file(const std::string& file, Load_Limits& limits);
// One that the model names. Throws Model_Error, too, for what the limits do not allow.
std::string read_reference(const std::string& model, const std::string& file, Load_Limits& limits);

// Memory that elements of a mesh take in all, with what finishing it needs. A vertex' colours, normals and so on are its own.
inline constexpr std::uint64_t position_memory = 24, vertex_memory = 96, triangle_memory = 160;

} // namespace vorna::drawing::model
