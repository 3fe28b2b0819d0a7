// `render` with a model that is read while it is drawn, whole or in shares of its triangles.
#pragma once

#include <string>
#include <vector>

#include "app/cli/options.h"
#include "app/commands/render_job.h"
#include "drawing/files/input.h"

namespace vorna::app {

// group: under which the help lists them.
void add_stream_options(std::vector<Option>& table, Render_Options& options, const std::string& group);

// A framing, by which shares of one model know alike where it lies, is a text of numbers with commas between them: the SHA-256 of
// the file, the center and the radius of the model, and its outermost corners in the unit sphere. Throws Usage_Error.
void render_streamed(Render_Options& options, const std::vector<drawing::Input>& inputs, const drawing::Module_Choice& module);

} // namespace vorna::app
