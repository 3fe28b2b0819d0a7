// PROJ, loaded when a map needs it: with its own dependencies it takes longer to load than many images take to draw.
#pragma once

#include <memory>

#include <proj.h>

namespace vorna::drawing::map {

// The functions that are used.
#define VORNA_PROJ_FUNCTIONS(LIST)                                                                                               \
    LIST(proj_angular_input)                                                                                                     \
    LIST(proj_angular_output)                                                                                                    \
    LIST(proj_as_proj_string)                                                                                                    \
    LIST(proj_context_create)                                                                                                    \
    LIST(proj_context_destroy)                                                                                                   \
    LIST(proj_context_errno)                                                                                                     \
    LIST(proj_context_errno_string)                                                                                              \
    LIST(proj_create)                                                                                                            \
    LIST(proj_create_crs_to_crs)                                                                                                 \
    LIST(proj_destroy)                                                                                                           \
    LIST(proj_log_func)                                                                                                          \
    LIST(proj_normalize_for_visualization)                                                                                       \
    LIST(proj_trans)

// Found by their names in the library.
struct Proj_Library {
#define DECLARE(function) decltype(&::function) function;
    VORNA_PROJ_FUNCTIONS(DECLARE)
#undef DECLARE
};

// Loads it at the first call; it stays until the process ends. Throws std::runtime_error.
const Proj_Library& proj();

struct Proj_Context {
    // PROJ prints some messages at any level, such as that its database is missing.
    Proj_Context() : handle(proj().proj_context_create()) {
        proj().proj_log_func(handle, nullptr, [](void*, int, const char*) {});
    }
    Proj_Context(const Proj_Context&) = delete;
    Proj_Context& operator=(const Proj_Context&) = delete;
    ~Proj_Context() { proj().proj_context_destroy(handle); }
    PJ_CONTEXT* handle;
};

struct Destroy_Proj {
    void operator()(PJ* projection) const { proj().proj_destroy(projection); }
};
using Proj_Handle = std::unique_ptr<PJ, Destroy_Proj>;

// From degrees of longitude and latitude on WGS 84 to the coordinate system, a code or a PROJ string; null where PROJ knows none.
Proj_Handle proj_from_degrees(const Proj_Context& context, const char* system);

} // namespace vorna::drawing::map
