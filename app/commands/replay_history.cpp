// Options of `replay` that ask what happened at pixels.
#include "app/commands/replay_history.h"

#include <algorithm>
#include <string_view>

#include "app/cli/numbers.h"
#include "drawing/files/input_file.h"
#include "drawing/files/printable.h"
#include "drawing/files/text_encoding.h"
#include "drawing/files/usage_error.h"
#include "drawing/recording/pixel_history.h"

namespace vorna::app {

using drawing::recording::Image_Area;

namespace {

struct Asked_Pixels {
    std::vector<VT_Int_Pair> pixels;
    std::vector<std::size_t> lines; // of the file, for pixels from there
};

Asked_Pixels pixels_of(const History_Arguments& arguments, drawing::Load_Limits& limits) {
    Asked_Pixels asked;
    for (const std::string& pixel : arguments.pixels) {
        asked.pixels.push_back(parsed_pixel("--pixel", pixel));
    }
    if (arguments.pixel_file.empty()) {
        return asked;
    }
    const std::string name = drawing::name_of_input(arguments.pixel_file);
    const std::string bytes = drawing::read_input(arguments.pixel_file, limits);
    std::size_t line = 0;
    for (std::string_view rest = drawing::without_byte_order_mark(bytes); !rest.empty();) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        std::string_view text = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        ++line;
        text = text.substr(0, text.find('#'));
        while (!text.empty() && std::string_view(" \t\r").find(text.back()) != std::string_view::npos) {
            text.remove_suffix(1);
        }
        if (!text.empty()) {
            limits.take_memory(name, sizeof(VT_Int_Pair) + sizeof line);
            asked.pixels.push_back(parsed_pixel(name + ':' + std::to_string(line), text));
            asked.lines.push_back(line);
        }
    }
    return asked;
}

// Where the pixel comes from.
std::string place_of(const History_Arguments& arguments, const Asked_Pixels& asked, std::size_t pixel) {
    const std::size_t options = arguments.pixels.size();
    return pixel < options ? "--pixel"
                           : drawing::name_of_input(arguments.pixel_file) + ':' + std::to_string(asked.lines[pixel - options]);
}

} // namespace

VT_Int_Pair parsed_pixel(const std::string& place, std::string_view text) {
    if (const auto numbers = numbers_in(text, ",")) {
        return {(*numbers)[0], (*numbers)[1]};
    }
    throw drawing::Usage_Error(place + ": expected X,Y, a column and a row of the image from its top left, found '" +
                               drawing::printable(std::string(text)) + "'");
}

Image_Area parsed_area(const std::string& text) {
    if (const auto numbers = numbers_in(text, ",,x")) {
        const auto [x, y, width, height] = *numbers;
        return {{x, y}, {width, height}};
    }
    throw drawing::Usage_Error("--area: expected X,Y,WxH, the top left pixel of an area of the image and its size, found '" +
                               drawing::printable(text) + "'");
}

std::vector<Option> history_options(History_Arguments& arguments) {
    constexpr const char* group = "Pixels";
    return {{.names = {"--pixel"},
             .value = text_value("X,Y"),
             .text = "Print what each call did at this pixel of the image, counted from the top left; may be given several times",
             .target = &arguments.pixels,
             .group = group,
             .excludes = {"--timing"}},
            {.names = {"--pixels"},
             .value = text_value("FILE"),
             .text = "The same for all pixels in FILE, one X,Y a line; - reads standard input",
             .target = &arguments.pixel_file,
             .group = group,
             .excludes = {"--timing"}},
            {.names = {"--area"},
             .value = text_value("X,Y,WxH"),
             .text = "Print how many pixels of this area each call drew, and how many were refused",
             .target = &arguments.area,
             .group = group,
             .excludes = {"--pixel", "--pixels", "--timing"}},
            {.names = {"--all"},
             .text = "With --pixel, --pixels or --area: also calls that come near but whose shapes lie beside it",
             .target = &arguments.has_outside,
             .group = group},
            {.names = {"--json"},
             .text = "With --pixel, --pixels or --area: print JSON",
             .target = &arguments.is_json,
             .group = group}};
}

void check_history(const History_Arguments& arguments, const std::string& recording) {
    for (const auto& [name, is_given] : {std::pair("--all", arguments.has_outside), {"--json", arguments.is_json}}) {
        if (is_given && !arguments.is_given()) {
            throw drawing::Usage_Error(std::string(name) + ": expected --pixel, --pixels or --area beside it, found none");
        }
    }
    if (recording == "-" && arguments.pixel_file == "-") {
        throw drawing::Usage_Error(
            "--pixels: expected a file beside a recording from standard input, found standard input twice");
    }
    for (const std::string& pixel : arguments.pixels) {
        parsed_pixel("--pixel", pixel);
    }
    if (!arguments.area.empty()) {
        parsed_area(arguments.area);
    }
}

void write_history(const History_Arguments& arguments, const drawing::recording::Recording& recording, const std::string& name,
                   const drawing::Module_Choice& module, const drawing::recording::Replay_Settings& settings,
                   drawing::Load_Limits& limits, const drawing::recording::Report_Sink& write) {
    const Asked_Pixels asked = pixels_of(arguments, limits);
    const drawing::recording::Replay_Histories histories(
        recording, module, {.replay = settings, .has_outside = arguments.has_outside, .name = name, .limits = &limits});
    const VT_Int_Pair image = histories.image_size();
    const std::string size_text = std::to_string(image.x) + " x " + std::to_string(image.y);
    if (!arguments.area.empty()) {
        const Image_Area area = parsed_area(arguments.area);
        if (!histories.has(area)) {
            throw drawing::Usage_Error("--area: expected at most " + std::to_string(drawing::recording::most_area_pixels) +
                                       " pixels inside the image of " + size_text + ", found '" + arguments.area + "'");
        }
        const auto events = histories.of_area(area);
        arguments.is_json ? write_json(recording, area, events, write) : write_text(recording, area, events, write);
        return;
    }
    for (std::size_t i = 0; i < asked.pixels.size(); ++i) {
        if (!histories.has(asked.pixels[i])) {
            throw drawing::Usage_Error(place_of(arguments, asked, i) + ": expected a pixel of the image of " + size_text +
                                       ", found " + std::to_string(asked.pixels[i].x) + ',' + std::to_string(asked.pixels[i].y));
        }
    }
    const auto found = histories.of_pixels(asked.pixels);
    arguments.is_json ? write_json(recording, found, write) : write_text(recording, found, write);
}

} // namespace vorna::app
