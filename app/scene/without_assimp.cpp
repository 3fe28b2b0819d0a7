// Model files of other formats where assimp is not at hand.
#include "app/scene/model_reader.h"

namespace app::scene {

Mesh read_with_assimp(const std::string& file) {
    throw Model_Error(file + ": expected a PLY, OBJ or STL file: this build reads no others");
}

} // namespace app::scene
