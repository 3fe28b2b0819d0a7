// Options of the commands that write images.
#pragma once

#include <string>
#include <vector>

#include "app/cli/options.h"
#include "drawing/image/image_form.h"

namespace vorna::app {

struct Output_Options {
    std::string output; // of a turntable a template for names
    std::string format; // a suffix; empty = that of the output
    std::string compress = "default";
};

// Adds -o, --output-format and --compress to the table. The options must outlive it.
void add_output_options(std::vector<Option>& table, Output_Options& options, const std::string& group);

// The format that the options name; PNG without one. Throws Usage_Error for one that this build does not write.
drawing::Image_File output_file_of(const Output_Options& options);

// The option that decides the format, as it was given.
std::string output_choice(const Output_Options& options);

drawing::Compression compression_of(const Output_Options& options);

// Throws Usage_Error when the format cannot hold an image of this size, or one with transparent pixels.
void check_output(const Output_Options& options, std::uint32_t width, std::uint32_t height, bool transparent);

} // namespace vorna::app
