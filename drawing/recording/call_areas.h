// Where the calls of a recording may draw.
#pragma once

#include <cstddef>
#include <vector>

#include "drawing/recording/recording.h"
#include "host/geometry.h"

namespace vorna::drawing::recording {

// A box for each call, found once from its points and the widths of its lines and markers. Whatever the call changes lies inside,
// in every configuration.
class Call_Areas {
public:
    // The recording must outlive the object.
    explicit Call_Areas(const Recording& recording);

    // Device pixels of the window that the call may change. All of them where that is not known; none for calls that draw
    // nothing.
    VT_Int_Rectangle area(std::size_t call, const VT_Int_Rectangle& window) const noexcept;
    // How many triangles, segments or markers the call has, and whether one of them may change the device pixel: their boxes are
    // smaller than the call's. Calls that do not consist of such have one piece, their box.
    std::size_t pieces(std::size_t call) const noexcept;
    bool may_change(std::size_t call, VT_Int_Pair pixel) const noexcept;
    // Whether a renderer may trust the call: all that it has lies in the window.
    bool is_inside(std::size_t call, const VT_Int_Rectangle& window) const noexcept;

private:
    struct Box {
        VT_Int_Rectangle pixels;
        bool counts_from_window = false; // columns and rows of the buffer, whatever the window's origin
        std::int32_t piece_points = 0;   // of each triangle, segment or marker; 0 = one piece
        std::int64_t margin = 0;         // around the points
    };
    class Maker;

    static VT_Int_Rectangle placed(const Box& box, const VT_Int_Rectangle& window) noexcept;

    const Recording& recording_;
    std::vector<Box> boxes_;
};

} // namespace vorna::drawing::recording
