// Labels, legends and other texts of a map's scene.
#include <algorithm>
#include <cmath>

#include "drawing/map/label_font.h"
#include "drawing/map/labels.h"
#include "drawing/map/map_scene.h"

namespace vorna::drawing::map {
namespace {

Face moved(Face face, double x, double y) {
    for (Path& ring : face) {
        std::ranges::transform(ring, ring.begin(), [=](Position p) { return Position{p.x + x, p.y + y}; });
    }
    return face;
}

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
            Label_Font::Text text;
            int height;
            std::optional<VT_RGB32> swatch;
        };
        std::vector<Line> lines;
        int width = 0, height = gap;
        for (const Text_Row& row : rows) {
            const std::unique_ptr<Label_Font> font = load_label_font(settings_.font, row.size);
            Line line{font->text_of(row.text, view.size.x, sheets_.front().file(), limits), row.size + gap, row.swatch};
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
        const double left = at.x, bottom = at.y, right = at.x + width, top = at.y + height;
        signs_.push_back({rectangle(left - 1, bottom - 1, right + 1, top + 1), ink});
        signs_.push_back({rectangle(left, bottom, right, top), background_});
        kept_.push_back({at.x - 1, at.x + width + 1, at.y - 1, at.y + height + 1});
        double y = top - gap;
        for (Line& line : lines) {
            y -= line.height - gap;
            double x = left + gap;
            if (line.swatch) {
                const int row_size = line.height - gap;
                signs_.push_back({rectangle(x - 1, y - 1, x + 2 * row_size - 1, y + row_size - 1), ink});
                signs_.push_back({rectangle(x, y, x + 2 * row_size - 2, y + row_size - 2), *line.swatch});
                x += 2 * row_size + gap;
            }
            texts_.push_back({moved(std::move(line.text.outline), x, y + 1), ink});
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

// Names of points stand to the right of their markers, names of faces inside them; those without room are left out.
void Map_Scene::place_labels(const View& view) {
    const auto has_labels = [](const Map_Sheet& sheet) { return sheet.settings().labels || !sheet.settings().label_by.empty(); };
    if (std::ranges::none_of(sheets_, has_labels)) {
        return;
    }
    const std::unique_ptr<Label_Font> font = load_label_font(settings_.font, settings_.label_size);
    const VT_Int_Rectangle window{0, view.size.x - 1, 0, view.size.y - 1};
    const auto height = static_cast<std::int32_t>(std::ceil(font->height()));
    constexpr std::int32_t margin = 2;
    // New limits for each view: a viewer lays out any number of them.
    Load_Limits limits(limits_->memory_left());
    Free_Room room;
    std::ranges::for_each(kept_, [&](const VT_Int_Rectangle& box) { room.take(box); });
    const auto add = [&](const Label_Font::Text& text, VT_Int_Pair at) {
        const VT_Int_Rectangle box{at.x - margin, at.x + static_cast<std::int32_t>(text.width) + margin, at.y - margin,
                                   at.y + height + margin};
        if (text.outline.empty() || !room.take(box)) {
            return;
        }
        labels_.push_back(moved(text.outline, at.x, at.y));
    };
    for (const Map_Sheet& sheet : sheets_) {
        if (!has_labels(sheet)) {
            continue;
        }
        const auto text_of = [&](std::size_t shape) {
            return font->text_of(sheet.label_of(shape), view.size.x, sheet.file(), limits);
        };
        for (const auto& [place, shape] : sheet.layer().points()) {
            const Position p = view.device_place(place);
            if (p.x >= 0 && p.y >= 0 && p.x < view.size.x && p.y < view.size.y) {
                add(text_of(shape), {static_cast<std::int32_t>(p.x) + sheet.style().markers[shape].size / 2 + 3,
                                     static_cast<std::int32_t>(p.y) - height / 2});
            }
        }
        for (std::size_t s = 0; s < sheet.layer().shape_count(); ++s) {
            if (sheet.label_of(s).empty()) {
                continue;
            }
            const Label_Font::Text text = text_of(s);
            const VT_Int_Pair size{static_cast<std::int32_t>(std::ceil(text.width)) + 2 * margin, height + 2 * margin};
            const Face face = view.device_face(sheet.layer().face_of(s));
            if (const auto at = place_in_face(face, window, size)) {
                add(text, {at->x + margin, at->y + margin});
            }
        }
    }
}

// Each letter has a light or dark outline of one pixel, supersampled with the letter.
void Map_Scene::add_label_items() {
    const std::int32_t step = (supersample_ + 1) / 2;
    for (const Face& label : labels_) {
        for (std::int32_t up = -supersample_; up <= supersample_; up += step) {
            for (std::int32_t right = -supersample_; right <= supersample_; right += step) {
                label_items_.push_back(Text_Item{&label, {right, up}, contrast_to(settings_.label_color)});
            }
        }
    }
    for (const Face& label : labels_) {
        label_items_.push_back(Text_Item{&label, {}, settings_.label_color});
    }
    for (const std::vector<Sign>* signs : {&signs_, &texts_}) {
        for (const Sign& sign : *signs) {
            label_items_.push_back(Text_Item{&sign.outline, {}, sign.color});
        }
    }
}

} // namespace vorna::drawing::map
