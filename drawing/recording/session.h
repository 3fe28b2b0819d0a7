// A renderer ready to draw: the module, and a canvas of its renderer.
#pragma once

#include <string>

#include "vorna/canvas.h"

namespace vorna::drawing {

namespace recording {
class Recorder;
}

using vorna::window_rectangle;

// The renderer to draw with.
struct Module_Choice {
    std::string path;
    std::string kernels; // empty = the renderer's own choice
};

// Renderers that are created from now on, here and in processes started here, draw with the chosen kernel set.
void force_kernels(const Module_Choice& choice);

class Session {
public:
    // Loads the module and creates a renderer. threads: of the canvas; 0 = as many as processors. Throws Usage_Error for a kernel
    // set that does not exist here.
    explicit Session(const Module_Choice& choice, unsigned threads = 1);

    vorna::Canvas& canvas() noexcept { return canvas_; }
    VT_Renderer_Data& renderer() noexcept { return canvas_.renderer(); }
    // Window, colour system, palette and so on, as the next establish shall find them.
    VT_Renderer_Options& options() { return canvas_.options(); }
    // The device pixels that the next establish makes the window.
    void set_window(const VT_Int_Rectangle& window);
    // Fits buffers and actions to options and requested table. Throws when the buffers cannot be had.
    void establish();
    // As the canvas has it, but the renderer bounds hidden triangles only where one thread draws all of them.
    void set_option(const std::string& name, const VT_Option_Content& content);
    // For callers that set depths themselves, which contradicts the renderer's bounds of hidden triangles: turns them off. To be
    // called after each establish, since a recording may ask for them; establishes anew when they are on.
    void forbid_depth_blocks();

    // The recorder of what is drawn; null = none.
    void set_recorder(recording::Recorder* recorder) noexcept { recorder_ = recorder; }
    recording::Recorder* recorder() const noexcept { return recorder_; }
    // The renderer's own slots, also during a recording.
    const VT_Action_Table& actions() const noexcept;

    // Device pixels of the window.
    VT_Int_Rectangle window() const { return canvas_.window(); }
    const VT_Palette& palette() const { return canvas_.palette(); }
    const Frame_Buffer& color_buffer() const { return canvas_.color_buffer(); }
    bool has_depth_buffer() const { return canvas_.has_depth_buffer(); }
    // A copy of the whole depth buffer, or of some device pixels of the window, top row first; there must be one.
    VT_Reference<VT_Shared_Image> read_depth() { return read_depth(window()); }
    VT_Reference<VT_Shared_Image> read_depth(const VT_Int_Rectangle& area);

private:
    vorna::Module module_;
    vorna::Canvas canvas_;
    bool allows_depth_blocks_; // nothing but one renderer writes the canvas's depth buffer
    recording::Recorder* recorder_ = nullptr;
};

} // namespace vorna::drawing
