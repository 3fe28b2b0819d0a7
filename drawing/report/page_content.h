// What the page of a report shows.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "drawing/recording/recording.h"
#include "drawing/recording/session.h"
#include "drawing/report/report_page.h"

namespace vorna::drawing::report {

struct Page_Content {
    nlohmann::ordered_json json;         // what the script reads
    std::string color_png, depth_png;    // empty = no depths
    std::string atlas_png;               // thumbnails; empty = none
    std::string values;                  // of pixels' histories
    std::string file;                    // the document; empty = too large
    std::string facts, limits, document; // sentences
    Page_Counts counts;                  // but for the bytes
};

// Replays the recording. Throws as write_page does.
Page_Content page_content(const recording::Recording& recording, const Module_Choice& module, const Page_Settings& settings);

} // namespace vorna::drawing::report
