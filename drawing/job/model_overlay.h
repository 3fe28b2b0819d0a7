// Signs over a model: the directions of its axes, and a scale bar.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "drawing/map/label_font.h"
#include "drawing/model/camera.h"
#include "drawing/model/tiles.h"
#include "host/renderer_data.h"
#include "host/rendition.h"

namespace vorna::drawing {

struct Overlay_Settings {
    bool axes = false;
    bool scale_bar = false; // of images without perspective
    VT_RGB32 color{51, 40, 30, 255};
};

// Everything is a face whose pixels are found row by row, so that tiles make no difference.
class Model_Overlay {
public:
    // radius: of the finished mesh. Throws Usage_Error when there is no font for the letters.
    Model_Overlay(const Overlay_Settings& settings, double radius);
    ~Model_Overlay();

    // enlarged: pixels of the grid for one of the image.
    void prepare(const model::Tile_Grid& grid, const model::Camera& camera, std::int32_t enlarged);
    void draw(VT_Renderer_Data& renderer, const VT_Rendition& rendition) const;

private:
    struct Sign {
        map::Face face;
        VT_RGB32 color;
    };

    void add_text(const std::string& text, map::Position middle, VT_RGB32 color);
    void add_line(map::Position from, map::Position to, double width, VT_RGB32 color);
    void add_axes(const model::Camera& camera, const VT_Int_Rectangle& frame);
    void add_scale_bar(const model::Camera& camera, const VT_Int_Rectangle& frame);

    const Overlay_Settings settings_;
    const double radius_;

    // Of the prepared image.
    std::int32_t enlarged_ = 0;
    std::unique_ptr<map::Label_Font> font_;
    std::vector<Sign> signs_; // the later ones over the earlier ones
};

// The longest of 1, 2 and 5 times a power of ten that is no longer than this, which is above 0.
double round_length(double longest);

} // namespace vorna::drawing
