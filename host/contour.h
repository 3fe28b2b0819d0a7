// Contours: clip regions and polygons of any shape.
#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

#include "host/export.h"
#include "host/geometry.h"
#include "host/object.h"

// What is known of a polygon's shape.
struct VT_Polygon_Rank {
    std::int32_t kind = 0; // 0 = convex and free of self-intersections, 1 = anything else
};

VORNA_API VT_Polygon_Rank VD_Rank_Polygon(std::int32_t count, const VT_Point* points);

// Called with the three corners of each triangle.
using VT_Triangle_Callback = void (*)(void* context, const VT_Point* corners);

// Any number of closed contours; a point is inside when an odd number of them surrounds it.
class VORNA_API VT_Contour_Set final : public VT_Counted {
public:
    using Contour = std::vector<VT_Point>;

    VT_Contour_Set() = default;
    explicit VT_Contour_Set(std::vector<Contour> contours) : contours_(std::move(contours)) {}
    // One contour of count points. The flag is reserved for open contours and must be false.
    VT_Contour_Set(std::int32_t count, const VT_Point* points, bool open);
    VT_Counted* clone() const override { return new VT_Contour_Set(*this); }

    const std::vector<Contour>& contours() const noexcept { return contours_; }
    void translate(float x, float y) noexcept;
    // The contours moved by the offset: the same object each time, as long as this set stays as it is and few offsets take turns.
    // May be called from several threads.
    VT_Reference<const VT_Contour_Set> moved(VT_Int_Pair offset) const;

    // The direction along which triangulate looks at the contours; (0, 0, 1) is the x-y plane.
    void force_projection(const VT_Vector& direction) noexcept { projection_ = direction; }
    void triangulate(VT_Triangle_Callback callback, void* context) const;

private:
    // Belongs to one set as it is; copies and changed sets begin with none.
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
