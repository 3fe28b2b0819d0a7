// Attributes of what a canvas draws, as keyword arguments.
#pragma once

#include <memory>

#include "python/src/arrays.h"
#include "vorna/canvas.h"

namespace vorna::python {

// Pixels for textured strips, converted once.
struct Texture {
    // image: (height, width, 3 or 4) of uint8.
    explicit Texture(const py::array& image);

    VT_Reference<VT_Basic_Material> material;
};

// The symbol of markers that an argument names.
std::int32_t symbol_named(const char* argument, const py::object& value);

// Sets the attributes that the dictionary names. Throws ValueError that names the attribute; TypeError for names of none.
void set_attributes(VT_Rendition& rendition, const Canvas& canvas, const py::dict& attributes);

} // namespace vorna::python
