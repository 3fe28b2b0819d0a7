// assimp, loaded when a model needs it.
#include "drawing/model/assimp_library.h"

#include <stdexcept>
#include <string>
#include <type_traits>

#include <dlfcn.h>

namespace vorna::drawing::model {
namespace {

Assimp_Library load_library() {
    void* const handle = dlopen(VORNA_ASSIMP_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    const auto load = [handle](auto& function, const char* name) {
        function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(handle ? dlsym(handle, name) : nullptr);
        if (!function) {
            throw std::runtime_error("assimp, which reads other models than PLY, OBJ and STL, cannot be loaded: " +
                                     std::string(dlerror()));
        }
    };
    Assimp_Library library;
#define LOAD(function) load(library.function, #function);
    VORNA_ASSIMP_FUNCTIONS(LOAD)
#undef LOAD
    return library;
}

} // namespace

const Assimp_Library& assimp() {
    static const Assimp_Library library = load_library();
    return library;
}

} // namespace vorna::drawing::model

// What the templates in assimp's header of materials call.
using vorna::drawing::model::assimp;

aiReturn aiGetMaterialProperty(const aiMaterial* material, const char* key, unsigned type, unsigned index,
                               const aiMaterialProperty** property) {
    return assimp().aiGetMaterialProperty(material, key, type, index, property);
}

aiReturn aiGetMaterialFloatArray(const aiMaterial* material, const char* key, unsigned type, unsigned index, ai_real* numbers,
                                 unsigned* count) {
    return assimp().aiGetMaterialFloatArray(material, key, type, index, numbers, count);
}

aiReturn aiGetMaterialIntegerArray(const aiMaterial* material, const char* key, unsigned type, unsigned index, int* numbers,
                                   unsigned* count) {
    return assimp().aiGetMaterialIntegerArray(material, key, type, index, numbers, count);
}

aiReturn aiGetMaterialColor(const aiMaterial* material, const char* key, unsigned type, unsigned index, aiColor4D* color) {
    return assimp().aiGetMaterialColor(material, key, type, index, color);
}

aiReturn aiGetMaterialUVTransform(const aiMaterial* material, const char* key, unsigned type, unsigned index,
                                  aiUVTransform* transform) {
    return assimp().aiGetMaterialUVTransform(material, key, type, index, transform);
}

aiReturn aiGetMaterialString(const aiMaterial* material, const char* key, unsigned type, unsigned index, aiString* text) {
    return assimp().aiGetMaterialString(material, key, type, index, text);
}

unsigned aiGetMaterialTextureCount(const aiMaterial* material, aiTextureType type) {
    return assimp().aiGetMaterialTextureCount(material, type);
}

aiReturn aiGetMaterialTexture(const aiMaterial* material, aiTextureType type, unsigned index, aiString* path,
                              aiTextureMapping* mapping, unsigned* channel, ai_real* blend, aiTextureOp* operation,
                              aiTextureMapMode* modes, unsigned* flags) {
    return assimp().aiGetMaterialTexture(material, type, index, path, mapping, channel, blend, operation, modes, flags);
}
