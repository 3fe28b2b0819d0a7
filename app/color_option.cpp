// Colours as values of options.
#include "app/color_option.h"

#include "app/command.h"
#include "app/nearest_name.h"
#include "app/scene/color_name.h"

namespace app {

VT_RGB32 parsed_color(const char* option, const std::string& text, const std::vector<std::string>& others) {
    if (const auto color = scene::color_named(text)) {
        return *color;
    }
    std::vector<std::string> expected = others, known = others;
    expected.insert(expected.end(), {"#rgb", "#rrggbb", "a colour's name"});
    for (const std::string& name : scene::color_names()) {
        known.push_back(name);
    }
    throw Usage_Error(std::string(option) + ": expected " + list_of(expected) + ", found '" + text + "'" +
                      nearest_name(text, known));
}

} // namespace app
