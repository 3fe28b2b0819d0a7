// assimp, loaded when a model needs it: with the libraries that it needs itself, it takes longer to load than many models to
// draw.
#pragma once

#include <assimp/cfileio.h>
#include <assimp/cimport.h>
#include <assimp/material.h>

namespace vorna::drawing::model {

#define VORNA_ASSIMP_FUNCTIONS(LIST)                                                                                             \
    LIST(aiApplyPostProcessing)                                                                                                  \
    LIST(aiGetErrorString)                                                                                                       \
    LIST(aiGetMaterialColor)                                                                                                     \
    LIST(aiGetMaterialFloatArray)                                                                                                \
    LIST(aiGetMaterialIntegerArray)                                                                                              \
    LIST(aiGetMaterialProperty)                                                                                                  \
    LIST(aiGetMaterialString)                                                                                                    \
    LIST(aiGetMaterialTexture)                                                                                                   \
    LIST(aiGetMaterialTextureCount)                                                                                              \
    LIST(aiGetMaterialUVTransform)                                                                                               \
    LIST(aiImportFileEx)                                                                                                         \
    LIST(aiIsExtensionSupported)

// The functions under their own names.
struct Assimp_Library {
#define DECLARE(function) decltype(&::function) function;
    VORNA_ASSIMP_FUNCTIONS(DECLARE)
#undef DECLARE
};

// Loads it at the first call; it stays until the process ends. Throws std::runtime_error. The functions of materials that
// assimp's headers call, those above, work after the first call.
const Assimp_Library& assimp();

} // namespace vorna::drawing::model
