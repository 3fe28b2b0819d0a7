// Two recordings, compared as documents and as what they draw.
#include "drawing/recording/recording_comparison.h"

#include <nlohmann/json.hpp>

namespace vorna::drawing::recording {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t most_setup_lines = 10;

Json json_of(const Value_Difference& value) {
    return {{"key", value.path}, {"values", {value.first, value.second}}};
}

Json json_of(const Pixel_Difference& difference) {
    constexpr const char* kinds[] = {"windows", "palettes", "colors", "depths"};
    Json json{{"call", nullptr}, {"kind", kinds[static_cast<int>(difference.kind)]}, {"text", text_of(difference)}};
    if (difference.call) {
        json["call"] = *difference.call;
    }
    if (difference.kind != Pixel_Difference::Kind::windows) {
        json["count"] = difference.count;
        json["first"] = {difference.place.x, difference.place.y};
    }
    json["values"] = {difference.first, difference.second};
    return json;
}

std::string line_of(const std::string& place, const Value_Difference& value) {
    return place + value.path + ": " + value.first + " and " + value.second + '\n';
}

} // namespace

Recording_Difference compare(const Recording& a, const Recording& b, const std::function<Module_Choice()>& module) {
    Recording_Difference result{{a.calls.size(), b.calls.size()}, compare_documents(a, b), {}};
    if (!result.is_same()) {
        result.pixels = compare_pixels(a, b, result.documents, module());
    }
    return result;
}

std::string text_of(const Recording_Difference& difference) {
    const auto& [setup, call, differing] = difference.documents;
    if (difference.is_same()) {
        return "same: " + std::to_string(difference.calls[0]) + (difference.calls[0] == 1 ? " call\n" : " calls\n");
    }
    std::string text;
    for (std::size_t i = 0; i < std::min(setup.size(), most_setup_lines); ++i) {
        text += line_of("set-up, ", setup[i]);
    }
    if (setup.size() > most_setup_lines) {
        text += "set-up, " + std::to_string(setup.size() - most_setup_lines) + " more\n";
    }
    if (call) {
        text += line_of("first call that differs, calls[" + std::to_string(call->call) + "].", call->value);
    }
    return text + "pixels: " + (difference.pixels ? text_of(*difference.pixels) : "the same after every call") + '\n';
}

std::string json_of(const Recording_Difference& difference, const std::string& first, const std::string& second) {
    const auto& [setup, call, differing] = difference.documents;
    Json json{{"comparison", 1}, {"first", first}, {"second", second}, {"same", difference.is_same()}};
    json["calls"] = {difference.calls[0], difference.calls[1]};
    json["setup"] = Json::array();
    for (const Value_Difference& value : setup) {
        json["setup"].push_back(json_of(value));
    }
    json["call"] = nullptr;
    if (call) {
        json["call"] = {{"call", call->call}};
        json["call"].update(json_of(call->value));
    }
    json["pixels"] = difference.pixels ? json_of(*difference.pixels) : Json(nullptr);
    return json.dump(1, ' ', true, Json::error_handler_t::replace) + '\n';
}

} // namespace vorna::drawing::recording
