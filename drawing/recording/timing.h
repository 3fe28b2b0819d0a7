// What the calls of a recording cost.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "drawing/image/image_file.h"
#include "drawing/recording/call_areas.h"
#include "drawing/recording/recording.h"
#include "drawing/recording/replay.h"

namespace vorna::drawing::recording {

struct Call_Cost {
    std::size_t call = 0;
    std::size_t points = 0;                              // 0 for calls without points
    std::int64_t colors_changed = 0, depths_changed = 0; // pixels that hold something else afterwards
    double microseconds = 0;                             // of the fastest repetition
};

// Counts the pixels that each call of a replay changes. Copies of both buffers are kept and compared after every call.
class Change_Counter {
public:
    Change_Counter(const Recording& recording, Session& session) : recording_(recording), session_(session), areas_(recording) {}

    // For Replay_Settings.
    void before_call(std::size_t call);
    void after_call(std::size_t call);

    const std::vector<Call_Cost>& costs() const noexcept { return costs_; }

private:
    struct Copy {
        std::vector<std::uint8_t> bytes;
        std::int64_t update(const Raster& raster, const VT_Int_Rectangle& area, VT_Int_Pair size);
    };

    const Recording& recording_;
    Session& session_;
    const Call_Areas areas_;
    Copy color_, depth_;
    std::vector<Call_Cost> costs_;
};

// Fills in the times: replays the recording so many times, each time in a new renderer.
void measure(const Recording& recording, const Module_Choice& module, const Replay_Settings& settings, int repetitions,
             std::vector<Call_Cost>& costs);

enum class Cost_Order { calls, time, pixels };

void sort(std::vector<Call_Cost>& costs, Cost_Order order);
// Lines of text with the totals of each kind of call last, and JSON.
std::string table_of(const Recording& recording, const std::vector<Call_Cost>& costs);
std::string json_of(const Recording& recording, const std::vector<Call_Cost>& costs);

} // namespace vorna::drawing::recording
