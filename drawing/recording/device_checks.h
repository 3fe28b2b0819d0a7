// Checks of device coordinates, which renderers trust without looking at them because the caller has clipped them.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/recording/call_kinds.h"
#include "drawing/recording/recording.h"
#include "drawing/recording/session.h"
#include "host/geometry.h"
#include "host/rendition.h"

namespace vorna::drawing::recording {

// As messages name the call.
std::string path_of_call(std::size_t call);

// Whether the points of the call are device coordinates that have a depth: the forms DCI and DC.
inline bool has_trusted_points(std::string_view name) noexcept {
    return name.starts_with("draw_dci_") || name.starts_with("draw_dc_");
}

// Sides of the window that a rectangle must not cross.
struct Sides {
    bool left, right, bottom, top;
};

inline constexpr Sides every_side{true, true, true, true};
inline constexpr Sides every_side_but_the_right{true, false, true, true};

// All functions but `begin` throw Recording_Error, unless everything is accepted.
class Device_Checks {
public:
    Device_Checks(const Session& session, bool accepts_everything) noexcept
        : session_(session), accepts_everything_(accepts_everything) {}

    // The call that is checked from now on.
    void begin(std::size_t number, const Call& call) noexcept {
        number_ = number;
        name_ = call.kind->name;
    }

    template <class Point> void points(const std::vector<Point>& points) const {
        if (!accepts_everything_ && has_trusted_points(name_)) {
            for (std::size_t i = 0; i < points.size(); ++i) {
                point(points[i], [i] { return "points[" + std::to_string(i) + ']'; });
            }
        }
    }
    // key(): of the point.
    template <class Point, class Key> void point(const Point& point, Key key) const {
        const double x = pixel_of(point.x), y = pixel_of(point.y);
        const VT_Int_Rectangle window = session_.window();
        if (!accepts_everything_ && !(x >= window.left && x <= window.right && y >= window.bottom && y <= window.top)) {
            refuse(key(), "expected a point inside the window, ", window);
        }
    }
    void corners(const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right, Sides sides, const char* keys) const;
    void ordered(bool is_ordered, const char* keys) const;
    void ellipse(const VT_Rendition& rendition, const Ellipse& ellipse) const;

private:
    // The column or row in which a coordinate is drawn; coordinates outside all columns stay outside.
    static std::int32_t pixel_of(std::int32_t coordinate) { return coordinate; }
    static float pixel_of(float coordinate) { return std::trunc(coordinate >= 0 ? coordinate + 0.5F : coordinate - 0.499999F); }
    static double pixel_of(double coordinate) {
        return std::trunc(coordinate >= 0 ? coordinate + 0.5 : coordinate - 0.49999999999);
    }

    [[noreturn]] void refuse(const std::string& key, const char* expected, const VT_Int_Rectangle& area) const;

    const Session& session_;
    const bool accepts_everything_;
    std::size_t number_ = 0;
    std::string_view name_;
};

} // namespace vorna::drawing::recording
