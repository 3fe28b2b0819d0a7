// A recording as a page for a browser: image, calls, times and histories of pixels, with the document itself.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/recording/history_report.h"
#include "drawing/recording/pixel_history.h"
#include "drawing/recording/recording.h"
#include "drawing/recording/replay.h"
#include "drawing/recording/session.h"

namespace vorna::drawing::report {

struct Page_Settings {
    bool unchecked = false;             // as in Replay_Settings
    std::string name;                   // of the recording, on the page and in messages
    std::string note;                   // for the reader, above everything; may have lines
    std::string file, file_name;        // the recording's file as it was read, and its name when a browser saves it
    int repetitions = 3;                // replays whose best times are shown; 0 = no times, and every run writes the same page
    std::size_t most_thumbnails = 1000; // for the calls that changed the most pixels
    // Of the image: pixels whose histories are recorded, none of them twice. None = all pixels, unless that is much.
    std::optional<std::vector<recording::Image_Area>> areas;
    Load_Limits* limits = nullptr; // memory of what grows with the recording; null = any
};

struct Page_Counts {
    std::size_t calls = 0, thumbnails = 0;
    std::size_t pixels = 0; // with histories
    std::uint64_t bytes = 0;
};

// One file that needs no other and no network. write: takes the page's next bytes. Throws as `replay` does, Usage_Error for areas
// beyond the image, and Load_Error where an area that was asked for has too many events.
Page_Counts write_page(const recording::Recording& recording, const Module_Choice& module, const Page_Settings& settings,
                       const recording::Report_Sink& write);

} // namespace vorna::drawing::report
