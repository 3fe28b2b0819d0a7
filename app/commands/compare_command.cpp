// The command `compare`: whether two images, two folders of images or two recordings are the same.
#include "app/commands/compare_command.h"

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <system_error>

#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "drawing/comparison/folder_comparison.h"
#include "drawing/comparison/html_report.h"
#include "drawing/comparison/reports.h"
#include "drawing/files/helpers.h"
#include "drawing/files/input_file.h"
#include "drawing/files/memory.h"
#include "drawing/files/output_file.h"
#include "drawing/files/output_files.h"
#include "drawing/files/path.h"
#include "drawing/image/stored_image.h"
#include "drawing/recording/document.h"
#include "drawing/recording/recording_comparison.h"
#include "drawing/recording/recording_file.h"

namespace vorna::app {

namespace {

using drawing::Usage_Error;
namespace comparison = drawing::comparison;

struct Compare_Arguments {
    std::string first, second, fuzz, tolerance, by = "samples", mask, difference, json, junit, html, max_memory;
    unsigned threads = drawing::processor_count();

    std::vector<std::string> outputs() const { return {difference, json, junit, html}; }
};

template <class Number> bool read_number(const char*& place, const char* end, Number& number) {
    const auto [stop, error] = std::from_chars(place, end, number);
    place = stop;
    return error == std::errc{} && number >= 0;
}

// may_lack_count: any number of pixels may differ where none is given.
drawing::Fuzz parsed_fuzz(const char* option, const std::string& text, bool may_lack_count) {
    drawing::Fuzz fuzz;
    const char *place = text.data(), *const end = place + text.size();
    if (read_number(place, end, fuzz.difference)) {
        if (place == end && may_lack_count) {
            fuzz.count = std::numeric_limits<std::int64_t>::max();
            return fuzz;
        }
        if (place != end && *place++ == ',' && read_number(place, end, fuzz.count) && place == end) {
            return fuzz;
        }
    }
    throw Usage_Error(std::string(option) + ": expected " + (may_lack_count ? "MAXDIFF or " : "") +
                      "MAXDIFF,COUNT, a difference and a number of pixels, found '" + text + "'");
}

comparison::Accepted accepted_by(const Compare_Arguments& arguments) {
    comparison::Accepted accepted{.fuzz = {}, .by_colors = arguments.by == "colors"};
    if (!arguments.fuzz.empty()) {
        accepted.fuzz = parsed_fuzz("--fuzz", arguments.fuzz, false);
    }
    if (!arguments.tolerance.empty()) {
        accepted.fuzz = parsed_fuzz("--tolerance", arguments.tolerance, true);
    }
    return accepted;
}

bool is_folder(const std::string& path) {
    std::error_code unknown;
    return path != "-" && std::filesystem::is_directory(drawing::path_of(path), unknown);
}

// Prints to standard error when standard output is one of the files.
void say(const Compare_Arguments& arguments, const std::string& text) {
    bool is_taken = false;
    for (const std::string& output : arguments.outputs()) {
        is_taken = is_taken || (!output.empty() && drawing::is_standard_output(output));
    }
    print(is_taken ? stderr : stdout, text);
}

void add_reports(const Compare_Arguments& arguments, const comparison::Report& report, const std::string& json,
                 drawing::Output_Files& files) {
    if (!arguments.json.empty()) {
        files.add(arguments.json, json);
    }
    if (!arguments.junit.empty()) {
        files.add(arguments.junit, comparison::junit_of(report));
    }
    if (!arguments.html.empty()) {
        auto page = std::make_unique<drawing::Output_File>(arguments.html);
        comparison::write_html(report, {.memory = drawing::parsed_limit(arguments.max_memory)},
                               [&](std::string_view bytes) { page->write(bytes); });
        files.add(std::move(page));
    }
}

int status_of(const comparison::Report& report) {
    return report.count_of(comparison::Verdict::unreadable) > 0 ? exit_status::wrong_usage
           : report.is_same()                                   ? exit_status::done
                                                                : exit_status::failed;
}

int compare_folders(const Compare_Arguments& arguments) {
    if (!is_folder(arguments.first) || !is_folder(arguments.second)) {
        const std::string& file = is_folder(arguments.first) ? arguments.second : arguments.first;
        throw Usage_Error(drawing::name_of_input(file) + ": expected a folder, as the other one is");
    }
    if (!arguments.difference.empty()) {
        throw Usage_Error("--diff: expected two images, found folders; --html shows all differences");
    }
    const comparison::Report report = comparison::compare_folders(arguments.first, arguments.second,
                                                                  {.accepted = accepted_by(arguments),
                                                                   .mask = arguments.mask,
                                                                   .memory = drawing::parsed_limit(arguments.max_memory),
                                                                   .threads = arguments.threads});
    if (report.count_of(comparison::Verdict::unreadable) > 0 && has_lacked_memory()) {
        throw std::bad_alloc(); // libraries report a lack of memory as a damaged image
    }
    const drawing::Interruption interruption; // so that no unfinished report stays behind
    drawing::Output_Files files;
    add_reports(arguments, report, comparison::json_of(report), files);
    files.commit();
    say(arguments, comparison::text_of(report));
    return status_of(report);
}

int compare_images(const Compare_Arguments& arguments, const std::string& first, const std::string& second,
                   drawing::Load_Limits& limits) {
    const comparison::Pair_Paths paths{arguments.first, arguments.second, arguments.mask};
    comparison::Report report{arguments.first, arguments.second, accepted_by(arguments), {}, 0};
    if (!arguments.html.empty() && (arguments.first == "-" || arguments.second == "-")) {
        throw Usage_Error("--html: expected files to compare, found standard input");
    }
    const comparison::Image_Pair pair = comparison::decoded(paths, first, second, limits);
    comparison::Pair_Result& result = report.pairs.emplace_back(comparison::result_of(pair, report.accepted));
    result.name = drawing::name_of_input(arguments.second);
    result.paths = paths;
    const drawing::Interruption interruption; // so that no unfinished report stays behind
    drawing::Output_Files files;
    if (!arguments.difference.empty()) {
        if (pair.first.width != pair.second.width || pair.first.height != pair.second.height) {
            warn("images of different sizes: " + arguments.difference + " is not written");
        } else {
            files.add(arguments.difference,
                      drawing::difference_png(pair.first, pair.second, comparison::settings_of(pair, report.accepted)));
        }
    }
    add_reports(arguments, report, comparison::json_of(report), files);
    files.commit();
    say(arguments, drawing::printable(result.text) + '\n');
    return status_of(report);
}

drawing::recording::Recording recording_of(const std::string& path, const std::string& bytes, drawing::Load_Limits& limits) {
    const std::string name = drawing::name_of_input(path);
    try {
        return drawing::recording::read_document(name, bytes, limits);
    } catch (const drawing::recording::Recording_Error& error) {
        throw Usage_Error(name + ": " + error.what());
    }
}

int compare_recordings(const Compare_Arguments& arguments, const std::string& first, const std::string& second,
                       drawing::Load_Limits& limits, const Given& given) {
    for (const char* option : {"--fuzz", "--tolerance", "--by", "--mask", "--diff", "--html"}) {
        if (given.has(option)) {
            throw Usage_Error(std::string(option) + ": expected images, found recordings");
        }
    }
    const drawing::recording::Recording a = recording_of(arguments.first, first, limits),
                                        b = recording_of(arguments.second, second, limits);
    drawing::recording::Recording_Difference difference;
    try {
        difference = drawing::recording::compare(a, b, [&] { return chosen_module(given); });
    } catch (const drawing::recording::Replay_Failure& error) {
        throw Usage_Error(drawing::name_of_input(error.is_of_first ? arguments.first : arguments.second) + ": " + error.what());
    }
    const std::string text = drawing::recording::text_of(difference);
    comparison::Report report{arguments.first, arguments.second, {}, {}, 0};
    comparison::Pair_Result& result = report.pairs.emplace_back();
    result.name = drawing::name_of_input(arguments.second);
    result.verdict = difference.is_same() ? comparison::Verdict::same : comparison::Verdict::different;
    result.text = text.substr(0, text.size() - 1);
    const drawing::Interruption interruption; // so that no unfinished report stays behind
    drawing::Output_Files files;
    add_reports(arguments, report, drawing::recording::json_of(difference, arguments.first, arguments.second), files);
    files.commit();
    say(arguments, text);
    return status_of(report);
}

int run(const Compare_Arguments& arguments, const Given& given) {
    accepted_by(arguments); // throws for wrong options before anything is read
    if (arguments.first == "-" && arguments.second == "-") {
        throw Usage_Error("expected two images, found standard input twice");
    }
    drawing::refuse_same_files({arguments.first, arguments.second, arguments.mask}, arguments.outputs());
    for (const std::string& output : arguments.outputs()) {
        if (!output.empty()) {
            drawing::Output_File::check(output);
        }
    }
    if (is_folder(arguments.first) || is_folder(arguments.second)) {
        return compare_folders(arguments);
    }
    drawing::Load_Limits limits(drawing::parsed_limit(arguments.max_memory));
    const std::string first = drawing::read_input(arguments.first, limits),
                      second = drawing::read_input(arguments.second, limits);
    const auto is_recording = [](const std::string& path, const std::string& bytes) {
        return drawing::recording::is_document(bytes) && !drawing::is_image_name(path);
    };
    const bool has_recordings[] = {is_recording(arguments.first, first), is_recording(arguments.second, second)};
    if (has_recordings[0] != has_recordings[1]) {
        const std::string& recording = has_recordings[0] ? arguments.first : arguments.second;
        throw Usage_Error(drawing::name_of_input(recording) +
                          ": expected two images or two recordings, found a recording beside an image");
    }
    return has_recordings[0] ? compare_recordings(arguments, first, second, limits, given)
                             : compare_images(arguments, first, second, limits);
}

std::vector<Option> options_of(Compare_Arguments& arguments) {
    constexpr const char *counting = "What counts", *output = "Output";
    return {
        {.names = {"--tolerance"},
         .value = text_value("MAXDIFF[,COUNT]"),
         .text = "Same, too, when at most COUNT pixels differ, all where it is left out, none by more than MAXDIFF in a channel",
         .target = &arguments.tolerance,
         .group = counting,
         .excludes = {"--fuzz"}},
        {.names = {"--fuzz"},
         .value = text_value("MAXDIFF,COUNT"),
         .text = "The same as --tolerance",
         .target = &arguments.fuzz,
         .group = counting},
        {.names = {"--by"},
         .value = choice_value("WHAT", {"samples", "colors"}),
         .text = "What is compared in images of one kind: samples, palettes and transparency, or the colours that they show",
         .target = &arguments.by,
         .group = counting,
         .by_default = arguments.by},
        {.names = {"--mask"},
         .value = text_value("FILE"),
         .text = "Image of the same size: pixels that are black or transparent in it are not compared; a folder: one for each "
                 "name",
         .target = &arguments.mask,
         .group = counting},
        {.names = {"--diff"},
         .value = output_value("FILE.png", {"png"}),
         .text = "Write the first image in pale grey, pixels that differ in red",
         .target = &arguments.difference,
         .group = output},
        {.names = {"--json"},
         .value = output_value("FILE.json", {"json"}),
         .text = "Write the outcome as JSON",
         .target = &arguments.json,
         .group = output},
        {.names = {"--junit"},
         .value = output_value("FILE.xml", {"xml"}),
         .text = "Write the outcome as JUnit XML",
         .target = &arguments.junit,
         .group = output},
        {.names = {"--html"},
         .value = output_value("FILE.html", {"html", "htm"}),
         .text = "Write a page with the images that differ, and the commands that accept them",
         .target = &arguments.html,
         .group = output},
        {.names = {"--threads"},
         .value = whole_value("N", 1, 1024),
         .text = "Threads that compare the images of folders; as many as there are processors if not given",
         .target = &arguments.threads,
         .group = output},
        memory_option(arguments.max_memory)};
}

} // namespace

Command compare_command() {
    const auto arguments = std::make_shared<Compare_Arguments>();
    return {.name = "compare",
            .summary = "Tell whether two images, two folders of images or two recordings are the same.",
            .arguments = {{.names = {"first"},
                           .value = text_value("IMAGE"),
                           .text = "Image, folder or recording; - reads standard input",
                           .target = &arguments->first,
                           .is_required = true},
                          {.names = {"second"},
                           .value = text_value("IMAGE"),
                           .text = "What it is compared with",
                           .target = &arguments->second,
                           .is_required = true}},
            .options = options_of(*arguments),
            .examples = {{"vorna compare bunny.png yours.png --diff difference.png", "every bit of every pixel"},
                         {"vorna compare bunny.png yours.png --tolerance 2,100", "but for 100 pixels that differ by 2 at most"},
                         {"vorna compare expected drawn --junit report.xml --html report.html", "all images of two folders"},
                         {"vorna compare before.json.gz after.json.gz", "the first call that two recordings do not share"}},
            .sections = {{"What counts",
                          {"Of images of one kind every bit of every pixel, palette and transparency;",
                           "of images of unlike kinds the colours. With --tolerance colours with",
                           "alpha, from 0 to 255, or to 65535 in samples of 16 bits; greys of fewer",
                           "bits than 8 are scaled. Files in folders count as images when their names",
                           "end as those of PNG, JPEG, WebP, TGA, BMP or DDS files; others are ignored."}}},
            .statuses = "0 the same, 1 different, 2 any failure, or wrong usage.",
            .run = [arguments](const Given& given) {
                fail_with(exit_status::wrong_usage); // status 1 means that they differ
                return run(*arguments, given);
            }};
}

} // namespace vorna::app
