// Borders of faces.
#include "drawing/map/borders.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <set>

#include "drawing/files/hash_seed.h"

namespace vorna::drawing::map {
namespace {

// Segments between two positions, numbered independently of their direction.
class Stretches {
public:
    struct Stretch {
        Position low, high;
        std::size_t shape = 0; // the first shape with this segment
        bool shared = false;
        bool drawn = false;
    };

    explicit Stretches(std::size_t most) : slots_(std::bit_ceil(2 * most + 1), none), mask_(slots_.size() - 1) {
        stretches_.reserve(most);
    }

    // The number of the segment, and whether it is new.
    std::pair<std::uint32_t, bool> find_or_add(Position a, Position b, std::size_t shape) {
        const auto [low, high] = std::minmax(a, b);
        std::size_t slot = hash(low, high) & mask_;
        for (; slots_[slot] != none; slot = (slot + 1) & mask_) {
            const Stretch& found = stretches_[slots_[slot]];
            if (found.low == low && found.high == high) {
                return {slots_[slot], false};
            }
        }
        slots_[slot] = static_cast<std::uint32_t>(stretches_.size());
        stretches_.push_back({low, high, shape});
        return {slots_[slot], true};
    }

    Stretch& operator[](std::uint32_t number) { return stretches_[number]; }

private:
    static constexpr std::uint32_t none = 0xFFFFFFFF;

    static std::uint64_t hash(Position low, Position high) noexcept {
        std::uint64_t h = hash_seed();
        for (const double value : {low.x, low.y, high.x, high.y}) {
            h = (h ^ std::bit_cast<std::uint64_t>(value + 0.0)) * 0x9E3779B97F4A7C15U; // turns -0.0 into 0.0
            h ^= h >> 32;
        }
        return h;
    }

    std::vector<std::uint32_t> slots_;
    std::size_t mask_;
    std::vector<Stretch> stretches_;
};

// Tolerances: files end slightly before the poles, and their numbers are rounded.
bool is_cut(Position a, Position b) {
    constexpr double edge = 180 - 1e-6, pole = 89.99;
    return std::min(std::abs(a.x), std::abs(b.x)) >= edge || std::min(std::abs(a.y), std::abs(b.y)) >= pole;
}

template <class Visit> void for_each_ring(const std::vector<Shape>& shapes, Visit visit) {
    for (std::size_t s = 0; s < shapes.size(); ++s) {
        if (!shapes[s].outlined) {
            continue;
        }
        for (const Face& face : shapes[s].faces) {
            for (const Path& ring : face) {
                visit(ring, s);
            }
        }
    }
}

// The kind of line that a segment belongs to.
enum class Kind { none, outer, shared };

// The segments of the ring that no earlier ring contains, in runs of one kind.
void add_lines(const Path& ring, std::size_t shape, const std::vector<Kind>& kinds, std::vector<Border>& lines) {
    const std::size_t size = ring.size();
    std::size_t start = 0; // where a run begins
    while (start < size && kinds[start] == kinds[(start + size - 1) % size]) {
        ++start;
    }
    const bool closed = start == size;
    start = closed ? 0 : start;
    for (std::size_t done = 0; done < size;) {
        const std::size_t first = start + done;
        const Kind kind = kinds[first % size];
        Path path{ring[first % size]};
        for (; done < size && kinds[(start + done) % size] == kind; ++done) {
            path.push_back(ring[(start + done + 1) % size]);
        }
        if (kind != Kind::none) {
            lines.push_back({std::move(path), shape, kind == Kind::shared});
        }
    }
}

} // namespace

std::size_t count_stretches(const std::vector<Shape>& shapes) {
    std::size_t count = 0;
    for_each_ring(shapes, [&](const Path& ring, std::size_t) { count += ring.size(); });
    return count;
}

Borders find_borders(const std::vector<Shape>& shapes, bool around_globe) {
    Borders borders;
    borders.neighbours.resize(shapes.size());
    const std::size_t count = count_stretches(shapes);
    Stretches stretches(count);
    std::vector<std::uint32_t> numbers; // of all segments in the order of the rings
    numbers.reserve(count);
    for_each_ring(shapes, [&](const Path& ring, std::size_t shape) {
        for (std::size_t i = 0; i < ring.size(); ++i) {
            const auto [number, is_new] = stretches.find_or_add(ring[i], ring[(i + 1) % ring.size()], shape);
            Stretches::Stretch& stretch = stretches[number];
            numbers.push_back(number);
            stretch.shared = stretch.shared || !is_new;
            if (stretch.shape != shape) {
                borders.neighbours[shape].push_back(stretch.shape);
                borders.neighbours[stretch.shape].push_back(shape);
            }
        }
    });
    for (std::vector<std::size_t>& list : borders.neighbours) {
        std::ranges::sort(list);
        list.erase(std::unique(list.begin(), list.end()), list.end());
    }
    std::vector<Kind> kinds;
    auto number = numbers.begin();
    for_each_ring(shapes, [&](const Path& ring, std::size_t shape) {
        kinds.clear();
        for (std::size_t i = 0; i < ring.size(); ++i) {
            const Position& next = ring[(i + 1) % ring.size()];
            Stretches::Stretch& stretch = stretches[*number++];
            const bool hidden = stretch.drawn || (around_globe && is_cut(ring[i], next));
            kinds.push_back(hidden ? Kind::none : stretch.shared ? Kind::shared : Kind::outer);
            stretch.drawn = true;
        }
        add_lines(ring, shape, kinds, borders.lines);
    });
    return borders;
}

std::vector<std::size_t> numbers_unlike_neighbours(const std::vector<std::vector<std::size_t>>& neighbours, std::size_t count) {
    const std::size_t size = neighbours.size();
    // The shape with the fewest remaining neighbours is removed first and numbered last: in a planar graph each shape then has at
    // most five numbered neighbours when it is numbered. Shapes without neighbours, of which there may be millions, come first.
    std::vector<std::size_t> degrees, order;
    degrees.reserve(size);
    order.reserve(size);
    std::set<std::pair<std::size_t, std::size_t>> left;
    for (std::size_t s = 0; s < size; ++s) {
        degrees.push_back(neighbours[s].size());
        if (degrees[s] == 0) {
            order.push_back(s);
        } else {
            left.emplace(degrees[s], s);
        }
    }
    while (!left.empty()) {
        const std::size_t s = left.begin()->second;
        left.erase(left.begin());
        order.push_back(s);
        for (const std::size_t other : neighbours[s]) {
            if (left.erase({degrees[other], other}) > 0) {
                left.emplace(--degrees[other], other);
            }
        }
    }
    std::vector<std::size_t> numbers(size, count), uses(count);
    std::vector<bool> taken;
    for (std::size_t i = size; i-- > 0;) {
        taken.assign(count, false);
        for (const std::size_t other : neighbours[order[i]]) {
            if (numbers[other] < count) {
                taken[numbers[other]] = true;
            }
        }
        const bool none_free = std::ranges::find(taken, false) == taken.end();
        std::size_t best = count;
        for (std::size_t n = 0; n < count; ++n) {
            if ((none_free || !taken[n]) && (best == count || uses[n] < uses[best])) {
                best = n;
            }
        }
        numbers[order[i]] = best;
        ++uses[best];
    }
    return numbers;
}

} // namespace vorna::drawing::map
