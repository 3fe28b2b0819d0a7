// Points of a model as points of a window.
#include "drawing/model/projected_points.h"

#include <algorithm>
#include <array>
#include <atomic>

#include "drawing/files/helpers.h"
#include "drawing/model/clipper.h"
#include "drawing/model/viewport.h"

namespace vorna::drawing::model {
namespace {

using Rows = std::array<std::array<float, 4>, 4>;

// Projects count points and returns the planes that any of them lies beyond. A plain loop over columns of floats with nothing
// behind references, which compilers turn into vector code.
int project_points(const Rows& rows, const Viewport& window, std::size_t count, const float* px, const float* py, const float* pz,
                   VT_DCI_Point* points, std::uint8_t* beyond_planes) {
    const Rows m = rows;
    const Viewport viewport = window;
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
    return seen;
}

} // namespace

void Projected_Points::project(const Vector_Columns& positions, const Camera& camera, const VT_Int_Rectangle& window,
                               unsigned threads) {
    Rows m;
    for (std::size_t r = 0; r < m.size(); ++r) {
        std::ranges::transform(camera.clip_from_model.m[r], m[r].begin(), [](double value) { return static_cast<float>(value); });
    }
    const Viewport viewport(window);
    const std::size_t count = positions.size();
    device_points.resize(count);
    planes.resize(count);
    std::atomic<int> seen{0};
    share_range(count, threads, [&](std::size_t first, std::size_t end) {
        seen |= project_points(m, viewport, end - first, positions.x.data() + first, positions.y.data() + first,
                               positions.z.data() + first, device_points.data() + first, planes.data() + first);
    });
    any_beyond = seen != 0;
    any_before = (seen & beyond::near) != 0;
}

} // namespace vorna::drawing::model
