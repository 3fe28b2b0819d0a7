// A map or drawing, read and projected once, and laid out for any view.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "drawing/files/input.h"
#include "drawing/map/label_font.h"
#include "drawing/map/map_items.h"
#include "drawing/map/map_layer.h"
#include "drawing/map/map_settings.h"
#include "drawing/map/map_sheet.h"
#include "drawing/map/projection.h"

namespace vorna::drawing::map {

// A form of pixels in one colour.
struct Sign {
    Face outline;
    VT_RGB32 color;
};

class Map_Scene {
public:
    // sources: one or more, drawn in their order. overlay: the opened file of the settings, which are those of the whole map.
    // background: the lines of drawings contrast with it. Throws Usage_Error for settings that do not apply to the files,
    // Map_Error and Load_Error.
    Map_Scene(const std::vector<Map_Source>& sources, const std::optional<Input>& overlay, const Map_Settings& settings,
              VT_RGB32 background, std::shared_ptr<Load_Limits> limits);

    // For the next layouts.
    void set_background(VT_RGB32 background);

    // All files that are drawn, but for the overlay.
    std::vector<std::string> files() const;
    bool is_drawing() const { return sheets_.front().map().drawing; }
    // The numbers of shapes and positions.
    std::string summary() const;
    // Parts of the files that are not drawn, a line each.
    std::vector<std::string> warnings() const;
    // The view in which the whole map, or the extent of the settings, fills an image of that size. A height of 0 is computed.
    View fitted(VT_Int_Pair size) const;
    // The view in which a metre of the map's plane has so many pixels, with the same middle. A size without columns is computed.
    // unit_metres: of the units of a plane; none = not known. Throws Usage_Error.
    View scaled(VT_Int_Pair size, double pixels_per_metre, std::optional<double> unit_metres) const;

    // Lays the map out for a view with `supersample` drawn pixels in each direction for one. Labels are placed in pixels of the
    // view. Throws Load_Error and what the font throws.
    void lay_out(const View& view, std::int32_t supersample);

    // Of the layout; the view is that of the supersampled image.
    const View& view() const noexcept { return view_; }
    const Map_Items& items() const noexcept { return items_; } // the map
    const Map_Items& overlay() const noexcept { return overlay_items_; }
    const Map_Items& labels() const noexcept { return label_items_; }
    std::int32_t supersample() const noexcept { return supersample_; }
    // Whether the map is clipped to a shape, and its pixels.
    bool is_clipped() const noexcept { return clip_shape_.has_value(); }
    Face clip() const { return view_.device_face(sheets_.front().layer().face_of(*clip_shape_)); }

    bool merges() const noexcept { return overlay_ && settings_.merges; }
    // The standard palette with the map's colours instead of its greys.
    VT_Reference<const VT_Palette> palette() const;

    // Independent of the view:
    // The styles of lines without casings in a view of supersampled pixels, each once, and the longest segment on the plane.
    std::vector<Line_Paint> line_paints(const View& view, std::int32_t supersample) const;
    double longest_segment() const;
    // The largest number of positions of a face or line.
    std::size_t most_positions() const;
    // An upper bound of the number of items in a view before supersampling.
    std::size_t item_count(const View& view) const;

private:
    static std::size_t label_count(const Map_Sheet& sheet, const View& view); // at most
    void choose_extent();
    void choose_projection();
    void choose_bounds();
    void flip();
    Layer_Style overlay_style(const Map& map) const;
    void load_font();
    void place_labels(const View& view);
    void place_signs(const View& view);
    void place_scale_bar(const View& view, Load_Limits& limits);
    void add_box(const VT_Int_Rectangle& box);
    void write(const Text& text, Position at, VT_RGB32 color);
    std::size_t places_in(const VT_Int_Rectangle& box, const View& view) const;
    void add_label_items();

    const Map_Settings settings_;
    VT_RGB32 background_;
    std::shared_ptr<Load_Limits> limits_;
    std::vector<Map_Sheet> sheets_;
    Map overlay_map_;
    std::optional<Extent> extent_;
    std::optional<std::size_t> clip_shape_;
    std::unique_ptr<Projection> projection_;
    std::optional<Map_Layer> overlay_;
    Layer_Style overlay_style_;
    Face globe_;
    std::vector<Path> graticule_;
    Bounds shown_ = Bounds::nothing(); // on the plane
    std::unique_ptr<Label_Font> font_; // null without texts

    View view_;
    std::int32_t supersample_ = 1;
    Layer_Style drawn_overlay_style_;    // of the supersampled image
    std::vector<Lettering> labels_;      // in pixels before supersampling
    std::vector<Sign> signs_;            // likewise: boxes of legends
    std::vector<Lettering> texts_;       // over them
    std::vector<VT_Int_Rectangle> kept_; // pixels that signs cover
    Map_Items items_, overlay_items_, label_items_;
};

} // namespace vorna::drawing::map
