// Wide lines as sets of pixels: convex pieces for segments, joins and caps, scanned together row by row. Pieces overlap,
// therefore none is drawn separately.
#include "vorna/standard/stroke.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>

#include "host/rendition.h"
#include "vorna/standard/conversion.h"

namespace vorna {

namespace {

struct Place {
    double x, y;
};

// A convex polygon, or a disc around its only corner. Depths and colours of a segment change from one end to the other; those of
// a join or cap are those of its vertex.
struct Piece {
    Place corners[4] = {};
    int count = 0; // of corners; 1 = a disc
    double bottom = 0, top = 0;
    Stroke_Point from = {}, to = {};
    Place ramp = {}; // gradient of the parameter from 0 at one end to 1 at the other
    // Larger keys cover smaller ones. Segments have odd keys k, the joins and caps at their ends k - 3 and k - 1.
    std::int64_t key = 0;

    double way(double x, double y) const noexcept { return std::clamp((x - from.x) * ramp.x + (y - from.y) * ramp.y, 0.0, 1.0); }
    double depth(double x, double y) const noexcept { return from.z + way(x, y) * (to.z - from.z); }
    VT_RGB32 color(double x, double y) const noexcept { return mixed(from.color, to.color, way(x, y)); }
    bool is_end_of(const Piece& segment) const noexcept { return key + 1 == segment.key || key + 3 == segment.key; }
};

// Rounds a coordinate, so that pieces with a common side compute the same positions on it and meet without a gap.
double on_grid(double x) noexcept {
    return std::nearbyint(x * 1048576) / 1048576;
}

// The part of a row inside the piece, from left, inclusive, to right, exclusive. Lower edges belong to it, upper ones do not.
bool cross(const Piece& piece, double y, double& left, double& right, double radius) noexcept {
    if (piece.count == 1) {
        const double offset = y - piece.corners[0].y;
        if (!(std::abs(offset) <= radius)) {
            return false;
        }
        const double half = std::sqrt((radius - offset) * (radius + offset));
        left = on_grid(piece.corners[0].x - half);
        right = on_grid(piece.corners[0].x + half);
        return left < right;
    }
    int crossings = 0;
    for (int i = 0; i < piece.count; ++i) {
        const Place* low = &piece.corners[i];
        const Place* high = &piece.corners[i + 1 < piece.count ? i + 1 : 0];
        if (low->y > high->y) {
            std::swap(low, high);
        }
        if (low->y <= y && y < high->y) {
            const double x = on_grid(low->x + (high->x - low->x) * ((y - low->y) / (high->y - low->y)));
            left = crossings == 0 ? x : std::min(left, x);
            right = crossings == 0 ? x : std::max(right, x);
            ++crossings;
        }
    }
    return crossings > 1 && left < right;
}

// Makes the pieces of paths and keeps the visible ones.
class Outline {
public:
    Outline(const Stroke_Pen& pen, const VT_Int_Rectangle& rectangle)
        : pen_(pen), rectangle_(rectangle), radius_(pen.weight / 2.0), shift_(pen.weight % 2 == 0 ? -0.5 : 0) {}

    void add(const Stroke_Path& path) {
        std::vector<Stroke_Point> points;
        for (Stroke_Point point : path) {
            point.x += shift_;
            point.y += shift_;
            if (!points.empty() && points.back().x == point.x && points.back().y == point.y) {
                points.back() = point;
            } else {
                points.push_back(point);
            }
        }
        if (points.size() == 1) {
            add_dot(points[0]);
        } else if (points.size() > 1) {
            add_chain(points);
        }
        key_ += 2 * static_cast<std::int64_t>(points.size()) + 6;
    }

    std::vector<Piece> take() { return std::move(pieces_); }

private:
    struct Direction {
        double x, y, length;
    };

    static Direction direction(const Stroke_Point& from, const Stroke_Point& to) noexcept {
        const double x = to.x - from.x;
        const double y = to.y - from.y;
        const double length = std::sqrt(x * x + y * y);
        return {x / length, y / length, length};
    }

    void add_dot(const Stroke_Point& point) {
        if (pen_.cap == line_cap::round) {
            add_disc(point, key_);
        } else {
            const double r = radius_;
            add_polygon(
                point, key_,
                {{point.x - r, point.y - r}, {point.x + r, point.y - r}, {point.x + r, point.y + r}, {point.x - r, point.y + r}});
        }
    }

    void add_chain(const std::vector<Stroke_Point>& points) {
        const std::size_t segments = points.size() - 1;
        const Stroke_Point& start = points.front();
        const Stroke_Point& end = points.back();
        const bool is_closed = segments > 2 && start.x == end.x && start.y == end.y && start.z == end.z;
        // Directions are worked out where something may be seen.
        std::optional<Direction> before;
        for (std::size_t s = 0; s < segments; ++s) {
            if (lies_beyond_rows(points[s], points[s + 1])) {
                before.reset();
                continue;
            }
            const Direction along = direction(points[s], points[s + 1]);
            const auto key = key_ + 2 * static_cast<std::int64_t>(s);
            if (s > 0) {
                add_join(points[s], before ? *before : direction(points[s - 1], points[s]), along, key);
            }
            add_segment(points[s], points[s + 1], along, key + 3);
            before = along;
        }
        const Direction first = direction(points[0], points[1]), last = direction(points[segments - 1], end);
        if (is_closed) {
            add_join(start, last, first, key_);
        } else {
            add_cap(start, {-first.x, -first.y, 0}, key_);
            add_cap(end, last, key_ + 2 * static_cast<std::int64_t>(segments));
        }
    }

    // Whether neither the segment nor a join at its ends, which reaches at most four times half the weight from it, has a pixel
    // in the rows of the rectangle.
    bool lies_beyond_rows(const Stroke_Point& from, const Stroke_Point& to) const noexcept {
        const double reach = 4 * radius_ + 2;
        return std::max(from.y, to.y) + reach < rectangle_.bottom || std::min(from.y, to.y) - reach > rectangle_.top;
    }

    void add_segment(const Stroke_Point& from, const Stroke_Point& to, const Direction& along, std::int64_t key) {
        Piece piece = band(from, to, along);
        piece.from = from;
        piece.to = to;
        if (pen_.colors != Stroke_Colors::per_point) {
            piece.to.color = from.color;
        }
        piece.ramp = {along.x / along.length, along.y / along.length};
        piece.key = key;
        keep(piece);
    }

    void add_cap(const Stroke_Point& point, const Direction& outwards, std::int64_t key) {
        if (pen_.cap == line_cap::round) {
            add_disc(point, key);
        } else if (pen_.cap == line_cap::square) {
            Stroke_Point beyond = point;
            beyond.x += outwards.x * radius_;
            beyond.y += outwards.y * radius_;
            Piece piece = band(point, beyond, outwards);
            piece.from = piece.to = point;
            piece.key = key;
            keep(piece);
        }
    }

    void add_join(const Stroke_Point& point, const Direction& in, const Direction& out, std::int64_t key) {
        const double turn = in.x * out.y - in.y * out.x;
        const double cosine = in.x * out.x + in.y * out.y;
        if (turn == 0 && cosine > 0) {
            return;
        }
        if (pen_.join != line_join::miter && pen_.join != line_join::bevel) {
            add_disc(point, key);
            return;
        }
        // The outer side of a left turn is on the right.
        const double side = turn > 0 ? radius_ : -radius_;
        const Place a{point.x + in.y * side, point.y - in.x * side};
        const Place b{point.x + out.y * side, point.y - out.x * side};
        // The tip lies sqrt(2 / (1 + cosine)) times half the weight from the vertex; a miter reaches at most 4 times.
        if (pen_.join == line_join::miter && 2 <= 16 * (1 + cosine)) {
            const double reach = side / (1 + cosine);
            add_polygon(point, key,
                        {{point.x, point.y}, a, {point.x + (in.y + out.y) * reach, point.y - (in.x + out.x) * reach}, b});
        } else {
            add_polygon(point, key, {{point.x, point.y}, a, b});
        }
    }

    Piece band(const Stroke_Point& from, const Stroke_Point& to, const Direction& along) const {
        const double x = along.y * radius_;
        const double y = -along.x * radius_;
        Piece piece;
        set_corners(piece, {{from.x + x, from.y + y}, {to.x + x, to.y + y}, {to.x - x, to.y - y}, {from.x - x, from.y - y}});
        return piece;
    }

    void add_disc(const Stroke_Point& point, std::int64_t key) { add_polygon(point, key, {{point.x, point.y}}); }

    void add_polygon(const Stroke_Point& point, std::int64_t key, std::initializer_list<Place> corners) {
        Piece piece;
        set_corners(piece, corners);
        piece.from = piece.to = point;
        piece.key = key;
        keep(piece);
    }

    static void set_corners(Piece& piece, std::initializer_list<Place> corners) {
        for (const Place& corner : corners) {
            piece.corners[piece.count++] = corner;
        }
    }

    void keep(Piece& piece) {
        const double reach = piece.count == 1 ? radius_ : 0;
        Place low = piece.corners[0];
        Place high = low;
        for (int i = 1; i < piece.count; ++i) {
            low = {std::min(low.x, piece.corners[i].x), std::min(low.y, piece.corners[i].y)};
            high = {std::max(high.x, piece.corners[i].x), std::max(high.y, piece.corners[i].y)};
        }
        piece.bottom = low.y - reach;
        piece.top = high.y + reach;
        if (piece.top >= rectangle_.bottom - 1.0 && piece.bottom <= rectangle_.top + 1.0 &&
            high.x + reach >= rectangle_.left - 1.0 && low.x - reach <= rectangle_.right + 1.0) {
            pieces_.push_back(piece);
        }
    }

    const Stroke_Pen& pen_;
    const VT_Int_Rectangle rectangle_;
    const double radius_, shift_;
    std::vector<Piece> pieces_;
    std::int64_t key_ = 0;
};

// Rows of pixels. A row is gathered from all pieces that reach it, then drawn.
class Row_Scan {
public:
    Row_Scan(const Stroke_Pen& pen, const VT_Int_Rectangle& rectangle, const std::function<void(const Stroke_Run&)>& draw)
        : pen_(pen), rectangle_(rectangle), draw_(draw), samples_(pen.smoothed ? 8 : 1),
          tracks_owner_(pen.has_depth || pen.colors != Stroke_Colors::one),
          pixels_(static_cast<std::size_t>(std::int64_t{rectangle.right} - rectangle.left + 1)) {}

    void scan(std::vector<Piece> pieces) {
        std::stable_sort(pieces.begin(), pieces.end(), [](const Piece& a, const Piece& b) { return a.bottom < b.bottom; });
        std::vector<const Piece*> active;
        std::size_t next = 0;
        for (std::int64_t y = rectangle_.bottom; y <= rectangle_.top; ++y) {
            const auto height = static_cast<double>(y);
            if (active.empty()) {
                if (next == pieces.size()) {
                    return;
                }
                // Skips to the row where the next piece begins.
                if (pieces[next].bottom > height + 1) {
                    y = std::min<std::int64_t>(static_cast<std::int64_t>(std::floor(pieces[next].bottom)) - 1, rectangle_.top);
                    continue;
                }
            }
            for (; next < pieces.size() && pieces[next].bottom <= height + 0.5; ++next) {
                active.push_back(&pieces[next]);
            }
            std::erase_if(active, [height](const Piece* piece) { return piece->top < height - 0.5; });
            for (int j = 0; j < samples_; ++j) {
                for (const Piece* piece : active) {
                    cover(*piece, height, j);
                }
            }
            draw_row(static_cast<std::int32_t>(y));
        }
    }

private:
    struct Pixel {
        std::uint64_t covered = 0; // one bit for each sampling point
        const Piece* owner = nullptr;
    };

    void cover(const Piece& piece, double height, int sample_row) {
        double left, right;
        if (!cross(piece, height + (sample_row + 0.5) / samples_ - 0.5, left, right, pen_.weight / 2.0)) {
            return;
        }
        const auto limit = static_cast<double>(pixels_.size()) * samples_;
        const auto sample_from = [&](double x) {
            const double sample = std::ceil((x - rectangle_.left + 0.5) * samples_ - 0.5);
            return static_cast<std::int64_t>(std::clamp(sample, 0.0, limit));
        };
        const std::int64_t first = sample_from(left);
        const std::int64_t end = sample_from(right);
        if (first >= end) {
            return;
        }
        const std::int64_t first_pixel = first / samples_;
        const std::int64_t last_pixel = (end - 1) / samples_;
        for (std::int64_t p = first_pixel; p <= last_pixel; ++p) {
            const int low = static_cast<int>(std::max<std::int64_t>(first - p * samples_, 0));
            const int high = static_cast<int>(std::min<std::int64_t>(end - p * samples_, samples_));
            Pixel& pixel = pixels_[static_cast<std::size_t>(p)];
            pixel.covered |= ((std::uint64_t{1} << high) - (std::uint64_t{1} << low)) << (sample_row * samples_);
            if (!pixel.owner || (tracks_owner_ && pixel.owner != &piece &&
                                 wins(piece, *pixel.owner, rectangle_.left + static_cast<double>(p), height))) {
                pixel.owner = &piece;
            }
        }
        first_ = std::min(first_, first_pixel);
        last_ = std::max(last_, last_pixel);
    }

    bool wins(const Piece& piece, const Piece& over, double x, double y) const noexcept {
        if (piece.is_end_of(over) || over.is_end_of(piece)) {
            return over.is_end_of(piece);
        }
        if (pen_.has_depth) {
            const double depth = piece.depth(x, y);
            const double other = over.depth(x, y);
            if (depth != other) {
                return depth < other;
            }
        }
        return piece.key > over.key;
    }

    void draw_row(std::int32_t y) {
        const int whole = samples_ * samples_;
        for (std::int64_t p = first_; p <= last_;) {
            const Pixel& pixel = pixels_[static_cast<std::size_t>(p)];
            const int covered = std::popcount(pixel.covered);
            if (covered == 0) {
                ++p;
                continue;
            }
            std::int64_t last = p;
            while (last < last_ && covered == whole) {
                const Pixel& following = pixels_[static_cast<std::size_t>(last + 1)];
                if (std::popcount(following.covered) != whole || (tracks_owner_ && following.owner != pixel.owner)) {
                    break;
                }
                ++last;
            }
            const double x = rectangle_.left + static_cast<double>(p);
            const double last_x = rectangle_.left + static_cast<double>(last);
            const Piece& owner = *pixel.owner;
            draw_({y, static_cast<std::int32_t>(x), static_cast<std::int32_t>(last_x), owner.depth(x, y), owner.depth(last_x, y),
                   owner.color(x, y), owner.color(last_x, y), double(covered) / whole});
            p = last + 1;
        }
        for (std::int64_t p = first_; p <= last_; ++p) {
            pixels_[static_cast<std::size_t>(p)] = {};
        }
        first_ = static_cast<std::int64_t>(pixels_.size());
        last_ = -1;
    }

    const Stroke_Pen& pen_;
    const VT_Int_Rectangle rectangle_;
    const std::function<void(const Stroke_Run&)>& draw_;
    const int samples_; // sampling points in a row and in a column of a pixel
    const bool tracks_owner_;
    std::vector<Pixel> pixels_; // of the current row
    std::int64_t first_ = INT64_MAX, last_ = -1;
};

} // namespace

void fill_strokes(const std::vector<Stroke_Path>& paths, const Stroke_Pen& pen, const VT_Int_Rectangle& rectangle,
                  const std::function<void(const Stroke_Run&)>& draw) {
    if (is_empty(rectangle)) {
        return;
    }
    Outline outline(pen, rectangle);
    for (const Stroke_Path& path : paths) {
        outline.add(path);
    }
    Row_Scan(pen, rectangle, draw).scan(outline.take());
}

} // namespace vorna
