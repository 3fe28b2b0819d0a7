// Model files in memory, format by format.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/input.h"
#include "app/scene/mesh.h"

namespace app::scene {

// Reads models and makes them fit for being drawn together, in one mesh. PLY, OBJ and STL have readers of their own; everything
// else goes through assimp. Contents are given up. empty: whether files without triangles are fine. Throws Model_Error.
Mesh load_models(std::vector<Input>& inputs, bool empty = false);
// A single file, whose name says its format.
Mesh load_model(const std::string& file);

// Whether models of the format are read here.
bool is_model_format(const std::string& format);

// The formats' own readers: file names the text for messages, and OBJ materials are looked for beside it. Memory stays within a
// small multiple of the content's size, whatever counts it declares. Throw Model_Error; the mesh is not finished yet.
Mesh read_ply(const std::string& file, std::string_view content);
Mesh read_obj(const std::string& file, std::string_view content);
Mesh read_stl(const std::string& file, std::string_view content);
// Opens the file itself unless there is a content already.
Mesh read_with_assimp(const Input& input);
bool is_assimp_format(const std::string& format);

// Where an image lies that a model or material file names: relative to that file, else beside it under the same name in
// capitals or not, as on the machine that it was written on. Folders may be parted by either slash.
std::string image_path(const std::string& file, std::string name);
// The number of an image file among a mesh's images.
std::uint32_t image_number(Mesh& mesh, const std::string& path);

// The whole file, a model or not. Throws Model_Error.
std::string read_file(const std::string& file);

} // namespace app::scene
