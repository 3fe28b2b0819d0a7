// Projections, and what is cut at the map's edges.
#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/map/globe_cutter.h"
#include "drawing/map/projection.h"

namespace vorna::drawing::map {
namespace {

std::vector<std::string> projection_names() {
    std::vector<std::string> names{"equirectangular", "mercator"};
    if (WITH_PROJ) {
        names.insert(names.end(), {"robinson", "orthographic", "equal-area", "winkel-tripel", "+proj=lcc +lat_1=30 +lat_2=60"});
    }
    return names;
}

double area(const Face& face) {
    double sum = 0;
    for (const Path& ring : face) {
        double twice = 0;
        for (std::size_t i = 0; i < ring.size(); ++i) {
            const Position &a = ring[i], &b = ring[(i + 1) % ring.size()];
            twice += a.x * b.y - b.x * a.y;
        }
        sum += std::abs(twice) / 2;
    }
    return sum;
}

// Whichever way it runs and whatever the ring does elsewhere.
TEST(Globe, neighbours_have_the_same_places_along_their_border_to_the_last_bit) {
    // Two faces share the side from (170.1, -10.3) over the antimeridian to (-171.7, 20.9).
    const Path west{{170.1, -10.3}, {-171.7, 20.9}, {175.3, 40.7}, {160.2, 3.3}};
    const Path east{{-150.3, 5.5}, {-171.7, 20.9}, {170.1, -10.3}, {-160, -20}};
    for (const std::string& name : projection_names()) {
        for (const double center : {0.0, 151.3, -130.0}) {
            if (name.starts_with('+') && center != 0) {
                continue;
            }
            const auto projection =
                make_projection(name, name.starts_with('+') ? std::nullopt : std::optional(Position{center, 0}));
            std::vector<Position> a, b, common;
            for (const auto& [ring, places] : {std::pair(&west, &a), {&east, &b}}) {
                for (const Path& piece : project_face({*ring}, *projection)) {
                    places->insert(places->end(), piece.begin(), piece.end());
                }
                std::sort(places->begin(), places->end());
            }
            std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(common));
            const double seen = name == "orthographic" && center == 0 ? 0 : 60; // of 62 half degrees on the way
            EXPECT_GE(static_cast<double>(common.size()), name == "equirectangular" ? 2 : seen) << name << ' ' << center;
        }
    }
}

TEST(Globe, rings_are_cut_at_the_maps_edge_and_led_around_the_pole) {
    const auto plate = make_projection("equirectangular", std::nullopt);
    const Face across = project_face({{{170, 0}, {-170, 0}, {-170, 10}, {170, 10}}}, *plate);
    EXPECT_EQ(across.size(), 2U);
    EXPECT_NEAR(area(across), 200, 1e-9);
    Path around_pole;
    for (int x = -180; x <= 180; x += 20) {
        around_pole.push_back({static_cast<double>(x), -70});
    }
    EXPECT_NEAR(area(project_face({around_pole}, *plate)), 360 * 20, 1e-9);
    // The same with a jump where files are stitched together, and with the whole globe's box.
    around_pole.pop_back();
    EXPECT_NEAR(area(project_face({around_pole}, *plate)), 360 * 20, 1e-9);
    EXPECT_NEAR(area(project_face({{{-180, -90}, {180, -90}, {180, 90}, {-180, 90}}}, *plate)), 360 * 180, 1e-9);
    const auto moved = make_projection("equirectangular", Position{150, 0});
    EXPECT_EQ(project_face({{{170, 0}, {-170, 0}, {-170, 10}, {170, 10}}}, *moved).size(), 1U);
}

TEST(Globe, no_line_leads_across_the_picture) {
    Path equator, meridian;
    for (int x = -180; x <= 180; x += 10) {
        equator.push_back({static_cast<double>(x), 12});
        meridian.push_back({-170, static_cast<double>(x) / 2});
    }
    const Path zigzag{{179, 80}, {-179, 81}, {178, 89}, {-100, -89}, {95, -60}, {-170, 0}};
    for (const std::string& name : projection_names()) {
        const auto projection = make_projection(name, std::nullopt);
        Position low{1e300, 1e300}, high{-1e300, -1e300};
        std::vector<Path> pieces;
        for (const Path& line : {equator, meridian, zigzag}) {
            std::ranges::move(project_line(line, *projection), std::back_inserter(pieces));
        }
        for (const Path& piece :
             project_face({{{-180, -90}, {0, -90}, {180, -90}, {180, 90}, {0, 90}, {-180, 90}}}, *projection)) {
            for (const Position& p : piece) {
                low = {std::min(low.x, p.x), std::min(low.y, p.y)};
                high = {std::max(high.x, p.x), std::max(high.y, p.y)};
            }
        }
        const double globe = std::hypot(high.x - low.x, high.y - low.y);
        for (const Path& piece : pieces) {
            for (std::size_t i = 1; i < piece.size() && !projection->keeps_straight(); ++i) {
                EXPECT_LT(std::hypot(piece[i].x - piece[i - 1].x, piece[i].y - piece[i - 1].y), globe / 20) << name;
            }
        }
    }
}

TEST(Globe, known_places) {
    const auto mercator = make_projection("mercator", std::nullopt);
    EXPECT_NEAR(mercator->place_of({10, 85.0511287798066})->y, 180, 1e-9);
    EXPECT_FALSE(project_point({10, 86}, *mercator));
    if (WITH_PROJ) {
        // Robinson's table: the pole line is 0.5322 as long as the equator.
        const auto robinson = make_projection("robinson", std::nullopt);
        EXPECT_NEAR(robinson->place_of({180, 90})->x / robinson->place_of({180, 0})->x, 0.5322, 1e-4);
        EXPECT_FALSE(project_point({180, 0}, *make_projection("orthographic", std::nullopt)));
    }
    EXPECT_THROW(make_projection("flat", std::nullopt), Map_Error);
    EXPECT_THROW(make_projection("+proj=nothing", std::nullopt), Map_Error);
}

} // namespace
} // namespace vorna::drawing::map
