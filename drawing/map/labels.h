// Places for labels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "drawing/map/label_font.h"
#include "drawing/map/lettering.h"
#include "drawing/map/shapes.h"
#include "host/geometry.h"

namespace vorna::drawing::map {

// The lower left pixel of a box of the given size inside the face and the window: near the middle of the largest part of the face
// that is seen, with a margin where there is room. Empty when the box fits nowhere.
std::optional<VT_Int_Pair> place_in_face(const Face& pixels, const VT_Int_Rectangle& window, VT_Int_Pair size);

// The area that the largest ring encloses.
double largest_area(const Face& face);

// Boxes without common pixels inside an image, in cells so that a test looks at those nearby only.
class Free_Room {
public:
    explicit Free_Room(VT_Int_Pair size);

    // Takes pixels whatever they are; those beside the image do not count.
    void block(const VT_Int_Rectangle& box);
    // Whether the box lies in the image and has no pixel that is taken.
    bool is_free(const VT_Int_Rectangle& box) const;
    // Takes the boxes if all of them are free; they may overlap each other.
    bool take(std::span<const VT_Int_Rectangle> boxes);

private:
    // The cells that the box touches, within the image.
    VT_Int_Rectangle cells_of(const VT_Int_Rectangle& box) const;

    VT_Int_Pair size_, cells_;
    std::int32_t cell_;
    std::vector<std::vector<VT_Int_Rectangle>> taken_; // by cell
};

// The letters of a text along a line, its middle at the given distance from the line's start; boxes: around each of them.
struct Text_On_Line {
    std::vector<Placed_Letter> letters;
    std::vector<VT_Int_Rectangle> boxes;
};

// Lines in pixels, for texts along them.
class Text_Line {
public:
    // The line is smoothed over the given length, so that letters do not jump with its corners.
    Text_Line(const Path& pixels, double smoothing);

    double length() const noexcept { return distances_.empty() ? 0 : distances_.back(); }
    // Upright, or read from below, and centred on the line. Empty where the line bends so that letters would overlap or where the
    // text is longer than the line. height: of capitals, in pixels. margin: around letters.
    std::optional<Text_On_Line> place(const Text& text, double height, double middle, double margin) const;
    // The place at a distance from the start; the line has two points or more.
    Position at(double distance) const;

private:
    Path points_;
    std::vector<double> distances_; // of the points from the start
};

} // namespace vorna::drawing::map
