// A renderer ready to draw.
#include "app/session.h"

#include <cstdlib>
#include <stdexcept>

#include "renderer/host/rendition.h"
#include "vorna/draw.h"

namespace app {

namespace {

// The module reads the variable when it creates a renderer.
const std::string& with_kernels_forced(const Module_Choice& choice) {
    if (!choice.kernels.empty()) {
#if defined(_WIN32)
        _putenv_s("KRB_KERNELS", choice.kernels.c_str());
#else
        setenv("KRB_KERNELS", choice.kernels.c_str(), 1);
#endif
    }
    return choice.path;
}

vorna::Module::Renderer create(const vorna::Module& module) {
    VT_Reference<VT_Renderer_Data> prototype(new VT_Renderer_Data);
    try {
        return module.create_renderer(*prototype);
    } catch (const std::invalid_argument& error) {
        throw Usage_Error(error.what());
    }
}

} // namespace

Session::Session(const Module_Choice& choice) : module_(with_kernels_forced(choice)), renderer_(create(module_)) {
}

void Session::set_window(const VT_Int_Rectangle& window) {
    options().set_window_origin({window.left, window.bottom});
    options().set_window_size({window.right - window.left + 1, window.top - window.bottom + 1});
}

void Session::establish() {
    renderer_->establish_all();
    color_buffer();
}

VT_Int_Rectangle Session::window() const {
    return window_of(renderer_->current_options);
}

const Frame_Buffer& Session::color_buffer() const {
    const VT_Option* option = renderer_->current_table.find("Color Buffer");
    const auto* buffer = option ? option->as_object<Frame_Buffer>() : nullptr;
    if (!buffer) {
        throw std::runtime_error("the renderer has no colour buffer");
    }
    return *buffer;
}

VT_Reference<VT_Shared_Image> Session::read_depth() {
    const VT_Int_Rectangle area = window();
    const VT_DCI_Point top_left{area.left, area.top, 0};
    const VT_DCI_Point bottom_right{area.right, area.bottom, 0};
    const Buffer_Format format = Buffer_Format::depth16;
    VT_Reference<VT_Shared_Image> image;
    VT_Reference<const VT_Rendition> rendition(new VT_Rendition);
    VD_Read_Depth_Image(*renderer_, *rendition, &top_left, &bottom_right, &format, image);
    if (!image) {
        throw std::runtime_error("the renderer gave no image of its depth buffer");
    }
    return image;
}

VT_Int_Rectangle window_of(const VT_Renderer_Options& options) {
    const VT_Int_Pair origin = options.local_coordinates() ? VT_Int_Pair{} : options.window_origin();
    const VT_Int_Pair size = options.window_size();
    return {origin.x, origin.x + size.x - 1, origin.y, origin.y + size.y - 1};
}

} // namespace app
