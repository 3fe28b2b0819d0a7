// Where the work of an image lies, and parts of it that take equally long.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "drawing/job/drawing.h"
#include "drawing/job/job.h"
#include "host/geometry.h"

namespace vorna::drawing {

// Estimated nanoseconds of one thread in cells of an image. The same drawing and settings give the same map on every machine:
// only counts enter it, never times.
class Work_Map {
public:
    // Draws a small image to find out what of it is covered. settings: of the image. The drawing is then prepared for the small
    // image.
    Work_Map(const Job_Settings& settings, const Module_Choice& module, Drawing& drawing);

    // Of whole cells, or of an area that begins at a cell and ends where the image does.
    double work(const VT_Int_Rectangle& area) const noexcept;
    std::int64_t most_parts() const noexcept { return std::int64_t{count_.x} * count_.y; }
    // Cuts the image into so many parts of about equal work, which meet at multiples of 8 pixels from its lower left corner. From
    // the top down, then from left to right.
    std::vector<VT_Int_Rectangle> shared(std::int32_t parts) const;

private:
    void add_pixels(const Job_Settings& settings, const Module_Choice& module, Drawing& drawing);
    void add_places(const Drawing& drawing);
    void sum_up();
    // Rectangles of cells here.
    double sum(const VT_Int_Rectangle& cells) const noexcept;
    void share(const VT_Int_Rectangle& cells, std::int32_t parts, std::vector<VT_Int_Rectangle>& found) const;
    // The first cell behind the cut that gives the first `low` of `low + high` parts their share.
    std::int32_t cut_of(const VT_Int_Rectangle& cells, bool across, std::int32_t low, std::int32_t high) const;

    VT_Int_Pair size_;
    std::int32_t side_;         // of a cell, in pixels; a multiple of 8
    VT_Int_Pair count_;         // columns and rows of cells, from the lower left corner
    std::vector<double> cells_; // row by row
    std::vector<double> sums_;  // by column and row: of all cells to the left and below
};

} // namespace vorna::drawing
