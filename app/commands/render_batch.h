// `render` with --output-folder: an image of each file by itself.
#pragma once

#include <functional>

#include "app/commands/render_job.h"

namespace vorna::app {

// Draws one file as the options say, into options.image.output.
using Draw_One = std::function<void(Render_Options& options)>;

// Draws the files on as many threads as the options say, one thread each while there are as many files left. Failures are listed
// at the end, in the order of the files. check: throws for options that are wrong whatever the file; called once, with the name
// of the first image, before the folder is made. Returns the exit status. Throws Usage_Error, before anything is drawn, for two
// files with the same name of the image, and Interrupted. A signal may also end the process at once; unfinished files are
// removed.
int render_batch(const Render_Options& options, const Draw_One& check, const Draw_One& draw_one);

} // namespace vorna::app
