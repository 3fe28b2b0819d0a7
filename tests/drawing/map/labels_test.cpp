// Where labels find room.
#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/map/labels.h"
#include "drawing/map/line_chains.h"
#include "drawing/map/near_places.h"
#include "drawing/map/scale_bar.h"

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
    // In the larger one of two parts, not between them.
    const Face parts{{{0, 0}, {20, 0}, {20, 20}, {0, 20}}, {{50, 10}, {99, 10}, {99, 50}, {50, 50}}};
    const auto in_part = place_in_face(parts, window, {15, 8});
    ASSERT_TRUE(in_part);
    EXPECT_NEAR(in_part->x, 67, 1);
}

TEST(Labels, room_is_taken_once_and_ends_with_the_image) {
    Free_Room room({1000, 500});
    const auto take = [&](VT_Int_Rectangle box) { return room.take({&box, 1}); };
    EXPECT_TRUE(take({0, 9, 0, 9}));
    EXPECT_FALSE(take({9, 12, 9, 12}));
    EXPECT_TRUE(take({10, 12, 0, 9}));
    // Over many cells.
    EXPECT_TRUE(take({300, 700, 100, 400}));
    EXPECT_FALSE(take({699, 710, 399, 410}));
    EXPECT_FALSE(take({500, 501, 250, 251}));
    EXPECT_TRUE(take({701, 999, 401, 499}));
    for (const VT_Int_Rectangle& outside :
         {VT_Int_Rectangle{-1, 9, 20, 29}, {20, 29, -1, 9}, {991, 1000, 20, 29}, {20, 29, 491, 500}}) {
        EXPECT_FALSE(take(outside));
    }
    room.block({-50, 60, 490, 5000});
    EXPECT_FALSE(take({0, 5, 485, 492}));
    // All or none.
    const VT_Int_Rectangle boxes[]{{100, 110, 0, 9}, {5, 5, 5, 5}};
    EXPECT_FALSE(room.take(boxes));
    EXPECT_TRUE(take(boxes[0]));
}

// Ten letters, each of 10 × 10 pixels.
Text ten_letters(const Face& outline) {
    Text text{{}, 10, 100};
    for (double x = 0; x < 100; x += 10) {
        text.letters.push_back({&outline, {x, 0}, x, x + 10});
    }
    return text;
}

TEST(Labels, follow_lines_upright_and_without_overlaps) {
    const Face outline{{{0, 0}, {1, 0}, {1, 1}}};
    const Text text = ten_letters(outline);
    const auto placed = [&](const Path& line, double middle) { return Text_Line(line, 10).place(text, 10, middle, 2); };
    // To the right whatever the line's direction, 5 pixels of 10 below it.
    for (const Path& line : {Path{{0, 50}, {300, 50}}, Path{{300, 50}, {0, 50}}}) {
        const auto found = placed(line, 150);
        ASSERT_TRUE(found);
        EXPECT_NEAR(found->letters.front().at.x, 100, 1e-9);
        EXPECT_NEAR(found->letters.back().at.x, 190, 1e-9);
        EXPECT_NEAR(found->letters.front().at.y, 45, 1e-9);
        EXPECT_GT(found->letters.front().along.x, 9.99);
        ASSERT_EQ(found->boxes.size(), 10U);
        EXPECT_GE(found->boxes.front().left, 97);
        EXPECT_LE(found->boxes.back().right, 202);
    }
    // Upright lines are read from below to above.
    const auto up = placed({{50, 300}, {50, 0}}, 150);
    ASSERT_TRUE(up);
    EXPECT_GT(up->letters.front().along.y, 9.99);
    EXPECT_LT(up->letters.front().at.y, up->letters.back().at.y);
    // On an arc the letters turn with it; where it is too tight, or the line too short or a hairpin, there is no place.
    const auto arc = [](double radius) {
        Path path;
        for (double angle = 3; angle > 0.1; angle -= 0.02) {
            path.push_back({200 + radius * std::cos(angle), 10 + radius * std::sin(angle)});
        }
        return path;
    };
    const auto on_arc = placed(arc(150), 150 * 1.45);
    ASSERT_TRUE(on_arc);
    EXPECT_GT(on_arc->letters.front().along.y, 2);
    EXPECT_LT(on_arc->letters.back().along.y, -2);
    EXPECT_FALSE(placed(arc(20), 20 * 1.45));
    EXPECT_FALSE(placed({{0, 0}, {99, 0}}, 49.5));
    EXPECT_FALSE(placed({{0, 0}, {150, 0}, {0, 3}}, 150));
    EXPECT_FALSE(placed({{0, 0}, {150, 0}, {150, 150}}, 150)); // a corner
    EXPECT_FALSE(placed({{0, 0}}, 0));
    EXPECT_FALSE(placed({{0, 0}, {0, 0}}, 0));
}

TEST(Labels, near_places_are_found_across_cells) {
    Near_Places places(250);
    std::vector<Position> kept;
    int refused = 0;
    for (int i = 0; i < 2000; ++i) {
        const Position place{i * 7919 % 5003 - 2500.5, i * 104729 % 4001 - 2000.5};
        const bool is_near =
            std::ranges::any_of(kept, [=](Position p) { return std::hypot(p.x - place.x, p.y - place.y) < 250; });
        EXPECT_EQ(places.has_near(place), is_near) << i;
        refused += is_near ? 1 : 0;
        if (!is_near) {
            places.add(place);
            kept.push_back(place);
        }
    }
    EXPECT_GT(refused, 1000);
    EXPECT_GT(kept.size(), 100U);
}

TEST(Labels, lines_are_joined_where_two_meet) {
    const Path a{{0, 0}, {1, 0}}, b{{2, 0}, {1, 0}}, c{{2, 0}, {3, 0}}, d{{3, 0}, {4, 0}}, e{{3, 0}, {3, 1}};
    EXPECT_THAT(joined_lines({&b, &a, &c}), testing::ElementsAre(Path{{0, 0}, {1, 0}, {2, 0}, {3, 0}}));
    // Three ends at one place stay apart.
    EXPECT_EQ(joined_lines({&c, &d, &e}).size(), 3U);
    const Path f{{0, 0}, {0, 1}}, g{{0, 1}, {1, 0}};
    const std::vector<Path> rings = joined_lines({&a, &f, &g});
    ASSERT_EQ(rings.size(), 1U);
    EXPECT_EQ(rings[0].size(), 4U);
    const Path closed{{0, 0}, {1, 0}, {1, 1}, {0, 0}};
    EXPECT_THAT(joined_lines({&closed}), testing::ElementsAre(closed));
}

TEST(Scale_Bars, have_lengths_on_the_ellipsoid) {
    const auto metres = [](const char* projection, Position middle, double scale, std::optional<Position> center = {}) {
        return metres_per_pixel(*make_projection(projection, center), {middle, scale, {400, 300}});
    };
    // A degree of the equator and of the parallel of 60 degrees, at 10 pixels a degree.
    EXPECT_NEAR(metres("equirectangular", {20, 0}, 10), 11131.949, 0.01);
    EXPECT_NEAR(metres("equirectangular", {20, 60}, 10), 5580.022, 0.5);
    EXPECT_NEAR(metres("mercator", {-70, 0}, 10), 11131.949, 0.01);
    EXPECT_NEAR(metres("mercator", {-70, 75.4563}, 10), 5580.022, 1); // the same parallel
    EXPECT_EQ(metres("plane", {0, 0}, 10), 0);
    EXPECT_EQ(metres("mercator", {500, 0}, 10), 0);
    if (WITH_PROJ) {
        // The spheres of radius 6371008.8 keep lengths in the middle but for the ellipsoid's radii, within 0.5 percent.
        EXPECT_NEAR(metres("orthographic", {0, 0}, 0.001, Position{10, 50}), 1000, 5);
        EXPECT_NEAR(metres("EPSG:32633", {500000, 5500000}, 0.01), 100 / 0.9996, 0.001);
        EXPECT_EQ(metres("orthographic", {6400000, 0}, 0.001, Position{10, 50}), 0);
    }
    EXPECT_EQ(scale_bar(1000, false, 260).text, "200 km");
    EXPECT_NEAR(scale_bar(1000, false, 260).pixels, 200, 1e-9);
    EXPECT_EQ(scale_bar(1, false, 99).text, "50 m");
    EXPECT_EQ(scale_bar(1609.344, true, 150).text, "100 mi");
    EXPECT_EQ(scale_bar(10, true, 100).text, "2000 ft");
    EXPECT_EQ(scale_bar(1e5, false, 100).text, "10\u202f000 km");
}

} // namespace
} // namespace vorna::drawing::map
