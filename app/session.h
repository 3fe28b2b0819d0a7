// A renderer ready to draw: the module, a renderer made by it, and the buffers that it draws into.
#pragma once

#include "app/command.h"
#include "renderer/host/renderer_data.h"
#include "vorna/module.h"

namespace app {

namespace picture {
class Recorder;
}

class Session {
public:
    // Loads the module and creates a renderer. Throws Usage_Error for a kernel set that does not exist here.
    explicit Session(const Module_Choice& choice);

    VT_Renderer_Data& renderer() noexcept { return *renderer_; }
    // Window, colour system, palette and so on, as the next establish shall find them.
    VT_Renderer_Options& options() { return renderer_->current_renderer_options_for_update(); }
    // Fits buffers and actions to options and requested table. Throws when the buffers cannot be had.
    void establish();

    // Who records what is drawn; null = nobody.
    void set_recorder(picture::Recorder* recorder) noexcept { recorder_ = recorder; }
    // The renderer's own slots, whether somebody records or not.
    const Action_Table& actions() const noexcept;

    // Device pixels of the window.
    VT_Int_Rectangle window() const;
    const VT_Palette& palette() const { return renderer_->current_options.palette(); }
    const Frame_Buffer& color_buffer() const;
    bool has_depth_buffer() const { return renderer_->current_options.buffer_depth() >= 1; }
    // A copy of the whole depth buffer, or of some device pixels of the window, top row first; there must be one.
    VT_Reference<VT_Shared_Image> read_depth() { return read_depth(window()); }
    VT_Reference<VT_Shared_Image> read_depth(const VT_Int_Rectangle& area);

private:
    vorna::Module module_;
    vorna::Module::Renderer renderer_;
    picture::Recorder* recorder_ = nullptr;
};

// Device pixels of a window that these options describe.
VT_Int_Rectangle window_of(const VT_Renderer_Options& options);

} // namespace app
