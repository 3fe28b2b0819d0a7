// The shapes of one file or of one layer of a style file, with their style.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "drawing/files/input.h"
#include "drawing/map/map_items.h"
#include "drawing/map/map_layer.h"
#include "drawing/map/map_settings.h"
#include "drawing/map/projection.h"

namespace vorna::drawing::map {

struct Legend_Entry {
    VT_RGB32 color;
    std::string text;
};

// A file to draw, and how.
struct Map_Source {
    Input input;
    Map_Settings settings;
};

// White on dark backgrounds, else black.
VT_RGB32 contrast_to(VT_RGB32 background);

class Map_Sheet {
public:
    // Reads the file and leaves out the shapes that the filter of the settings refuses. Throws Usage_Error, Map_Error,
    // Load_Error.
    Map_Sheet(const Input& input, const Map_Settings& settings, Load_Limits& limits);

    const std::string& file() const noexcept { return file_; }
    const Map_Settings& settings() const noexcept { return settings_; }
    Map& map() noexcept { return map_; }
    const Map& map() const noexcept { return map_; }

    // Before everything that follows. Throws Usage_Error for settings that do not fit the shapes.
    void project(const Projection& projection, VT_RGB32 background, Load_Limits& limits);
    void set_background(VT_RGB32 background);

    const Map_Layer& layer() const noexcept { return *layer_; }
    const Layer_Style& style() const noexcept { return style_; }
    // The field that colours stand for, and the colours; empty without one.
    const std::vector<Legend_Entry>& legend() const noexcept { return legend_; }
    // The label of a shape.
    std::string label_of(std::size_t shape) const;
    bool has_labels() const noexcept { return settings_.labels || !settings_.label_by.empty(); }
    // The value of the settings' label_key; the least one where it is no number.
    double label_key_of(std::size_t shape) const;
    Text_Paint label_paint() const;

    // The style in an image of `times` pixels for one, in which the view has supersampled pixels.
    Layer_Style style_in(const View& view, std::int32_t times) const;
    void lay_out(const View& view, std::int32_t times) { drawn_style_ = style_in(view, times); }
    void add_items(Map_Items& items) const { layer_->add_items(drawn_style_, items); }

private:
    std::size_t index_of(const std::string& field) const;
    void check_fields() const;
    std::vector<std::optional<VT_RGB32>> colors_by_field();
    std::vector<std::int32_t> widths_by_field() const;
    Layer_Style style_of(VT_RGB32 background);

    Map_Settings settings_;
    std::string file_;
    Map_Query query_;
    Map map_;
    std::optional<Map_Layer> layer_;
    std::vector<std::optional<VT_RGB32>> data_fills_;
    std::vector<std::int32_t> data_widths_; // empty = all of the settings' width
    std::vector<Legend_Entry> legend_;
    Layer_Style style_, drawn_style_;
};

} // namespace vorna::drawing::map
