// Model files of other formats where assimp is not at hand.
#include "drawing/model/model_reader.h"

namespace vorna::drawing::model {

bool is_assimp_format(const std::string&) {
    return false;
}

Mesh read_with_assimp(const Input& input, Load_Limits&) {
    throw Model_Error(input.name + ": expected a PLY, OBJ or STL file: this build reads no others");
}

} // namespace vorna::drawing::model
