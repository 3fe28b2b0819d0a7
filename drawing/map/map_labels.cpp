// Labels of a map's scene.
#include <algorithm>
#include <cmath>
#include <map>
#include <string_view>
#include <unordered_map>

#include "drawing/map/labels.h"
#include "drawing/map/line_chains.h"
#include "drawing/map/map_scene.h"
#include "drawing/map/near_places.h"

namespace vorna::drawing::map {
namespace {

constexpr std::int32_t margin = 2;      // between letters and other things
constexpr double repeat_distance = 250; // pixels between equal labels along lines
constexpr std::size_t most_rows = 3;    // of a label inside of a face
constexpr double row_distance = 1.25;   // in multiples of the size

// A shape's part that a label belongs to.
struct Labelled {
    enum class Kind { point, face, line } kind;
    std::size_t number; // of the point, or the chain of lines
    std::size_t shape;
    double key; // larger ones are placed first
};

double length_of(const Path& path) {
    double length = 0;
    for (std::size_t i = 1; i < path.size(); ++i) {
        length += std::hypot(path[i].x - path[i - 1].x, path[i].y - path[i - 1].y);
    }
    return length;
}

// Lines that follow each other.
struct Chain {
    Path path;
    std::size_t shape;
};

// The words in so many rows, the longest of which is as short as it can be; empty where there are too few words. Bytes stand for
// letters.
std::vector<std::string> in_rows(std::string_view text, std::size_t count) {
    constexpr std::size_t longest_in_rows = 200;
    if (count <= 1) {
        return {std::string(text)};
    }
    std::vector<std::string> best;
    std::size_t least = text.size() <= longest_in_rows ? SIZE_MAX : 0;
    for (std::size_t space = text.find(' '); space < least; space = text.find(' ', space + 1)) {
        std::vector<std::string> rows = in_rows(text.substr(space + 1), count - 1);
        std::size_t longest = space;
        std::ranges::for_each(rows, [&](const std::string& row) { longest = std::max(longest, row.size()); });
        if (!rows.empty() && longest < least) {
            least = longest;
            best = std::move(rows);
            best.insert(best.begin(), std::string(text.substr(0, space)));
        }
    }
    return best;
}

// Places the labels of one sheet.
class Label_Placer {
public:
    Label_Placer(const Map_Sheet& sheet, const View& view, Label_Font& font, Free_Room& room, Free_Room& markers,
                 std::vector<Lettering>& labels, Load_Limits& limits)
        : sheet_(sheet), view_(view), font_(font), room_(room), markers_(markers), labels_(labels), limits_(limits),
          paint_(sheet.label_paint()), size_(sheet.settings().label_size), capitals_(font.height() * size_),
          height_(static_cast<std::int32_t>(std::ceil(capitals_))),
          beside_(margin + std::max(static_cast<std::int32_t>(std::ceil(paint_.halo_width)) - 1, 0)) {}

    void place_all() {
        join_lines();
        for (const Labelled& labelled : in_order()) {
            using Kind = Labelled::Kind;
            labelled.kind == Kind::point  ? place_point(labelled)
            : labelled.kind == Kind::face ? place_face(labelled)
                                          : place_line(labelled);
        }
    }

private:
    // By the key; else points in their order, faces by their size, lines by their length.
    std::vector<Labelled> in_order() const {
        const Map_Layer& layer = sheet_.layer();
        const bool by_key = !sheet_.settings().label_key.empty();
        std::vector<Labelled> all;
        const auto consider = [&](Labelled::Kind kind, std::size_t number, std::size_t shape, auto importance) {
            if (!sheet_.label_of(shape).empty()) {
                all.push_back({kind, number, shape, by_key ? sheet_.label_key_of(shape) : importance()});
            }
        };
        for (std::size_t i = 0; i < layer.points().size(); ++i) {
            consider(Labelled::Kind::point, i, layer.points()[i].second, [] { return INFINITY; });
        }
        const auto sort_from = [&](std::size_t first) {
            std::stable_sort(all.begin() + static_cast<std::ptrdiff_t>(first), all.end(),
                             [](const Labelled& a, const Labelled& b) { return a.key > b.key; });
        };
        const std::size_t first_face = all.size();
        for (std::size_t s = 0; s < layer.shape_count(); ++s) {
            if (layer.has_faces(s)) {
                consider(Labelled::Kind::face, s, s, [&] { return largest_area(layer.face_of(s)); });
            }
        }
        sort_from(first_face);
        const std::size_t first_line = all.size();
        for (std::size_t i = 0; i < chains_.size(); ++i) {
            consider(Labelled::Kind::line, i, chains_[i].shape, [&] { return length_of(chains_[i].path); });
        }
        sort_from(first_line);
        if (by_key) {
            sort_from(0);
        }
        return all;
    }

    // Lines of one label that follow each other, with the shape of the first one.
    void join_lines() {
        const Map_Layer& layer = sheet_.layer();
        std::map<std::string, std::pair<std::size_t, std::vector<const Path*>>> lines;
        for (std::size_t i = 0; i < layer.line_count(); ++i) {
            if (const Path* line = layer.own_line(i); line && line->size() > 1) {
                auto& [shape, paths] = lines[sheet_.label_of(layer.shape_of_line(i))];
                shape = paths.empty() ? layer.shape_of_line(i) : shape;
                paths.push_back(line);
            }
        }
        for (const auto& [label, found] : lines) {
            for (Path& path : label.empty() ? std::vector<Path>() : joined_lines(found.second)) {
                chains_.push_back({std::move(path), found.first});
            }
        }
    }

    Text shaped(const std::string& text) { return font_.text_of(text, size_, view_.size.x, sheet_.file(), limits_); }

    void add(const Text& text, VT_Int_Pair at) {
        Lettering& lettering = labels_.emplace_back();
        lettering.paint = paint_;
        lettering.add(text, {static_cast<double>(at.x), static_cast<double>(at.y)});
        lettering.find_box();
    }

    // The box of a text of that width, in which letters hang below the base line too.
    VT_Int_Rectangle box_at(VT_Int_Pair at, std::int32_t width) const {
        return {at.x - beside_, at.x + width + beside_, at.y - beside_ - height_ / 4, at.y + height_ + beside_};
    }

    // Beside the marker, above and below it, by preference where no other marker lies.
    void place_point(const Labelled& labelled) {
        const auto& [place, shape] = sheet_.layer().points()[labelled.number];
        const Position p = view_.device_place(place);
        if (!(p.x >= 0 && p.y >= 0 && p.x < view_.size.x && p.y < view_.size.y)) {
            return;
        }
        const VT_Int_Pair middle{static_cast<std::int32_t>(p.x), static_cast<std::int32_t>(p.y)};
        const std::int32_t away = sheet_.style().markers[shape].size / 2 + 3;
        const auto at = [&](int position, std::int32_t width) -> VT_Int_Pair {
            const std::int32_t right = middle.x + away, left = middle.x - away - width, centre = middle.x - width / 2;
            const std::int32_t level = middle.y - height_ / 2, above = middle.y + away, below = middle.y - away - height_;
            const VT_Int_Pair places[]{{right, level}, {left, level},  {centre, above}, {centre, below},
                                       {right, above}, {right, below}, {left, above},   {left, below}};
            return places[position];
        };
        constexpr int positions = 8;
        // A column of the label next to the marker has no room: then no label has.
        bool has_room = false;
        for (int i = 0; i < positions && !has_room; ++i) {
            has_room = room_.is_free(box_at(at(i, 0), 0));
        }
        if (!has_room) {
            return;
        }
        const Text text = shaped(sheet_.label_of(shape));
        const auto width = static_cast<std::int32_t>(std::ceil(text.width));
        std::optional<VT_Int_Pair> found;
        for (int i = 0; i < positions && !text.letters.empty(); ++i) {
            const VT_Int_Rectangle box = box_at(at(i, width), width);
            if (room_.is_free(box)) {
                const bool covers_markers = !markers_.is_free(box);
                found = !found || !covers_markers ? at(i, width) : found;
                if (!covers_markers) {
                    break;
                }
            }
        }
        if (found) {
            room_.block(box_at(*found, width));
            add(text, *found);
        }
    }

    // Inside of it, in as few rows as fit.
    void place_face(const Labelled& labelled) {
        const VT_Int_Rectangle window{0, view_.size.x - 1, 0, view_.size.y - 1};
        const Face face = view_.device_face(sheet_.layer().face_of(labelled.shape));
        const std::string label = sheet_.label_of(labelled.shape);
        if (!place_in_face(face, window, {1, height_})) {
            return;
        }
        for (std::size_t count = 1; count <= most_rows; ++count) {
            std::vector<Text> rows;
            double widest = 0;
            for (const std::string& row : in_rows(label, count)) {
                rows.push_back(shaped(row));
                widest = std::max(widest, rows.back().width);
            }
            if (rows.empty() || widest == 0) {
                return;
            }
            const auto distance = static_cast<std::int32_t>(std::lround(size_ * row_distance));
            const std::int32_t below = static_cast<std::int32_t>(count - 1) * distance,
                               width = static_cast<std::int32_t>(std::ceil(widest));
            const auto at = place_in_face(face, window, {width + 2 * margin, height_ + below + 2 * margin});
            if (!at) {
                continue;
            }
            const VT_Int_Rectangle box{at->x + margin - beside_, at->x + margin + width + beside_,
                                       at->y + margin - beside_ - height_ / 4, at->y + margin + below + height_ + beside_};
            const VT_Int_Rectangle seen = common_part(box, window);
            if (!room_.take({&seen, 1})) {
                continue;
            }
            Lettering& lettering = labels_.emplace_back();
            lettering.paint = paint_;
            for (std::size_t row = 0; row < rows.size(); ++row) {
                lettering.add(rows[row],
                              {std::floor(at->x + margin + (widest - rows[row].width) / 2),
                               static_cast<double>(at->y + margin + below - static_cast<std::int32_t>(row) * distance)});
            }
            lettering.find_box();
            return;
        }
    }

    // Along the pieces of the line that the image shows, again and again.
    void place_line(const Labelled& labelled) {
        const Path& line = chains_[labelled.number].path;
        const std::string label = sheet_.label_of(labelled.shape);
        std::optional<Text> text;
        Path piece;
        const auto finish = [&] {
            // Half of the shortest text that can be: no text is narrower than a letter.
            if (piece.size() > 1 && length_of(piece) > size_ / 2) {
                text = text ? text : shaped(label);
                place_along(Text_Line(piece, size_), *text, label);
            }
            piece.clear();
        };
        const auto may_be_seen = [&](Position a, Position b) {
            return std::max(a.x, b.x) >= 0 && std::max(a.y, b.y) >= 0 && std::min(a.x, b.x) <= view_.size.x &&
                   std::min(a.y, b.y) <= view_.size.y;
        };
        for (std::size_t i = 1; i < line.size(); ++i) {
            const Position a = view_.device_place(line[i - 1]), b = view_.device_place(line[i]);
            if (may_be_seen(a, b)) {
                if (piece.empty()) {
                    piece.push_back(a);
                }
                piece.push_back(b);
            } else {
                finish();
            }
        }
        finish();
    }

    void place_along(const Text_Line& line, const Text& text, const std::string& label) {
        if (text.letters.empty() || line.length() < text.width) {
            return;
        }
        Near_Places& equal_ones = along_lines_.try_emplace(label, repeat_distance).first->second;
        const auto count = std::max(1.0, std::min(std::floor(line.length() / (text.width + repeat_distance)), 10000.0));
        const double part = line.length() / count, step = std::max(text.width / 4, 8.0);
        for (double number = 0; number < count; ++number) {
            const double middle = (number + 0.5) * part;
            bool is_placed = false;
            // From the middle of the part to both sides.
            for (double away = 0; away <= part / 2 && away <= 16 * step && !is_placed; away += step) {
                for (const double place : {middle + away, middle - away}) {
                    is_placed = is_placed || place_at(line, text, place, equal_ones);
                }
            }
        }
    }

    bool place_at(const Text_Line& line, const Text& text, double middle, Near_Places& equal_ones) {
        constexpr std::uint64_t try_steps = 10, letter_steps = 20;
        limits_.take_work(sheet_.file(), try_steps);
        const Position centre = line.at(middle);
        const VT_Int_Pair pixel{static_cast<std::int32_t>(centre.x), static_cast<std::int32_t>(centre.y)};
        if (!room_.is_free({pixel.x, pixel.x, pixel.y, pixel.y}) || equal_ones.has_near(centre)) {
            return false;
        }
        limits_.take_work(sheet_.file(), letter_steps * text.letters.size());
        const auto found = line.place(text, capitals_, middle, beside_);
        if (!found || !room_.take(found->boxes)) {
            return false;
        }
        equal_ones.add(centre);
        Lettering& lettering = labels_.emplace_back();
        lettering.paint = paint_;
        lettering.letters = found->letters;
        lettering.find_box();
        return true;
    }

    const Map_Sheet& sheet_;
    const View& view_;
    Label_Font& font_;
    Free_Room &room_, &markers_;
    std::vector<Lettering>& labels_;
    Load_Limits& limits_;
    Text_Paint paint_;
    double size_, capitals_;
    std::int32_t height_, beside_;
    std::vector<Chain> chains_;
    std::unordered_map<std::string, Near_Places> along_lines_; // by label
};

} // namespace

void Map_Scene::load_font() {
    const bool has_labels = std::ranges::any_of(sheets_, &Map_Sheet::has_labels);
    if (!has_labels && settings_.title.empty() && settings_.attribution.empty() && !settings_.legend &&
        settings_.map_scale == Scale_Unit::none) {
        return;
    }
    font_ = load_label_font(settings_.font, *limits_);
    font_->note(settings_.title, *limits_);
    font_->note(settings_.attribution, *limits_);
    for (const Map_Sheet& sheet : sheets_) {
        std::ranges::for_each(sheet.legend(), [this](const Legend_Entry& entry) { font_->note(entry.text, *limits_); });
        for (std::size_t s = 0; sheet.has_labels() && s < sheet.layer().shape_count(); ++s) {
            font_->note(sheet.label_of(s), *limits_);
        }
    }
}

// Labels have no common pixels, and each is as high as its capitals at least. A point and a shape's faces have one, and lines one
// in each `repeat_distance`.
std::size_t Map_Scene::label_count(const Map_Sheet& sheet, const View& view) {
    const Map_Layer& layer = sheet.layer();
    double count = static_cast<double>(layer.points().size() + layer.shape_count());
    for (std::size_t i = 0; i < layer.line_count(); ++i) {
        if (const Path* line = layer.own_line(i)) {
            count += 1 + length_of(*line) * view.scale / repeat_distance;
        }
    }
    const double height = sheet.settings().label_size;
    const double room = static_cast<double>(view.size.x) * view.size.y / (height * height);
    return static_cast<std::size_t>(std::ceil(std::min(count, room)));
}

// In the order of the sheets; labels without room are left out.
void Map_Scene::place_labels(const View& view) {
    if (std::ranges::none_of(sheets_, &Map_Sheet::has_labels)) {
        return;
    }
    // New limits for each view: a viewer lays out any number of them.
    Load_Limits limits(limits_->memory_left());
    Free_Room room(view.size), markers(view.size);
    std::ranges::for_each(kept_, [&](const VT_Int_Rectangle& box) { room.block(box); });
    for (const Map_Sheet& sheet : sheets_) {
        for (const auto& [place, shape] : sheet.layer().points()) {
            const Position p = view.device_place(place);
            if (p.x >= 0 && p.y >= 0 && p.x < view.size.x && p.y < view.size.y) {
                const auto x = static_cast<std::int32_t>(p.x), y = static_cast<std::int32_t>(p.y);
                const std::int32_t half = sheet.style().markers[shape].size / 2;
                markers.block({x - half, x + half, y - half, y + half});
            }
        }
    }
    for (const Map_Sheet& sheet : sheets_) {
        if (sheet.has_labels()) {
            Label_Placer(sheet, view, *font_, room, markers, labels_, limits).place_all();
        }
    }
}

} // namespace vorna::drawing::map
