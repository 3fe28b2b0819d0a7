// What the parts of one image have in common: their inputs, and the options that decide their pixels.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "app/commands/render_job.h"
#include "drawing/files/input.h"

namespace vorna::app {

// A digest of the content; empty where there is no such file. Throws Usage_Error when it cannot be read.
std::string digest_of_file(const std::string& name);
// A digest of the contents of all inputs, one after the other.
std::string digest_of_inputs(const std::vector<drawing::Input>& inputs);

// A digest of the contents of all files that the drawing was read from, of the options that decide pixels as they were given, and
// of the program's version. What was read must be known to the limits of the options: everything has been loaded.
std::string part_origin(const Render_Options& options, std::int32_t supersample);

// The options as a shell's words, without some of them; arguments are left out.
std::vector<std::string> option_words(const Given& given, std::initializer_list<std::string_view> without);

} // namespace vorna::app
