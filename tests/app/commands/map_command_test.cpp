// vorna render with maps and drawings as a user runs it.
#include <algorithm>
#include <random>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/rendering.h"

namespace vorna::drawing::map {
namespace {

using model::Picture;
using replay_tests::Outcome;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

using Color = std::array<int, 3>;
constexpr Color black{0, 0, 0}, white{255, 255, 255}, red{255, 0, 0}, blue{0, 0, 255};

using Map_Command = model::Rendering;

std::string text_of(double x, double y) {
    std::ostringstream text;
    text.precision(17);
    text << '[' << (x > 180 ? x - 360 : x) << ',' << y << ']';
    return text.str();
}

// Cells of crooked sides that tile the globe from 150 degrees to 150 degrees west, 60 degrees south to north, each ring from
// another corner and either way round. Many are narrower than a pixel.
std::string crooked_tiling() {
    constexpr int columns = 60, rows = 40;
    std::mt19937 random(5); // NOLINT(bugprone-random-generator-seed): the same cells each time
    const auto crooked = [&] { return static_cast<double>(random() % 1000) / 1000 - 0.5; };
    std::vector<std::string> corners;
    for (int y = 0; y <= rows; ++y) {
        for (int x = 0; x <= columns; ++x) {
            const bool rim = x == 0 || y == 0 || x == columns || y == rows;
            corners.push_back(text_of(150 + x + (rim ? 0 : 0.9 * crooked()), -60 + 3 * y + (rim ? 0 : 2.7 * crooked())));
        }
    }
    std::string features;
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x) {
            const int at = y * (columns + 1) + x;
            std::vector<int> ring{at, at + 1, at + columns + 2, at + columns + 1};
            std::rotate(ring.begin(), ring.begin() + static_cast<int>(random() % 4), ring.end());
            if (random() % 2) {
                std::reverse(ring.begin(), ring.end());
            }
            std::string coordinates;
            for (const int corner : {ring[0], ring[1], ring[2], ring[3], ring[0]}) {
                coordinates += (coordinates.empty() ? "" : ",") + corners[static_cast<std::size_t>(corner)];
            }
            features += (features.empty() ? "" : ",") +
                        std::string(R"({"type":"Feature","properties":{},"geometry":{"type":"Polygon","coordinates":[[)") +
                        coordinates + "]]}}";
        }
    }
    return R"({"type":"FeatureCollection","features":[)" + features + "]}";
}

TEST_F(Map_Command, neighbours_show_no_seams_and_draw_each_pixel_once) {
    const std::string map = folder.file("tiling.geojson", crooked_tiling());
    std::vector<std::vector<std::string>> views{{"--bbox", "151,-24,209,24"},
                                                {"--bbox", "165,-15,195,15", "--projection", "mercator", "--size", "37x41"}};
    if (WITH_PROJ) {
        views.push_back({"--bbox", "175,-20,185,20", "--projection", "orthographic", "--center", "180,0"});
        views.push_back({"--bbox", "165,-12,195,12", "--projection", "robinson", "--center", "170,0", "--size", "301x207"});
    }
    for (std::vector<std::string>& view : views) {
        view.insert(view.end(), {"--border", "none", "--fill", "#ff0000", "--background", "white"});
        if (std::ranges::find(view, "--size") == view.end()) {
            view.insert(view.end(), {"--size", "120x100"});
        }
        const Picture solid = render(map, view);
        EXPECT_EQ(solid.count(red), solid.width * solid.height) << testing::PrintToString(view);
        view.insert(view.end(), {"--opacity", "0.5"});
        const Picture blended = render(map, view);
        EXPECT_EQ(blended.count(blended.at(0, 0)), blended.width * blended.height) << testing::PrintToString(view);
        EXPECT_NE(blended.at(0, 0), red);
    }
    // In the whole map, where the cells lie at both ends, there is nothing between one blend and none.
    const Picture whole =
        render(map, {"--fill", "#ff0000", "--opacity", "0.5", "--border", "none", "--size", "200x90", "--bbox=-180,-90,180,90"});
    EXPECT_EQ(std::set<Color>(whole.pixels.begin(), whole.pixels.end()).size(), 2U);
}

std::string feature(const std::string& type, const std::string& coordinates, const std::string& properties = "{}") {
    return R"({"type":"Feature","properties":)" + properties + R"(,"geometry":{"type":")" + type + R"(","coordinates":)" +
           coordinates + "}}";
}

std::string collection(const std::vector<std::string>& features) {
    std::string text;
    for (const std::string& feature : features) {
        text += (text.empty() ? "" : ",") + feature;
    }
    return R"({"type":"FeatureCollection","features":[)" + text + "]}";
}

TEST_F(Map_Command, holes_stay_open_and_colours_are_exact_with_a_palette_too) {
    const std::string map =
        folder.file("map.json", collection({feature("MultiPolygon",
                                                    "[[[[0,0],[4,0],[4,4],[0,4],[0,0]],[[1,1],[3,1],[3,3],[1,3],[1,1]]],"
                                                    "[[[6,0],[8,0],[8,4],[6,4],[6,0]]]]",
                                                    R"({"fill":"#12345a"})"),
                                            feature("Point", "[2,2]")}));
    for (const char* colors : {"32", "8"}) {
        const Picture picture = render(map, {"--bbox", "0,0,8,4", "--size", "80x40", "--colors", colors, "--border", "none",
                                             "--marker", "block", "--marker-size", "4", "--marker-color", "#0000ff"});
        const Color fill{0x12, 0x34, 0x5A};
        EXPECT_EQ(picture.count(fill), 40 * 40 - 20 * 20 + 20 * 40) << colors;
        EXPECT_EQ(picture.at(15, 15), white);
        EXPECT_EQ(picture.at(70, 5), fill);
        EXPECT_EQ(picture.count(blue), 16);
        EXPECT_EQ(picture.at(20, 20), blue);
    }
}

TEST_F(Map_Command, dashes_run_on_over_positions_and_along_common_borders_once) {
    std::string many = "[0,1]";
    for (int i = 1; i <= 400; ++i) {
        many += ",[" + std::to_string(i / 40.0) + ",1]";
    }
    const std::vector<std::string> options{"--bbox",   "0,0,10,2", "--size",         "400x80", "--fill",       "none",
                                           "--border", "dash-dot", "--border-color", "black",  "--projection", "plane"};
    const Picture one = render(folder.file("one.json", feature("LineString", "[[0,1],[10,1]]")), options);
    const Picture fine = render(folder.file("many.json", feature("LineString", '[' + many + ']')), options);
    EXPECT_EQ(one.pixels, fine.pixels);
    EXPECT_GT(one.count(black), 200);
    EXPECT_LT(one.count(black), 320);

    const std::string lower = "[[[0,0],[10,0],[10,1],[0,1],[0,0]]]", upper = "[[[0,1],[10,1],[10,2],[0,2],[0,1]]]";
    std::vector<std::string> inner = options;
    inner.insert(inner.end(), {"--outline", "none"});
    const Picture common =
        render(folder.file("two.json", collection({feature("Polygon", lower), feature("Polygon", upper)})), inner);
    EXPECT_GT(common.count(black), 200);
    EXPECT_LT(common.count(black), 320);
}

TEST_F(Map_Command, casings_lie_below_all_lines) {
    const std::string map = folder.file("cross.json", feature("MultiLineString", "[[[0,5],[10,5]],[[5,0],[5,10]]]"));
    const Picture picture = render(map, {"--bbox", "0,0,10,10", "--size", "100x100", "--border-color", "#ff0000",
                                         "--border-width", "3", "--casing", "#0000ff", "--projection", "plane"});
    EXPECT_EQ(picture.at(50, 50), red);
    EXPECT_EQ(picture.at(55, 49), red);
    EXPECT_EQ(picture.at(49, 45), red);
    EXPECT_EQ(picture.at(20, 46), blue);
    EXPECT_EQ(picture.at(20, 43), white);
}

TEST_F(Map_Command, a_shape_clips_all_that_is_drawn_and_overlays_combine_like_inks) {
    const std::string map = folder.file(
        "map.json", collection({feature("Polygon", "[[[0,0],[5,0],[5,10],[0,10],[0,0]]]", R"({"name":"West","fill":"#ff00ff"})"),
                                feature("Polygon", "[[[5,0],[10,0],[10,10],[5,10],[5,0]]]", R"({"fill":"#00ff00"})")}));
    const std::string over = folder.file("over.json", feature("Polygon", "[[[0,0],[10,0],[10,5],[0,5],[0,0]]]"));
    const std::vector<std::string> options{"--bbox",    "0,0,10,10", "--size",          "100x100", "--border", "none",
                                           "--overlay", over,        "--overlay-color", "#ffff00", "--merge",  "and"};
    const Picture merged = render(map, options);
    EXPECT_EQ(merged.at(20, 20), (Color{255, 0, 255}));
    EXPECT_EQ(merged.at(20, 80), red);
    EXPECT_EQ(merged.at(80, 80), (Color{0, 255, 0}));
    for (const char* shape : {"west", "0"}) {
        std::vector<std::string> clipped = options;
        clipped.insert(clipped.end(), {"--clip-to", shape});
        const Picture picture = render(map, clipped);
        EXPECT_EQ(picture.at(20, 80), red);
        EXPECT_EQ(picture.count(white), 50 * 100);
    }
}

TEST_F(Map_Command, labels_stay_inside_of_their_shapes_or_are_left_out) {
    const std::string map = folder.file(
        "map.json",
        collection({feature("Polygon", "[[[1,1],[9,1],[9,3],[1,3],[1,1]]]", R"({"name":"Gr\u00fcn","fill":"#00ff00"})"),
                    feature("Polygon", "[[[1,5],[2,5],[2,9],[1,9],[1,5]]]", R"({"name":"Red","fill":"#ff0000"})")}));
    const std::vector<std::string> options{"--bbox", "0,0,10,10", "--size",       "200x200", "--border",
                                           "none",   "--labels",  "--label-size", "30"};
    if (!WITH_FREETYPE) {
        std::vector<std::string> command{"render", map, "-o", folder.file("out.png")};
        command.insert(command.end(), options.begin(), options.end());
        EXPECT_THAT(replay_tests::run_vorna(command).errors, HasSubstr("found one without"));
        return;
    }
    const Picture picture = render(map, options);
    EXPECT_GT(picture.count(black), 200);
    EXPECT_LT(picture.count(black), 1000);
    EXPECT_EQ(picture.count(red), 20 * 80);
    for (std::uint32_t y = 0; y < 200; ++y) {
        for (std::uint32_t x = 0; x < 200; ++x) {
            const bool inside = x >= 20 && x < 180 && y >= 140 && y < 180;
            EXPECT_TRUE(inside || picture.at(x, y) != black) << x << ' ' << y;
        }
    }
}

TEST_F(Map_Command, drawings_have_their_own_colours_and_one_warning) {
    const std::string file = folder.file(
        "box.dxf",
        "0\nSECTION\n2\nENTITIES\n0\nHATCH\n62\n1\n2\nSOLID\n70\n1\n91\n1\n92\n3\n72\n0\n73\n1\n93\n3\n10\n0\n20\n0\n10\n"
        "9\n20\n0\n10\n0\n20\n9\n0\nLINE\n10\n0\n20\n5\n11\n10\n21\n5\n0\nRAY\n1\nx\n0\nENDSEC\n0\nEOF\n");
    const std::string warning = "vorna: warning: " + file + ": not drawn: 1 RAY\n";
    const Picture picture = render(file, {"--bbox", "0,0,10,10", "--size", "100x100"}, warning);
    EXPECT_EQ(picture.at(10, 80), red);
    EXPECT_EQ(picture.at(80, 20), white);
    EXPECT_EQ(picture.count(black), 100);
}

TEST_F(Map_Command, drawings_have_widths_dashes_and_letters_of_their_own_size) {
    std::string text =
        "0|SECTION|2|TABLES|0|LTYPE|2|Dashed|49|10|49|-10|0|BLOCK_RECORD|5|1B|2|*Paper_Space|0|ENDSEC|"
        "0|SECTION|2|ENTITIES|0|LINE|370|100|62|1|10|10|20|85.5|11|90|21|85.5|"
        "0|LWPOLYLINE|43|6|62|5|10|10|20|70|10|90|20|70|0|LINE|6|DASHED|10|10|20|50.5|11|90|21|50.5|"
        "0|LINE|6|DASHED|48|0.01|62|3|10|10|20|40.5|11|90|21|40.5|"
        "0|SOLID|67|1|62|5|10|0|20|0|11|50|21|0|12|0|22|50|13|50|23|50|0|LINE|67|1|62|1|370|50|10|0|20|75|11|100|21|75|"
        "0|ENDSEC|0|SECTION|2|OBJECTS|0|LAYOUT|100|AcDbPlotSettings|44|100|45|100|72|1|100|AcDbLayout|1|Sheet|330|1B|"
        "0|ENDSEC|0|EOF|";
    std::ranges::replace(text, '|', '\n');
    const std::string file = folder.file("pens.dxf", text);
    const std::vector<std::string> view{"--bbox", "0,0,100,100", "--size", "100x100"};
    const Picture whole = render(file, view);
    const Color green{0, 255, 0};
    EXPECT_EQ(whole.count(red), 4 * 80);   // 1 mm is four times as wide as usual
    EXPECT_EQ(whole.count(blue), 6 * 80);  // units of the drawing
    EXPECT_EQ(whole.count(black), 4 * 11); // dashes with both ends
    EXPECT_EQ(whole.at(15, 49), black);
    EXPECT_EQ(whole.at(25, 49), white);
    EXPECT_EQ(whole.count(green), 81); // dashes too small to be seen
    const auto zoomed = [&](std::vector<std::string> more) {
        more.insert(more.end(), {"--bbox", "0,0,100,100", "--size", "700x700"});
        return render(file, more).pixels;
    };
    EXPECT_EQ(zoomed({"--tile-size", "64"}), zoomed({}));
    const Picture sheet = render(file, {"--layout", "sheet", "--size", "400x400"});
    EXPECT_EQ(sheet.count(blue), 200 * 200);
    EXPECT_EQ(sheet.count(red), 400 * 2); // 0.5 mm at four pixels for one
    EXPECT_EQ(sheet.at(0, 399), blue);
}

// A reader that needs more memory leaves the file to one that needs less.
TEST_F(Map_Command, more_memory_refuses_nothing_that_less_memory_allows) {
    std::string features;
    for (int line = 0; line < 4; ++line) {
        std::string positions;
        for (int i = 0; i < 60000; ++i) {
            positions += (i == 0 ? "[" : ",[") + std::to_string(i % 10) + ',' + std::to_string(i % 7) + ']';
        }
        features += (line == 0 ? "" : ",") + feature("LineString", '[' + positions + ']');
    }
    const std::string text = R"({"type":"FeatureCollection","features":[)" + features + "]}",
                      map = folder.file("lines.json", text);
    bool is_drawn = false;
    for (std::size_t times = 10; times < 40; times += 2) {
        const replay_tests::Outcome outcome =
            replay_tests::run_vorna({"render", map, "-o", folder.file("out.png"), "--size", "9x9", "--threads", "1",
                                     "--max-memory", std::to_string(times * text.size() / 1024) + 'K'});
        EXPECT_TRUE(outcome.status == 0 || !is_drawn) << times << ": " << outcome.errors;
        is_drawn = is_drawn || outcome.status == 0;
    }
    EXPECT_TRUE(is_drawn);
}

TEST_F(Map_Command, wrong_usage_and_input_is_said_in_one_line_and_leaves_no_file) {
    const std::string map = folder.file("map.json", feature("Polygon", "[[[0,0],[5,0],[5,9]]]"));
    const std::string plan = folder.file("plan.json", feature("Point", "[500000,4000000]"));
    const std::string model = folder.file("model.obj", "v 0 0 0\nv 4 0 0\nv 0 2 0\nf 1 2 3\n");
    const std::string sheet = folder.file("sheet.dxf", "0\nSECTION\n2\nENTITIES\n0\nENDSEC\n0\nEOF\n");
    const std::string output = folder.file("out.png");
    const struct {
        std::vector<std::string> arguments;
        std::string message;
    } cases[] = {
        {{map, "--view", "front"}, "--view: expected a model, found " + map},
        {{model, "--bbox", "0,0,1,1"}, "--bbox: expected a map or drawing, found " + model},
        {{map, "--bbox", "0,1,2"}, "--bbox: expected west,south,east,north with south below north, found '0,1,2'"},
        {{map, "--border", "wavy"}, "--border: expected none, solid, dashed"},
        {{map, "--border", "20000,1"}, "--border: expected none, solid, dashed"},
        {{map, "--border", "0,0"}, "--border: expected none"},
        {{map, "--fill", "puce"}, "--fill: expected palette, none"},
        {{map, "--flip-y"}, "--flip-y: expected coordinates of a plane, found degrees"},
        {{map, "--label-key", "n"}, "--label-key: expected --labels or --label-by beside it, found neither"},
        {{map, "--title", "T", "--halo", "2"}, "--halo: expected --labels or --label-by beside it, found neither"},
        {{map, "--map-scale", "km", "--projection", "plane"}, "--map-scale: expected a projection of the globe, found a plane"},
        {{map, "--fill-by", "n", "--classes", "categories", "--breaks", "1,2"},
         "--breaks: expected classes of numbers beside it, found --classes categories"},
        {{map, "--filter", "a = "}, "--filter: column 5: expected a value, found the end"},
        {{map, "--fill-by", "none"}, "expected a field of " + map + " that has values; found 'none'"},
        {{map, "--fill-by", "name", "--ramp", "Rainbow"}, "--ramp: expected one of YlGn"},
        {{map, "--fill-by", "name", "--breaks", "3,2"}, "--breaks: expected up to 63 increasing numbers"},
        {{map, "--clip-to", "1"}, "--clip-to: expected a shape of " + map + " by its name, its id or its number, 0, found '1'"},
        {{map, "--projection", "flat"}, "--projection: expected equirectangular, mercator, albers-usa, plane"},
        {{map, "--projection", "plane", "--graticule", "10"}, "--graticule: expected a projection of the globe"},
        {{map, "--font", "x.ttf"}, "--font: expected --labels or another option for texts"},
        {{map, "--layout", "Back"}, "--layout: expected a drawing (DXF), found " + map},
        {{sheet, "--layout", "Back"}, "--layout: expected a layout of " + sheet + ": Model; found 'Back'"},
        {{map, "--casing-width", "3"}, "--casing-width: expected --casing beside it, found none"},
        {{map, "--turntable", "3"}, "--turntable: expected a model, found " + map},
        {{map, "--merge", "and"}, "--merge: expected --overlay beside it"},
        {{map, "--opacity", "0.5", "--colors", "8"}, "--opacity: expected 32 bits a pixel"},
        {{map, "--marker", "heart"}, "--marker: expected one of dot"},
        {{plan, "--projection", "mercator"}, plan + ": shape 0: expected degrees, found 500000"},
        {{folder.file("none.geojson")}, "none.geojson: cannot be read"},
    };
    const std::vector<std::string> before = folder.names();
    for (const auto& [arguments, message] : cases) {
        std::vector<std::string> command{"render", "-o", output};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const Outcome outcome = replay_tests::run_vorna(command);
        EXPECT_EQ(outcome.status, 2) << message;
        EXPECT_THAT(outcome.errors, AllOf(StartsWith("vorna: "), HasSubstr(message)));
        EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
        EXPECT_EQ(folder.names(), before) << message;
    }
}

} // namespace
} // namespace vorna::drawing::map
