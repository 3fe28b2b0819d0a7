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
#include "drawing/files/path.h"
#include "drawing/job/part_files.h"
#include "drawing/job/work_map.h"

namespace vorna::app {
namespace {

using Words = std::vector<std::string>;
namespace fs = std::filesystem;

struct Planned_Part {
    drawing::Image_Part part;
    std::string file;
    double seconds = 0;       // of one thread, without set-up
    std::uint64_t memory = 0; // bytes
    bool is_done = false;     // the file is there
    Words command;
};

// The name by which the command finds itself: short where the shell finds the same file.
std::string own_name() {
    const fs::path self = executable_path();
    const char* path = std::getenv("PATH");
    std::string_view rest = path ? path : "";
    std::error_code none;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(':'), rest.size());
        const fs::path found = fs::path(rest.substr(0, end)) / "vorna";
        if (fs::exists(found, none)) {
            return fs::equivalent(found, self, none) ? "vorna" : self.string();
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return self.string();
}

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

// Files whose names begin with a dash are arguments behind the dash dash.
void add_files(Words& words, const Words& files) {
    words.emplace_back("--");
    words.insert(words.end(), files.begin(), files.end());
}

Planned_Part planned(const Render_Options& options, const drawing::Job_Settings& settings, std::int32_t number,
                     const VT_Int_Rectangle& area) {
    Planned_Part planned;
    planned.part = settings.part;
    planned.part.is_whole = false;
    planned.part.columns = options.plan;
    planned.part.number = number;
    planned.part.cut = area;
    planned.file = part_file(options, number);
    planned.is_done = drawing::digest_of_part(planned.file, planned.part).has_value();
    planned.command = {own_name(), "render"};
    const Words given = option_words(*options.given, {"--plan", "--plan-lines", "--hash", "--output", "--output-format",
                                                      "--compress", "--allow-empty", "--stats"});
    planned.command.insert(planned.command.end(), given.begin(), given.end());
    // The parts are temporary: files that are written fast.
    for (const std::string& word :
         {"--tiles-of=" + std::to_string(options.plan) + "x1", "--tile=" + std::to_string(number),
          "--area=" + area_text(planned.part), std::string("--compress=fast"), "--output=" + planned.file}) {
        planned.command.push_back(word);
    }
    add_files(planned.command, options.models);
    return planned;
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

// As a shell reads it.
std::string quoted(const Words& words) {
    std::string line;
    for (const std::string& word : words) {
        constexpr std::string_view plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_=,./:@%+";
        line += line.empty() ? "" : " ";
        if (!word.empty() && word.find_first_not_of(plain) == std::string::npos) {
            line += word;
            continue;
        }
        line += '\'';
        for (const char c : word) {
            line += c == '\'' ? std::string("'\\''") : std::string(1, c);
        }
        line += '\'';
    }
    return line + '\n';
}

double rounded(double seconds) {
    return std::round(seconds * 1000) / 1000;
}

} // namespace

void print_plan(const Render_Options& options, const drawing::Job_Settings& settings, const drawing::Module_Choice& module,
                drawing::Drawing& drawing, double setup) {
    for (const std::string& file : options.models) {
        if (file == "-") {
            throw drawing::Usage_Error("--plan: expected files with names, found standard input");
        }
    }
    const drawing::Work_Map work(settings, module, drawing);
    if (options.plan > work.most_parts()) {
        throw drawing::Usage_Error("--plan: expected at most " + std::to_string(work.most_parts()) +
                                   " parts of this image, found " + std::to_string(options.plan));
    }
    std::vector<Planned_Part> parts;
    for (const VT_Int_Rectangle& area : work.shared(options.plan)) {
        Planned_Part part = planned(options, settings, static_cast<std::int32_t>(parts.size()), area);
        drawing::Job_Settings own = settings;
        own.part = part.part;
        own.file = drawing::Image_File::png;
        const drawing::Job job(own, module, drawing);
        part.memory = job.other_memory() + job.image_memory();
        part.seconds = work.work(area) * 1e-9;
        parts.push_back(std::move(part));
    }
    const Words assemble = assemble_words(options, parts);
    if (options.plan_lines) {
        for (const Planned_Part& part : parts) {
            if (!part.is_done) {
                print(stdout, quoted(part.command));
            }
        }
        print(stdout, quoted(assemble));
        return;
    }
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const Planned_Part& part : parts) {
        const VT_Int_Rectangle area = part.part.area();
        list.push_back(
            {{"number", part.part.number},
             {"file", part.file},
             {"area", {area.left, part.part.size.y - 1 - area.top, area.right - area.left + 1, area.top - area.bottom + 1}},
             {"seconds", rounded(setup + part.seconds)},
             {"memory", part.memory},
             {"done", part.is_done},
             {"command", part.command}});
    }
    const nlohmann::ordered_json plan{{"image", options.image.output},
                                      {"size", {settings.part.size.x, settings.part.size.y}},
                                      {"origin", settings.part.origin},
                                      {"setup_seconds", rounded(setup)},
                                      {"parts", list},
                                      {"assemble", {{"command", assemble}}}};
    print(stdout, plan.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n');
}

} // namespace vorna::app
