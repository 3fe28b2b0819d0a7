// `tiles` in parts.
#include "app/commands/tile_parts.h"

#include <algorithm>
#include <filesystem>

#include "app/cli/command.h"
#include "app/commands/part_origin.h"
#include "app/commands/plan_commands.h"
#include "drawing/files/interruption.h"
#include "drawing/files/path.h"
#include "drawing/files/usage_error.h"

namespace vorna::app {
namespace {

using namespace drawing::pyramid;

constexpr std::int32_t most_tile_parts = 10000;

// The file of a part, which is such a file too.
std::string part_of(const Tiles_Options& options, std::int32_t part) {
    return options.image.output + ".part-" + std::to_string(part) + ".vorna-tiles";
}

} // namespace

void add_tile_part_options(std::vector<Option>& table, Tiles_Options& options, const std::string& group) {
    const std::vector<Option> own{
        {.names = {"--parts-of"},
         .value = whole_value("N", 1, most_tile_parts),
         .text = "Join so many parts that are beside the output, or with --part draw one of them",
         .target = &options.parts_of,
         .group = group},
        {.names = {"--part"},
         .value = whole_value("K", 0, most_tile_parts - 1),
         .text = "Draw only this part of the tiles, from 0 on, into a file beside the output",
         .target = &options.part,
         .group = group,
         .needs = {"--parts-of"}},
        {.names = {"--plan"},
         .value = whole_value("N", 1, most_tile_parts),
         .text = "Print the commands that draw the tiles in so many parts and join them, as JSON; draw nothing",
         .target = &options.plan,
         .group = group,
         .excludes = {"--parts-of", "--resume", "--stats"}},
        {.names = {"--plan-lines"},
         .text = "Print the plan as lines for a shell: parts that are not there yet, and the command that joins them all",
         .target = &options.plan_lines,
         .group = group,
         .needs = {"--plan"}},
    };
    table.insert(table.end(), own.begin(), own.end());
}

void choose_part(const Tiles_Options& options, Pyramid_Settings& settings) {
    if (options.part >= std::max(options.parts_of, 1)) {
        throw drawing::Usage_Error("--part: expected a number from 0 to " + std::to_string(options.parts_of - 1) + ", found " +
                                   std::to_string(options.part));
    }
    settings.parts = static_cast<std::uint32_t>(std::max(options.parts_of, 1));
    settings.part = static_cast<std::uint32_t>(std::max(options.part, 0));
}

void print_tiles_plan(const Tiles_Options& options, Pyramid_Settings settings, const std::string& key, const Given& given) {
    const auto command = [&](const Words& more) {
        Words words{own_name(), "tiles"};
        const Words all = option_words(given, {"--plan", "--plan-lines", "--stats", "--resume"});
        words.insert(words.end(), all.begin(), all.end());
        words.push_back("--parts-of=" + std::to_string(options.plan));
        words.insert(words.end(), more.begin(), more.end());
        add_files(words, options.models);
        return words;
    };
    std::vector<Part_Command> parts;
    settings.parts = static_cast<std::uint32_t>(options.plan);
    for (std::int32_t part = 0; part < options.plan; ++part) {
        settings.part = static_cast<std::uint32_t>(part);
        Part_Command& one = parts.emplace_back();
        one.file = part_of(options, part);
        const bool has_begun = Tile_Log::is_log(one.file, key);
        Words words{"--part=" + std::to_string(part)};
        if (has_begun) {
            words.emplace_back("--resume");
        }
        one.command = command(words);
        one.is_done = has_begun && has_all_tiles(settings, Tile_Log(one.file, key, true));
    }
    print_commands(parts, command({}), "join", {{"output", options.image.output}}, options.plan_lines);
}

void draw_tile_part(const Tiles_Options& options, const Pyramid_Settings& settings, const std::string& key,
                    drawing::Map_Drawing& map, const Given& given) {
    const drawing::Interruption interruption;
    check_levels(settings, map);
    Tile_Log log(part_of(options, options.part), key, options.resume);
    draw_pyramid(settings, chosen_module(given), map, log);
}

void join_tile_parts(const Tiles_Options& options, Pyramid_Settings settings, const std::string& key, Tile_Log& log) {
    for (std::int32_t part = 0; part < options.parts_of; ++part) {
        const std::string file = part_of(options, part);
        if (!std::filesystem::exists(drawing::path_of(file))) {
            throw drawing::Usage_Error(file + ": expected a part of the tiles, found none");
        }
        Tile_Log own(file, key, true);
        settings.part = static_cast<std::uint32_t>(part);
        if (!has_all_tiles(settings, own)) {
            throw drawing::Usage_Error(file + ": expected part " + std::to_string(part) + " of " +
                                       std::to_string(options.parts_of) + ", found another one or a damaged one");
        }
        log.add(own);
    }
}

} // namespace vorna::app
