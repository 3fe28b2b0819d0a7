// `render --plan`: the commands that draw an image in parts and join them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/commands/render_job.h"

namespace vorna::app {

// Prints the plan as JSON or as lines of commands. settings: of the whole image, with the origin of its parts. setup: seconds
// that a part takes before it draws. The drawing is then prepared for another image.
void print_plan(const Render_Options& options, const drawing::Job_Settings& settings, const drawing::Module_Choice& module,
                drawing::Drawing& drawing, double setup);

// The plan of an image whose parts are shares of so many triangles. words: options that all parts have besides those given.
void print_share_plan(const Render_Options& options, const drawing::Job_Settings& settings, const drawing::Module_Choice& module,
                      drawing::Drawing& drawing, std::uint64_t triangles, const std::vector<std::string>& words);

} // namespace vorna::app
