// Where labels find room.
#include <gtest/gtest.h>

#include "drawing/map/labels.h"

namespace vorna::drawing::map {
namespace {

TEST(Labels, boxes_lie_inside_of_faces_and_of_the_window) {
    constexpr VT_Int_Rectangle window{0, 99, 0, 49};
    // A ring around a hole: room only above, below and beside it, and below is nearer to the middle of what is seen.
    const Face ring{{{10, 5}, {90, 5}, {90, 65}, {10, 65}}, {{30, 20}, {70, 20}, {70, 45}, {30, 45}}};
    const auto at = place_in_face(ring, window, {30, 8});
    ASSERT_TRUE(at);
    EXPECT_EQ(at->y, 12);
    EXPECT_NEAR(at->x, 35, 1);
    EXPECT_TRUE(place_in_face(ring, window, {80, 15}));
    EXPECT_FALSE(place_in_face(ring, window, {81, 15}));
    EXPECT_FALSE(place_in_face(ring, window, {80, 16}));
    EXPECT_FALSE(place_in_face({{{0, 60}, {99, 60}, {99, 90}}}, window, {1, 1}));
}

TEST(Labels, room_is_taken_once) {
    Free_Room room;
    EXPECT_TRUE(room.take({0, 9, 0, 9}));
    EXPECT_FALSE(room.take({9, 12, 9, 12}));
    EXPECT_TRUE(room.take({10, 12, 0, 9}));
}

} // namespace
} // namespace vorna::drawing::map
