// Histories of pixels, and calls, as people and programs read them.
#pragma once

#include <string>
#include <vector>

#include "drawing/recording/pixel_history.h"
#include "drawing/recording/recording.h"

namespace vorna::drawing::recording {

// The attributes that matter for the call: colours, widths, clips. Empty for calls that have none.
std::string short_rendition(const Recording& recording, std::size_t call);

// Lines of text, one for each event, and JSON.
std::string text_of(const Recording& recording, const std::vector<Pixel_History>& histories);
std::string json_of(const Recording& recording, const std::vector<Pixel_History>& histories);

// The same of an area.
std::string text_of(const Recording& recording, const Image_Area& area, const std::vector<Area_Event>& events);
std::string json_of(const Recording& recording, const Image_Area& area, const std::vector<Area_Event>& events);

} // namespace vorna::drawing::recording
