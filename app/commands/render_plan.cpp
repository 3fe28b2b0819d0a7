// `render --plan`.
#include "app/commands/render_plan.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string_view>
#include <system_error>

#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "app/commands/part_origin.h"
#include "app/commands/plan_commands.h"
#include "drawing/files/path.h"
#include "drawing/job/part_files.h"
#include "drawing/job/work_map.h"

namespace vorna::app {
namespace {

namespace fs = std::filesystem;

struct Planned_Part : Part_Command {
    drawing::Image_Part part;
    std::uint64_t memory = 0; // bytes
};

// Beside the image: poster.png has poster.part-07.png.
std::string part_file(const Render_Options& options, std::int32_t number) {
    const std::string last = std::to_string(options.plan - 1), own = std::to_string(number);
    fs::path name = drawing::path_of(options.image.output);
    name.replace_extension();
    return name.string() + ".part-" + std::string(last.size() - own.size(), '0') + own + ".png";
}

std::string area_text(const drawing::Image_Part& part) {
    const VT_Int_Rectangle area = part.area();
    return std::to_string(area.left) + ',' + std::to_string(part.size.y - 1 - area.top) + ',' +
           std::to_string(area.right - area.left + 1) + 'x' + std::to_string(area.top - area.bottom + 1);
}

// own: options of this part alone.
Planned_Part planned(const Render_Options& options, const drawing::Image_Part& place, std::int32_t number, const Words& own) {
    Planned_Part planned;
    planned.part = place;
    planned.file = part_file(options, number);
    planned.is_done = drawing::digest_of_part(planned.file, planned.part).has_value();
    planned.command = {own_name(), "render"};
    const Words given = option_words(*options.given, {"--plan", "--plan-lines", "--hash", "--output", "--output-format",
                                                      "--compress", "--allow-empty", "--stats", "--stream", "--framing"});
    planned.command.insert(planned.command.end(), given.begin(), given.end());
    planned.command.insert(planned.command.end(), own.begin(), own.end());
    // The parts are temporary: files that are written fast.
    planned.command.emplace_back("--compress=fast");
    planned.command.push_back("--output=" + planned.file);
    add_files(planned.command, options.models);
    return planned;
}

Planned_Part planned_area(const Render_Options& options, const drawing::Job_Settings& settings, std::int32_t number,
                          const VT_Int_Rectangle& area) {
    drawing::Image_Part part = settings.part;
    part.is_whole = false;
    part.columns = options.plan;
    part.number = number;
    part.cut = area;
    return planned(
        options, part, number,
        {"--tiles-of=" + std::to_string(options.plan) + "x1", "--tile=" + std::to_string(number), "--area=" + area_text(part)});
}

Words assemble_words(const Render_Options& options, const std::vector<Planned_Part>& parts) {
    Words words{own_name(), "assemble", "--output=" + options.image.output};
    for (const char* const name : {"--output-format", "--compress", "--threads", "--max-memory", "--hash"}) {
        const auto given = std::ranges::find(options.given->names, name);
        if (given != options.given->names.end()) {
            const std::string& value =
                options.given->values[static_cast<std::size_t>(given - options.given->names.begin())].front();
            words.push_back(std::string(name) == "--hash" ? name : name + ('=' + value));
        }
    }
    Words files;
    for (const Planned_Part& part : parts) {
        files.push_back(part.file);
    }
    add_files(words, files);
    return words;
}

double rounded(double seconds) {
    return std::round(seconds * 1000) / 1000;
}

// head: of the JSON, before the parts.
void print_parts(const Render_Options& options, const std::vector<Planned_Part>& parts, nlohmann::ordered_json head) {
    std::vector<Part_Command> commands;
    for (const Planned_Part& part : parts) {
        commands.push_back(part);
        commands.back().facts["memory"] = part.memory;
    }
    print_commands(commands, assemble_words(options, parts), "assemble", std::move(head), options.plan_lines);
}

void refuse_standard_input(const Render_Options& options) {
    for (const std::string& file : options.models) {
        if (file == "-") {
            throw drawing::Usage_Error("--plan: expected files with names, found standard input");
        }
    }
}

} // namespace

void print_plan(const Render_Options& options, const drawing::Job_Settings& settings, const drawing::Module_Choice& module,
                drawing::Drawing& drawing, double setup) {
    refuse_standard_input(options);
    const drawing::Work_Map work(settings, module, drawing);
    if (options.plan > work.most_parts()) {
        throw drawing::Usage_Error("--plan: expected at most " + std::to_string(work.most_parts()) +
                                   " parts of this image, found " + std::to_string(options.plan));
    }
    std::vector<Planned_Part> parts;
    for (const VT_Int_Rectangle& area : work.shared(options.plan)) {
        Planned_Part part = planned_area(options, settings, static_cast<std::int32_t>(parts.size()), area);
        drawing::Job_Settings own = settings;
        own.part = part.part;
        own.file = drawing::Image_File::png;
        const drawing::Job job(own, module, drawing);
        part.memory = job.other_memory() + job.image_memory();
        part.facts = {
            {"area", {area.left, part.part.size.y - 1 - area.top, area.right - area.left + 1, area.top - area.bottom + 1}},
            {"seconds", rounded(setup + work.work(area) * 1e-9)}};
        parts.push_back(std::move(part));
    }
    print_parts(options, parts,
                {{"image", options.image.output},
                 {"size", {settings.part.size.x, settings.part.size.y}},
                 {"origin", settings.part.origin},
                 {"setup_seconds", rounded(setup)}});
}

void print_share_plan(const Render_Options& options, const drawing::Job_Settings& settings, const drawing::Module_Choice& module,
                      drawing::Drawing& drawing, std::uint64_t triangles, const std::vector<std::string>& words) {
    const drawing::Job job(settings, module, drawing);
    std::vector<Planned_Part> parts;
    for (std::int32_t number = 0; number < options.plan; ++number) {
        drawing::Image_Part place = settings.part;
        place.share->first = number;
        place.share->end = number + 1;
        Words own{"--parts-of=" + std::to_string(options.plan), "--part=" + std::to_string(number)};
        own.insert(own.end(), words.begin(), words.end());
        Planned_Part part = planned(options, place, number, own);
        part.memory = job.other_memory() + job.image_memory();
        part.facts = {{"triangles", {place.share->start_in(triangles), place.share->end_in(triangles)}}};
        parts.push_back(std::move(part));
    }
    const std::int32_t n = settings.part.share->supersample;
    print_parts(options, parts,
                {{"image", options.image.output},
                 {"size", {settings.part.size.x / n, settings.part.size.y / n}},
                 {"origin", settings.part.origin}});
}

} // namespace vorna::app
