// The command `assemble`: joins the parts of an image.
#include "app/commands/assemble_command.h"

#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "app/cli/progress.h"
#include "app/commands/output_options.h"
#include "drawing/files/helpers.h"
#include "drawing/files/interruption.h"
#include "drawing/files/load_limits.h"
#include "drawing/files/memory.h"
#include "drawing/files/output_file.h"
#include "drawing/files/output_files.h"
#include "drawing/files/path.h"
#include "drawing/files/usage_error.h"
#include "drawing/image/image_formats.h"
#include "drawing/image/sha256.h"
#include "drawing/job/image_stream.h"
#include "drawing/job/part_files.h"
#include "drawing/job/share_files.h"

namespace vorna::app {

namespace {

struct Assemble_Options {
    std::vector<std::string> parts;
    Output_Options image;
    std::string max_memory;
    unsigned threads = 0;
    bool hash = false;
    bool fold = false; // parts of the triangles become a larger part
};

// memory: that reading the source takes.
void write_joined(const Assemble_Options& options, drawing::Image_Form form, const drawing::Row_Source& source,
                  std::uint64_t memory) {
    form.file = output_file_of(options.image);
    form.compression = compression_of(options.image);
    check_output(options.image, form.width, form.height, !form.opaque);
    drawing::Stream_Settings settings;
    settings.threads = options.threads > 0 ? options.threads : drawing::processor_count();
    settings.rows_ahead = (2 * settings.threads + 2) * drawing::image_encoder(form)->block_rows();
    drawing::Load_Limits limits(drawing::parsed_limit(options.max_memory));
    for (const std::string& name : options.parts) {
        std::error_code none;
        if (const auto size = std::filesystem::file_size(drawing::path_of(name), none); !none) {
            limits.add_file(name, size);
        }
    }
    limits.take_memory(options.parts.front(), drawing::stream_memory(form, source.band_ends, settings) + memory);
    drawing::Sha256 hash;
    settings.hash = options.hash ? &hash : nullptr;
    const drawing::Interruption interruption;
    drawing::Output_File file(options.image.output);
    Progress progress;
    settings.progress = [&progress](double done) { progress.show(done); };
    drawing::stream_image(file, form, source, settings);
    file.commit();
    if (options.hash) {
        print_line(options.image.output, hash.finish());
    }
}

void assemble(const Assemble_Options& options) {
    refuse_terminal("-o", options.image.output);
    drawing::refuse_same_files(options.parts, {options.image.output});
    if (options.fold || drawing::holds_share(options.parts.front())) {
        drawing::Share_Files files(options.parts, !options.fold);
        if (options.fold && output_file_of(options.image) != drawing::Image_File::png) {
            throw drawing::Usage_Error("--fold: expected a PNG file, found another one");
        }
        write_joined(options, files.form(), files.source(), files.memory());
        return;
    }
    const drawing::Part_Files files(options.parts);
    const drawing::Part_Source parts(files);
    write_joined(options, files.form(), parts.source(), parts.memory());
}

} // namespace

Command assemble_command() {
    const auto options = std::make_shared<Assemble_Options>();
    Command command{
        .name = "assemble",
        .summary = "Join the parts of an image that vorna render --tiles-of or --parts-of has drawn.",
        .arguments = {{.names = {"parts"},
                       .value = text_value("PART.png"),
                       .text = "All parts, in any order",
                       .target = &options->parts,
                       .is_required = true}},
        .options = {{.names = {"--threads"},
                     .value = whole_value("N", 1, 1024),
                     .text = "Threads that compress; as many as there are processors if not given",
                     .target = &options->threads},
                    {.names = {"--hash"}, .text = "Print the SHA-256 of the pixels", .target = &options->hash},
                    {.names = {"--fold"},
                     .text = "Join parts of the triangles that follow one another to one part, which can be joined with others",
                     .target = &options->fold},
                    memory_option(options->max_memory)},
        .examples = {{"vorna render bunny.obj -o 0.png --size 40000x20000 --tiles-of 2x1 --tile 0", "the left half, and so on"},
                     {"vorna assemble 0.png 1.png -o poster.png", "both halves as one image"}},
        .run = [options](const Given&) {
            assemble(*options);
            return exit_status::done;
        }};
    add_output_options(command.options, options->image, default_group);
    return command;
}

} // namespace vorna::app
