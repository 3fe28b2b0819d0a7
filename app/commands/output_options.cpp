// Options of the commands that write images.
#include "app/commands/output_options.h"

#include <algorithm>

#include "drawing/files/output_file.h"
#include "drawing/files/usage_error.h"
#include "drawing/image/image_formats.h"

namespace vorna::app {
namespace {

// Names that users give to files of the formats, the preferred one first.
std::vector<std::string> endings() {
    std::vector<std::string> all;
    for (const drawing::Image_Format& format : drawing::image_formats()) {
        for (const std::string_view suffix : {format.suffix, format.other_suffix}) {
            if (!suffix.empty()) {
                all.emplace_back(suffix);
            }
        }
    }
    return all;
}

const drawing::Image_Format& format_of(const Output_Options& options) {
    const drawing::Image_Format* format =
        options.format.empty() ? drawing::image_format_of(options.output) : drawing::find_image_format(options.format);
    return format ? *format : drawing::image_format(drawing::Image_File::png);
}

} // namespace

std::string output_choice(const Output_Options& options) {
    return options.format.empty() ? "-o " + options.output : "--output-format " + options.format;
}

void add_output_options(std::vector<Option>& table, Output_Options& options, const std::string& group) {
    table.insert(table.end(),
                 {{.names = {"-o", "--output"},
                   .value = output_value("FILE.png", endings()),
                   .text = "Image file to write, in the format of its suffix; - is standard output",
                   .target = &options.output,
                   .group = group,
                   .is_required = true},
                  {.names = {"--output-format"},
                   .value = choice_value("SUFFIX", drawing::written_image_suffixes()),
                   .text = "Format of the image whatever its name",
                   .target = &options.format,
                   .group = group},
                  {.names = {"--compress"},
                   .value = choice_value("SPEED", {"fast", "default", "best"}),
                   .text = "Larger PNG, TIFF, PDF and WebP files in less time, or smaller ones in more; the pixels are the same",
                   .target = &options.compress,
                   .group = group,
                   .by_default = options.compress}});
}

drawing::Image_File output_file_of(const Output_Options& options) {
    const drawing::Image_Format& format = format_of(options);
    if (!format.encoder) {
        throw drawing::Usage_Error(output_choice(options) + ": expected a format that this build writes (" +
                                   list_of(drawing::written_image_suffixes()) + "), found " + std::string(format.suffix));
    }
    return format.file;
}

drawing::Compression compression_of(const Output_Options& options) {
    return options.compress == "fast"   ? drawing::Compression::fast
           : options.compress == "best" ? drawing::Compression::best
                                        : drawing::Compression::standard;
}

void check_output(const Output_Options& options, std::uint32_t width, std::uint32_t height, bool transparent) {
    const drawing::Image_Format& format = format_of(options);
    if (std::max(width, height) > format.largest_side) {
        throw drawing::Usage_Error(output_choice(options) + ": expected sides of up to " + std::to_string(format.largest_side) +
                                   " pixels in " + std::string(format.name) + " files, found " + std::to_string(width) + 'x' +
                                   std::to_string(height));
    }
    if (format.is_rewritten && !drawing::Output_File::can_rewrite(options.output)) {
        throw drawing::Usage_Error("-o " + options.output + ": expected a file or standard output for " +
                                   std::string(format.name) + ", found a device or a pipe");
    }
    if (transparent && !format.keeps_alpha) {
        throw drawing::Usage_Error(output_choice(options) + ": expected an opaque image in " + std::string(format.name) +
                                   " files, found --background none");
    }
}

} // namespace vorna::app
