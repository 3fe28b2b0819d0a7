// Texts along lines.
#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

#include "drawing/map/labels.h"

namespace vorna::drawing::map {
namespace {

Position between(Position a, Position b, double share) {
    return {a.x + (b.x - a.x) * share, a.y + (b.y - a.y) * share};
}

// A letter's box, which may be turned.
struct Turned_Box {
    std::array<Position, 4> corners;
};

// Whether the boxes have more in common than a side: then no line parallel to one of their sides parts them.
bool overlap(const Turned_Box& a, const Turned_Box& b) {
    for (const Turned_Box* box : {&a, &b}) {
        for (const std::size_t side : {0U, 1U}) {
            const Position from = box->corners[side], to = box->corners[side + 1];
            const auto along = [&](Position p) { return (p.x - from.x) * (to.x - from.x) + (p.y - from.y) * (to.y - from.y); };
            const auto [a_low, a_high] = std::ranges::minmax(a.corners, {}, along);
            const auto [b_low, b_high] = std::ranges::minmax(b.corners, {}, along);
            if (along(a_high) <= along(b_low) || along(b_high) <= along(a_low)) {
                return false;
            }
        }
    }
    return true;
}

} // namespace

// Points at equal distances, of which each becomes the mean of those around it; both ends stay.
Text_Line::Text_Line(const Path& pixels, double smoothing) : points_(pixels) {
    const auto measure = [this] {
        distances_.clear();
        double distance = 0;
        for (std::size_t i = 0; i < points_.size(); ++i) {
            distance += i == 0 ? 0
                               : std::sqrt((points_[i].x - points_[i - 1].x) * (points_[i].x - points_[i - 1].x) +
                                           (points_[i].y - points_[i - 1].y) * (points_[i].y - points_[i - 1].y));
            distances_.push_back(distance);
        }
    };
    measure();
    constexpr double most_points = 1 << 16;
    constexpr std::ptrdiff_t reach = 4;
    const double step = std::max(smoothing / (2 * reach), length() / most_points);
    if (!(length() > step) || !std::isfinite(length())) {
        return;
    }
    const auto count = static_cast<std::ptrdiff_t>(length() / step);
    Path even;
    for (std::ptrdiff_t i = 0; i <= count; ++i) {
        even.push_back(at(length() * static_cast<double>(i) / static_cast<double>(count)));
    }
    points_ = even;
    for (std::ptrdiff_t i = 0; i <= count; ++i) {
        const std::ptrdiff_t beside = std::min({reach, i, count - i});
        Position sum;
        for (std::ptrdiff_t j = i - beside; j <= i + beside; ++j) {
            sum = {sum.x + even[static_cast<std::size_t>(j)].x, sum.y + even[static_cast<std::size_t>(j)].y};
        }
        const auto terms = static_cast<double>(2 * beside + 1);
        points_[static_cast<std::size_t>(i)] = {sum.x / terms, sum.y / terms};
    }
    measure();
}

Position Text_Line::at(double distance) const {
    const auto above = std::ranges::lower_bound(distances_, distance) - distances_.begin();
    const auto next = static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(above, 1, std::ssize(points_) - 1));
    const double from = distances_[next - 1], to = distances_[next];
    return between(points_[next - 1], points_[next], to > from ? std::clamp((distance - from) / (to - from), 0.0, 1.0) : 0);
}

std::optional<Text_On_Line> Text_Line::place(const Text& text, double height, double middle, double margin) const {
    constexpr double steepest_bend = 0.87; // cosine of the angle between neighbouring letters, about 30 degrees
    const double start = middle - text.width / 2, end = middle + text.width / 2;
    if (points_.size() < 2 || start < 0 || end > length() || text.letters.empty()) {
        return std::nullopt;
    }
    const Position first = at(start), last = at(end);
    // Steep texts are read from below, that is with the head tilted to the left.
    const double across = last.x - first.x, up = last.y - first.y;
    const bool backwards = std::abs(across) > 1e-3 * std::abs(up) ? across < 0 : up < 0;
    const auto on_line = [&](double pen) { return at(backwards ? end - pen : start + pen); };
    Text_On_Line result;
    std::vector<Turned_Box> boxes;
    Position before;
    for (std::size_t i = 0; i < text.letters.size(); ++i) {
        const Letter& letter = text.letters[i];
        const Position from = on_line(letter.start), to = on_line(letter.end);
        const Position centre = on_line((letter.start + letter.end) / 2);
        const double chord = std::sqrt((to.x - from.x) * (to.x - from.x) + (to.y - from.y) * (to.y - from.y));
        const Position along = chord > 0 ? Position{(to.x - from.x) / chord, (to.y - from.y) / chord} : before;
        if (along == Position{} || (i > 0 && along.x * before.x + along.y * before.y < steepest_bend)) {
            return std::nullopt;
        }
        before = along;
        const auto turned = [&](double x, double y) {
            return Position{centre.x + x * along.x - y * along.y, centre.y + x * along.y + y * along.x};
        };
        const double half = (letter.end - letter.start) / 2, low = -height / 2;
        result.letters.push_back({letter.outline,
                                  turned(letter.at.x - letter.start - half, low + letter.at.y),
                                  {along.x * text.size, along.y * text.size}});
        if (i > 0 && letter.start == text.letters[i - 1].start) {
            continue; // stands on the letter before
        }
        // Letters are narrower than their part of the base line.
        const double inner = half * 0.9;
        const Turned_Box box{{turned(-inner, low), turned(inner, low), turned(inner, -low), turned(-inner, -low)}};
        constexpr std::size_t most_near = 8;
        for (std::size_t other = boxes.size() - std::min(boxes.size(), most_near); other < boxes.size(); ++other) {
            if (overlap(box, boxes[other])) {
                return std::nullopt;
            }
        }
        boxes.push_back(box);
        const auto [left, right] = std::ranges::minmax(box.corners, {}, &Position::x);
        const auto [bottom, top] = std::ranges::minmax(box.corners, {}, &Position::y);
        const auto whole = [](double value) { return static_cast<std::int32_t>(std::floor(std::clamp(value, -1e9, 1e9))); };
        result.boxes.push_back(
            {whole(left.x - margin), whole(right.x + margin), whole(bottom.y - margin), whole(top.y + margin)});
    }
    // A line that turns back reads neither forwards nor backwards.
    const Placed_Letter &head = result.letters.front(), &tail = result.letters.back();
    if (head.along.x * tail.along.x + head.along.y * tail.along.y < 0) {
        return std::nullopt;
    }
    return result;
}

} // namespace vorna::drawing::map
