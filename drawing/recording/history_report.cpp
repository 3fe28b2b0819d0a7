// Histories of pixels, and calls, as people and programs read them.
#include "drawing/recording/history_report.h"

#include <cstdio>
#include <string_view>

#include "drawing/files/json_text.h"
#include "drawing/recording/call_kinds.h"
#include "vorna/draw.h"

namespace vorna::drawing::recording {

namespace {

std::string hexadecimal(VT_RGB32 color) {
    char text[16];
    std::snprintf(text, sizeof text, color.alpha == 255 ? "#%02x%02x%02x" : "#%02x%02x%02x%02x", color.red, color.green,
                  color.blue, color.alpha);
    return text;
}

std::string color_text(const Pixel_Value& value) {
    switch (value.kind) {
    case Pixel_Value::Kind::index:
        return "index " + std::to_string(value.color);
    case Pixel_Value::Kind::color:
        return hexadecimal(color_of(value.color));
    default:
        return "nothing";
    }
}

std::string value_text(const Pixel_Value& value) {
    return color_text(value) + (value.has_depth ? " at depth " + std::to_string(value.depth) : "");
}

void add_value(Json_Text& json, const char* key, const Pixel_Value& value) {
    json.name(key);
    if (value.kind == Pixel_Value::Kind::none) {
        json.value(nullptr);
        return;
    }
    json.start_object();
    if (value.kind == Pixel_Value::Kind::index) {
        json.member("index", value.color);
    } else {
        const VT_RGB32 color = color_of(value.color);
        json.list("color", {color.red, color.green, color.blue, color.alpha});
    }
    if (value.has_depth) {
        json.member("depth", value.depth);
    }
    json.end_object();
}

// Attributes of a recording's rendition under those of a call, as words that are separated by commas.
class Words {
public:
    Words(const Rendition& all, const Rendition* own) : all_(all), own_(own) {}

    // The call's attribute, or the recording's.
    template <class Group, class Value>
    const std::optional<Value>& get(Group Rendition::*group, std::optional<Value> Group::*key) {
        return own_ && (own_->*group).*key ? (own_->*group).*key : (all_.*group).*key;
    }
    template <class Value> const std::optional<Value>& get(std::optional<Value> Rendition::*key) const {
        return own_ && own_->*key ? own_->*key : all_.*key;
    }

    void add(const std::string& word) { text_ += (text_.empty() ? "" : ", ") + word; }
    // A number that is not the default.
    template <class Number> void add(const char* name, const std::optional<Number>& number, Number by_default) {
        if (number && *number != by_default) {
            add(name + (' ' + std::to_string(*number)));
        }
    }

    template <class Group>
    void add_color(const char* what, Group Rendition::*group, std::optional<VT_RGB32> Group::*color,
                   std::optional<std::uint8_t> Group::*index) {
        add(what + (' ' + hexadecimal(get(group, color).value_or(VT_RGB32{}))));
        if (get(group, index)) {
            text_ += " index " + std::to_string(*get(group, index));
        }
    }

    void add_face(bool has_color) {
        if (has_color) {
            add_color("face", &Rendition::face, &Face::color, &Face::index);
        }
        add("pattern", get(&Rendition::face, &Face::pattern), std::int32_t{face_pattern::solid});
        if (const auto& texture = get(&Rendition::face, &Face::texture); texture && texture->texels) {
            add("texture " + std::to_string(texture->width.value_or(0)) + " x " + std::to_string(texture->height.value_or(0)));
        }
        add("flags", get(&Rendition::face, &Face::flags), std::uint32_t{0});
        add("mode", get(&Rendition::face, &Face::mode), std::int32_t{0});
    }
    void add_line(bool has_color) {
        if (has_color) {
            add_color("line", &Rendition::line, &Line::color, &Line::index);
        }
        add("weight", get(&Rendition::line, &Line::weight), std::int32_t{1});
        add("style", get(&Rendition::line, &Line::style), std::int32_t{0});
        if (const auto& types = get(&Rendition::line, &Line::line_types); types && *types) {
            add("line types");
        }
        add("flags", get(&Rendition::line, &Line::flags), std::uint32_t{0});
        add("mode", get(&Rendition::line, &Line::mode), std::int32_t{0});
    }
    void add_marker(bool has_color) {
        if (has_color) {
            add_color("marker", &Rendition::marker, &Marker::color, &Marker::index);
        }
        add("symbol", get(&Rendition::marker, &Marker::symbol), std::int32_t{0});
        add("size", get(&Rendition::marker, &Marker::size), std::int32_t{1});
        add("mode", get(&Rendition::marker, &Marker::mode), std::int32_t{0});
    }
    void add_rules() {
        if (const auto& clip = get(&Rendition::hard_clip)) {
            add("clip " + std::to_string(clip->left) + " to " + std::to_string(clip->right) + ", " +
                std::to_string(clip->bottom) + " to " + std::to_string(clip->top));
        }
        if (const auto& mask = get(&Rendition::complex_clip); mask && *mask) {
            add("contours " + std::to_string((**mask)->size()));
        }
        if (!get(&Rendition::depth_test).value_or(true)) {
            add("no depth test");
        }
        add("drawing mode", get(&Rendition::drawing_mode), std::int32_t{0});
        add("drawing flags", get(&Rendition::flags), std::uint32_t{0});
    }

    std::string take() { return std::move(text_); }

private:
    const Rendition& all_;
    const Rendition* const own_;
    std::string text_;
};

// Colours that a call has itself, instead of the rendition's. Returns whether it has any.
bool add_own_colors(Words& words, const Arguments& arguments) {
    bool has_any = false;
    std::visit(
        [&](const auto& a) {
            const auto add_list = [&](const auto& colors) {
                if (!colors.empty()) {
                    has_any = true;
                    words.add(colors.size() == 1 ? "colour " + hexadecimal(colors[0])
                                                 : std::to_string(colors.size()) + " colours");
                }
            };
            if constexpr (requires { a.colors->size(); }) {
                if (a.colors) {
                    add_list(*a.colors);
                }
            } else if constexpr (requires { a.colors.size(); }) {
                add_list(a.colors);
            } else if constexpr (requires { a.color->alpha; }) {
                if (a.color) {
                    has_any = true;
                    words.add("colour " + hexadecimal(*a.color));
                }
            }
        },
        arguments);
    return has_any;
}

std::string event_text(const Pixel_Event& event) {
    const Pixel_Value &before = event.before, &after = event.after;
    std::string text;
    switch (event.outcome) {
    case Outcome::renewed:
        return (event.writes_color ? "made new buffers: " : "changed the depth buffer: ") + value_text(after) + ", was " +
               value_text(before);
    case Outcome::outside:
        return "outside the shape";
    case Outcome::refused: {
        text = "refused:";
        const char* separator = " ";
        for (int r = 0; r < rule_count; ++r) {
            const Rule rule{static_cast<std::uint8_t>(r)};
            if (event.rules.has(rule)) {
                text += separator + std::string(rule_names[r]);
                separator = ", ";
            }
            if (event.rules.has(rule) && rule == Rule::depth) {
                const int behind = event.shape_depth - before.depth;
                text += behind == 0 ? " (equal, "
                                    : " (" + std::to_string(std::abs(behind)) + (behind > 0 ? " behind, " : " before, ");
                text += std::to_string(event.shape_depth) + " against " + std::to_string(before.depth) + ')';
            }
        }
        return text + (event.rules == Rules() ? " several rules together" : "");
    }
    case Outcome::blended:
        text = "blended to " + color_text(after);
        break;
    case Outcome::drawn:
        text = event.writes_color ? "drew " + color_text(after) : "set the depth";
        break;
    }
    if (event.writes_color) {
        text += before.color == after.color ? ", as it was" : " over " + color_text(before);
    }
    if (before.depth != after.depth) {
        text += ", depth " + std::to_string(before.depth) + " to " + std::to_string(after.depth);
    }
    return text + (event.drawn_over == no_call ? "" : "; drawn over by call " + std::to_string(event.drawn_over));
}

constexpr std::string_view outcome_names[] = {"drawn", "blended", "refused", "outside", "renewed"};

std::string padded(const std::string& text, std::size_t width) {
    return text + std::string(width > text.size() ? width - text.size() : 0, ' ');
}

// A line of a table: number and kind of the call, what it did, and its rendition.
std::string line_of(const Recording& recording, std::size_t call, const std::string& what) {
    char number[32];
    std::snprintf(number, sizeof number, "%8zu  ", call);
    const std::string rendition = short_rendition(recording, call);
    return number + padded(std::string(recording.calls[call].kind->name), 33) + what +
           (rendition.empty() ? "" : "  [" + rendition + ']') + '\n';
}

std::string place_text(VT_Int_Pair place) {
    return std::to_string(place.x) + ',' + std::to_string(place.y);
}

void add_call(Json_Text& json, const Recording& recording, std::size_t call) {
    json.member("call", call);
    json.member("kind", recording.calls[call].kind->name);
    json.member("rendition", short_rendition(recording, call));
}

std::string event_json(const Recording& recording, const Pixel_Event& event) {
    Json_Text json(false);
    json.start_object();
    add_call(json, recording, event.call);
    json.member("outcome", outcome_names[static_cast<std::size_t>(event.outcome)]);
    if (event.outcome == Outcome::refused) {
        json.name("rules");
        json.start_list();
        for (int r = 0; r < rule_count; ++r) {
            if (event.rules.has(Rule{static_cast<std::uint8_t>(r)})) {
                json.value(rule_names[r]);
            }
        }
        json.end_list();
        if (event.rules.has(Rule::depth)) {
            json.member("shape_depth", event.shape_depth);
        }
    }
    json.member("writes_color", event.writes_color);
    add_value(json, "before", event.before);
    add_value(json, "after", event.after);
    json.name("drawn_over_by");
    event.drawn_over == no_call ? json.value(nullptr) : json.value(event.drawn_over);
    json.end_object();
    return json.take();
}

// Commas between the items of a list.
class Json_List {
public:
    Json_List(std::string_view opening, const Report_Sink& write) : write_(write) { write(opening); }

    void begin_item() {
        if (has_items_) {
            write_(",");
        }
        has_items_ = true;
    }

private:
    const Report_Sink& write_;
    bool has_items_ = false;
};

} // namespace

std::string short_rendition(const Recording& recording, std::size_t number) {
    const Call& call = recording.calls[number];
    const std::string_view name = call.kind->name;
    Words words(recording.rendition, call.rendition.get());
    if (!name.starts_with("draw_")) {
        return "";
    }
    const bool has_colors = add_own_colors(words, call.arguments);
    if (name.ends_with("polytriangle") || name.ends_with("polygon")) {
        words.add_face(!has_colors);
    } else if (name.ends_with("polyline") || name.find("ellip") != name.npos) {
        words.add_line(!has_colors);
    } else if (name.ends_with("polymarker")) {
        words.add_marker(!has_colors);
    }
    words.add_rules();
    return words.take();
}

void write_text(const Recording& recording, const std::vector<Pixel_History>& histories, const Report_Sink& write) {
    bool is_first = true;
    for (const Pixel_History& history : histories) {
        write((is_first ? "pixel " : "\npixel ") + place_text(history.pixel) + " from the top left, device coordinates " +
              place_text(history.device) + ": " + value_text(history.last) + '\n');
        is_first = false;
        bool has_outside = false;
        for (const Pixel_Event& event : history.events) {
            write(line_of(recording, event.call, event_text(event)));
            has_outside |= event.outcome == Outcome::outside;
        }
        if (history.events.empty()) {
            write("          no call draws there\n");
        }
        if (history.outside > 0 && !has_outside) {
            write("          " + std::to_string(history.outside) +
                  (history.outside == 1 ? " more call comes near, but its shape lies"
                                        : " more calls come near, but their shapes lie") +
                  " beside the pixel\n");
        }
    }
}

void write_json(const Recording& recording, const std::vector<Pixel_History>& histories, const Report_Sink& write) {
    Json_List pixels("{\"pixels\":[", write);
    for (const Pixel_History& history : histories) {
        Json_Text head(false);
        head.start_object();
        head.list("pixel", {history.pixel.x, history.pixel.y});
        head.list("device", {history.device.x, history.device.y});
        add_value(head, "first", history.first);
        add_value(head, "last", history.last);
        head.member("outside", history.outside);
        pixels.begin_item();
        Json_List events(head.take() + ",\"events\":[", write);
        for (const Pixel_Event& event : history.events) {
            events.begin_item();
            write(event_json(recording, event));
        }
        write("]}");
    }
    write("]}\n");
}

void write_text(const Recording& recording, const Image_Area& area, const std::vector<Area_Event>& events,
                const Report_Sink& write) {
    write("area of " + std::to_string(area.size.x) + " x " + std::to_string(area.size.y) + " pixels at " +
          place_text(area.corner) +
          " from the top left\n    call  kind                                 drawn    "
          "blended    refused    outside\n");
    for (const Area_Event& event : events) {
        char counts[80];
        std::snprintf(counts, sizeof counts, "%9lld %10lld %10lld %10lld", static_cast<long long>(event.drawn),
                      static_cast<long long>(event.blended), static_cast<long long>(event.refused),
                      static_cast<long long>(event.outside));
        std::string what = counts;
        for (int r = 0; r < rule_count; ++r) {
            if (event.refused_by[r] > 0) {
                what += "  " + std::string(rule_names[r]) + ' ' + std::to_string(event.refused_by[r]);
            }
        }
        write(line_of(recording, event.call, what));
    }
}

void write_json(const Recording& recording, const Image_Area& area, const std::vector<Area_Event>& events,
                const Report_Sink& write) {
    Json_Text head(false);
    head.start_object();
    head.list("area", {area.corner.x, area.corner.y, area.size.x, area.size.y});
    Json_List calls(head.take() + ",\"calls\":[", write);
    for (const Area_Event& event : events) {
        Json_Text json(false);
        json.start_object();
        add_call(json, recording, event.call);
        json.member("drawn", event.drawn);
        json.member("blended", event.blended);
        json.member("refused", event.refused);
        json.member("outside", event.outside);
        json.name("refused_by");
        json.start_object();
        for (int r = 0; r < rule_count; ++r) {
            if (event.refused_by[r] > 0) {
                json.member(rule_names[r], event.refused_by[r]);
            }
        }
        json.end_object();
        json.end_object();
        calls.begin_item();
        write(json.take());
    }
    write("]}\n");
}

} // namespace vorna::drawing::recording
