// The host's renditions from the renditions of recordings.
#pragma once

#include <map>
#include <utility>

#include "drawing/recording/recording.h"
#include "host/renderer_options.h"
#include "host/rendition.h"

namespace vorna::drawing::recording {

// Lists that several renditions share become one object of the host, so that renderers may recognise it. The lists must live as
// long as the maker.
class Rendition_Maker {
public:
    // Fills in defaults: the window as the hard clip, and for colours without an index the palette's closest match.
    VT_Reference<VT_Rendition> make(const Rendition& rendition, const VT_Renderer_Options& options);

private:
    template <class Object> using Made = std::map<std::pair<const void*, std::int32_t>, VT_Reference<const Object>>;

    template <Keyed Group, class Host> void set_group(Host& host, const Group& group, const VT_Palette& palette);
    template <class Value> static void set(Value& attribute, const std::optional<Value>& value);
    static void set(VT_Reference<const VT_Line_Type_Set>& attribute, const std::optional<std::optional<Line_Type_Set>>& set);
    void set(VT_Reference<const VT_Pattern_Bitmap>& attribute, const std::optional<Bitmap>& bitmap);
    void set(VT_Reference<const VT_Basic_Material>& attribute, const std::optional<Texture>& texture);

    Made<VT_Contour_Set> contours_;
    Made<VT_Pattern_Bitmap> bitmaps_;
    Made<VT_Shared_Image> textures_;
};

// An index that is not given is the palette's closest match.
std::uint8_t index_of(const std::optional<std::uint8_t>& given, VT_RGB32 color, const VT_Palette& palette);

} // namespace vorna::drawing::recording
