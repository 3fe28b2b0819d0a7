// Legends and other texts of a map's scene.
#include <algorithm>
#include <cmath>

#include "drawing/map/label_font.h"
#include "drawing/map/map_scene.h"
#include "drawing/map/scale_bar.h"

namespace vorna::drawing::map {
namespace {

Face rectangle(double left, double bottom, double right, double top) {
    return {{{left, bottom}, {right, bottom}, {right, top}, {left, top}}};
}

// Rows of text that form a block: a legend, a title or an attribution.
struct Text_Row {
    std::string text;
    std::optional<VT_RGB32> swatch;
    int size;
    bool is_heading = false;
};

} // namespace

// The texts of the whole map, each in a box of the background's colour: the title at the top, the attribution at the bottom
// right, legends in the corner where they cover the fewest shapes' places.
void Map_Scene::place_signs(const View& view) {
    signs_.clear();
    texts_.clear();
    kept_.clear();
    const VT_RGB32 ink = contrast_to(background_);
    Load_Limits limits(limits_->memory_left());
    constexpr int gap = 6, margin = 10;
    const int size = settings_.label_size;
    enum class Corner { top, bottom_right, free };
    const auto place = [&](const std::vector<Text_Row>& rows, Corner corner) {
        struct Line {
            Text text;
            int height;
            std::optional<VT_RGB32> swatch;
        };
        std::vector<Line> lines;
        int width = 0, height = gap;
        for (const Text_Row& row : rows) {
            Line line{font_->text_of(row.text, row.size, view.size.x, sheets_.front().file(), limits), row.size + gap,
                      row.swatch};
            const int swatch = row.swatch ? 2 * row.size + gap : 0;
            width = std::max(width, static_cast<int>(std::ceil(line.text.width)) + swatch);
            height += line.height;
            lines.push_back(std::move(line));
        }
        width += 2 * gap;
        const int left_edge = margin, right_edge = view.size.x - margin - width;
        const int low_edge = margin, high_edge = view.size.y - margin - height;
        if (right_edge < 0 || high_edge < 0) {
            return; // no room in an image this small
        }
        VT_Int_Pair at{(view.size.x - width) / 2, high_edge};
        if (corner == Corner::bottom_right) {
            at = {right_edge, low_edge};
        } else if (corner == Corner::free) {
            std::size_t fewest = SIZE_MAX;
            for (const VT_Int_Pair candidate :
                 {VT_Int_Pair{left_edge, low_edge}, {right_edge, low_edge}, {left_edge, high_edge}, {right_edge, high_edge}}) {
                const VT_Int_Rectangle box{candidate.x, candidate.x + width, candidate.y, candidate.y + height};
                const std::size_t covered = places_in(box, view);
                if (covered < fewest) {
                    fewest = covered;
                    at = candidate;
                }
            }
        }
        add_box({at.x, at.x + width, at.y, at.y + height});
        const double left = at.x;
        double y = at.y + height - gap;
        for (Line& line : lines) {
            y -= line.height - gap;
            double x = left + gap;
            if (line.swatch) {
                const int row_size = line.height - gap;
                signs_.push_back({rectangle(x - 1, y - 1, x + 2 * row_size - 1, y + row_size - 1), ink});
                signs_.push_back({rectangle(x, y, x + 2 * row_size - 2, y + row_size - 2), *line.swatch});
                x += 2 * row_size + gap;
            }
            write(line.text, {x, y + 1}, ink);
            y -= gap;
        }
    };
    if (!settings_.title.empty()) {
        place({{settings_.title, {}, 2 * size}}, Corner::top);
    }
    if (!settings_.attribution.empty()) {
        place({{settings_.attribution, {}, std::max(8, size * 3 / 4)}}, Corner::bottom_right);
    }
    for (const Map_Sheet& sheet : sheets_) {
        if (settings_.legend && !sheet.legend().empty()) {
            std::vector<Text_Row> rows{{sheet.settings().fill_by, {}, size}};
            for (const Legend_Entry& entry : sheet.legend()) {
                rows.push_back({entry.text, entry.color, size});
            }
            place(rows, Corner::free);
        }
    }
    if (settings_.map_scale != Scale_Unit::none) {
        place_scale_bar(view, limits);
    }
}

// How many positions of shapes lie in the box, and how many pixels it shares with other signs.
std::size_t Map_Scene::places_in(const VT_Int_Rectangle& box, const View& view) const {
    std::size_t count = 0;
    for (const VT_Int_Rectangle& kept : kept_) {
        const auto shared = [](int a, int b, int c, int d) { return std::max(0, std::min(b, d) - std::max(a, c)); };
        count += std::size_t{1000} * static_cast<std::size_t>(shared(box.left, box.right, kept.left, kept.right) *
                                                              shared(box.bottom, box.top, kept.bottom, kept.top));
    }
    for (const Map_Sheet& sheet : sheets_) {
        count += sheet.layer().count_places([&](Position place) {
            const Position p = view.device_place(place);
            return p.x >= box.left && p.x <= box.right && p.y >= box.bottom && p.y <= box.top;
        });
    }
    return count;
}

// In the lower left corner, above other signs there: a line with its ends and its length.
void Map_Scene::place_scale_bar(const View& view, Load_Limits& limits) {
    const double metres = metres_per_pixel(*projection_, view);
    if (!(metres > 0)) {
        return; // the middle of the image is no place of the globe
    }
    constexpr int gap = 6, margin = 10, tick = 5;
    const int size = settings_.label_size;
    const Scale_Bar bar = scale_bar(metres, settings_.map_scale == Scale_Unit::miles, view.size.x / 4.0);
    const Text text = font_->text_of(bar.text, size, view.size.x, sheets_.front().file(), limits);
    const int length = static_cast<int>(std::lround(bar.pixels)),
              wide = std::max(length, static_cast<int>(std::ceil(text.width)));
    VT_Int_Rectangle box{margin, margin + wide + 2 * gap, margin, margin + size + tick + 3 * gap};
    for (const VT_Int_Rectangle& kept : kept_) {
        if (common_part(kept, box).left <= common_part(kept, box).right &&
            common_part(kept, box).bottom <= common_part(kept, box).top) {
            box.top += kept.top + gap - box.bottom;
            box.bottom = kept.top + gap;
        }
    }
    if (length < 1 || box.right + margin >= view.size.x || box.top + margin >= view.size.y) {
        return;
    }
    const VT_RGB32 ink = contrast_to(background_);
    add_box(box);
    const double left = box.left + gap, right = left + length, low = box.bottom + gap;
    signs_.push_back({rectangle(left, low, right, low + 2), ink});
    signs_.push_back({rectangle(left, low, left + 2, low + tick), ink});
    signs_.push_back({rectangle(right - 2, low, right, low + tick), ink});
    write(text, {std::max<double>(left, std::floor(left + (length - text.width) / 2)), low + tick + gap / 2.0}, ink);
}

void Map_Scene::add_box(const VT_Int_Rectangle& box) {
    const double left = box.left, bottom = box.bottom, right = box.right, top = box.top;
    signs_.push_back({rectangle(left - 1, bottom - 1, right + 1, top + 1), contrast_to(background_)});
    signs_.push_back({rectangle(left, bottom, right, top), background_});
    kept_.push_back({box.left - 1, box.right + 1, box.bottom - 1, box.top + 1});
}

void Map_Scene::write(const Text& text, Position at, VT_RGB32 color) {
    Lettering& lettering = texts_.emplace_back();
    lettering.paint = {.color = color, .ground = background_};
    lettering.add(text, at);
    lettering.find_box();
}

void Map_Scene::add_label_items() {
    for (const Sign& sign : signs_) {
        label_items_.push_back(Form_Item{&sign.outline, sign.color});
    }
    for (const std::vector<Lettering>* letterings : {&labels_, &texts_}) {
        for (const Lettering& lettering : *letterings) {
            label_items_.push_back(Text_Item{&lettering});
        }
    }
}

} // namespace vorna::drawing::map
