// The three entry points that a renderer module exports.
#pragma once

#include "host/export.h"

class VT_Renderer_Data;

extern "C" {
// Returns a new renderer with the options and callbacks of the prototype. The caller destroys it with VD_Unload_KRB_Renderer.
// Throws std::bad_alloc, and std::invalid_argument when the environment variable KRB_KERNELS names a kernel set that does not
// exist or that this processor cannot run.
VORNA_MODULE_EXPORT VT_Renderer_Data* VD_Renderer(const VT_Renderer_Data* const& prototype);
// The same function under the module's own name.
VORNA_MODULE_EXPORT VT_Renderer_Data* VD_KRB_Renderer(const VT_Renderer_Data* const& prototype);
// Destroys a renderer of this module; null is allowed.
VORNA_MODULE_EXPORT void VD_Unload_KRB_Renderer(VT_Renderer_Data* renderer);
}

using VT_Create_Renderer = VT_Renderer_Data*(const VT_Renderer_Data* const& prototype);
using VT_Unload_Renderer = void(VT_Renderer_Data* renderer);
