// Where the calls of a recording may draw.
#include "drawing/recording/call_areas.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <type_traits>
#include <utility>

#include "drawing/recording/call_kinds.h"
#include "drawing/recording/rendition_maker.h"
#include "drawing/recording/summary.h"
#include "vorna/call_rows.h"

namespace vorna::drawing::recording {

namespace {

// Beyond it the standard functions' floats do not hold coordinates to the last bit.
constexpr double farthest = 1 << 24;
constexpr std::int64_t farthest_margin = 1 << 20;

constexpr VT_Int_Rectangle everywhere{INT32_MIN, INT32_MAX, INT32_MIN, INT32_MAX};
constexpr VT_Int_Rectangle nowhere{0, -1, 0, -1};

VT_Int_Rectangle around(const VT_Int_Rectangle& pixels, std::int64_t margin) {
    const auto fits = [](std::int32_t side) { return side > -farthest && side < farthest; };
    if (is_empty(pixels) || margin > farthest_margin || !fits(pixels.left) || !fits(pixels.right) || !fits(pixels.bottom) ||
        !fits(pixels.top)) {
        return everywhere;
    }
    const auto by = static_cast<std::int32_t>(margin);
    return {pixels.left - by, pixels.right + by, pixels.bottom - by, pixels.top + by};
}

// Numbers that do not compare, or are far away, make a box of everything.
template <class Point> VT_Int_Rectangle around(const std::vector<Point>& points, std::int64_t margin) {
    if (points.empty()) {
        return nowhere;
    }
    using Number = decltype(Point::x);
    Number left = points[0].x, right = left, bottom = points[0].y, top = bottom;
    bool fits = true;
    for (const Point& point : points) {
        left = point.x < left ? point.x : left;
        right = point.x > right ? point.x : right;
        bottom = point.y < bottom ? point.y : bottom;
        top = point.y > top ? point.y : top;
        fits &= point.x > static_cast<Number>(-farthest) && point.x < static_cast<Number>(farthest) &&
                point.y > static_cast<Number>(-farthest) && point.y < static_cast<Number>(farthest);
    }
    if (!fits) {
        return everywhere;
    }
    const auto pixel = [](Number coordinate) { return static_cast<std::int32_t>(coordinate); };
    return around(VT_Int_Rectangle{pixel(left), pixel(right), pixel(bottom), pixel(top)}, margin);
}

Primitive primitive_of(const Call_Kind& kind) {
    static const auto primitives = [] {
        std::vector<Primitive> list;
#define VT_ACTION(slot, name, ...) list.push_back(vorna::primitive_of(#name));
#include "host/action_list.inc"
#undef VT_ACTION
        return list;
    }();
    return primitives[position_of(kind)];
}

} // namespace

class Call_Areas::Maker {
public:
    explicit Maker(const Recording& recording) : recording_(recording), attributes_(new VT_Rendition) {}

    Box box(const Call& call) {
        call_ = &call;
        return std::visit([this](const auto& arguments) { return box_of(arguments); }, call.arguments);
    }

private:
    struct Margins {
        std::int64_t line, marker;
    };

    template <class Arguments> Box box_of(const Arguments& a) {
        if constexpr (requires { a.points.size(); }) {
            const VT_Int_Rectangle box = around(a.points, margin());
            return {box, false, box == everywhere ? 0 : points_of_pieces(), margin()};
        } else if constexpr (requires { a.radii; }) {
            // Whatever its rotation, a shape stays as near to its centre as the longer radius is long.
            const VT_DCI_Point& center = a.center;
            const std::int64_t longer = std::max(std::abs(std::int64_t{a.radii.x}), std::abs(std::int64_t{a.radii.y}));
            return {around({center.x, center.x, center.y, center.y}, longer + margins().line), true};
        } else if constexpr (requires { a.point; }) {
            return {around({a.point.x, a.point.x, a.point.y, a.point.y}, rounding_margin)};
        } else if constexpr (requires { a.end; }) {
            return {around({a.start.x, a.end.x, a.end.y, a.start.y}, 0)};
        } else if constexpr (requires { a.depths; }) {
            return {around({a.top_left.x, a.bottom_right.x, a.bottom_right.y, a.top_left.y}, 0)};
        } else if constexpr (std::is_same_v<Arguments, Window_Fill> || std::is_same_v<Arguments, Depth_Clear>) {
            return {around(a.rectangle, rounding_margin)};
        } else if constexpr (std::is_same_v<Arguments, Placed_Image>) {
            return {everywhere}; // may be stretched over the window
        } else {
            return {nowhere};
        }
    }

    std::int32_t points_of_pieces() const {
        switch (primitive_of(*call_->kind)) {
        case Primitive::polymarker:
            return 1;
        case Primitive::polyline:
            return 2;
        case Primitive::polytriangle:
            return 3;
        default:
            return 0;
        }
    }

    std::int64_t margin() {
        switch (primitive_of(*call_->kind)) {
        case Primitive::polyline:
            return margins().line;
        case Primitive::polymarker:
            return margins().marker;
        default:
            return rounding_margin;
        }
    }

    Margins margins() {
        const Rendition& all = recording_.rendition;
        const Rendition* const own = call_->rendition.get();
        const auto overlaid_by = [&](auto group, auto key) {
            return own && (own->*group.*key) ? own->*group.*key : all.*group.*key;
        };
        attributes_->line.weight = overlaid_by(&Rendition::line, &Line::weight).value_or(1);
        attributes_->marker.size = overlaid_by(&Rendition::marker, &Marker::size).value_or(1);
        attributes_->line.line_types = VT_Line_Type_Set::None;
        if (all.line.line_types || (own && own->line.line_types)) {
            VT_Reference<const VT_Line_Type_Set>& types = line_types_[own]; // calls share renditions
            if (!types) {
                types = renditions_.make(own ? overlaid(all, *own) : all, VT_Renderer_Options())->line.line_types;
            }
            attributes_->line.line_types = types;
        }
        return {vorna::margin_of(Primitive::polyline, *attributes_), vorna::margin_of(Primitive::polymarker, *attributes_)};
    }

    const Recording& recording_;
    const VT_Reference<VT_Rendition> attributes_;
    Rendition_Maker renditions_;
    std::map<const Rendition*, VT_Reference<const VT_Line_Type_Set>> line_types_;
    const Call* call_ = nullptr;
};

Call_Areas::Call_Areas(const Recording& recording) : recording_(recording) {
    Maker maker(recording);
    boxes_.reserve(recording.calls.size());
    for (const Call& call : recording.calls) {
        boxes_.push_back(maker.box(call));
    }
}

// A far window has shapes that are drawn as polylines in device coordinates, where floats are too coarse.
VT_Int_Rectangle Call_Areas::placed(const Box& box, const VT_Int_Rectangle& window) noexcept {
    if (!box.counts_from_window || box.pixels == everywhere) {
        return box.pixels;
    }
    if (std::abs(std::int64_t{window.left}) >= 1 << 24 || std::abs(std::int64_t{window.bottom}) >= 1 << 24) {
        return everywhere;
    }
    return {box.pixels.left + window.left, box.pixels.right + window.left, box.pixels.bottom + window.bottom,
            box.pixels.top + window.bottom};
}

VT_Int_Rectangle Call_Areas::area(std::size_t call, const VT_Int_Rectangle& window) const noexcept {
    return common_part(placed(boxes_[call], window), window);
}

std::size_t Call_Areas::pieces(std::size_t call) const noexcept {
    const auto points = static_cast<std::size_t>(boxes_[call].piece_points);
    const std::size_t count = points_of(recording_.calls[call]);
    return points == 0 || count < points ? 1 : count - points + 1;
}

bool Call_Areas::may_change(std::size_t call, VT_Int_Pair pixel) const noexcept {
    const Box& box = boxes_[call];
    if (box.piece_points == 0) {
        return true;
    }
    return std::visit(
        [&](const auto& arguments) {
            if constexpr (requires { arguments.points.size(); }) {
                // The whole numbers of boxes are rounded towards 0.
                const double reach = static_cast<double>(box.margin) + 1;
                const auto points = static_cast<std::size_t>(box.piece_points);
                const auto is_near = [&](std::size_t first, auto coordinate, double place) {
                    double least = static_cast<double>(arguments.points[first].*coordinate), most = least;
                    for (std::size_t i = first + 1; i < first + points; ++i) {
                        const auto each = static_cast<double>(arguments.points[i].*coordinate);
                        least = std::min(least, each);
                        most = std::max(most, each);
                    }
                    return place >= least - reach && place <= most + reach;
                };
                using Point = std::decay_t<decltype(arguments.points[0])>;
                if (arguments.points.size() < points) {
                    return true;
                }
                for (std::size_t i = 0; i + points <= arguments.points.size(); ++i) {
                    if (is_near(i, &Point::x, pixel.x) && is_near(i, &Point::y, pixel.y)) {
                        return true;
                    }
                }
                return false;
            } else {
                return true;
            }
        },
        recording_.calls[call].arguments);
}

bool Call_Areas::is_inside(std::size_t call, const VT_Int_Rectangle& window) const noexcept {
    const VT_Int_Rectangle area = placed(boxes_[call], window);
    return common_part(area, window) == area;
}

} // namespace vorna::drawing::recording
