// The lines of a hatch's pattern inside of its boundary.
#include <algorithm>
#include <cmath>
#include <utility>

#include "drawing/map/dxf/hatch.h"

namespace vorna::drawing::map::dxf {
namespace {

constexpr std::uint64_t edge_steps = 4, crossing_steps = 20, piece_steps = 20;
constexpr std::uint64_t piece_memory = sizeof(Path) + 2 * sizeof(Position) + 16;

double dot(Position a, Position b) {
    return a.x * b.x + a.y * b.y;
}

// Where line number `line` crosses the boundary.
struct Crossing {
    double line, along;
    friend bool operator<(const Crossing& a, const Crossing& b) {
        return a.line < b.line || (a.line == b.line && a.along < b.along);
    }
};

std::uint64_t count_of(double number) {
    return number < 1e15 ? static_cast<std::uint64_t>(number) : std::uint64_t{1} << 50; // more than any limit
}

class Pattern {
public:
    Pattern(const Line_Family& family, const std::string& file, Load_Limits& limits, Shape& shape)
        : family_(family), file_(file), limits_(limits), shape_(shape), normal_{-family.direction.y, family.direction.x},
          spacing_(dot(family.offset, normal_)) {
        for (const double length : family.dashes) {
            period_ += std::abs(length);
        }
    }

    void add(const Face& face) {
        // Positions and lengths beyond these are no drawing; differences and quotients of others are finite.
        constexpr double most = 1e100, least = 1e-100;
        const auto fits = [](Position p) { return std::abs(p.x) < most && std::abs(p.y) < most; };
        const bool is_drawn = std::ranges::all_of(face, [&](const Path& ring) { return std::ranges::all_of(ring, fits); });
        if (!is_drawn || !fits(family_.base) || !fits(family_.offset) || !(std::abs(spacing_) > least) || !(period_ < most)) {
            return;
        }
        std::uint64_t edges = 0;
        std::ranges::for_each(face, [&](const Path& ring) { edges += ring.size(); });
        limits_.take_work(file_, edges * edge_steps); // also where no line crosses them
        double count = 0;
        for_each_edge(face, [&](Position a, Position b) {
            const auto [from, to] = lines_between(a, b);
            count += std::max(to - from, 0.0);
        });
        limits_.take_work(file_, count_of(count) * crossing_steps);
        const Load_Limits::Loan crossing_memory(limits_, file_, count_of(count) * sizeof(Crossing));
        std::vector<Crossing> crossings;
        crossings.reserve(count_of(count));
        for_each_edge(face, [&](Position a, Position b) { add_crossings(a, b, crossings); });
        std::sort(crossings.begin(), crossings.end());
        for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
            if (crossings[i].line == crossings[i + 1].line) {
                add_pieces(crossings[i].line, crossings[i].along, crossings[i + 1].along);
            }
        }
    }

private:
    template <class Visit> static void for_each_edge(const Face& face, Visit visit) {
        for (const Path& ring : face) {
            for (std::size_t i = 0; i < ring.size(); ++i) {
                visit(ring[i], ring[(i + 1) % ring.size()]);
            }
        }
    }

    double line_at(Position p) const { return dot({p.x - family_.base.x, p.y - family_.base.y}, normal_) / spacing_; }

    // The numbers of the lines that cross an edge: from the first up to the second without it. Edges share no crossing.
    std::pair<double, double> lines_between(Position a, Position b) const {
        const auto [low, high] = std::minmax({line_at(a), line_at(b)});
        return {std::ceil(low), std::ceil(high)};
    }

    void add_crossings(Position a, Position b, std::vector<Crossing>& crossings) const {
        const auto [from, to] = lines_between(a, b);
        const double start = line_at(a), end = line_at(b);
        for (double line = from; line < to && crossings.size() < crossings.capacity(); line += 1) {
            const double share = (line - start) / (end - start);
            const Position p{a.x + (b.x - a.x) * share - family_.base.x - line * family_.offset.x,
                             a.y + (b.y - a.y) * share - family_.base.y - line * family_.offset.y};
            crossings.push_back({line, dot(p, family_.direction)});
        }
    }

    void add_pieces(double line, double from, double to) {
        const Position start{family_.base.x + line * family_.offset.x, family_.base.y + line * family_.offset.y};
        const auto place = [&](double along) {
            return Position{start.x + family_.direction.x * along, start.y + family_.direction.y * along};
        };
        const auto add_line = [&](double a, double b) { shape_.lines.push_back({place(a), place(b)}); };
        const double repetitions = period_ > 0 ? (to - from) / period_ + 2 : 1;
        const std::uint64_t pieces = count_of(repetitions * static_cast<double>(std::max<std::size_t>(family_.dashes.size(), 1)));
        limits_.take_work(file_, pieces * piece_steps);
        if (!(period_ > 0)) {
            limits_.take_memory(file_, piece_memory);
            add_line(from, to);
            return;
        }
        const double first = std::floor(from / period_);
        for (double i = 0; i < repetitions; i += 1) {
            double along = (first + i) * period_;
            for (const double dash : family_.dashes) {
                const double low = std::max(along, from), high = std::min(along + dash, to);
                along += std::abs(dash);
                if (dash < 0 || low > high) {
                    continue;
                }
                limits_.take_memory(file_, piece_memory);
                if (dash > 0) {
                    add_line(low, high);
                } else {
                    shape_.points.push_back(place(low));
                }
            }
        }
    }

    const Line_Family& family_;
    const std::string& file_;
    Load_Limits& limits_;
    Shape& shape_;
    Position normal_;
    double spacing_, period_ = 0;
};

} // namespace

void add_pattern(const Face& face, const Line_Family& family, const std::string& file, Load_Limits& limits, Shape& shape) {
    Pattern(family, file, limits, shape).add(face);
}

} // namespace vorna::drawing::map::dxf
