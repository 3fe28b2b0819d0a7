// What the calls of a recording cost.
#include "drawing/recording/timing.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <string_view>
#include <utility>

#include "drawing/files/interruption.h"
#include "drawing/image/image_file.h"
#include "drawing/recording/call_kinds.h"
#include "drawing/recording/document_writers.h"
#include "drawing/recording/summary.h"

namespace vorna::drawing::recording {

// How many pixels of the raster, which lies in a window of that size at these columns and rows from its lower left, hold
// something else than before; then the copy holds it too.
std::int64_t Change_Counter::Copy::update(const Raster& raster, const VT_Int_Rectangle& area, VT_Int_Pair size) {
    const auto pixel_bytes = static_cast<std::size_t>(vorna::bytes_per_pixel(raster.format));
    const std::size_t row_bytes = static_cast<std::size_t>(size.x) * pixel_bytes;
    if (bytes.size() != row_bytes * static_cast<std::size_t>(size.y)) {
        bytes.assign(row_bytes * static_cast<std::size_t>(size.y), 0);
    }
    const std::size_t part_bytes = static_cast<std::size_t>(raster.width) * pixel_bytes;
    std::int64_t changed = 0;
    for (std::int32_t r = 0; r < raster.height; ++r) {
        std::uint8_t* before =
            bytes.data() + static_cast<std::size_t>(area.top - r) * row_bytes + static_cast<std::size_t>(area.left) * pixel_bytes;
        const std::uint8_t* now = raster.top + r * raster.row_bytes;
        if (std::memcmp(before, now, part_bytes) == 0) {
            continue;
        }
        for (std::size_t i = 0; i < part_bytes; i += pixel_bytes) {
            changed += std::memcmp(before + i, now + i, pixel_bytes) != 0;
        }
        std::memcpy(before, now, part_bytes);
    }
    return changed;
}

void Change_Counter::before_call(std::size_t call) {
    costs_.push_back({call, points_of(recording_.calls[call])});
}

void Change_Counter::after_call(std::size_t call) {
    const VT_Int_Rectangle window = session_.window();
    const bool makes_buffers = std::holds_alternative<Establish>(recording_.calls[call].arguments);
    const VT_Int_Rectangle area = makes_buffers ? window : areas_.area(call, window);
    if (is_empty(area)) {
        return;
    }
    const VT_Int_Pair size{window.right - window.left + 1, window.top - window.bottom + 1};
    const VT_Int_Rectangle place{area.left - window.left, area.right - window.left, area.bottom - window.bottom,
                                 area.top - window.bottom};
    Call_Cost& cost = costs_.back();
    cost.colors_changed = color_.update(cut(raster_of(session_.color_buffer()), window, area), place, size);
    if (session_.has_depth_buffer()) {
        cost.depths_changed = depth_.update(raster_of(*session_.read_depth(area)), place, size);
    }
}

void measure(const Recording& recording, const Module_Choice& module, const Replay_Settings& settings, int repetitions,
             std::vector<Call_Cost>& costs) {
    using Clock = std::chrono::steady_clock;
    for (int i = 0; i < repetitions; ++i) {
        Interruption::check();
        Session session(module);
        Clock::time_point start;
        auto cost = costs.begin();
        Replay_Settings timed = settings;
        timed.before_call = [&](std::size_t) { start = Clock::now(); };
        timed.after_call = [&](std::size_t) {
            const double time = std::chrono::duration<double, std::micro>(Clock::now() - start).count();
            cost->microseconds = i == 0 ? time : std::min(cost->microseconds, time);
            ++cost;
        };
        replay(recording, session, timed);
    }
}

void sort(std::vector<Call_Cost>& costs, Cost_Order order) {
    const auto weight = [order](const Call_Cost& cost) {
        return order == Cost_Order::time ? cost.microseconds : static_cast<double>(cost.colors_changed + cost.depths_changed);
    };
    if (order != Cost_Order::calls) {
        std::ranges::stable_sort(costs, std::greater<>(), weight);
    }
}

namespace {

std::string line_of(const std::string& number, const Call_Cost& cost, std::string_view name) {
    char columns[128];
    std::snprintf(columns, sizeof columns, "%8s %8zu %10lld %10lld %12.1f  ", number.c_str(), cost.points,
                  static_cast<long long>(cost.colors_changed), static_cast<long long>(cost.depths_changed), cost.microseconds);
    return columns + std::string(name) + '\n';
}

void add(Call_Cost& sum, const Call_Cost& cost) {
    sum.points += cost.points;
    sum.colors_changed += cost.colors_changed;
    sum.depths_changed += cost.depths_changed;
    sum.microseconds += cost.microseconds;
}

} // namespace

std::string table_of(const Recording& recording, const std::vector<Call_Cost>& costs) {
    std::string text = "    call   points     colors     depths microseconds  kind\n";
    std::map<std::string_view, std::pair<std::size_t, Call_Cost>> kinds;
    for (const Call_Cost& cost : costs) {
        const std::string_view name = recording.calls[cost.call].kind->name;
        text += line_of(std::to_string(cost.call), cost, name);
        for (const std::string_view sum : {name, std::string_view("all")}) {
            ++kinds[sum].first;
            add(kinds[sum].second, cost);
        }
    }
    text += "\n   calls   points     colors     depths microseconds  of all calls of a kind\n";
    for (const auto& [name, sum] : kinds) {
        text += name == "all" ? "" : line_of(std::to_string(sum.first), sum.second, name);
    }
    return text + line_of(std::to_string(costs.size()), kinds["all"].second, "all");
}

std::string json_of(const Recording& recording, const std::vector<Call_Cost>& costs) {
    Json_Printer json;
    json.start_object();
    json.name("calls");
    json.start_list();
    for (const Call_Cost& cost : costs) {
        json.start_object();
        json.name("call");
        json.value(static_cast<std::int64_t>(cost.call));
        json.name("kind");
        json.value(std::string_view(recording.calls[cost.call].kind->name));
        for (const auto& [name, count] : {std::pair("points", static_cast<std::int64_t>(cost.points)),
                                          {"colors_changed", static_cast<std::int64_t>(cost.colors_changed)},
                                          {"depths_changed", static_cast<std::int64_t>(cost.depths_changed)}}) {
            json.name(name);
            json.value(count);
        }
        json.name("microseconds");
        json.value(std::round(cost.microseconds * 1000) / 1000);
        json.end_object();
    }
    json.end_list();
    json.end_object();
    return json.take();
}

} // namespace vorna::drawing::recording
