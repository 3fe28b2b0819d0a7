// Blocks of strips: every place lies in one, and what is drawn of a block lies in its extent.
#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "drawing/model/camera.h"
#include "drawing/model/place_blocks.h"
#include "drawing/model/projected_points.h"

namespace vorna::drawing::model {
namespace {

struct Made_Strips {
    std::vector<VT_Vector> points;
    std::vector<std::uint32_t> vertices, starts{0};
};

// Strips of 1 to 90 triangles in the unit sphere: bands of small triangles, with a few large ones, and jumps between strips.
Made_Strips random_strips(unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> any(-1, 1);
    Made_Strips made;
    for (int s = 0; s < 200; ++s) {
        const float size = s % 20 == 0 ? 0.3F : 0.005F;
        VT_Vector at{any(random) * 0.4F, any(random) * 0.4F, any(random) * 0.4F};
        for (std::uint32_t i = 0, count = 3 + static_cast<std::uint32_t>(random() % 90); i < count; ++i) {
            at = {std::clamp(at.x + size * any(random), -0.57F, 0.57F), std::clamp(at.y + size * any(random), -0.57F, 0.57F),
                  std::clamp(at.z + size * any(random), -0.57F, 0.57F)};
            made.vertices.push_back(static_cast<std::uint32_t>(made.points.size()));
            made.points.push_back(at);
        }
        made.starts.push_back(static_cast<std::uint32_t>(made.vertices.size()));
    }
    return made;
}

bool lies_in(const VT_DCI_Point& p, const VT_Int_Rectangle& area) {
    return p.x >= area.left && p.x <= area.right && p.y >= area.bottom && p.y <= area.top;
}

TEST(Place_Blocks, hold_every_place_and_what_is_seen_of_it) {
    const VT_Int_Rectangle frame{0, 2000, 0, 1200};
    for (unsigned seed = 1; seed <= 4; ++seed) {
        const Made_Strips made = random_strips(seed);
        Vector_Columns columns(made.points.size());
        for (std::size_t i = 0; i < made.points.size(); ++i) {
            columns.set(i, made.points[i]);
        }
        const Place_Blocks blocks(made.points, made.vertices, made.starts, 1), shared(made.points, made.vertices, made.starts, 3);
        ASSERT_EQ(blocks.start(0), 0U);
        ASSERT_EQ(blocks.start(blocks.count()), made.vertices.size());
        ASSERT_EQ(shared.count(), blocks.count());
        for (const Projection projection : {Projection::perspective, Projection::orthographic}) {
            for (const double distance : {0.05, 0.5, 3.0}) { // in the midst of the model, and before it
                Camera_Settings settings{.projection = projection, .aspect = 5.0 / 3};
                settings.aim = Aim{{0.1, 0.2, distance}, {0, 0, -0.3}, {0, 1, 0}};
                const Camera camera = fit_camera(settings, made.points);
                Projected_Points projected;
                projected.project(columns, camera, frame);
                std::vector<Extent> extents(blocks.count()), others(blocks.count() - 5);
                blocks.find_extents(0, camera, frame, extents);
                shared.find_extents(5, camera, frame, others);
                std::size_t small = 0;
                for (std::size_t b = 0; b < blocks.count(); ++b) {
                    ASSERT_LT(blocks.start(b), blocks.start(b + 1));
                    ASSERT_EQ(shared.start(b), blocks.start(b));
                    ASSERT_TRUE(b < 5 || others[b - 5].box == extents[b].box) << "block " << b;
                    small += extents[b].width() < 300 && extents[b].height() < 300;
                    // The last triangle of a block has two vertices more, unless a strip ends there.
                    const std::size_t end = blocks.start(b + 1);
                    const bool ends_strip = std::ranges::binary_search(made.starts, static_cast<std::uint32_t>(end));
                    for (std::size_t place = blocks.start(b); place < end + (ends_strip ? 0 : 2); ++place) {
                        const std::uint32_t vertex = made.vertices[place];
                        ASSERT_TRUE(projected.planes[vertex] != 0 || lies_in(projected.device_points[vertex], extents[b].box))
                            << "seed " << seed << ", block " << b << ", place " << place << ", distance " << distance;
                    }
                }
                EXPECT_TRUE(distance < 3 || small > blocks.count() / 2) << "extents are not much larger than what is drawn";
            }
        }
    }
}

} // namespace
} // namespace vorna::drawing::model
