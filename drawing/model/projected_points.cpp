// Points of a model as points of a window. A plain loop over columns of floats, which compilers turn into vector code.
#include "drawing/model/projected_points.h"

#include <algorithm>

#include "drawing/model/clipper.h"
#include "drawing/model/viewport.h"

namespace vorna::drawing::model {

void Projected_Points::project(const Vector_Columns& positions, const Camera& camera, const VT_Int_Rectangle& window) {
    float m[4][4];
    for (int r = 0; r < 4; ++r) {
        std::ranges::transform(camera.clip_from_model.m[r], m[r], [](double value) { return static_cast<float>(value); });
    }
    const Viewport viewport(window);
    const std::size_t count = positions.size();
    device_points.resize(count);
    planes.resize(count);
    const float *px = positions.x.data(), *py = positions.y.data(), *pz = positions.z.data();
    VT_DCI_Point* points = device_points.data();
    std::uint8_t* beyond_planes = planes.data();
    int seen = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const float x = m[0][0] * px[i] + m[0][1] * py[i] + m[0][2] * pz[i] + m[0][3];
        const float y = m[1][0] * px[i] + m[1][1] * py[i] + m[1][2] * pz[i] + m[1][3];
        const float z = m[2][0] * px[i] + m[2][1] * py[i] + m[2][2] * pz[i] + m[2][3];
        const float w = m[3][0] * px[i] + m[3][1] * py[i] + m[3][2] * pz[i] + m[3][3];
        const int passed = (x < -w) * beyond::left + (x > w) * beyond::right + (y < -w) * beyond::bottom + (y > w) * beyond::top +
                           (z < 0.0F) * beyond::near + (z > w) * beyond::far;
        seen |= passed;
        beyond_planes[i] = static_cast<std::uint8_t>(passed);
        const float scale = 1.0F / w;
        points[i] = viewport.device_point(x * scale, y * scale, z * scale);
    }
    any_beyond = seen != 0;
    any_before = (seen & beyond::near) != 0;
}

} // namespace vorna::drawing::model
