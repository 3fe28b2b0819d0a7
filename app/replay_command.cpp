// vorna replay: pictures at slot level.
#include "app/replay_command.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>

#include "app/command.h"
#include "app/image_file.h"
#include "app/output_file.h"
#include "app/picture/document.h"
#include "app/picture/picture_reader.h"
#include "app/picture/replay.h"
#include "app/session.h"

namespace app {

namespace {

struct Replay_Arguments {
    std::string picture;
    std::string color, depth, color_raw, depth_raw, report; // empty = not asked for
    bool unchecked = false;
};

std::string read_picture_text(const std::string& path) {
    if (path == "-") {
        return picture::read_text(std::cin);
    }
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::string text = file ? picture::read_text(file) : std::string();
    if (!file.is_open() || file.bad()) {
        throw picture::Picture_Error("cannot be read: " + std::generic_category().message(errno));
    }
    return text;
}

void write_outputs(const Replay_Arguments& arguments, Session& session, const picture::Report& report) {
    Output_Files files;
    const auto write = [&](const std::string& png, const std::string& raw, const Raster& raster) {
        if (!png.empty()) {
            files.add(png, png_of(raster, session.palette()));
        }
        if (!raw.empty()) {
            files.add(raw, raw_bytes_of(raster));
        }
    };
    write(arguments.color, arguments.color_raw, raster_of(session.color_buffer()));
    if (!arguments.depth.empty() || !arguments.depth_raw.empty()) {
        const VT_Reference<VT_Shared_Image> depth = session.read_depth();
        write(arguments.depth, arguments.depth_raw, raster_of(*depth));
    }
    if (!arguments.report.empty()) {
        files.add(arguments.report, picture::json_of(report));
    }
    files.commit();
}

void run(const Replay_Arguments& arguments, const Module_Choice& module) {
    const std::string name = arguments.picture == "-" ? "standard input" : arguments.picture;
    try {
        const picture::Picture picture = picture::read_picture(read_picture_text(arguments.picture));
        Session session(module);
        const picture::Report report = picture::replay(picture, session, arguments.unchecked);
        if (!session.has_depth_buffer() && !(arguments.depth.empty() && arguments.depth_raw.empty())) {
            throw picture::Picture_Error("there is no depth buffer for --depth or --depth-raw");
        }
        write_outputs(arguments, session, report);
    } catch (const picture::Picture_Error& error) {
        throw Usage_Error(name + ": " + error.what());
    } catch (const picture::Not_Drawn& error) {
        throw std::runtime_error(name + ": " + error.what());
    }
}

} // namespace

void add_replay_command(CLI::App& application, int& status) {
    const auto arguments = std::make_shared<Replay_Arguments>();
    CLI::App& command = *application.add_subcommand("replay", "Draw a picture, a JSON document of renderer calls");
    command.fallthrough();
    command.add_option("picture", arguments->picture, "The picture; - reads standard input")->required()->type_name("PICTURE");
    const auto add_output = [&command](const char* option, std::string& path, const char* what) {
        command.add_option(option, path, what)->type_name("FILE");
    };
    add_output("--color", arguments->color, "Write the colour buffer as PNG, RGBA or palette");
    add_output("--depth", arguments->depth, "Write the depth buffer as PNG, 16-bit greyscale");
    add_output("--color-raw", arguments->color_raw, "Write the colour buffer as plain rows, top row first");
    add_output("--depth-raw", arguments->depth_raw, "Write the depth buffer as plain rows, top row first");
    add_output("--report", arguments->report, "Write what happened besides drawing, as JSON");
    command.add_flag("--unchecked", arguments->unchecked, "Send coordinates that renderers trust without looking at them");
    command.callback([&application, &status, arguments] {
        run(*arguments, chosen_module(application));
        status = exit_status::done;
    });
}

} // namespace app
