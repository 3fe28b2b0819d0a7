// Maps and drawings of other programs for JavaScript.
#include <memory>

#include "drawing/drawing.h"
#include "drawing/files/load_limits.h"
#include "drawing/job/formats.h"
#include "web/src/answer.h"
#include "web/src/drawings.h"

namespace vorna::web {
namespace {

using drawing::map::Dashes;
using drawing::map::Map_Fill;
using drawing::map::Map_Settings;

constexpr Choice<Map_Fill::Kind> fills[] = {{"auto", Map_Fill::Kind::automatic},
                                            {"palette", Map_Fill::Kind::palette},
                                            {"own", Map_Fill::Kind::own},
                                            {"none", Map_Fill::Kind::none}};

// A name, lengths of dashes and gaps, or false for no line.
void take_dashes(Options& options, const char* name, std::optional<Dashes>& member) {
    static const std::vector<std::pair<const char*, Dashes>> styles{{"solid", {}},
                                                                    {"dashed", {6, 4}},
                                                                    {"dotted", {0, 3}},
                                                                    {"dash-dot", {8, 3, 0, 3}},
                                                                    {"dash-dot-dot", {8, 3, 0, 3, 0, 3}},
                                                                    {"long-dashed", {14, 5}}};
    const json* const value = options.find(name);
    if (!value) {
        return;
    }
    if (*value == false) {
        member.reset();
        return;
    }
    for (const auto& [style, dashes] : styles) {
        if (*value == style) {
            member = dashes;
            return;
        }
    }
    Options::expect(value->is_array(), name, "false, the name of a style, or lengths of dashes and gaps", *value);
    member.emplace();
    for (const json& length : *value) {
        member->push_back(Options::number_of<Dashes::value_type>(name, length));
    }
}

Map_Settings map_settings_of(Options& options) {
    Map_Settings settings;
    options.text("layer", settings.layer);
    options.text("filter", settings.filter);
    options.text("projection", settings.projection);
    if (const auto box = options.numbers<4>("bbox")) {
        settings.bbox = drawing::map::Extent{(*box)[0], (*box)[1], (*box)[2], (*box)[3]};
    }
    if (const auto center = options.numbers<2>("center")) {
        settings.center = drawing::map::Position{(*center)[0], (*center)[1]};
    }
    options.text("clipTo", settings.clip_to);
    if (const json* const fill = options.find("fill")) {
        const bool is_kind = fill->is_string() && (*fill == "auto" || *fill == "palette" || *fill == "own" || *fill == "none");
        settings.fill = is_kind ? Map_Fill{Options::chosen("fill", *fill, fills), {}}
                                : Map_Fill{Map_Fill::Kind::color, Options::color_of("fill", *fill)};
    }
    options.text("fillBy", settings.fill_by);
    options.text("classes", settings.classing.method);
    options.number("classCount", settings.classing.count);
    options.text("ramp", settings.classing.ramp);
    options.number("opacity", settings.opacity);
    options.color("water", settings.water);
    options.number("graticule", settings.graticule);
    take_dashes(options, "border", settings.border);
    settings.outline = settings.border;
    take_dashes(options, "outline", settings.outline);
    options.color("borderColor", settings.border_color);
    options.number("borderWidth", settings.border_width);
    options.color("casing", settings.casing);
    options.number("casingWidth", settings.casing_width);
    options.color("markerColor", settings.marker.color);
    options.number("markerSize", settings.marker.size);
    return settings;
}

} // namespace

// The handle of the answer: 1 for a map or drawing, 0 for a model.
VORNA_WEB_FUNCTION const Answer* vorna_is_map(const char* name, std::size_t size) {
    return answers.of([&](Answers& all) {
        drawing::Load_Limits limits;
        all.answer.handle = drawing::is_map(drawing::open_input("/files/" + std::string(name, size), "", limits)) ? 1 : 0;
    });
}

// Reads a file that vorna_add_file has kept, and draws it. Options: file, and those of the map and its image.
VORNA_WEB_FUNCTION const Answer* vorna_draw_map(const char* request, std::size_t size) {
    return answers.of([&](Answers& all) {
        Options options(json::parse(text_at(request, size)));
        std::string file;
        options.text("file", file);
        const Map_Settings map_settings = map_settings_of(options);
        const drawing::Image_Settings settings = image_settings_of(options);
        options.reject_unknown();
        drawing::Reading reading;
        reading.threads = 1;
        const drawing::Map map("/files/" + file, map_settings, reading);
        all.text = text_of(map.warnings());
        const drawing::Image image = drawing::make_image(map, settings);
        drawing::Image_Samples samples = drawing::make_samples(drawing::Image_Samples::Kind::colors, image.width, image.height);
        drawing::exchange_red_and_blue(reinterpret_cast<const std::uint8_t*>(image.pixels.data()), image.pixels.size(),
                                       samples.bytes.get());
        all.set_planes(std::move(samples));
    });
}

} // namespace vorna::web
