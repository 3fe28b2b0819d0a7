// Where the work of an image lies.
#include "drawing/job/work_map.h"

#include <algorithm>
#include <cmath>
#include <cstring>
namespace vorna::drawing {
namespace {

constexpr std::int32_t most_cells = 512;  // along a side
constexpr std::int32_t pixels_a_cell = 2; // along a side of the small image
// Nanoseconds, measured (docs/scaling.md): of a pixel of the file, of one that differs from the one to its left, with what
// compressing it takes; of a drawn pixel; and of a vertex with its triangles.
constexpr double pixel_work = 3, covered_work = 9, drawn_work = 1, place_work = 50;

std::int32_t cell_side(VT_Int_Pair size) {
    const std::int32_t eights = (std::max(size.x, size.y) + 7) / 8;
    return ((eights - 1) / most_cells + 1) * 8;
}

} // namespace

Work_Map::Work_Map(const Job_Settings& settings, const Module_Choice& module, Drawing& drawing)
    : size_(settings.part.size), side_(cell_side(size_)), count_{(size_.x - 1) / side_ + 1, (size_.y - 1) / side_ + 1},
      cells_(static_cast<std::size_t>(count_.x) * static_cast<std::size_t>(count_.y)) {
    add_pixels(settings, module, drawing);
    add_places(drawing);
    sum_up();
}

// Compressing flat colours takes least, so what counts is how many pixels are not like their neighbours.
void Work_Map::add_pixels(const Job_Settings& settings, const Module_Choice& module, Drawing& drawing) {
    Job_Settings small = settings;
    small.part = Image_Part{};
    small.part.size = {count_.x * pixels_a_cell, count_.y * pixels_a_cell};
    small.tile_size = 0;
    small.supersample = 1;
    small.hash = false;
    small.repeat = 1;
    small.allow_empty = true;
    small.progress = {};
    Job job(small, module, drawing);
    const std::size_t row_bytes = job.form().row_bytes(), pixel_bytes = job.form().pixel_bytes();
    std::vector<std::uint8_t> samples(job.form().height * row_bytes);
    job.make_samples(samples.data());
    const double area = static_cast<double>(side_) * side_, n = settings.supersample;
    for (std::int32_t row = 0; row < count_.y; ++row) {
        for (std::int32_t column = 0; column < count_.x; ++column) {
            int covered = 0;
            for (std::int32_t y = 0; y < pixels_a_cell; ++y) {
                const std::size_t line = static_cast<std::size_t>(small.part.size.y - 1 - (row * pixels_a_cell + y));
                for (std::int32_t x = 0; x < pixels_a_cell; ++x) {
                    const std::size_t place = static_cast<std::size_t>(column * pixels_a_cell + x);
                    const std::uint8_t* pixel = &samples[line * row_bytes + place * pixel_bytes];
                    covered += place > 0 && std::memcmp(pixel, pixel - pixel_bytes, pixel_bytes) != 0 ? 1 : 0;
                }
            }
            cells_[static_cast<std::size_t>(row) * static_cast<std::size_t>(count_.x) + static_cast<std::size_t>(column)] =
                area * (pixel_work + n * n * drawn_work + covered_work * covered / (pixels_a_cell * pixels_a_cell));
        }
    }
}

void Work_Map::add_places(const Drawing& drawing) {
    drawing.visit_places([&](double x, double y) {
        if (x >= 0 && x < 1 && y >= 0 && y < 1) {
            const auto column = static_cast<std::size_t>(x * size_.x) / static_cast<std::size_t>(side_);
            const auto row = static_cast<std::size_t>(y * size_.y) / static_cast<std::size_t>(side_);
            cells_[row * static_cast<std::size_t>(count_.x) + column] += place_work;
        }
    });
}

void Work_Map::sum_up() {
    const auto columns = static_cast<std::size_t>(count_.x), rows = static_cast<std::size_t>(count_.y);
    sums_.assign((columns + 1) * (rows + 1), 0);
    for (std::size_t row = 0; row < rows; ++row) {
        double left = 0;
        for (std::size_t column = 0; column < columns; ++column) {
            left += cells_[row * columns + column];
            sums_[(row + 1) * (columns + 1) + column + 1] = sums_[row * (columns + 1) + column + 1] + left;
        }
    }
}

double Work_Map::sum(const VT_Int_Rectangle& cells) const noexcept {
    const auto at = [this](std::int32_t column, std::int32_t row) {
        return sums_[static_cast<std::size_t>(row) * (static_cast<std::size_t>(count_.x) + 1) + static_cast<std::size_t>(column)];
    };
    return at(cells.right + 1, cells.top + 1) - at(cells.left, cells.top + 1) - at(cells.right + 1, cells.bottom) +
           at(cells.left, cells.bottom);
}

double Work_Map::work(const VT_Int_Rectangle& area) const noexcept {
    return sum({area.left / side_, area.right / side_, area.bottom / side_, area.top / side_});
}

std::int32_t Work_Map::cut_of(const VT_Int_Rectangle& cells, bool across, std::int32_t low, std::int32_t high) const {
    const std::int32_t first = across ? cells.left : cells.bottom, last = across ? cells.right : cells.top;
    const auto others = static_cast<std::int32_t>(across ? cells.top - cells.bottom + 1 : cells.right - cells.left + 1);
    // Both sides need a cell for each part.
    const std::int32_t least = first + (low - 1) / others + 1, most = last + 1 - ((high - 1) / others + 1);
    std::int32_t best = least;
    double best_worst = INFINITY;
    for (std::int32_t cut = least; cut <= most; ++cut) {
        VT_Int_Rectangle below = cells, above = cells;
        (across ? below.right : below.top) = cut - 1;
        (across ? above.left : above.bottom) = cut;
        const double worst = std::max(sum(below) / low, sum(above) / high);
        if (worst < best_worst) {
            best_worst = worst;
            best = cut;
        }
    }
    return best;
}

// Halves the number of parts, across the longer side where both halves have enough cells. There are enough in all.
void Work_Map::share(const VT_Int_Rectangle& cells, std::int32_t parts, std::vector<VT_Int_Rectangle>& found) const {
    if (parts == 1) {
        found.push_back({cells.left * side_, std::min((cells.right + 1) * side_, size_.x) - 1, cells.bottom * side_,
                         std::min((cells.top + 1) * side_, size_.y) - 1});
        return;
    }
    std::int32_t low = parts / 2;
    const std::int32_t columns = cells.right - cells.left + 1, rows = cells.top - cells.bottom + 1;
    const auto fits = [&](std::int32_t along, std::int32_t others) {
        return (low - 1) / others + (parts - low - 1) / others + 2 <= along;
    };
    const bool across = fits(columns, rows) && (columns >= rows || !fits(rows, columns));
    if (!across && !fits(rows, columns)) {
        low = std::min(columns, parts - 1); // nearly as many parts as cells: a row of them
    }
    const std::int32_t high = parts - low, cut = cut_of(cells, across, low, high);
    VT_Int_Rectangle below = cells, above = cells;
    (across ? below.right : below.top) = cut - 1;
    (across ? above.left : above.bottom) = cut;
    share(below, low, found);
    share(above, high, found);
}

std::vector<VT_Int_Rectangle> Work_Map::shared(std::int32_t parts) const {
    std::vector<VT_Int_Rectangle> found;
    share({0, count_.x - 1, 0, count_.y - 1}, parts, found);
    std::ranges::sort(found, [](const VT_Int_Rectangle& a, const VT_Int_Rectangle& b) {
        return a.top != b.top ? a.top > b.top : a.left < b.left;
    });
    return found;
}

} // namespace vorna::drawing
