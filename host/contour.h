// Contours: the boundaries of clip regions and polygons.
#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

#include "host/export.h"
#include "host/geometry.h"
#include "host/object.h"

// The shape of a polygon.
struct VT_Polygon_Rank {
    std::int32_t kind = 0; // 0 = convex without self-intersections, 1 = all others
};

VORNA_API VT_Polygon_Rank VD_Rank_Polygon(std::int32_t count, const VT_Point* points);

// corners: the three of a triangle.
using VT_Triangle_Callback = void (*)(void* context, const VT_Point* corners);

// Closed contours. A point is inside when a ray from it crosses them an odd number of times (even-odd rule).
class VORNA_API VT_Contour_Set final : public VT_Counted {
public:
    using Contour = std::vector<VT_Point>;

    VT_Contour_Set() = default;
    explicit VT_Contour_Set(std::vector<Contour> contours) : contours_(std::move(contours)) {}
    // One contour of count points. open: must be false.
    VT_Contour_Set(std::int32_t count, const VT_Point* points, bool open);
    VT_Counted* clone() const override { return new VT_Contour_Set(*this); }

    const std::vector<Contour>& contours() const noexcept { return contours_; }
    void translate(float x, float y) noexcept;
    // A copy translated by the offset, in pixels. Copies for the latest offsets are kept until this set changes, so that masks
    // made for them serve again. Several threads may call it at once.
    VT_Reference<const VT_Contour_Set> moved(VT_Int_Pair offset) const;

    // The direction along which triangulate projects the contours; (0, 0, 1) projects to the x-y plane.
    void force_projection(const VT_Vector& direction) noexcept { projection_ = direction; }
    // Calls back once for each triangle of the area inside.
    void triangulate(VT_Triangle_Callback callback, void* context) const;

private:
    // Not copied with the set.
    class Moved_Copies {
    public:
        Moved_Copies() = default;
        Moved_Copies(const Moved_Copies&) noexcept {}
        Moved_Copies& operator=(const Moved_Copies&) noexcept {
            copies_.clear();
            return *this;
        }

        VT_Reference<const VT_Contour_Set> find_or_make(const VT_Contour_Set& set, VT_Int_Pair offset);

    private:
        struct Copy {
            VT_Int_Pair offset;
            VT_Reference<const VT_Contour_Set> contours;
        };

        std::mutex mutex_;
        std::vector<Copy> copies_; // the latest made last
    };

    std::vector<Contour> contours_;
    mutable Moved_Copies moved_copies_;
    VT_Vector projection_{0, 0, 1};
};
