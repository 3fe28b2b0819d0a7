// Draws segments of edges in a window.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "drawing/model/model_look.h"
#include "drawing/model/window_depths.h"
#include "host/frame_buffer.h"
#include "host/renderer_data.h"
#include "host/rendition.h"

namespace vorna::drawing::model {

// Colours of a window, kept while a line is drawn over them. They are restored by drawing images, so that a recording has that
// too.
class Kept_Pixels {
public:
    Kept_Pixels(VT_Renderer_Data& renderer, const VT_Int_Rectangle& window);

    // Keeps what of the rectangle lies in the window.
    void keep(const VT_Int_Rectangle& rectangle);
    // Stores the kept colours again, with a rendition that tests no depths, and forgets them.
    void restore(const VT_Rendition& rendition);

private:
    VT_Renderer_Data& renderer_;
    VT_Int_Rectangle window_;
    const Frame_Buffer* buffer_;
    VT_Int_Pair origin_;
    std::vector<VT_Int_Rectangle> areas_;
    std::vector<VT_RGB32> colors_; // of the areas, one after the other, rows from the top
};

// Joins segments to polylines and draws them. Smoothed lines know no depth buffer: what is visible of a segment over faces is
// found pixel by pixel along it first.
class Edge_Pen {
public:
    // How far the pixels of a line lie beside its points.
    static std::int32_t pixels_beside(const Edge_Settings& settings) noexcept {
        return settings.width / 2 + (settings.smoothed ? 1 : 0);
    }
    // How far the points of device lines that are drawn lie beside those of a line.
    static std::int32_t points_beside(const Edge_Settings& settings) noexcept { return settings.width / 2; }

    // window: of the renderer, as far as there is something of the image in it. is_whole: that is all of it.
    Edge_Pen(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_Int_Rectangle& window, bool is_whole,
             const Edge_Settings& settings, VT_RGB32 color);
    Edge_Pen(const Edge_Pen&) = delete;
    Edge_Pen& operator=(const Edge_Pen&) = delete;
    ~Edge_Pen() { end_polyline(); }

    // color: null = that of the pen, as for all other segments.
    void draw(const VT_DCI_Point& from, const VT_DCI_Point& to, const VT_RGB32* color);
    // To be called where segments that are not drawn lie between: other tiles may draw them, and all must join the same ones.
    void end_polyline();

private:
    bool touches_window(const VT_DCI_Point& from, const VT_DCI_Point& to) const;
    void append(const VT_DCI_Point& from, const VT_DCI_Point& to, const VT_RGB32* color);
    void draw_wide(const VT_DCI_Point& from, const VT_DCI_Point& to, const VT_RGB32* color);
    void draw_visible_part(const VT_DCI_Point& from, const VT_DCI_Point& to, const VT_RGB32* color);
    void draw_visible(const VT_DCI_Point& from, const VT_DCI_Point& to, const VT_RGB32* color);

    VT_Renderer_Data& renderer_;
    VT_Reference<VT_Rendition> rendition_;
    const VT_Int_Rectangle window_;
    const bool is_whole_;
    const std::int32_t width_;
    const std::int32_t beside_; // see pixels_beside
    std::optional<Window_Depths> depths_;
    std::optional<Kept_Pixels> kept_;
    std::vector<VT_DCI_Point> points_;
    std::vector<VT_RGB32> colors_; // of the segments
};

} // namespace vorna::drawing::model
