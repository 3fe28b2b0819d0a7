// The command `compare`: whether two PNG files hold the same pixels.
#include "app/commands/compare_command.h"

#include <charconv>
#include <cstdio>
#include <iostream>
#include <memory>
#include <new>
#include <optional>

#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "drawing/files/input_file.h"
#include "drawing/files/memory.h"
#include "drawing/files/output_file.h"
#include "drawing/files/output_files.h"
#include "drawing/image/image_comparison.h"

namespace vorna::app {

namespace {

struct Compare_Arguments {
    std::string first, second, fuzz, difference, max_memory;
};

std::optional<drawing::Fuzz> parsed_fuzz(const std::string& text) {
    if (text.empty()) {
        return {};
    }
    drawing::Fuzz fuzz;
    const char* end = text.data() + text.size();
    const auto [comma, first_error] = std::from_chars(text.data(), end, fuzz.difference);
    if (first_error == std::errc{} && comma != end && *comma == ',') {
        const auto [stop, second_error] = std::from_chars(comma + 1, end, fuzz.count);
        if (second_error == std::errc{} && stop == end && fuzz.difference >= 0 && fuzz.count >= 0) {
            return fuzz;
        }
    }
    throw drawing::Usage_Error("--fuzz: expected MAXDIFF,COUNT, a difference and a number of pixels, found '" + text + "'");
}

drawing::Png_Image image_at(const std::string& path, drawing::Load_Limits& limits) {
    try {
        return drawing::read_png(drawing::name_of_input(path), drawing::read_input(path, limits), limits);
    } catch (const drawing::Png_Error& error) {
        throw drawing::Usage_Error(drawing::name_of_input(path) + ": " + error.what());
    }
}

bool are_same(const Compare_Arguments& arguments) {
    const std::optional<drawing::Fuzz> fuzz = parsed_fuzz(arguments.fuzz);
    if (arguments.first == "-" && arguments.second == "-") {
        throw drawing::Usage_Error("expected two images, found standard input twice");
    }
    drawing::refuse_same_files({arguments.first, arguments.second}, {arguments.difference});
    if (!arguments.difference.empty()) {
        drawing::Output_File::check(arguments.difference);
    }
    drawing::Load_Limits limits(drawing::parsed_limit(arguments.max_memory));
    const drawing::Png_Image first = image_at(arguments.first, limits), second = image_at(arguments.second, limits);
    const drawing::Image_Difference difference = drawing::compare(first, second, fuzz);
    if (!arguments.difference.empty()) {
        if (first.width != second.width || first.height != second.height) {
            warn("images of different sizes: " + arguments.difference + " is not written");
        } else {
            drawing::write_file(arguments.difference, drawing::difference_png(first, second));
        }
    }
    (drawing::is_standard_output(arguments.difference) ? std::cerr : std::cout) << difference.text << '\n';
    return difference.is_same;
}

} // namespace

Command compare_command() {
    const auto arguments = std::make_shared<Compare_Arguments>();
    return {.name = "compare",
            .summary = "Tell whether two PNG images are the same.",
            .arguments = {{.names = {"first"},
                           .value = text_value("A.png"),
                           .text = "PNG file; - reads standard input",
                           .target = &arguments->first,
                           .is_required = true},
                          {.names = {"second"},
                           .value = text_value("B.png"),
                           .text = "PNG file to compare it with",
                           .target = &arguments->second,
                           .is_required = true}},
            .options = {{.names = {"--fuzz"},
                         .value = text_value("MAXDIFF,COUNT"),
                         .text = "Same, too, when at most COUNT pixels differ, none by more than MAXDIFF in a channel",
                         .target = &arguments->fuzz},
                        {.names = {"--diff"},
                         .value = output_value("FILE.png", {"png"}),
                         .text = "Write the first image in pale grey, pixels that differ in red",
                         .target = &arguments->difference},
                        memory_option(arguments->max_memory)},
            .examples = {{"vorna compare bunny.png yours.png --diff difference.png", "every bit of every pixel"},
                         {"vorna compare bunny.png yours.png --fuzz 2,100", "but for 100 pixels that differ by 2 at most"}},
            .sections = {{"What counts",
                          {"Without --fuzz every bit of every pixel, palette and transparency of",
                           "images of one kind, and the colours of images of unlike kinds. With",
                           "--fuzz colours with alpha, from 0 to 255, or to 65535 in samples of 16",
                           "bits; greys of fewer bits than 8 are scaled."}}},
            .statuses = "0 the same, 1 different, 2 one of them cannot be read.",
            // Status 1 means that they differ, so any other failure is wrong input.
            .run = [arguments](const Given&) {
                try {
                    return are_same(*arguments) ? exit_status::done : exit_status::failed;
                } catch (const std::bad_alloc&) {
                    throw drawing::Usage_Error("out of memory"); // status 1 means different images
                } catch (const std::runtime_error& error) {
                    throw drawing::Usage_Error(error.what());
                }
            }};
}

} // namespace vorna::app
