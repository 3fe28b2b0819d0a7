// Colours as values of options.
#include "app/cli/color_option.h"

#include "app/cli/command.h"
#include "app/cli/nearest_name.h"
#include "drawing/image/color_name.h"

namespace vorna::app {

VT_RGB32 parsed_color(const char* option, const std::string& text, const std::vector<std::string>& others) {
    if (const auto color = drawing::color_named(text)) {
        return *color;
    }
    std::vector<std::string> expected = others, known = others;
    expected.insert(expected.end(), {"#rgb", "#rrggbb", "a colour's name"});
    for (const std::string& name : drawing::color_names()) {
        known.push_back(name);
    }
    throw drawing::Usage_Error(std::string(option) + ": expected " + list_of(expected) + ", found '" + text + "'" +
                               nearest_name(text, known));
}

} // namespace vorna::app
