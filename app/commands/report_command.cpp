// The command `report`: a recording as a page for a browser.
#include "app/commands/report_command.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "app/commands/replay_history.h"
#include "drawing/files/input_file.h"
#include "drawing/files/interruption.h"
#include "drawing/files/memory.h"
#include "drawing/files/output_files.h"
#include "drawing/files/path.h"
#include "drawing/recording/document.h"
#include "drawing/recording/recording_file.h"
#include "drawing/recording/replay.h"
#include "drawing/report/report_page.h"

namespace vorna::app {

namespace {

using drawing::recording::Image_Area;

struct Report_Arguments {
    std::string recording, output, note, area, max_memory;
    std::vector<std::string> pixels;
    std::size_t thumbnails = drawing::report::Page_Settings().most_thumbnails;
    int repeat = drawing::report::Page_Settings().repetitions;
    bool unchecked = false;
};

// The areas that options name, none of them twice.
std::optional<std::vector<Image_Area>> areas_of(const Report_Arguments& arguments) {
    std::vector<Image_Area> areas;
    if (!arguments.area.empty()) {
        areas.push_back(parsed_area(arguments.area));
    }
    for (const std::string& text : arguments.pixels) {
        const VT_Int_Pair pixel = parsed_pixel("--pixel", text);
        if (std::ranges::none_of(areas, [&](const Image_Area& area) { return area.corner == pixel; })) {
            areas.push_back({pixel, {1, 1}});
        }
    }
    return areas.empty() ? std::nullopt : std::optional(areas);
}

void write(const Report_Arguments& arguments, const Given& given) {
    drawing::report::Page_Settings settings{.unchecked = arguments.unchecked,
                                            .name = drawing::name_of_input(arguments.recording),
                                            .note = arguments.note,
                                            .repetitions = arguments.repeat,
                                            .most_thumbnails = arguments.thumbnails,
                                            .areas = areas_of(arguments)};
    drawing::refuse_same_files({arguments.recording}, {arguments.output});
    drawing::Output_File::check(arguments.output);
    drawing::Load_Limits limits(drawing::parsed_limit(arguments.max_memory));
    settings.limits = &limits;
    settings.file = drawing::read_input(arguments.recording, limits);
    settings.file_name = arguments.recording == "-" ? "recording" : drawing::path_of(arguments.recording).filename().string();
    const drawing::recording::Recording recording = drawing::recording::read_document(settings.name, settings.file, limits);
    const drawing::Interruption interruption; // so that no unfinished page stays behind
    drawing::Output_Files files;
    drawing::report::Page_Counts counts;
    files.add(arguments.output, [&](drawing::Output_File& file) {
        counts = drawing::report::write_page(recording, chosen_module(given), settings,
                                             [&file](std::string_view piece) { file.write(piece); });
    });
    files.commit();
    print_line(arguments.output, drawing::printable(settings.name) + ": a page of " + std::to_string(counts.bytes) + " bytes, " +
                                     std::to_string(counts.calls) + (counts.calls == 1 ? " call, " : " calls, ") +
                                     std::to_string(counts.thumbnails) +
                                     (counts.thumbnails == 1 ? " thumbnail, " : " thumbnails, ") + "histories of " +
                                     std::to_string(counts.pixels) + (counts.pixels == 1 ? " pixel" : " pixels"));
}

void run(const Report_Arguments& arguments, const Given& given) {
    const std::string name = drawing::name_of_input(arguments.recording);
    try {
        write(arguments, given);
    } catch (const drawing::recording::Recording_Error& error) {
        throw drawing::Usage_Error(name + ": " + error.what());
    } catch (const drawing::recording::Not_Drawn& error) {
        throw std::runtime_error(name + ": " + error.what());
    }
}

std::vector<Option> options_of(Report_Arguments& arguments) {
    constexpr const char* contents = "Contents";
    return {{.names = {"-o", "--output"},
             .value = output_value("FILE.html", {"html", "htm"}),
             .text = "The page; - writes standard output",
             .target = &arguments.output,
             .is_required = true},
            {.names = {"--note"},
             .value = text_value("TEXT"),
             .text = "A text above everything: what is wrong, for whom",
             .target = &arguments.note,
             .group = contents},
            {.names = {"--pixel"},
             .value = text_value("X,Y"),
             .text = "Keep the history of this pixel of the image, counted from the top left; may be given several times. "
                     "Without it, small images have the histories of all pixels",
             .target = &arguments.pixels,
             .group = contents},
            {.names = {"--area"},
             .value = text_value("X,Y,WxH"),
             .text = "Keep the histories of the pixels in this area",
             .target = &arguments.area,
             .group = contents,
             .excludes = {"--pixel"}},
            {.names = {"--thumbnails"},
             .value = whole_value("N", 0, 10000),
             .text = "Thumbnails for at most N calls, those that changed the most pixels",
             .target = &arguments.thumbnails,
             .group = contents,
             .by_default = std::to_string(arguments.thumbnails)},
            {.names = {"--repeat"},
             .value = whole_value("N", 0, 100000),
             .text = "Times are the best of so many replays; with 0 there are none, and the page is the same each time",
             .target = &arguments.repeat,
             .group = contents,
             .by_default = std::to_string(arguments.repeat)},
            {.names = {"--unchecked"},
             .text = "Send coordinates that renderers trust without looking at them",
             .target = &arguments.unchecked,
             .group = contents},
            memory_option(arguments.max_memory)};
}

} // namespace

Command report_command() {
    const auto arguments = std::make_shared<Report_Arguments>();
    return {.name = "report",
            .summary = "Write a recording as one page for browsers: image, calls, times, histories of pixels.",
            .arguments = {{.names = {"recording"},
                           .value = text_value("RECORDING"),
                           .text = "The recording, plain or compressed; - reads standard input",
                           .target = &arguments->recording,
                           .is_required = true}},
            .options = options_of(*arguments),
            .examples = {{"vorna report crystals.json -o crystals.html", "to attach to a bug report"},
                         {"vorna report map.json -o map.html --area 40,30,64x64 --note 'too dark'",
                          "with what happened in a part of the image"}},
            .sections = {{"The page",
                          {"One file that needs no other and no network. It holds the recording itself,",
                           "to be saved from the browser and replayed."}}},
            .run = [arguments](const Given& given) {
                run(*arguments, given);
                return exit_status::done;
            }};
}

} // namespace vorna::app
