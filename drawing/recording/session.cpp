// A renderer ready to draw.
#include "drawing/recording/session.h"

#include <cstdlib>
#include <stdexcept>
#include <string_view>

#include "drawing/files/setting_names.h"
#include "drawing/files/usage_error.h"
#include "drawing/recording/recorder.h"
#include "host/rendition.h"
#include "vorna/draw.h"

namespace vorna::drawing {

namespace {

const std::string& with_kernels_forced(const Module_Choice& choice) {
    force_kernels(choice);
    return choice.path;
}

// The module reports the variable; the option stands in its place in the message.
std::string kernels_message(const Module_Choice& choice, std::string message) {
    constexpr std::string_view variable = "KRB_KERNELS";
    return !choice.kernels.empty() && message.starts_with(variable)
               ? message.replace(0, variable.size(), name_of(Setting::kernels))
               : message;
}

constexpr const char* depth_blocks = "Depth Blocks";

} // namespace

// The module reads the variable when it creates a renderer.
void force_kernels(const Module_Choice& choice) {
    if (!choice.kernels.empty()) {
#if defined(_WIN32)
        _putenv_s("KRB_KERNELS", choice.kernels.c_str());
#else
        setenv("KRB_KERNELS", choice.kernels.c_str(), 1);
#endif
    }
}

Session::Session(const Module_Choice& choice, unsigned threads) try
    : module_(with_kernels_forced(choice)), canvas_(module_, threads), allows_depth_blocks_(threads == 1) {
    renderer().requested_table.add(VT_Option(depth_blocks, 0, allows_depth_blocks_));
} catch (const std::invalid_argument& error) {
    throw Usage_Error(kernels_message(choice, error.what()));
}

void Session::set_window(const VT_Int_Rectangle& window) {
    options().set_window_origin({window.left, window.bottom});
    options().set_window_size({window.right - window.left + 1, window.top - window.bottom + 1});
}

void Session::establish() {
    if (recorder_) {
        recorder_->before_establish();
    }
    canvas_.establish();
    if (recorder_) {
        recorder_->after_establish();
    }
}

void Session::set_option(const std::string& name, const VT_Option_Content& content) {
    canvas_.set_option(name, content);
    if (VT_Option* const blocks = renderer().requested_table.find(depth_blocks); blocks && !allows_depth_blocks_) {
        blocks->set(false);
    }
}

void Session::forbid_depth_blocks() {
    VT_Option* const blocks = renderer().requested_table.find(depth_blocks);
    if (blocks && blocks->value()->content == VT_Option_Content(true)) {
        blocks->set(false);
        establish();
    }
}

const VT_Action_Table& Session::actions() const noexcept {
    const bool are_replaced = &canvas_.own_actions() != &canvas_.renderer().actions; // by the canvas's threads
    return recorder_ && !are_replaced ? recorder_->own_actions() : canvas_.own_actions();
}

// Through the renderer's own slot: only calls of the application are recorded.
VT_Reference<VT_Shared_Image> Session::read_depth(const VT_Int_Rectangle& area) {
    const VT_DCI_Point top_left{area.left, area.top, 0};
    const VT_DCI_Point bottom_right{area.right, area.bottom, 0};
    const Buffer_Format format = Buffer_Format::depth16;
    VT_Reference<VT_Shared_Image> image;
    const VT_Reference<const VT_Rendition> rendition(new VT_Rendition);
    canvas_.flush();
    const auto& slot = actions().read_depth_image;
    if (slot.enabled) {
        slot.function(*slot.owner, *rendition, &top_left, &bottom_right, &format, image);
    } else {
        VD_Standard_Read_Depth_Image(renderer(), *rendition, &top_left, &bottom_right, &format, image);
    }
    if (!image) {
        throw std::runtime_error("the renderer gave no image of its depth buffer");
    }
    return image;
}

} // namespace vorna::drawing
