// What a recording consists of: counts, sizes and bounds.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/files/json_text.h"
#include "drawing/recording/recording.h"

namespace vorna::drawing::recording {

struct Summary {
    struct Calls {
        std::size_t count = 0;
        std::size_t points = 0;
        std::size_t pieces = 0; // triangles or segments
    };

    std::map<std::string_view, Calls> calls; // by their names
    std::size_t points = 0;
    double low[3] = {}, high[3] = {}; // of all points: x, y, z
    std::size_t renditions = 0;       // different ones that calls draw with
    std::size_t complex_clips = 0;
    std::vector<VT_Int_Pair> textures; // sizes of the different ones
};

Summary summary_of(const Recording& recording);

// The number of points in the call's list.
std::size_t points_of(const Call& call);

// Lines of text, and the members of a JSON object.
std::string text_of(const Recording& recording);
void add_summary(Json_Text& json, const Recording& recording);

} // namespace vorna::drawing::recording
