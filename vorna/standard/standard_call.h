// What every standard function does first, and how those that draw nothing yet are written.
#pragma once

#include "renderer/host/renderer_data.h"

namespace vorna {

// Lives as long as a standard function runs and tells the renderer's observer of the outermost one.
class Standard_Call {
public:
    Standard_Call(VT_Renderer_Data& renderer, const char* name) : renderer_(renderer) {
        const VT_Standard_Observer& observer = renderer.standard_observer;
        if (renderer.standard_depth == 0 && observer.function) {
            observer.function(observer.context, name);
        }
        ++renderer.standard_depth;
    }
    Standard_Call(const Standard_Call&) = delete;
    Standard_Call& operator=(const Standard_Call&) = delete;
    ~Standard_Call() { --renderer_.standard_depth; }

private:
    VT_Renderer_Data& renderer_;
};

} // namespace vorna

// VT_REPORTED(Draw_DCI_Dot, const VT_DCI_Point*, const VT_RGB32*) defines VD_Standard_Draw_DCI_Dot with these arguments after the
// renderer and the rendition: the observer is told, and nothing is drawn yet.
#define VT_REPORTED(name, ...)                                                                                                   \
    void VD_Standard_##name(VT_Renderer_Data& renderer, const VT_Rendition&, __VA_ARGS__) {                                      \
        const vorna::Standard_Call call(renderer, "VD_Standard_" #name);                                                         \
    }

// The five coordinate forms of a primitive: arguments(point type) gives the arguments of one.
#define VT_REPORTED_FORMS(primitive, arguments)                                                                                  \
    VT_REPORTED(Draw_2D_##primitive, arguments(VT_Point))                                                                        \
    VT_REPORTED(Draw_DC_##primitive, arguments(VT_Point))                                                                        \
    VT_REPORTED(Draw_2DI_##primitive, arguments(VT_DCI_Point))                                                                   \
    VT_REPORTED(Draw_DCI_##primitive, arguments(VT_DCI_Point))                                                                   \
    VT_REPORTED(Draw_3D_##primitive, arguments(VT_Point_D))

#define VT_POINTS(point) std::int32_t, const point*
#define VT_COLORIZED(point) std::int32_t, const point*, const VT_RGB32*, bool
#define VT_GOURAUD(point) std::int32_t, const point*, const VT_RGB32*
#define VT_TEXTURED(point)                                                                                                       \
    std::int32_t, const point*, const VT_RGB32*, const VT_Parameter*, std::int32_t, const float*, const VT_Vector*
#define VT_POLYGON(point) std::int32_t, const point*, const VT_RGB32*
