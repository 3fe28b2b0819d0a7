// Checks of device coordinates, which renderers trust without looking at them because the caller has clipped them.
#include "drawing/recording/device_checks.h"

#include "drawing/recording/document.h"
#include "vorna/draw.h"

namespace vorna::drawing::recording {

namespace {

std::string text_of(const VT_Int_Rectangle& area) {
    return "columns " + std::to_string(area.left) + " to " + std::to_string(area.right) + ", rows " +
           std::to_string(area.bottom) + " to " + std::to_string(area.top);
}

} // namespace

std::string path_of_call(std::size_t call) {
    return "calls[" + std::to_string(call) + ']';
}

void Device_Checks::refuse(const std::string& key, const char* expected, const VT_Int_Rectangle& area) const {
    throw Recording_Error(path_of_call(number_) + '.' + key + ": " + expected + text_of(area));
}

void Device_Checks::corners(const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right, Sides sides, const char* keys) const {
    const VT_Int_Rectangle window = session_.window();
    const bool is_inside = (!sides.left || top_left.x >= window.left) && (!sides.right || bottom_right.x <= window.right) &&
                           (!sides.bottom || bottom_right.y >= window.bottom) && (!sides.top || top_left.y <= window.top);
    if (!is_inside && !accepts_everything_) {
        refuse(keys, "expected corners inside the window, ", window);
    }
}

void Device_Checks::ordered(bool is_ordered, const char* keys) const {
    if (!is_ordered && !accepts_everything_) {
        throw Recording_Error(path_of_call(number_) + '.' + keys +
                              ": expected the greater coordinates to the right and at the top");
    }
}

// Renderers draw plain whole ellipses with axes along rows and columns, and take their centre for a column and row of the buffer.
// All others are cut by the host.
void Device_Checks::ellipse(const VT_Rendition& rendition, const Ellipse& ellipse) const {
    const auto& slot = session_.actions().draw_dci_ellipse; // the other one is always installed with it
    const bool is_hosts = !slot.enabled || slot.function == &VD_Standard_Draw_DCI_Ellipse;
    const bool is_outline = name_ == "draw_dci_elliptical_arc";
    const bool is_plain = rendition.line.style == 0 && rendition.line.weight <= 1 &&
                          !(is_outline && (rendition.line.flags & vorna::line_flag::smoothed) != 0);
    const auto rotation = static_cast<float>(ellipse.rotation);
    const bool is_turned = rotation == 1.5707964F || rotation == 4.712389F;
    const bool has_straight_axes = ellipse.radii.x == ellipse.radii.y || rotation == 0 || rotation == 3.1415927F || is_turned;
    const bool is_whole = static_cast<float>(ellipse.start) == 0 && static_cast<float>(ellipse.end) == 6.2831855F;
    const std::int64_t a = is_turned ? ellipse.radii.y : ellipse.radii.x;
    const std::int64_t b = is_turned ? ellipse.radii.x : ellipse.radii.y;
    if (accepts_everything_ || is_hosts || a < 0 || b < 0 || !is_plain || !is_whole || !has_straight_axes) {
        return;
    }
    const VT_Int_Rectangle window = session_.window();
    const VT_Int_Rectangle room{0, window.right - window.left, 0, window.top - window.bottom};
    if (ellipse.center.x - a < room.left || ellipse.center.x + a > room.right || ellipse.center.y - b < room.bottom ||
        ellipse.center.y + b > room.top) {
        refuse("center and radii", "expected an ellipse inside ", room);
    }
}

} // namespace vorna::drawing::recording
