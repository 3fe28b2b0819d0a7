// Two recordings, compared as documents and as what they draw.
#include "drawing/recording/recording_comparison.h"

#include "drawing/files/json_text.h"

namespace vorna::drawing::recording {

namespace {

constexpr std::size_t most_setup_lines = 10;

// The members of an object.
void add_value(Json_Text& json, const Value_Difference& value) {
    json.member("key", value.path);
    json.list("values", {value.first, value.second});
}

void add_pixels(Json_Text& json, const Pixel_Difference& difference) {
    constexpr const char* kinds[] = {"windows", "palettes", "colors", "depths"};
    json.start_object();
    json.name("call");
    difference.call ? json.value(*difference.call) : json.value(nullptr);
    json.member("kind", kinds[static_cast<int>(difference.kind)]);
    json.member("text", text_of(difference));
    if (difference.kind != Pixel_Difference::Kind::windows) {
        json.member("count", difference.count);
        json.list("first", {difference.place.x, difference.place.y});
    }
    json.list("values", {difference.first, difference.second});
    json.end_object();
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
    Json_Text json(true);
    json.start_object();
    json.member("comparison", 1);
    json.member("first", first);
    json.member("second", second);
    json.member("same", difference.is_same());
    json.list("calls", {difference.calls[0], difference.calls[1]});
    json.name("setup");
    json.start_list();
    for (const Value_Difference& value : setup) {
        json.start_object();
        add_value(json, value);
        json.end_object();
    }
    json.end_list();
    json.name("call");
    if (call) {
        json.start_object();
        json.member("call", call->call);
        add_value(json, call->value);
        json.end_object();
    } else {
        json.value(nullptr);
    }
    json.name("pixels");
    if (difference.pixels) {
        add_pixels(json, *difference.pixels);
    } else {
        json.value(nullptr);
    }
    json.end_object();
    return json.take() + '\n';
}

} // namespace vorna::drawing::recording
