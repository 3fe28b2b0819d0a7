// A module with one export too many and one too few.
#if defined(_WIN32)
#define EXPORTED __declspec(dllexport)
#else
#define EXPORTED __attribute__((visibility("default")))
#endif

extern "C" {
EXPORTED void VD_Renderer();
EXPORTED void VD_KRB_Renderer();
EXPORTED void leaked_helper();

void VD_Renderer() {
}
void VD_KRB_Renderer() {
}
void leaked_helper() {
}
}
