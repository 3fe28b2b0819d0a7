// The drawing library as a program uses it.
#include <algorithm>
#include <cstdlib>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/drawing.h"
#include "tests/support/command_line.h"
#include "tests/support/png_pixels.h"

namespace vorna::drawing {
namespace {

using replay_tests::Png_Pixels;
using replay_tests::read_colors;
using replay_tests::read_file;
using testing::HasSubstr;
using testing::ThrowsMessage;

const std::string box = "v 0 0 0\nv 2 0 0\nv 2 1 0\nv 0 1 0\nv 0 0 -1\nv 2 0 -1\nf 1 2 3 4\nf 1 5 6 2\n";
const std::string land = R"({"type":"Feature","properties":{"name":"Land"},"geometry":{"type":"Polygon",
    "coordinates":[[[-20,-10],[30,-12],[25,14],[-12,18],[-20,-10]]]}})";

std::vector<std::uint8_t> samples_of(const Image& image) {
    std::vector<std::uint8_t> samples;
    for (const VT_RGB32& pixel : image.pixels) {
        samples.insert(samples.end(), {pixel.red, pixel.green, pixel.blue, pixel.alpha});
    }
    return samples;
}

class Drawing_Library : public testing::Test {
protected:
    // The image in memory, in a file, and in the command's file are the same.
    template <class... Drawn>
    void expect_same(const std::string& input, const Image_Settings& settings, std::vector<std::string> options,
                     const Drawn&... drawn) {
        const std::string file = folder.file("library.png"), other = folder.file("command.png");
        const std::string digest = write_image(file, drawn..., settings);
        options.insert(options.begin(), {"render", input, "-o", other, "--hash", "--size",
                                         std::to_string(settings.size.x) + "x" + std::to_string(settings.size.y)});
        if (std::ranges::find(options, "--background") == options.end()) {
            options.insert(options.end(), {"--background", "white"});
        }
        const replay_tests::Outcome outcome = replay_tests::run_vorna(options);
        ASSERT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.output, digest + "\n");
        EXPECT_EQ(read_file(file), read_file(other));
        if (!settings.indexed) {
            EXPECT_EQ(samples_of(make_image(drawn..., settings)), read_colors(file).bytes);
        }
    }

    replay_tests::Temporary_Folder folder;
};

TEST_F(Drawing_Library, draws_models_as_the_command_does) {
    const std::string file = folder.file("box.obj", box);
    const Model model({file});
    EXPECT_EQ(model.triangle_count(), 4U);
    Model_View view;
    expect_same(file, {.size = {90, 60}}, {}, model, view);
    expect_same(file, {.size = {90, 60}, .indexed = true}, {"--colors", "8"}, model, view);
    expect_same(file, {.size = {90, 60}, .transparent = true, .supersample = 3, .threads = 2},
                {"--background", "none", "--supersample", "3"}, model, view);
    view.look.shading = model::Shading::hidden_line;
    expect_same(file, {.size = {90, 60}, .background = {40, 30, 20, 255}, .smooth_lines = true},
                {"--shading", "hidden-line", "--antialias", "--background", "#141e28"}, model, view);
    view = {};
    view.axes = view.scale_bar = true;
    view.camera.projection = model::Projection::orthographic;
    expect_same(file, {.size = {90, 60}, .background = {30, 20, 10, 255}, .lower_background = VT_RGB32{0, 200, 100, 255}},
                {"--ortho", "--axes", "--scale-bar", "--background", "#0a141e,#64c800"}, model, view);
    view = {};
    view.edges = model::Edge_Choice::features;
    view.color = VT_RGB32{30, 20, 200, 255};
    view.camera.projection = model::Projection::orthographic;
    view.camera.aim = model::Aim{{3, 4, 5}, {1, 0.5, 0}, {}};
    expect_same(file, {.size = {90, 60}}, {"--edges=feature", "--color", "#c8141e", "--ortho", "--camera", "3,4,5,1,0.5,0"},
                model, view);
}

TEST_F(Drawing_Library, draws_maps_as_the_command_does) {
    const std::string file = folder.file("land.json", land);
    map::Map_Settings settings;
    expect_same(file, {.size = {90, 60}}, {}, Map(file));
    settings.border = map::Dashes{6, 4};
    settings.outline = settings.border;
    settings.water = VT_RGB32{250, 200, 180, 255};
    settings.bbox = map::Extent{-10, -10, 40, 20};
    const Map map("land", "json", land, settings);
    const auto with = [](const std::vector<std::string>& more) {
        std::vector<std::string> options{"--border", "dashed", "--water", "#b4c8fa", "--bbox=-10,-10,40,20"};
        options.insert(options.end(), more.begin(), more.end());
        return options;
    };
    expect_same(file, {.size = {90, 60}, .smooth_lines = true}, with({"--antialias"}), map);
    expect_same(file, {.size = {90, 60}, .indexed = true}, with({"--colors", "8"}), map);
    expect_same(file, {.size = {90, 60}, .supersample = 2, .threads = 3}, with({"--supersample", "2"}), map);
    EXPECT_EQ(make_image(map, {.size = {100, 0}}).height, 60);
}

TEST_F(Drawing_Library, meshes_of_arrays_are_drawn_like_files) {
    model::Mesh mesh;
    mesh.positions = {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {0, 1, 0}, {0, 0, -1}, {2, 0, -1}};
    mesh.triangles = {0, 1, 2, 0, 2, 3, 0, 4, 5, 0, 5, 1};
    Model_View view;
    view.look.shading = model::Shading::flat;
    const Image_Settings settings{.size = {90, 60}};
    EXPECT_EQ(samples_of(make_image(Model(mesh), view, settings)),
              samples_of(make_image(Model({folder.file("box.obj", box)}), view, settings)));
}

TEST_F(Drawing_Library, tells_what_is_wrong) {
    const Model model({folder.file("box.obj", box)});
    const auto make = [&](const Image_Settings& settings) { return make_image(model, {}, settings); };
    EXPECT_THAT([&] { make({.size = {0, 10}}); }, ThrowsMessage<Usage_Error>(HasSubstr("size.x: expected 1 to 131072, found 0")));
    EXPECT_THAT([&] { make({.supersample = 9}); }, ThrowsMessage<Usage_Error>(HasSubstr("supersample: expected 1 to 8")));
    EXPECT_THAT([&] { make({.transparent = true, .indexed = true}); }, ThrowsMessage<Usage_Error>(HasSubstr("transparent")));
    EXPECT_THAT(
        [&] {
            make({.size = {200000, 3000}, .max_memory = 1 << 20});
        },
        ThrowsMessage<Usage_Error>(HasSubstr("or more for this image")));
    Image_Settings without_module;
    without_module.module = folder.file("none.vrd");
    EXPECT_THAT([&] { make(without_module); }, ThrowsMessage<std::exception>(HasSubstr("none.vrd")));
    EXPECT_THAT([&] { Model({folder.file("none.obj")}); }, ThrowsMessage<Usage_Error>(HasSubstr("none.obj")));
    EXPECT_THAT([&] { Map(folder.file("box.obj")); }, ThrowsMessage<Usage_Error>(HasSubstr("expected a map")));
    // By the names of the library's members, which are not those of the command's options.
    const std::string point = folder.file("point.json", R"({"type":"Point","coordinates":[1,2]})");
    EXPECT_THAT([&] { Map(point, {.clip_to = "sea"}); }, ThrowsMessage<Usage_Error>(testing::StartsWith("clip_to: expected ")));
    EXPECT_THAT([&] { make({.max_memory = 1}); }, ThrowsMessage<Usage_Error>(testing::StartsWith("max_memory: expected ")));
    model::Mesh mesh;
    mesh.positions.resize(3);
    mesh.triangles = {0, 1, 7};
    EXPECT_THAT([&] { Model{mesh}; }, ThrowsMessage<Usage_Error>(HasSubstr("mesh: expected lists that belong together")));
    EXPECT_THAT([&] { write_image(folder.file("no") + "/x.png", model, {}, {}); },
                ThrowsMessage<std::exception>(HasSubstr("x.png")));
}

// Nothing is drawn otherwise than it is asked for: no setting is ignored, and none makes a drawing run without end.
TEST_F(Drawing_Library, refuses_settings_outside_of_their_ranges) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN(), infinite = std::numeric_limits<double>::infinity();
    const std::string file = folder.file("box.obj", box);
    EXPECT_THAT([&] { Model({file}, {.threads = 1025}); }, ThrowsMessage<Usage_Error>(HasSubstr("threads: expected 0 to 1024")));
    for (const double crease : {-1.0, 181.0, nan}) {
        EXPECT_THAT([&] { Model({file}, {.crease = crease}); },
                    ThrowsMessage<Usage_Error>(HasSubstr("crease: expected 0 to 180")));
    }
    const Model model({file});
    const auto refused = [&](const char* message, auto change) {
        Model_View view;
        change(view);
        EXPECT_THAT([&] { make_image(model, view, {.size = {9, 9}}); }, ThrowsMessage<Usage_Error>(HasSubstr(message)));
    };
    for (const std::int32_t pixels : {-1, 65, INT32_MAX}) {
        refused("line_width: expected 1 to 64", [=](Model_View& view) { view.line_width = pixels; });
        refused("point_size: expected 0 to 64", [=](Model_View& view) { view.point_size = pixels; });
    }
    for (const double number : {nan, infinite, -1.0}) {
        refused("camera.zoom: expected 0.01 to 1000", [=](Model_View& view) { view.camera.zoom = number; });
        refused("camera.half_tangent: expected", [=](Model_View& view) { view.camera.half_tangent = number; });
        refused("look.specular: expected 0 to 10", [=](Model_View& view) { view.look.specular = number; });
    }
    refused("look.light: expected a direction", [](Model_View& view) { view.look.light = {0, 0, 0}; });
    refused("look.light: expected a direction", [=](Model_View& view) { view.look.light.y = nan; });
    refused("camera: expected two places", [=](Model_View& view) { view.camera.aim = model::Aim{{nan, 0, 0}, {}, {}}; });
    refused("scale_bar: expected a camera without", [](Model_View& view) { view.scale_bar = true; });
    refused("studio: expected lit", [](Model_View& view) {
        view.studio = true;
        view.look.tint = model::Tint::numbers;
    });
    EXPECT_THAT([&] { make_image(model, {}, {.threads = 1025}); },
                ThrowsMessage<Usage_Error>(HasSubstr("threads: expected 0 to")));

    const auto refused_map = [](const char* message, auto change) {
        map::Map_Settings settings;
        change(settings);
        EXPECT_THAT([&] { Map("land", "json", land, settings); }, ThrowsMessage<Usage_Error>(HasSubstr(message)));
    };
    refused_map("bbox: expected", [=](map::Map_Settings& s) { s.bbox = map::Extent{0, 0, nan, 1}; });
    refused_map("bbox: expected", [](map::Map_Settings& s) { s.bbox = map::Extent{0, 1, 1, 0}; });
    refused_map("center: expected -90 to 90", [](map::Map_Settings& s) { s.center = map::Position{0, 91}; });
    refused_map("opacity: expected 0 to 1", [=](map::Map_Settings& s) { s.opacity = nan; });
    refused_map("graticule: expected 0.1 to 90", [](map::Map_Settings& s) { s.graticule = 1e-9; });
    refused_map("border: expected lengths", [](map::Map_Settings& s) { s.border = map::Dashes{3}; });
    refused_map("outline: expected lengths", [](map::Map_Settings& s) { s.outline = map::Dashes{3, 0}; });
    refused_map("border_width: expected 1 to 1000", [](map::Map_Settings& s) { s.border_width = 0; });
    refused_map("marker_size: expected", [](map::Map_Settings& s) { s.marker.size = INT32_MAX; });
    refused_map("label_size: expected", [](map::Map_Settings& s) { s.label_size = 3; });
    const Map map("land", "json", land);
    EXPECT_THAT(
        [&] {
            make_image(map, {.size = {INT32_MAX, 0}});
        },
        ThrowsMessage<Usage_Error>(HasSubstr("size.x: expected 1 to")));
}

TEST_F(Drawing_Library, tells_of_textures_that_are_left_out) {
    folder.file("paint.mtl", "newmtl paint\nKd 1 x 1\nmap_Kd gone.png\n");
    const Model model(
        {folder.file("m.obj", "mtllib paint.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nusemtl paint\nf 1/1 2/1 3/1\n")});
    EXPECT_THAT(model.warnings(), testing::ElementsAre(HasSubstr("paint.mtl:2: expected a colour channel, found 'x'")));
    std::vector<std::string> warnings;
    make_image(model, {}, {.size = {9, 9}}, &warnings);
    EXPECT_THAT(warnings, testing::ElementsAre(HasSubstr("gone.png")));
}

TEST_F(Drawing_Library, the_program_of_the_page_draws_its_images) {
    const std::string knot = folder.file("knot.png"), islands = folder.file("islands.png");
    ASSERT_EQ(std::system(("'" DRAWING_PROGRAM "' '" + knot + "' '" + islands + "'").c_str()), 0);
    for (const auto& [drawn, shown] : {std::pair(knot, "knot.png"), {islands, "islands.png"}}) {
        const Png_Pixels a = read_colors(drawn), b = read_colors(std::string(PAGE_IMAGES) + '/' + shown);
        EXPECT_EQ(a.width, b.width);
        EXPECT_EQ(a.bytes, b.bytes) << shown;
    }
}

} // namespace
} // namespace vorna::drawing
