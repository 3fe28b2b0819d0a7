// What the commands that draw a model have in common: the model, where it is seen from, and how it looks.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/cli/options.h"
#include "app/commands/camera_options.h"
#include "drawing/files/input.h"
#include "drawing/files/load_limits.h"
#include "drawing/image/background.h"
#include "drawing/job/model_style.h"
#include "drawing/model/camera.h"
#include "drawing/model/edge_renderer.h"
#include "drawing/model/mesh.h"
#include "drawing/model/scene.h"
#include "drawing/recording/session.h"

namespace vorna::app {

struct Model_Options : Camera_Options {
    std::vector<std::string> models; // files, drawn together
    std::string input_format;        // empty = as their names and contents say
    drawing::model::Model_Look picture;
    std::string background; // none = transparent, empty = by what is drawn
    std::string light = "-0.5,0.65,0.7";
    std::string color;            // empty = the model's own
    std::optional<double> crease; // degrees; none = as the model says
    std::string edges;            // empty = none
    std::string edge_color;
    int line_width = 1, point_size = 0; // pixels; 0 = by the number of points
    bool axes = false, scale_bar = false;
    bool antialias = false;
    int colors = 0;      // bits a pixel of the file; 0 = as the palette needs, 32 without one
    std::string palette; // cube, levels as 8x8x4, or a file; empty = none
    bool strict = false;
    std::string max_memory; // empty = by the files' sizes
    bool allow_outside = false;
    std::shared_ptr<drawing::Load_Limits> limits = std::make_shared<drawing::Load_Limits>(); // of all that is read

    bool has_faces() const noexcept { return picture.shading != drawing::model::Shading::wireframe; }
    bool has_edges() const noexcept {
        return !edges.empty() || !has_faces() || picture.shading == drawing::model::Shading::hidden_line;
    }
    bool is_transparent() const noexcept { return background == "none"; }
};

// The files. inputs: their kinds, for the help.
Option model_argument(Model_Options& options, const std::string& inputs);
void add_model_options(std::vector<Option>& table, Model_Options& options);

// Limits as the options say. Throws Usage_Error.
std::shared_ptr<drawing::Load_Limits> limits_of(const Model_Options& options, unsigned threads = 0);

// The options as a shell's words, as far as they differ from the defaults.
std::vector<std::string> arguments_of(const Model_Options& options);

// The palette of an image, if it has one.
struct Palette_Choice {
    VT_Reference<const VT_Palette> drawn; // that the renderer draws with; null = 32 bits a pixel
    std::vector<VT_RGB32> mapped;         // that 32-bit pixels are mapped to
};

// A pair of numbers from 1 to most with an x between them. Throws Usage_Error that begins with what is expected.
VT_Int_Pair parsed_pair(const std::string& text, std::int32_t most, const std::string& expected);

// These throw Usage_Error for what makes no sense.
std::vector<drawing::Input> open_inputs(const Model_Options& options);
Palette_Choice palette_of(const Model_Options& options);
// Whether the renderer draws palette indices; palettes from files are for what it has drawn.
bool draws_indices(const Model_Options& options);
// Of images that are not transparent: models may have a gradient.
drawing::Background background_of(const Model_Options& options);
std::optional<drawing::Background> drawn_background_of(const Model_Options& options); // none = transparent
VT_RGB32 map_background_of(const Model_Options& options);
drawing::Model_Style style_of(const Model_Options& options);
// has_lines: whether the model itself has some.
drawing::Model_Look look_of(const Model_Options& options, bool has_lines, VT_Reference<const VT_Palette> palette = {});

// What could not be read of materials and textures is said, or refused. empty: whether files without triangles are fine.
drawing::model::Mesh load_mesh(const Model_Options& options, std::vector<drawing::Input> inputs, bool empty = false);
std::unique_ptr<drawing::model::Scene> make_faces(const Model_Options& options, const drawing::model::Mesh& mesh);
drawing::Model_Parts make_model(const Model_Options& options, const drawing::model::Mesh& mesh);

// Spans leave out their last pixel, and no point may lie outside the window: a model that is cut off at the image's right or
// upper edge reaches it only when the window is larger by one.
inline constexpr std::int32_t window_margin = 1;
inline constexpr std::int32_t largest_picture_side = 16384 - window_margin;

} // namespace vorna::app
