// Model files in memory, format by format.
#pragma once

#include <string>
#include <string_view>

#include "app/scene/mesh.h"

namespace app::scene {

// Reads a model file and makes it fit for drawing. PLY, OBJ and STL, told apart by content and file name, have readers of their
// own; everything else goes through assimp. Throws Model_Error.
Mesh load_model(const std::string& file);

// The formats' own readers: file names the text for messages, and OBJ materials are looked for beside it. Memory stays within a
// small multiple of the content's size, whatever counts it declares. Throw Model_Error; the mesh is not finished yet.
Mesh read_ply(const std::string& file, std::string_view content);
Mesh read_obj(const std::string& file, std::string_view content);
Mesh read_stl(const std::string& file, std::string_view content);
// Opens the file itself.
Mesh read_with_assimp(const std::string& file);

// The whole file. Throws Model_Error.
std::string read_file(const std::string& file);

} // namespace app::scene
