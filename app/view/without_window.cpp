// For builds without a window system.
#include <stdexcept>

#include "app/view/window.h"

namespace vorna::app::view {

std::unique_ptr<Window> open_window(const std::string& command, const std::string&, std::optional<VT_Int_Pair>) {
    throw std::runtime_error(command + ": this vorna was built without SDL2 and opens no windows; render and replay draw files");
}

} // namespace vorna::app::view
