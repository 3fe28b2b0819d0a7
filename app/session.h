// A renderer ready to draw: the module, a renderer made by it, and the buffers that it draws into.
#pragma once

#include "app/command.h"
#include "renderer/host/renderer_data.h"
#include "vorna/module.h"

namespace app {

class Session {
public:
    // Loads the module and creates a renderer. Throws Usage_Error for a kernel set that does not exist here.
    explicit Session(const Module_Choice& choice);

    VT_Renderer_Data& renderer() noexcept { return *renderer_; }
    // Window, colour system, palette and so on, as the next establish shall find them.
    VT_Renderer_Options& options() { return renderer_->current_renderer_options_for_update(); }
    // The part of the picture that is drawn into, as the next establish shall find it.
    void set_window(const VT_Int_Rectangle& window);
    // Fits buffers and actions to options and requested table. Throws when the buffers cannot be had.
    void establish();

    // Device pixels of the window.
    VT_Int_Rectangle window() const;
    const VT_Palette& palette() const { return renderer_->current_options.palette(); }
    const Frame_Buffer& color_buffer() const;
    bool has_depth_buffer() const { return renderer_->current_options.buffer_depth() >= 1; }
    // A copy of the whole depth buffer, top row first; there must be one.
    VT_Reference<VT_Shared_Image> read_depth();

private:
    vorna::Module module_;
    vorna::Module::Renderer renderer_;
};

// Device pixels of a window that these options describe.
VT_Int_Rectangle window_of(const VT_Renderer_Options& options);

} // namespace app
