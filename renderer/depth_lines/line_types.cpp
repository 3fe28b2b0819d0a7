// Polylines with line types: cut into plain pieces, which are drawn one by one.
#include "renderer/depth_lines/line_types.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "host/segment_clip.h"

namespace krb {

namespace {

// Lengths that differ by no more than this are equal: sums in another order differ by less.
constexpr double threshold = 1e-12F;

// A place along the polyline. It moves by unit vector times distance and is not drawn back to the vertices that it passes.
struct Place {
    double x, y, z;

    Place moved(const VT_Vector_D& unit, double distance) const noexcept {
        return {x + unit.x * distance, y + unit.y * distance, z + unit.z * distance};
    }
    // Truncated. Sums may lie a little outside the range of 32-bit integers.
    VT_DCI_Point pixel() const noexcept {
        const auto whole = [](double v) { return static_cast<std::int32_t>(std::clamp<double>(v, INT32_MIN, INT32_MAX)); };
        return {whole(x), whole(y), whole(z)};
    }
};

// Patterns that repeat within this many pixels or less are not walked, since that would take very long on long lines. Such a
// pattern of gaps only draws nothing. Where it has dashes or dots, its gaps are invisible, and the trailing part is drawn instead
// of the repeating one.
constexpr double shortest_pattern = 1.0 / 1024;

// A segment of more elements than this is walked near the window only; one that has as many even there is not walked at all.
// Every other segment is walked as a whole, so that its pieces do not depend on the window. Wide dashes take longer.
constexpr double most_elements = 1 << 18;
constexpr double most_wide_elements = 1 << 15;
// In a polyline as long as more than this many segments of so many elements, every segment is walked near the window only: arcs
// of the largest radii have a hundred thousand segments.
constexpr double most_full_segments = 16;

// Gathers pieces and draws them in batches, so that a long polyline needs no more memory than a short one.
class Pieces {
public:
    Pieces(const VT_Rendition& rendition, const VT_Int_Rectangle& window, const Draw_Plain_Polyline& draw)
        : rendition_(new VT_Rendition(rendition)), draw_(draw), window_(window),
          margin_(2.0 * std::max(rendition.line.weight, 1) + 2) {
        rendition_->line.line_types = VT_Line_Type_Set::None;
    }

    double most_elements_walked() const noexcept { return rendition_->line.weight > 1 ? most_wide_elements : most_elements; }

    // Where pieces of the line that runs from a place along a unit vector can be seen, as distances from its start.
    vorna::Segment_Part visible_part(const Place& from, const VT_Vector_D& unit, double length) const noexcept {
        vorna::Segment_Part part = vorna::part_near(window_, margin_, from, unit, length);
        // A piece of any width reaches no farther along the line than its caps.
        const double cap = rendition_->line.cap == vorna::line_cap::butt ? 4 : margin_;
        const auto range = [](double speed, double low, double high) { return std::minmax({speed * low, speed * high}); };
        const auto [left, right] = range(unit.x, window_.left - cap, window_.right + cap);
        const auto [bottom, top] = range(unit.y, window_.bottom - cap, window_.top + cap);
        part.cut_between(unit.x * from.x + unit.y * from.y, unit.x * unit.x + unit.y * unit.y, left + bottom, right + top);
        return part;
    }

    void add(const VT_DCI_Point& from, const VT_DCI_Point& to) {
        if (count_ == capacity) {
            draw_all();
        }
        points_[count_++] = from;
        points_[count_++] = to;
    }
    void add_dash(const Place& from, const Place& to) { add(from.pixel(), to.pixel()); }
    void add_dot(const Place& at) { add_dash(at, at); }

    void draw_all() {
        for (int i = 0; i < count_; i += 2) {
            draw_(rendition_.get(), 2, points_ + i);
        }
        count_ = 0;
    }

private:
    static constexpr int capacity = 256;

    VT_Reference<VT_Rendition> rendition_;
    const Draw_Plain_Polyline& draw_;
    const VT_Int_Rectangle window_;
    const double margin_;
    VT_DCI_Point points_[capacity];
    int count_ = 0;
};

struct Segment {
    VT_Vector_D direction;
    double length;

    Segment(const VT_DCI_Point& from, const VT_DCI_Point& to) noexcept
        : direction{double(to.x) - from.x, double(to.y) - from.y, double(to.z) - from.z},
          length(std::sqrt(direction.x * direction.x + direction.y * direction.y + direction.z * direction.z)) {}
};

double length_of(std::int32_t count, const VT_DCI_Point* points) noexcept {
    const auto length = [points](std::int32_t i) { return Segment(points[i], points[i + 1]).length; };
    double total = 0;
    std::int32_t i = 0;
    for (; i + 4 < count; i += 4) {
        total += length(i) + length(i + 1) + length(i + 2) + length(i + 3);
    }
    for (; i + 1 < count; ++i) {
        total += length(i);
    }
    return total;
}

// The set holds a reference to the type, so a scaled type is always a copy.
VT_Reference<VT_Line_Type> scaled_copy(const VT_Line_Type& type, double scale) {
    VT_Reference<VT_Line_Type> copy(static_cast<VT_Line_Type*>(type.clone()));
    copy->scale(scale);
    for (double& length : copy->lengths) {
        length = std::max(length, 0.0);
    }
    return copy;
}

// Walks a line type along a polyline: a leading part, the repeating elements, a trailing part. What has been covered carries over
// from segment to segment.
class Walker {
public:
    // total: the length of the polyline; 0 = that of the first segment.
    Walker(const VT_Line_Type& type, double total) noexcept
        : type_(type), total_(total), element_count_(std::min(type.lengths.size(), type.kinds.size())),
          repetition_(length_before(element_count_)) {
        if (!(repetition_ > shortest_pattern)) {
            const auto is_gap = [](double kind) { return kind < 0; };
            is_blank_ = element_count_ > 0 &&
                        std::all_of(type_.kinds.begin(), type_.kinds.begin() + std::ptrdiff_t(element_count_), is_gap);
            element_count_ = 0;
        }
    }

    void walk(const VT_DCI_Point& from, const VT_DCI_Point& to, Pieces& pieces) {
        const Segment segment(from, to);
        VT_Vector_D unit = segment.direction;
        unit.normalize();
        total_ = total_ == 0 ? segment.length : total_;
        Place at{double(from.x), double(from.y), double(from.z)};

        const double leading = std::max(std::min(segment.length, type_.leading[0] - covered_), 0.0);
        if (leading > threshold) {
            const Place end = at.moved(unit, leading);
            if (!has_end_dots()) {
                pieces.add_dash(at, end);
            } else if (covered_ <= threshold) {
                pieces.add_dot(at);
            }
            at = end;
            covered_ += leading;
        }
        double repeated = std::min(segment.length - leading, total_ - covered_ - type_.trailing[0]);
        if (repeated > threshold && element_count_ > 0) {
            at = repeat(at, unit, repeated, pieces);
        } else if (repeated > threshold && is_blank_) {
            at = at.moved(unit, repeated);
            covered_ += repeated;
        } else {
            repeated = 0;
        }
        const double trailing = std::min(segment.length - leading - repeated, total_ - covered_);
        if (trailing > threshold) {
            const Place end = at.moved(unit, trailing);
            covered_ += trailing;
            if (!has_end_dots()) {
                pieces.add_dash(at, end);
            } else if (is_at(covered_, total_)) {
                pieces.add_dot(end);
            }
        }
    }

private:
    static bool is_at(double a, double b) noexcept { return std::abs(a - b) <= threshold; }

    // Then leading and trailing parts show a dot at the polyline's ends and no dash.
    bool has_end_dots() const noexcept { return type_.mode == 2; }

    double length_before(std::size_t element) const noexcept {
        return std::accumulate(type_.lengths.begin(), type_.lengths.begin() + std::ptrdiff_t(element), 0.0);
    }

    // Continues with the element at which the last segment ended. Returns the place where the elements end.
    Place repeat(const Place& at, const VT_Vector_D& unit, double distance, Pieces& pieces) {
        const double longest = pieces.most_elements_walked() / static_cast<double>(element_count_) * repetition_;
        if (distance <= longest && total_ <= most_full_segments * longest) {
            return repeat_all(at, unit, distance, pieces);
        }
        const vorna::Segment_Part part = pieces.visible_part(at, unit, distance);
        const double first = std::max(part.entering - repetition_, 0.0);
        const double last = std::min(part.leaving + repetition_, distance);
        if (!part.is_visible() || last - first > longest) {
            pass(distance);
        } else {
            pass(first);
            repeat_all(at.moved(unit, first), unit, last - first, pieces);
            pass(distance - last);
        }
        return at.moved(unit, distance);
    }

    // Advances without drawing.
    void pass(double distance) noexcept {
        covered_ += distance;
        double left = std::fmod(length_before(element_) + consumed_ + distance, repetition_);
        element_ = 0;
        while (element_ + 1 < element_count_ && left >= type_.lengths[element_]) {
            left -= type_.lengths[element_++];
        }
        consumed_ = std::min(left, type_.lengths[element_]);
    }

    Place repeat_all(Place at, const VT_Vector_D& unit, double distance, Pieces& pieces) {
        double remaining = distance;
        do {
            const double length = type_.lengths[element_] - consumed_;
            const double kind = type_.kinds[element_];
            const double advance = std::min(remaining, length);
            const Place end = at.moved(unit, advance);
            if (kind > 0) {
                pieces.add_dash(at, end);
            } else if (kind == 0 && !is_end_dots_place(covered_ + (distance - remaining))) {
                pieces.add_dot(at);
            }
            at = end;
            remaining -= advance;
            if (advance < length) {
                consumed_ += advance;
            } else {
                consumed_ = 0;
                element_ = element_ + 1 < element_count_ ? element_ + 1 : 0;
            }
        } while (remaining > 0);
        covered_ += distance;
        return at;
    }

    // Where the repeating part meets the others these have their dots already.
    bool is_end_dots_place(double covered) const noexcept {
        return has_end_dots() && (is_at(covered, type_.leading[0]) || is_at(covered, total_ - type_.trailing[0]));
    }

    const VT_Line_Type& type_;
    double total_;
    double covered_ = 0;
    std::size_t element_count_;
    double repetition_;       // length of all elements
    bool is_blank_ = false;   // gaps that are too short to be walked one by one
    std::size_t element_ = 0; // the phase: the current element
    double consumed_ = 0;     // and the length of it that is used
};

bool is_plain(const VT_Reference<const VT_Line_Type>& type) noexcept {
    return !type || type == VT_Line_Type::None;
}

// A segment without a type stays as it is.
void cut_each_segment(const VT_Line_Type_Set& set, std::int32_t count, const VT_DCI_Point* points, Pieces& pieces) {
    if (set.types.size() + 1 != static_cast<std::size_t>(count)) {
        return;
    }
    const VT_Line_Type* copied = nullptr; // segments that share a type share its copy
    VT_Reference<VT_Line_Type> scaled;
    for (std::int32_t i = 0; i + 1 < count; ++i) {
        const VT_Reference<const VT_Line_Type>& type = set.types[static_cast<std::size_t>(i)];
        if (is_plain(type)) {
            pieces.add(points[i], points[i + 1]);
            continue;
        }
        if (copied != type.get()) {
            scaled = scaled_copy(*type, set.scale);
            copied = type.get();
        }
        Walker(*scaled, 0).walk(points[i], points[i + 1], pieces);
    }
}

void cut_along(const VT_Line_Type_Set& set, std::int32_t count, const VT_DCI_Point* points, Pieces& pieces) {
    if (set.types.empty()) {
        return;
    }
    if (is_plain(set.types[0])) {
        for (std::int32_t i = 0; i + 1 < count; ++i) {
            pieces.add(points[i], points[i + 1]);
        }
        return;
    }
    const VT_Reference<VT_Line_Type> scaled = scaled_copy(*set.types[0], set.scale);
    Walker walker(*scaled, length_of(count, points));
    for (std::int32_t i = 0; i + 1 < count; ++i) {
        walker.walk(points[i], points[i + 1], pieces);
    }
}

} // namespace

void draw_by_line_types(const VT_Rendition& rendition, const VT_Int_Rectangle& window, std::int32_t count,
                        const VT_DCI_Point* points, const Draw_Plain_Polyline& draw) {
    // A reference of its own, since drawing may change the caller's rendition.
    const VT_Reference<const VT_Line_Type_Set> set = rendition.line.line_types;
    Pieces pieces(rendition, window, draw);
    if (set->per_segment || count < 3) {
        cut_each_segment(*set, count, points, pieces);
    } else {
        cut_along(*set, count, points, pieces);
    }
    pieces.draw_all();
}

} // namespace krb
