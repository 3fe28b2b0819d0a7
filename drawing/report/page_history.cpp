// Histories of pixels in the form that the page of a report reads.
//
// Neighbouring pixels mostly have the same calls with the same outcomes: such lists are stored once. Values are bytes.
#include "drawing/report/page_history.h"

#include <map>
#include <utility>
#include <vector>

namespace vorna::drawing::report {

namespace {

using Json = nlohmann::ordered_json;
using recording::Image_Area;
using recording::Outcome;
using recording::Pixel_Event;
using recording::Pixel_History;
using recording::Pixel_Value;
using recording::Rule;

// 1 = index, 2 = colour, 4 = with depth; red, green, blue and alpha, or the index; the depth, its low byte first.
void append(std::string& bytes, const Pixel_Value& value, std::uint16_t depth) {
    const bool is_index = value.kind == Pixel_Value::Kind::index, is_color = value.kind == Pixel_Value::Kind::color;
    const VT_RGB32 color = color_of(value.color);
    const std::uint8_t index = static_cast<std::uint8_t>(value.color);
    for (const int byte : {int{is_index} + 2 * int{is_color} + 4 * int{value.has_depth}, int{is_index ? index : color.red},
                           int{is_index ? std::uint8_t{0} : color.green}, int{is_index ? std::uint8_t{0} : color.blue},
                           int{is_index ? std::uint8_t{0} : color.alpha}, depth & 0xFF, depth >> 8}) {
        bytes += static_cast<char>(byte);
    }
}

std::size_t code_of(const Pixel_Event& event) {
    std::size_t code = static_cast<std::size_t>(event.outcome) + (event.writes_color ? 8 : 0);
    for (unsigned r = 0; r < recording::rule_count; ++r) {
        code += event.rules.has(Rule{static_cast<std::uint8_t>(r)}) ? std::size_t{16} << r : 0;
    }
    return code;
}

} // namespace

Page_History page_history(std::span<const Image_Area> areas, std::span<const Pixel_History> histories) {
    Page_History page;
    Json places = Json::array(), rules = Json::array();
    for (const auto& [corner, size] : areas) {
        places.push_back({corner.x, corner.y, size.x, size.y});
    }
    for (const std::string_view name : recording::rule_names) {
        rules.push_back(name);
    }
    std::map<std::vector<std::size_t>, std::size_t> numbers; // of lists
    Json lists = Json::array(), runs = Json::array();
    std::size_t run = 0, last_number = 0;
    const auto end_run = [&] {
        if (run > 0) {
            runs.push_back(run);
            runs.push_back(last_number);
        }
        run = 0;
    };
    for (const Pixel_History& history : histories) {
        std::vector<std::size_t> list;
        append(page.values, history.first, history.first.depth);
        for (const Pixel_Event& event : history.events) {
            list.push_back(event.call);
            list.push_back(code_of(event));
            append(page.values, event.after, event.outcome == Outcome::refused ? event.shape_depth : event.after.depth);
        }
        page.events += history.events.size();
        const auto [known, is_new] = numbers.try_emplace(std::move(list), numbers.size());
        if (is_new) {
            lists.push_back(known->first);
        }
        if (known->second != last_number) {
            end_run();
            last_number = known->second;
        }
        ++run;
    }
    end_run();
    page.json = {
        {"areas", std::move(places)}, {"lists", std::move(lists)}, {"runs", std::move(runs)}, {"rules", std::move(rules)}};
    return page;
}

std::vector<VT_Int_Pair> pixels_of(std::span<const Image_Area> areas) {
    std::vector<VT_Int_Pair> pixels;
    for (const auto& [corner, size] : areas) {
        for (std::int32_t y = 0; y < size.y; ++y) {
            for (std::int32_t x = 0; x < size.x; ++x) {
                pixels.push_back({corner.x + x, corner.y + y});
            }
        }
    }
    return pixels;
}

} // namespace vorna::drawing::report
