// What a DXF file consists of.
#include "drawing/map/dxf/drawing.h"

#include <algorithm>
#include <cmath>

namespace vorna::drawing::map::dxf {
namespace {

constexpr std::size_t most_dashes = 64; // each line walks through all of them
constexpr double millimetres_per_inch = 25.4;

Layer layer_of(const Entity& entry, const Values& values) {
    Layer layer{values.integer(entry, 62, 7), values.integer(entry, 420, -1), values.has_flag(entry, 70, 1)};
    // This layer holds the points that dimensions are tied to.
    layer.plotted = values.integer(entry, 290, 1) != 0 && !same_name(values.text(entry, 2), "Defpoints");
    layer.line_type = values.text(entry, 6);
    layer.weight = values.integer(entry, 370, -3);
    layer.handle = values.text(entry, 5);
    return layer;
}

// Elements are dashes above 0, gaps below and dots. Neighbours of one kind become one element, and a gap at the start moves to
// the end.
std::vector<double> dashes_of(const Entity& entry, const Values& values) {
    std::vector<double> elements;
    for (const Group& group : entry.groups) {
        if (group.code != 49) {
            continue;
        }
        const double length = values.number(group);
        if (!elements.empty() && (elements.back() < 0) == (length < 0)) {
            elements.back() += length;
        } else if (elements.size() < most_dashes) {
            elements.push_back(length);
        } else {
            values.fail(group.line, "at most " + std::to_string(most_dashes) + " dashes and gaps, found more");
        }
    }
    if (elements.size() < 2) {
        return {};
    }
    if (elements.front() < 0) {
        std::ranges::rotate(elements, elements.begin() + 1);
    }
    if (elements.size() % 2 != 0) { // a dash or gap at both ends
        (elements.back() < 0 ? elements[elements.size() - 2] : elements.front()) += elements.back();
        elements.pop_back();
    }
    std::ranges::transform(elements, elements.begin(), [](double length) { return std::abs(length); });
    return elements;
}

Dimension_Style dimension_style_of(const Entity& entry, const Values& values) {
    const Dimension_Style usual;
    const double scale = values.number(entry, 40, usual.scale);
    return {scale > 0 ? scale : 1, values.number(entry, 41, usual.arrow), values.number(entry, 140, usual.text_height),
            values.number(entry, 147, usual.gap)};
}

class Drawing_Reader {
public:
    Drawing_Reader(const std::string& file, std::string_view content) : groups_(file, content), values_(groups_.values()) {}

    Drawing read(const std::string& file) {
        bool any_section = false;
        while (groups_.current() && !groups_.at(0, "EOF")) {
            if (!groups_.at(0, "SECTION")) {
                groups_.advance();
                continue;
            }
            groups_.advance();
            any_section = true;
            const std::string_view name = groups_.current() ? groups_.current()->value : std::string_view();
            if (name == "HEADER") {
                read_header();
            } else if (name == "TABLES") {
                read_tables();
            } else if (name == "BLOCKS") {
                read_blocks();
            } else if (name == "ENTITIES") {
                drawing_.entities = read_entities(groups_, "ENDSEC");
            } else if (name == "OBJECTS") {
                read_layouts();
            }
        }
        if (!any_section) {
            throw Map_Error(file + ":1: expected DXF with sections, found none");
        }
        return std::move(drawing_);
    }

private:
    void read_header() {
        std::string_view variable;
        for (groups_.advance(); groups_.current() && groups_.current()->code != 0; groups_.advance()) {
            if (groups_.current()->code == 9) {
                variable = groups_.current()->value;
            } else {
                drawing_.header.try_emplace(std::string(variable), *groups_.current());
            }
        }
    }

    void read_tables() {
        for (const Entity& entry : read_entities(groups_, "ENDSEC")) {
            const std::string name(values_.text(entry, 2));
            if (entry.type == "BLOCK_RECORD") {
                block_names_[std::string(values_.text(entry, 5))] = name;
            } else if (name.empty()) {
                continue;
            } else if (entry.type == "LAYER") {
                drawing_.layers[name] = layer_of(entry, values_);
            } else if (entry.type == "LTYPE") {
                drawing_.line_types[name] = dashes_of(entry, values_);
            } else if (entry.type == "STYLE") {
                const double width = values_.number(entry, 41, 1);
                drawing_.text_styles[name] = {values_.number(entry, 40, 0), width > 0 ? width : 1, values_.number(entry, 50, 0)};
            } else if (entry.type == "DIMSTYLE") {
                drawing_.dimension_styles[name] = dimension_style_of(entry, values_);
            }
        }
    }

    void read_blocks() {
        while (!groups_.at(0, "ENDSEC")) {
            if (!groups_.current()) {
                groups_.fail_at_end("0 ENDSEC");
            }
            if (!groups_.at(0, "BLOCK")) {
                groups_.advance();
                continue;
            }
            const Entity head = groups_.entity();
            drawing_.blocks[std::string(values_.text(head, 2))] = {values_.position(head, 10, {}),
                                                                   read_entities(groups_, "ENDBLK")};
        }
        groups_.advance();
    }

    void read_layouts() {
        for (const Entity& entry : read_entities(groups_, "ENDSEC")) {
            if (entry.type == "LAYOUT") {
                add_layout(entry);
            }
        }
        std::ranges::stable_sort(drawing_.layouts, {}, &Layout::order);
    }

    // An object of two parts: the sheet of paper and the layout on it.
    void add_layout(const Entity& entry) {
        Entity paper{entry.type, entry.line, {}, {}, {}}, own = paper;
        bool is_own = false;
        for (const Group& group : entry.groups) {
            is_own = is_own || (group.code == 100 && group.value == "AcDbLayout");
            Entity& part = is_own ? own : paper;
            part.by_code.push_back(static_cast<std::uint32_t>(part.groups.size()));
            part.groups.push_back(group);
        }
        for (Entity* part : {&paper, &own}) {
            std::ranges::stable_sort(part->by_code, {}, [part](std::uint32_t i) { return part->groups[i].code; });
        }
        const auto block = block_names_.find(values_.text(own, 330));
        const std::string_view name = values_.text(own, 1);
        if (block == block_names_.end() || name.empty() || same_name(block->second, "*Model_Space")) {
            return;
        }
        Layout layout{std::string(name), block->second, {}, 1, static_cast<int>(values_.integer(own, 71, 0) & 0xFFFF)};
        const double scale = values_.number(paper, 142, 1) / values_.number(paper, 143, 1);
        layout.unit = (values_.integer(paper, 72, 1) == 0 ? millimetres_per_inch : 1) * (scale > 0 && scale < 1e9 ? scale : 1);
        layout.extent = paper_extent(paper, own, layout.unit);
        drawing_.layouts.push_back(std::move(layout));
    }

    Extent paper_extent(const Entity& paper, const Entity& own, double unit) const {
        const bool on_side = (values_.integer(paper, 73, 0) & 1) != 0;
        double width = values_.number(paper, 44, 0) / unit, height = values_.number(paper, 45, 0) / unit;
        double left = (values_.number(paper, 40, 0) + values_.number(paper, 46, 0)) / unit;
        double bottom = (values_.number(paper, 41, 0) + values_.number(paper, 47, 0)) / unit;
        if (on_side) {
            std::swap(width, height);
            std::swap(left, bottom);
        }
        const Position low = values_.position(own, 10, {}), high = values_.position(own, 11, {});
        const bool is_sheet = high.x > low.x && high.y > low.y; // the limits of the layout
        const auto is_close = [](double a, double b) { return std::abs(a - b) <= 0.01 * std::abs(b); };
        if (is_sheet && (!(width > 0 && height > 0) || (is_close(high.x - low.x, width) && is_close(high.y - low.y, height)))) {
            return {low.x, low.y, high.x, high.y};
        }
        return {-left, -bottom, width - left, height - bottom};
    }

    Groups groups_;
    const Values& values_;
    Drawing drawing_;
    std::map<std::string, std::string, std::less<>> block_names_; // by handle
};

// How many lines of codes, which are every other line, are 0: each starts an object.
std::uint64_t object_count(std::string_view content) {
    std::uint64_t count = 0;
    bool is_code = true;
    for (std::size_t start = 0, end = 0; start < content.size(); start = end + 1, is_code = !is_code) {
        end = std::min(content.find('\n', start), content.size());
        const std::string_view line = content.substr(start, end - start);
        const std::size_t first = line.find_first_not_of(" \t"), last = line.find_last_not_of(" \t\r");
        if (is_code && first != std::string_view::npos && first == last && line[first] == '0') {
            ++count;
        }
    }
    return count;
}

} // namespace

Drawing read_drawing(const std::string& file, std::string_view content, Load_Limits& limits) {
    if (content.find('\0') != std::string_view::npos) {
        throw Map_Error(file + ": expected DXF as text, found a binary file");
    }
    constexpr std::uint64_t group_memory = 2 * sizeof(Group) + sizeof(std::uint32_t); // lists grow by doubling
    limits.take_memory(file, static_cast<std::uint64_t>(std::ranges::count(content, '\n')) / 2 * group_memory);
    limits.take_memory(file, object_count(content) * 2 * sizeof(Entity));
    return Drawing_Reader(file, content).read(file);
}

} // namespace vorna::drawing::map::dxf
