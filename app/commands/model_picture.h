// Models drawn into files: whole pictures, parts of them, and turntables.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/commands/model_options.h"
#include "drawing/files/input.h"

namespace vorna::app {

struct Model_Picture : Model_Options {
    std::string output; // of a turntable a template for names
    std::string record; // empty = not asked for
    std::string size = "1280x960";
    std::string tiles_of; // empty = the whole picture
    std::int32_t tile = -1, tile_size = 0;
    std::int32_t supersample = 1;
    std::int32_t turntable = 0; // frames; 0 = a single picture
    unsigned threads = 0;
    int repeat = 1;
    bool stats = false, hash = false, dry_run = false, allow_empty = false;
};

// Throws Usage_Error for what makes no sense, and std::runtime_error when nothing would be seen.
void render_models(const Model_Picture& picture, std::vector<drawing::Input> inputs, const drawing::Module_Choice& module);

} // namespace vorna::app
