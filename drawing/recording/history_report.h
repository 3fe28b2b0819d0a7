// Histories of pixels, and calls, as people and programs read them.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/recording/pixel_history.h"
#include "drawing/recording/recording.h"

namespace vorna::drawing::recording {

// The attributes that matter for the call: colours, widths, clips. Empty for calls that have none.
std::string short_rendition(const Recording& recording, std::size_t call);

// Takes a report in pieces, because one of many events may be larger than memory.
using Report_Sink = std::function<void(std::string_view)>;

// Lines of text, one for each event, and JSON.
void write_text(const Recording& recording, const std::vector<Pixel_History>& histories, const Report_Sink& write);
void write_json(const Recording& recording, const std::vector<Pixel_History>& histories, const Report_Sink& write);

// The same of an area.
void write_text(const Recording& recording, const Image_Area& area, const std::vector<Area_Event>& events,
                const Report_Sink& write);
void write_json(const Recording& recording, const Image_Area& area, const std::vector<Area_Event>& events,
                const Report_Sink& write);

} // namespace vorna::drawing::recording
