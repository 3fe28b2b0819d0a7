// Borders once each, and numbers unlike the neighbours'.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/map/borders.h"

namespace vorna::drawing::map {
namespace {

using testing::ElementsAre;

Shape shape_of(Face face) {
    Shape shape;
    shape.faces.push_back(std::move(face));
    return shape;
}

TEST(Borders, a_stretch_between_two_faces_is_one_line_whichever_way_they_run) {
    const Path left{{0, 0}, {1, 0}, {1, 1}, {1, 2}, {0, 2}};
    for (const Path& right : {Path{{1, 0}, {2, 0}, {2, 2}, {1, 2}, {1, 1}}, Path{{1, 1}, {1, 2}, {2, 2}, {2, 0}, {1, 0}}}) {
        const Borders borders = find_borders({shape_of({left}), shape_of({right})}, false);
        ASSERT_EQ(borders.lines.size(), 3U);
        std::vector<Path> shared;
        for (const Border& border : borders.lines) {
            if (border.shared) {
                shared.push_back(border.path);
            }
        }
        EXPECT_THAT(shared, ElementsAre(Path{{1, 0}, {1, 1}, {1, 2}}));
        EXPECT_THAT(borders.neighbours, ElementsAre(ElementsAre(1), ElementsAre(0)));
    }
}

TEST(Borders, rings_alone_are_closed_and_cuts_of_the_globe_are_no_borders) {
    const Path island{{10, 10}, {20, 10}, {20, 20}}, cut{{180, 60}, {170, 60}, {170, 70}, {180, 70}, {180, 65}};
    const std::vector<Shape> shapes{shape_of({island}), shape_of({cut})};
    const Borders on_globe = find_borders(shapes, true);
    ASSERT_EQ(on_globe.lines.size(), 2U);
    EXPECT_EQ(on_globe.lines[0].path, (Path{{10, 10}, {20, 10}, {20, 20}, {10, 10}}));
    EXPECT_EQ(on_globe.lines[1].path, (Path{{180, 60}, {170, 60}, {170, 70}, {180, 70}}));
    EXPECT_EQ(find_borders(shapes, false).lines[1].path.size(), 6U);
}

// Countries around one in the middle, in an order that makes a choice one by one fail.
TEST(Borders, six_numbers_are_enough_for_a_wheel_whose_hub_comes_last) {
    constexpr std::size_t rim = 15;
    std::vector<std::vector<std::size_t>> neighbours(rim + 1);
    for (std::size_t i = 0; i < rim; ++i) {
        neighbours[i] = {(i + 1) % rim, (i + rim - 1) % rim, rim};
        neighbours[rim].push_back(i);
    }
    const std::vector<std::size_t> numbers = numbers_unlike_neighbours(neighbours, 6);
    for (std::size_t s = 0; s <= rim; ++s) {
        for (const std::size_t other : neighbours[s]) {
            EXPECT_NE(numbers[s], numbers[other]);
        }
    }
}

} // namespace
} // namespace vorna::drawing::map
