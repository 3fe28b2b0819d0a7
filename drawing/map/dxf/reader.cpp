// DXF: the shapes of a drawing's entities.
#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <tuple>

#include "drawing/files/setting_names.h"
#include "drawing/map/dxf/clip.h"
#include "drawing/map/dxf/colors.h"
#include "drawing/map/dxf/entity_forms.h"
#include "drawing/map/map_reader.h"

namespace vorna::drawing::map {
namespace {

using namespace dxf;

constexpr int deepest_insert = 16;
constexpr std::int64_t most_copies = std::int64_t{1} << 31; // in a row or column: products stay in range

// The colour number of a layer or entity; negative when it is switched off.
std::int64_t number_of(std::int64_t color) {
    return color < 0 ? -std::max(color, -INT64_MAX) : color;
}

// A part of model space on paper.
struct Window {
    Extent box;
    std::set<std::string_view> frozen; // handles of layers
    double dash_scale = 1;
};

// Attributes that entities of a block inherit from the insertion.
struct Surroundings {
    Placement placement{};
    Color color{}; // of BYBLOCK
    std::string_view line_type{};
    std::int64_t weight = weight_by_layer;
    std::string_view layer = "0"; // of layer 0
    const Window* window = nullptr;
    int depth = 0;
};

class Dxf_Reader {
public:
    Dxf_Reader(const std::string& file, std::string_view content, const Map_Query& query, Load_Limits& limits)
        : file_(file), query_(query), limits_(limits), values_(file), drawing_(read_drawing(file, content, limits)),
          maker_(file, drawing_, query.font, limits) {}

    Map read() {
        map_.drawing = true;
        choose_layers();
        line_type_scale_ = variable("$LTSCALE", 1);
        if (query_.layout.empty() || same_name(query_.layout, "Model")) {
            add_space({}, false);
        } else {
            add_layout();
        }
        add_warnings();
        return std::move(map_);
    }

private:
    double variable(const char* name, double otherwise) const {
        const auto found = drawing_.header.find(name);
        return found == drawing_.header.end() ? otherwise : values_.number(found->second);
    }

    void choose_layers() {
        if (query_.layer.empty()) {
            return;
        }
        for (const std::string& name : parts_between(query_.layer)) {
            if (!find(drawing_.layers, name)) {
                std::string names;
                for (const auto& [known, layer] : drawing_.layers) {
                    names += (names.empty() ? "" : ", ") + known;
                }
                throw Map_Error(name_of(Setting::layer) + ": expected a layer of " + file_ + ": " + names + "; found '" + name +
                                "'");
            }
            chosen_.insert(name);
        }
    }

    void add_warnings() {
        if (!left_out_.empty()) {
            std::string list;
            for (const auto& [what, count] : left_out_) {
                list += (list.empty() ? "" : ", ") + std::to_string(count) + " " + what;
            }
            map_.warnings.push_back(file_ + ": not drawn: " + list);
        }
        if (!maker_.texts().refusal().empty()) {
            map_.warnings.push_back(file_ + ": texts are not drawn: " + maker_.texts().refusal());
        }
    }

    void add_space(const Surroundings& around, bool on_paper) {
        for (const Entity& entity : drawing_.entities) {
            if ((values_.integer(entity, 67, 0) == 1) == on_paper) {
                add(entity, around);
            }
        }
    }

    // A layout's entities, and the parts of model space in its windows below them.
    void add_layout() {
        const auto named = [this](const Layout& layout) { return same_name(layout.name, query_.layout); };
        const auto found = std::ranges::find_if(drawing_.layouts, named);
        if (found == drawing_.layouts.end()) {
            std::string names = "Model";
            for (const Layout& layout : drawing_.layouts) {
                names += ", " + layout.name;
            }
            throw Map_Error(name_of(Setting::layout) + ": expected a layout of " + file_ + ": " + names + "; found '" +
                            query_.layout + "'");
        }
        const Extent& sheet = found->extent;
        if (sheet.east > sheet.west && sheet.north > sheet.south) {
            map_.extent = sheet;
            map_.paper_unit = found->unit;
        }
        // The entities of one layout, the last active one, stand among those of model space.
        const bool is_active = same_name(found->block, "*Paper_Space");
        const Block* block = find(drawing_.blocks, found->block);
        const std::vector<Entity>& entities = is_active || !block ? drawing_.entities : block->entities;
        const auto for_each = [&](bool windows) {
            for (const Entity& entity : entities) {
                const bool on_paper = !is_active || values_.integer(entity, 67, 0) == 1;
                if (on_paper && (entity.type == "VIEWPORT") == windows) {
                    windows ? add_window(entity) : add(entity, {});
                }
            }
        };
        for_each(true);
        for_each(false);
    }

    void add_window(const Entity& entity) {
        constexpr std::int64_t sheet = 1, off = 0x20000;
        const bool is_off = values_.integer(entity, 68, 1) == 0 || values_.has_flag(entity, 90, off);
        const double height = values_.number(entity, 41, 0), shown = values_.number(entity, 45, 0);
        if (values_.integer(entity, 69, 0) == sheet || is_off || !(height > 0)) {
            return;
        }
        const bool is_plan = values_.number(entity, 16, 0) == 0 && values_.number(entity, 26, 0) == 0;
        if (!(shown > 0) || !is_plan) {
            ++left_out_["VIEWPORT"]; // a view in space
            return;
        }
        const Position middle = values_.position(entity, 10), target = values_.position(entity, 17, {});
        const Position center = values_.position(entity, 12, {});
        const double width = values_.number(entity, 40, 0), scale = height / shown;
        Window window{{middle.x - width / 2, middle.y - height / 2, middle.x + width / 2, middle.y + height / 2}, {}, 1};
        // Lengths of dashes are those on paper, or in old files those of model space.
        window.dash_scale = variable("$PSLTSCALE", 1) != 0 ? 1 : scale;
        for (const Group& group : entity.groups) {
            if (group.code == 331 || group.code == 341) {
                window.frozen.insert(group.value);
            }
        }
        Surroundings inside;
        inside.window = &window;
        inside.placement = Placement{{scale, 0}, {0, scale}, {middle.x - center.x * scale, middle.y - center.y * scale}} *
                           Placement::turned(values_.number(entity, 51, 0) * degree, {}) *
                           Placement{{1, 0}, {0, 1}, {-target.x, -target.y}};
        add_space(inside, false);
        Form frame;
        const Extent& box = window.box;
        frame.shape.lines = {
            {{box.west, box.south}, {box.east, box.south}, {box.east, box.north}, {box.west, box.north}, {box.west, box.south}}};
        if (layer(layer_name(entity, {})).is_shown()) {
            place(entity, {}, {}, frame);
        }
    }

    const Layer& layer(std::string_view name) const {
        static const Layer plain;
        const Layer* found = find(drawing_.layers, name);
        return found ? *found : plain;
    }

    std::string_view layer_name(const Entity& entity, const Surroundings& around) const {
        const std::string_view name = values_.text(entity, 8);
        return name.empty() || name == "0" ? around.layer : name;
    }

    Color color(const Entity& entity, const Surroundings& around) const {
        const std::int64_t own = values_.integer(entity, 420, -1), number = values_.integer(entity, 62, by_layer);
        if (own >= 0) {
            return true_color(own);
        }
        if (number == by_block) {
            return around.color;
        }
        if (number != by_layer) {
            return table_color(number_of(number));
        }
        const Layer& of = layer(layer_name(entity, around));
        return of.true_color >= 0 ? true_color(of.true_color) : table_color(number_of(of.color));
    }

    std::string_view line_type(const Entity& entity, const Surroundings& around) const {
        const std::string_view name = values_.text(entity, 6);
        return same_name(name, "BYBLOCK")                   ? around.line_type
               : name.empty() || same_name(name, "BYLAYER") ? layer(layer_name(entity, around)).line_type
                                                            : name;
    }

    std::int64_t weight(const Entity& entity, const Surroundings& around) const {
        const std::int64_t own = values_.integer(entity, 370, weight_by_layer);
        const std::int64_t found = own == weight_by_block ? around.weight : own;
        return found == weight_by_layer ? layer(layer_name(entity, around)).weight : found;
    }

    // The number of an entity's dashes among those of the map.
    std::uint32_t dashes_of(const Entity& entity, const Surroundings& around) {
        const std::vector<double>* type = find(drawing_.line_types, line_type(entity, around));
        const double scale = line_type_scale_ * values_.number(entity, 48, 1) * (around.window ? around.window->dash_scale : 1);
        if (!type || type->empty() || !(scale > 0)) {
            return 0;
        }
        const auto [known, is_new] = dashes_.try_emplace({type, scale}, 0);
        if (is_new) {
            constexpr double longest = 1e100; // sums and products with the image's scale stay finite
            std::vector<double> dashes = *type;
            limits_.take_memory(file_, dashes.size() * sizeof(double) + 128);
            std::ranges::for_each(dashes, [=](double& length) { length *= scale; });
            if (std::ranges::all_of(dashes, [](double length) { return length < longest; })) {
                map_.dashes.push_back(std::move(dashes));
                known->second = static_cast<std::uint32_t>(map_.dashes.size());
            }
        }
        return known->second;
    }

    void add(const Entity& entity, const Surroundings& around) {
        constexpr std::uint64_t entity_steps = 60;
        const std::string_view of_layer = layer_name(entity, around);
        const std::size_t letters = entity.type.size() + of_layer.size() + values_.text(entity, 2).size();
        limits_.take_work(file_, entity_steps + entity.groups.size() + entity.parts.size() + letters / 8);
        const Layer& of = layer(of_layer);
        const bool is_frozen = of.frozen || (around.window && around.window->frozen.contains(of.handle));
        if (is_frozen || values_.integer(entity, 60, 0) == 1) {
            return;
        }
        const bool has_block = (entity.type == "DIMENSION" || entity.type == "ACAD_TABLE") &&
                               find(drawing_.blocks, values_.text(entity, 2)) != nullptr;
        // Layers that are off hide what is on them, but not what blocks on them have on other layers.
        if (entity.type == "INSERT" || has_block) {
            insert(entity, around);
            return;
        }
        if (!of.is_shown() || (!chosen_.empty() && !chosen_.contains(of_layer))) {
            return;
        }
        Forms forms;
        if (!maker_.make(entity, around.depth > 0, forms)) {
            ++left_out_[std::string(entity.type)];
            return;
        }
        const Placement placement = around.placement * plane_of(entity, values_);
        for (Form& form : forms) {
            place(entity, around, placement, form);
        }
    }

    void place(const Entity& entity, const Surroundings& around, const Placement& placement, Form& form) {
        Shape& shape = form.shape;
        const std::int64_t hundredths = weight(entity, around);
        shape.outlined = false;
        shape.name = layer_name(entity, around);
        shape.stroke = shape.fill = shape.marker_color = form.color.value_or(color(entity, around));
        shape.pen.contrasts = !shape.stroke;
        shape.pen.width *= placement.scale();
        shape.pen.weight = hundredths < 0 ? 0 : std::max(static_cast<float>(hundredths) / 100, 0.001F);
        shape.pen.dashes = form.is_solid_line || shape.lines.empty() ? 0 : dashes_of(entity, around);
        std::size_t positions = 0;
        for_each_path(shape, [&](Path& path) {
            std::ranges::transform(path, path.begin(), placement);
            positions += path.size();
        });
        if (around.window) {
            clip_to(around.window->box, shape);
            if (shape.lines.empty() && shape.faces.empty() && shape.points.empty()) {
                limits_.take_work(file_, positions);
                return;
            }
        }
        limits_.take_memory(file_, 2 * sizeof(Shape) + shape.name.size() + positions * sizeof(Position));
        limits_.take_work(file_, positions);
        map_.shapes.push_back(std::move(shape));
    }

    void insert(const Entity& entity, const Surroundings& around) {
        const Group& name = values_.required(entity, 2);
        const Block* block = find(drawing_.blocks, name.value);
        if (!block) {
            values_.fail(name.line, "the name of a block, found '" + std::string(name.value.substr(0, 40)) + "'");
        }
        if (around.depth == deepest_insert) {
            values_.fail(entity.line, "blocks at most " + std::to_string(deepest_insert) + " deep in each other");
        }
        // The block of a dimension has the drawing's coordinates.
        const bool is_dimension = entity.type == "DIMENSION";
        const auto number = [&](int code, double otherwise) {
            return is_dimension ? otherwise : values_.number(entity, code, otherwise);
        };
        const auto count = [&](int code) {
            return std::clamp<std::int64_t>(entity.type == "INSERT" ? values_.integer(entity, code, 1) : 1, 1, most_copies);
        };
        const double sx = number(41, 1), sy = number(42, 1);
        const Placement own =
            is_dimension ? Placement{} : Placement::turned(number(50, 0) * degree, values_.position(entity, 10));
        const Placement turned = plane_of(entity, values_) * own;
        const std::int64_t columns = count(70), rows = count(71);
        const double dx = number(44, 0), dy = number(45, 0);
        const Position base = is_dimension ? Position{} : block->base;
        Surroundings inside{{},
                            color(entity, around),
                            line_type(entity, around),
                            weight(entity, around),
                            layer_name(entity, around),
                            around.window,
                            around.depth + 1};
        for (std::int64_t i = 0; i < (block->entities.empty() ? 0 : rows * columns); ++i) {
            const std::int64_t column = i % columns, row = i / columns;
            const Placement cell{
                {sx, 0}, {0, sy}, {static_cast<double>(column) * dx - base.x * sx, static_cast<double>(row) * dy - base.y * sy}};
            inside.placement = around.placement * turned * cell;
            for (const Entity& part : block->entities) {
                add(part, inside);
            }
        }
        for (const Entity& attribute : entity.parts) {
            add(attribute, around);
        }
    }

    const std::string& file_;
    const Map_Query& query_;
    Load_Limits& limits_;
    Values values_;
    Drawing drawing_;
    Form_Maker maker_;
    Map map_;
    double line_type_scale_ = 1;
    std::set<std::string, Name_Less> chosen_; // layers; empty = all
    std::map<std::pair<const std::vector<double>*, double>, std::uint32_t> dashes_;
    std::map<std::string, std::size_t> left_out_; // entities by type
};

} // namespace

Map read_dxf(const std::string& file, std::string_view content, const Map_Query& query, Load_Limits& limits) {
    return Dxf_Reader(file, content, query, limits).read();
}

} // namespace vorna::drawing::map
