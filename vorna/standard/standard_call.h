// The start and the end of a standard function.
#pragma once

#include "host/renderer_data.h"

namespace vorna {

// Lives as long as a standard function runs; calls the observer of the renderer unless another standard function is running.
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
