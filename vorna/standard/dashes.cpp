// Lines cut into dashes and dots. The position of a dash depends on its distance along the line alone, so that invisible parts of
// a line take no time, however long they are.
#include "vorna/standard/dashes.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "host/segment_clip.h"
#include "vorna/standard/conversion.h"

namespace vorna {

namespace {

// Patterns with a shorter or equal repetition are not drawn, as in renderers; nor are segments whose visible part has more
// elements than this.
constexpr double shortest_repetition = 1.0 / 1024;
constexpr double most_elements = 1 << 15;

double non_negative(double length) noexcept {
    return length > 0 ? length : 0;
}

// From one distance along the line to another, and the segments in which the two lie.
struct Dash {
    double first, last;
    std::size_t first_segment, last_segment;
    bool is_visible;
    bool goes_on; // into an invisible segment
};

// A visible dash is drawn whole, up to the vertex from which on it is invisible: cut elsewhere, it would have another slope in
// whole pixels.
class Cutter {
public:
    Cutter(const Stroke_Path& line, const Dash_Pattern& pattern, Stroke_Colors colors, bool shortened)
        : line_(line), pattern_(pattern), colors_(colors), shortened_(shortened), repetition_(pattern.repetition()) {
        starts_.push_back(0);
        for (std::size_t s = 0; s + 1 < line.size(); ++s) {
            const double x = line[s + 1].x - line[s].x;
            const double y = line[s + 1].y - line[s].y;
            const double z = pattern.measures_depth ? line[s + 1].z - line[s].z : 0;
            starts_.push_back(starts_.back() + std::sqrt(x * x + y * y + z * z));
        }
        const Stroke_Point& start = line.front();
        const Stroke_Point& end = line.back();
        meets_itself_ = line.size() > 3 && start.x == end.x && start.y == end.y && start.z == end.z && pattern.begins_drawn();
    }

    std::vector<Stroke_Path> cut(const VT_Int_Rectangle& rectangle, double margin) {
        for (std::size_t s = 0; s + 1 < line_.size(); ++s) {
            const VT_Vector_D direction{line_[s + 1].x - line_[s].x, line_[s + 1].y - line_[s].y, 0};
            if (const Segment_Part part = part_near(rectangle, margin, line_[s], direction); part.is_visible()) {
                const double length = starts_[s + 1] - starts_[s];
                cut_segment(s, part.entering > 0 ? starts_[s] + part.entering * length : starts_[s],
                            part.leaving < 1 ? starts_[s] + part.leaving * length : starts_[s + 1]);
            }
        }
        std::vector<Stroke_Path> paths;
        for (const Dash& dash : dashes_) {
            if (dash.is_visible && !(ends_drawn(dash) && total() - dash.first < step(dash.last_segment))) {
                paths.push_back(path(dash));
            }
        }
        return paths;
    }

private:
    double total() const noexcept { return starts_.back(); }

    void cut_segment(std::size_t s, double first, double last) {
        const double repeats_from = std::min(pattern_.leading, total());
        const double repeats_to = std::max(repeats_from, total() - pattern_.trailing);
        add_end(s, 0, repeats_from, 0, first, last);
        if (repetition_ > 0) {
            repeat(s, repeats_from, repeats_to, first, last);
            add_end(s, repeats_to, total(), total(), first, last);
        } else {
            // The trailing part also takes the place of the repeated part, unless that has gaps only.
            add_end(s, pattern_.is_blank() ? repeats_to : repeats_from, total(), total(), first, last);
        }
    }

    void add_end(std::size_t s, double from, double to, double dot, double first, double last) {
        if (from < to) {
            pattern_.has_end_dots ? add_dot(s, dot, first, last) : add_dash(s, from, to, first, last);
        }
    }

    void repeat(std::size_t s, double from, double to, double first, double last) {
        const double start = std::clamp(first, from, to);
        const double end = std::clamp(last, from, to);
        if ((end - start) * static_cast<double>(pattern_.lengths.size()) > most_elements * repetition_) {
            return;
        }
        // Adjacent dashes are joined to one: one repetition more on each side.
        for (double k = std::max(std::floor((start - from) / repetition_) - 1, 0.0);; ++k) {
            double at = from + k * repetition_;
            if (at >= to || at > end + repetition_ || from + (k + 1) * repetition_ <= at) {
                return; // also where adding a repetition does not change the distance
            }
            double length = 0;
            for (std::size_t e = 0; e < pattern_.lengths.size() && at < to; ++e) {
                length += pattern_.lengths[e];
                const double next = from + k * repetition_ + length;
                if (pattern_.kinds[e] > 0) {
                    add_dash(s, at, std::min(next, to), first, last);
                } else if (pattern_.kinds[e] == 0 && !(pattern_.has_end_dots && (at <= from || at >= to))) {
                    add_dot(s, at, first, last);
                }
                at = next;
            }
        }
    }

    void add_dash(std::size_t s, double from, double to, double first, double last) {
        const bool goes_on = to > starts_[s + 1];
        from = std::max(from, starts_[s]);
        to = std::min(to, starts_[s + 1]);
        if (from >= to) {
            return;
        }
        const bool is_visible = from < last && to > first;
        if (!dashes_.empty() && dashes_.back().last >= from && dashes_.back().last > dashes_.back().first) {
            Dash& dash = dashes_.back();
            dash.last = std::max(dash.last, to);
            dash.last_segment = s;
            dash.is_visible = dash.is_visible || is_visible;
            dash.goes_on = goes_on;
        } else {
            start_dash({from, to, s, s, is_visible, goes_on});
        }
    }

    // A vertex belongs to the segment that begins there.
    void add_dot(std::size_t s, double at, double first, double last) {
        if (at >= first && (at < last || (at == last && at == total()))) {
            start_dash({at, at, s, s, true, false});
        }
    }

    void start_dash(const Dash& dash) {
        if (!dashes_.empty() && !dashes_.back().is_visible) {
            dashes_.pop_back();
        }
        dashes_.push_back(dash);
    }

    Stroke_Point point(std::size_t s, double at) const noexcept {
        const double length = starts_[s + 1] - starts_[s];
        const double t = length > 0 ? std::clamp((at - starts_[s]) / length, 0.0, 1.0) : 0;
        const Stroke_Point& a = line_[s];
        const Stroke_Point& b = line_[s + 1];
        Stroke_Point point{a.x + t * (b.x - a.x), a.y + t * (b.y - a.y), a.z + t * (b.z - a.z), a.color};
        if (colors_ == Stroke_Colors::per_point) {
            point.color = mixed(a.color, b.color, t);
        }
        return point;
    }

    // Whether its last pixel is drawn already, as the first one of the line.
    bool ends_drawn(const Dash& dash) const noexcept { return shortened_ && meets_itself_ && dash.last == total(); }

    // The distance from one pixel to the next.
    double step(std::size_t s) const noexcept {
        const double steps = std::max(std::abs(line_[s + 1].x - line_[s].x), std::abs(line_[s + 1].y - line_[s].y));
        return steps > 0 ? (starts_[s + 1] - starts_[s]) / steps : 0;
    }

    Stroke_Path path(const Dash& dash) const {
        double last = dash.last;
        if (shortened_ && !dash.goes_on && (last < total() || ends_drawn(dash))) {
            last = std::max({last - step(dash.last_segment), dash.first, starts_[dash.last_segment]});
        }
        Stroke_Path path{point(dash.first_segment, dash.first)};
        for (std::size_t s = dash.first_segment + 1; s <= dash.last_segment; ++s) {
            path.push_back(line_[s]);
        }
        path.push_back(point(dash.last_segment, last));
        return path;
    }

    const Stroke_Path& line_;
    const Dash_Pattern& pattern_;
    const Stroke_Colors colors_;
    const bool shortened_;
    const double repetition_;
    bool meets_itself_;          // the line ends where it begins, and its start is drawn
    std::vector<double> starts_; // distances of the vertices along the line
    std::vector<Dash> dashes_;   // all are visible, except perhaps the last one
};

bool is_plain(const VT_Reference<const VT_Line_Type>& type) noexcept {
    return !type || type == VT_Line_Type::None;
}

} // namespace

Dash_Pattern::Dash_Pattern(const VT_Line_Type& type, double scale)
    : leading(non_negative(type.leading[0] * scale)), trailing(non_negative(type.trailing[0] * scale)),
      has_end_dots(type.mode == 2), measures_depth(true) {
    for (std::size_t e = 0; e < std::min(type.lengths.size(), type.kinds.size()); ++e) {
        lengths.push_back(non_negative(type.lengths[e] * scale));
        kinds.push_back(type.kinds[e]);
    }
}

Dash_Pattern::Dash_Pattern(std::int32_t style, std::int32_t weight) {
    const double unit = std::max(weight, 1);
    const auto add = [&](double dash, double gap) {
        lengths.insert(lengths.end(), {dash * unit, gap * unit});
        kinds.insert(kinds.end(), {1, -1});
    };
    switch (style) {
    case line_style::dashed:
        add(6, 3);
        break;
    case line_style::dotted:
        add(1, 2);
        break;
    case line_style::dash_dot:
        add(6, 3);
        add(1, 3);
        break;
    case line_style::dash_dot_dot:
        add(6, 3);
        add(1, 2);
        add(1, 3);
        break;
    case line_style::long_dashed:
        add(12, 3);
        break;
    default:
        lengths = {unit};
        kinds = {1};
    }
}

bool Dash_Pattern::begins_drawn() const noexcept {
    if (leading > 0 || !(repetition() > 0)) {
        return leading > 0;
    }
    std::size_t e = 0;
    while (lengths[e] == 0 && kinds[e] != 0) {
        ++e;
    }
    return kinds[e] > 0 || (kinds[e] == 0 && !has_end_dots);
}

double Dash_Pattern::repetition() const noexcept {
    const double sum = std::accumulate(lengths.begin(), lengths.end(), 0.0);
    return sum > shortest_repetition && std::isfinite(sum) ? sum : 0;
}

bool Dash_Pattern::is_blank() const noexcept {
    return !kinds.empty() && std::all_of(kinds.begin(), kinds.end(), [](double kind) { return kind < 0; });
}

std::vector<Stroke_Path> cut_into_dashes(const Stroke_Path& line, const Dash_Pattern& pattern, Stroke_Colors colors,
                                         const VT_Int_Rectangle& rectangle, double margin, bool shortened) {
    return Cutter(line, pattern, colors, shortened).cut(rectangle, margin);
}

std::vector<Stroke_Path> cut_by_line_types(const Stroke_Path& line, const VT_Line_Type_Set& set,
                                           const VT_Int_Rectangle& rectangle, double margin, bool shortened) {
    const auto cut = [&](const Stroke_Path& part, const VT_Reference<const VT_Line_Type>& type) -> std::vector<Stroke_Path> {
        if (is_plain(type)) {
            return {part};
        }
        return cut_into_dashes(part, Dash_Pattern(*type, set.scale), Stroke_Colors::one, rectangle, margin, shortened);
    };
    std::vector<Stroke_Path> paths;
    if (!set.per_segment && line.size() > 2) {
        return set.types.empty() ? paths : cut(line, set.types[0]);
    }
    if (set.types.size() + 1 != line.size()) {
        return paths;
    }
    for (std::size_t s = 0; s + 1 < line.size(); ++s) {
        for (Stroke_Path& path : cut({line[s], line[s + 1]}, set.types[s])) {
            paths.push_back(std::move(path));
        }
    }
    return paths;
}

} // namespace vorna
