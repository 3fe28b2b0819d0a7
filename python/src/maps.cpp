// Maps and drawings.
#include <algorithm>
#include <iterator>
#include <tuple>

#include <pybind11/stl.h>

#include "python/src/attributes.h"
#include "python/src/module.h"
#include "python/src/options.h"

namespace vorna::python {
namespace {

using drawing::map::Dashes;
using drawing::map::Map_Fill;
using drawing::map::Map_Settings;

constexpr Choice<Map_Fill::Kind> fills[] = {{"auto", Map_Fill::Kind::automatic},
                                            {"palette", Map_Fill::Kind::palette},
                                            {"own", Map_Fill::Kind::own},
                                            {"none", Map_Fill::Kind::none}};
struct Border_Style {
    const char* name;
    Dashes dashes;
};

// A name, numbers, or False for no line.
void take_dashes(const Options& options, const char* name, std::optional<Dashes>& member) {
    static const std::vector<Border_Style> styles{{"solid", {}},
                                                  {"dashed", {6, 4}},
                                                  {"dotted", {0, 3}},
                                                  {"dash-dot", {8, 3, 0, 3}},
                                                  {"dash-dot-dot", {8, 3, 0, 3, 0, 3}},
                                                  {"long-dashed", {14, 5}}};
    const py::object value = options[name];
    if (value.is_none()) {
        return;
    }
    if (value.is(py::bool_(false))) {
        member.reset();
        return;
    }
    if (py::isinstance<py::str>(value)) {
        const std::string text = utf8_of(name, value);
        for (const Border_Style& style : styles) {
            if (text == style.name) {
                member = style.dashes;
                return;
            }
        }
    } else {
        try {
            member = value.cast<Dashes>();
            return;
        } catch (const py::cast_error&) {
        }
    }
    refuse(name, "False, solid, dashed, dotted, dash-dot, dash-dot-dot, long-dashed or lengths of dashes and gaps",
           py::repr(value).cast<std::string>());
}

std::vector<double> numbers_of(const char* name, const py::object& values) {
    py::object kept;
    const Rows_View rows = rows_of(name, values, kept);
    if (rows.columns != 1) {
        refuse(name, "a list of numbers", py::repr(values).cast<std::string>());
    }
    std::vector<double> numbers(static_cast<std::size_t>(rows.count));
    convert_rows(name, rows, 1, numbers.data());
    return numbers;
}

Map_Settings map_settings_of(const Options& options) {
    Map_Settings settings;
    options.text("layer", settings.layer);
    options.text("layout", settings.layout);
    options.text("filter", settings.filter);
    options.text("style", settings.style);
    options.text("fill_by", settings.fill_by);
    options.text("classes", settings.classing.method);
    options.number("class_count", settings.classing.count);
    if (const py::object breaks = options["breaks"]; !breaks.is_none()) {
        settings.classing.breaks = numbers_of("breaks", breaks);
    }
    options.text("ramp", settings.classing.ramp);
    options.flag("reverse_ramp", settings.classing.reversed);
    options.text("width_by", settings.width_by);
    if (const py::object widths = options["widths"]; !widths.is_none()) {
        std::tie(settings.width_from, settings.width_to) =
            Options::number_of<std::pair<std::int32_t, std::int32_t>>("widths", widths, "two whole numbers of pixels");
    }
    options.text("label_by", settings.label_by);
    options.text("label_key", settings.label_key);
    options.flag("legend", settings.legend);
    static constexpr Choice<drawing::map::Scale_Unit> units[] = {{"km", drawing::map::Scale_Unit::kilometres},
                                                                 {"miles", drawing::map::Scale_Unit::miles}};
    options.choice("map_scale", settings.map_scale, units);
    options.text("title", settings.title);
    options.text("attribution", settings.attribution);
    if (const py::object flips = options["flip_y"]; !flips.is_none()) {
        settings.flip_y = truth_of(flips);
    }
    static constexpr Choice<bool> merges[] = {{"and", true}};
    options.choice("merge", settings.merges, merges);
    if (const py::object symbol = options["marker"]; !symbol.is_none()) {
        settings.marker.symbol = symbol_named("marker", symbol);
    }
    options.text("projection", settings.projection);
    options.text("clip_to", settings.clip_to);
    options.text("overlay", settings.overlay);
    options.text("font", settings.font);
    if (const auto box = options.numbers<4>("bbox")) {
        settings.bbox = drawing::map::Extent{(*box)[0], (*box)[1], (*box)[2], (*box)[3]};
    }
    if (const auto center = options.numbers<2>("center")) {
        settings.center = drawing::map::Position{(*center)[0], (*center)[1]};
    }
    if (const py::object fill = options["fill"]; py::isinstance<py::str>(fill)) {
        const std::string text = utf8_of("fill", fill);
        const bool is_kind = text == "auto" || text == "palette" || text == "own" || text == "none";
        settings.fill = is_kind ? Map_Fill{Options::chosen("fill", fill, fills), {}}
                                : Map_Fill{Map_Fill::Kind::color, color_of("fill", fill)};
    } else if (!fill.is_none()) {
        settings.fill = {Map_Fill::Kind::color, color_of("fill", fill)};
    }
    options.number("opacity", settings.opacity);
    options.color("water", settings.water);
    options.number("graticule", settings.graticule);
    take_dashes(options, "border", settings.border);
    settings.outline = settings.border;
    take_dashes(options, "outline", settings.outline);
    options.color("border_color", settings.border_color);
    options.number("border_width", settings.border_width);
    options.color("casing", settings.casing);
    options.number("casing_width", settings.casing_width);
    options.color("marker_color", settings.marker.color);
    options.number("marker_size", settings.marker.size);
    options.flag("labels", settings.labels);
    options.number("label_size", settings.label_size);
    options.color("label_color", settings.label_color);
    options.number("halo", settings.halo);
    options.color("halo_color", settings.halo_color);
    options.color("overlay_color", settings.overlay_color);
    return settings;
}

// Files beside that of the map. A font without a slash and a dot is a family.
std::vector<Used_File> files_of(const Map_Settings& settings) {
    const bool has_font_file = settings.font.find_first_of("/.") != std::string::npos;
    std::vector<Used_File> files;
    for (const std::string& file : {settings.overlay, has_font_file ? settings.font : std::string(), settings.style}) {
        if (!file.empty()) {
            files.push_back({file});
        }
    }
    return files;
}

// One thread at a time lays out and draws.
class Map_Object {
public:
    explicit Map_Object(drawing::Map map) : map_(std::move(map)) {}

    // (pixels, palette)
    py::tuple draw(const py::dict& options) {
        const drawing::Image_Settings settings = image_settings_of(Options(options));
        const drawing::Image_Samples image =
            unlocked({}, [&] { return turn_([&] { return drawing::make_samples(map_, settings); }); });
        return py::make_tuple(array_of(image), palette_array(image.palette));
    }
    std::vector<std::string> warnings() {
        const py::gil_scoped_release released;
        return turn_([&] { return map_.warnings(); });
    }

private:
    Turn turn_;
    drawing::Map map_;
};

// inputs: (name, format, text), see drawing::Map_Input.
std::unique_ptr<Map_Object> map_of(const std::vector<std::tuple<std::string, std::string, std::string>>& inputs,
                                   const py::dict& options) {
    const Map_Settings settings = map_settings_of(Options(options));
    const drawing::Reading reading = reading_of(Options(options));
    std::vector<Used_File> files;
    std::vector<drawing::Map_Input> sources;
    for (const auto& [name, format, text] : inputs) {
        sources.push_back({name, format, text});
        if (format.empty()) {
            files.push_back({name});
        }
    }
    std::ranges::move(files_of(settings), std::back_inserter(files));
    return unlocked(files, [&] { return std::make_unique<Map_Object>(drawing::Map(sources, settings, reading)); });
}

} // namespace

void add_maps(py::module_& module) {
    py::class_<Map_Object>(module, "Map")
        .def(py::init(&map_of))
        .def("draw", &Map_Object::draw)
        .def_property_readonly("warnings", [](Map_Object& map) { return texts_of(map.warnings()); });
}

} // namespace vorna::python
