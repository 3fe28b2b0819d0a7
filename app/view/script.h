// Mouse and key events from a file, for tests and demonstrations.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/geometry.h"

namespace vorna::app::view {

struct Script_Step {
    enum class Kind { key, drag, wheel, resize };
    enum class Button { left, middle, right };

    Kind kind = Kind::key;
    std::string key; // one letter or sign, or the name of another key
    bool shift = false, ctrl = false;
    Button button = Button::left;
    VT_Int_Pair from, to; // drag, whose click is one without a move: pixels from the window's upper left; wheel: to is the
                          // pointer; resize: to is the size
    std::int32_t clicks = 0;
};

// A step for each line: "key [ctrl+|shift+]NAME", "drag [ctrl+|shift+]left|middle|right X,Y X,Y", "click X,Y", "wheel CLICKS
// X,Y", "resize WxH"; empty lines and text after # are ignored. file: for messages. Throws Usage_Error.
std::vector<Script_Step> parsed_script(const std::string& file, std::string_view text);

} // namespace vorna::app::view
