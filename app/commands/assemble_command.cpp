// The command `assemble`: joins the parts of an image.
#include "app/commands/assemble_command.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
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
#include "drawing/image/image_formats.h"
#include "drawing/image/sha256.h"
#include "drawing/job/image_stream.h"
#include "drawing/job/part_reader.h"

namespace vorna::app {

namespace {

struct Assemble_Options {
    std::vector<std::string> parts;
    Output_Options image;
    std::string max_memory;
    unsigned threads = 0;
    bool hash = false;
};

std::string number_text(const drawing::Image_Part& part) {
    return "part " + std::to_string(part.number) + " of " + std::to_string(part.columns) + "x" + std::to_string(part.rows) +
           " of an image of " + std::to_string(part.size.x) + "x" + std::to_string(part.size.y);
}

// The files by the numbers of their parts. Throws Usage_Error when they are not the parts of one image.
struct Part_Files {
    drawing::Image_Part part;                  // the first one
    drawing::Image_Form form;                  // of the whole image
    std::map<std::int32_t, std::string> names; // by number; a part of as many as it says does not make them all

    explicit Part_Files(const std::vector<std::string>& files) {
        for (const std::string& file : files) {
            if (file == "-") {
                throw drawing::Usage_Error("assemble: expected files with names, found standard input");
            }
            add(drawing::Part_Reader(file));
        }
        std::int32_t missing = 0;
        while (names.contains(missing)) {
            ++missing;
        }
        if (missing < std::int64_t{part.columns} * part.rows) {
            drawing::Image_Part lost = part;
            lost.number = missing;
            throw drawing::Usage_Error("assemble: expected all parts, found no " + number_text(lost));
        }
    }

private:
    void add(const drawing::Part_Reader& reader) {
        const drawing::Image_Part& found = reader.part();
        if (names.empty()) {
            part = found;
            form = reader.form();
            form.width = static_cast<std::uint32_t>(part.size.x);
            form.height = static_cast<std::uint32_t>(part.size.y);
            form.place.clear();
            form.reducible = true;
        }
        if (found.size != part.size || found.columns != part.columns || found.rows != part.rows) {
            throw drawing::Usage_Error(reader.name() + ": expected a part of the same image, found " + number_text(found));
        }
        if (reader.form().colors != form.colors || reader.form().opaque != form.opaque || reader.form().palette != form.palette ||
            reader.form().pixels_per_metre != form.pixels_per_metre) {
            throw drawing::Usage_Error(reader.name() + ": expected pixels like those of the other parts, found others");
        }
        std::string& name = names[found.number];
        if (!name.empty()) {
            throw drawing::Usage_Error(reader.name() + ": expected each part once, found " + number_text(found) + " in " + name +
                                       " too");
        }
        name = reader.name();
    }
};

// The parts of one row are open at the same time, and are read band by band.
class Part_Source {
public:
    explicit Part_Source(const Part_Files& files) : files_(files), readers_(static_cast<std::size_t>(files.part.columns)) {
        const std::uint32_t block = drawing::image_encoder(files.form)->block_rows();
        source_.parts = static_cast<std::uint32_t>(files.part.columns);
        source_.in_order = true;
        for (std::int32_t row = 0; row < files.part.rows; ++row) {
            const auto end = static_cast<std::uint32_t>(files.part.size.y - area_of(row, 0).bottom);
            for (std::uint32_t from = source_.band_ends.empty() ? 0 : source_.band_ends.back(); from < end;) {
                from = std::min(from + block, end);
                source_.band_ends.push_back(from);
                band_rows_.push_back(row);
            }
        }
        source_.make = [this](unsigned, std::uint32_t band, std::uint32_t part, const drawing::Row_Places& places) {
            read(band, part, places);
        };
    }

    const drawing::Row_Source& source() const noexcept { return source_; }

private:
    VT_Int_Rectangle area_of(std::int32_t row, std::uint32_t column) const {
        drawing::Image_Part part = files_.part;
        part.number = row * part.columns + static_cast<std::int32_t>(column);
        return part.area();
    }

    void read(std::uint32_t band, std::uint32_t column, const drawing::Row_Places& places) {
        const std::int32_t row = band_rows_[band];
        std::unique_ptr<drawing::Part_Reader>& reader = readers_[column];
        if (band == 0 || band_rows_[band - 1] != row) {
            const std::int32_t number = row * files_.part.columns + static_cast<std::int32_t>(column);
            reader = nullptr;
            reader = std::make_unique<drawing::Part_Reader>(files_.names.at(number));
            if (reader->part().number != number || reader->part().size != files_.part.size) {
                throw drawing::Usage_Error(reader->name() + ": expected the part that it was, found another one");
            }
        }
        const std::size_t place = static_cast<std::size_t>(area_of(row, column).left) * files_.form.pixel_bytes();
        for (std::uint32_t y = band == 0 ? 0 : source_.band_ends[band - 1]; y < source_.band_ends[band]; ++y) {
            reader->read_row(places(y) + place);
        }
    }

    const Part_Files& files_;
    std::vector<std::unique_ptr<drawing::Part_Reader>> readers_; // by column
    std::vector<std::int32_t> band_rows_;                        // of parts, by band
    drawing::Row_Source source_;
};

void assemble(const Assemble_Options& options) {
    refuse_terminal("-o", options.image.output);
    drawing::refuse_same_files(options.parts, {options.image.output});
    Part_Files files(options.parts);
    files.form.file = output_file_of(options.image);
    files.form.compression = compression_of(options.image);
    check_output(options.image, files.form.width, files.form.height, !files.form.opaque);
    Part_Source parts(files);
    drawing::Stream_Settings settings;
    settings.threads = options.threads > 0 ? options.threads : drawing::processor_count();
    settings.rows_ahead = (2 * settings.threads + 2) * drawing::image_encoder(files.form)->block_rows();
    drawing::Load_Limits limits(drawing::parsed_limit(options.max_memory));
    for (const auto& [number, name] : files.names) {
        std::error_code none;
        if (const auto size = std::filesystem::file_size(drawing::path_of(name), none); !none) {
            limits.add_file(name, size);
        }
    }
    limits.take_memory(files.names.at(0), drawing::stream_memory(files.form, parts.source().band_ends, settings));
    drawing::Sha256 hash;
    settings.hash = options.hash ? &hash : nullptr;
    const drawing::Interruption interruption;
    drawing::Output_File file(options.image.output);
    Progress progress;
    settings.progress = [&progress](double done) { progress.show(done); };
    drawing::stream_image(file, files.form, parts.source(), settings);
    file.commit();
    if (options.hash) {
        print_line(options.image.output, hash.finish());
    }
}

} // namespace

Command assemble_command() {
    const auto options = std::make_shared<Assemble_Options>();
    Command command{
        .name = "assemble",
        .summary = "Join the parts of an image that vorna render --tiles-of has drawn.",
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
