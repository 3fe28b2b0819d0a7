// The module's entry points and its load hook.
#include "host/entry_points.h"

#include "renderer/core/software_z_buffer.h"

#if defined(_WIN32)
#include <windows.h>

// Declines thread notifications; failure to do so is harmless.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        DisableThreadLibraryCalls(module);
    }
    return TRUE;
}
#endif

extern "C" {

VT_Renderer_Data* VD_Renderer(const VT_Renderer_Data* const& prototype) {
    return new krb::Software_Z_Buffer(*prototype);
}

// One function under two names, where compiler and object format support aliases. A call from one to the other could end in a
// VD_Renderer that the program itself exports.
#if defined(__GNUC__) && !defined(__APPLE__)
VT_Renderer_Data* VD_KRB_Renderer(const VT_Renderer_Data* const& prototype) __attribute__((alias("VD_Renderer")));
#else
VT_Renderer_Data* VD_KRB_Renderer(const VT_Renderer_Data* const& prototype) {
    return new krb::Software_Z_Buffer(*prototype);
}
#endif

void VD_Unload_KRB_Renderer(VT_Renderer_Data* renderer) {
    delete renderer;
}
}
