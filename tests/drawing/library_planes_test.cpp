// Planes of images, samples and recordings of the drawing library.
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/drawing.h"
#include "drawing/files/load_limits.h"
#include "drawing/model/scene_renderer.h"
#include "tests/support/command_line.h"
#include "tests/support/png_pixels.h"

namespace vorna::drawing {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;
using Kind = Image_Samples::Kind;

const std::string box = "v 0 0 0\nv 2 0 0\nv 2 1 0\nv 0 1 0\nv 0 0 -1\nv 2 0 -1\nf 1 2 3 4\nf 1 5 6 2\n";

template <class Value> std::vector<Value> values_of(const Image_Samples& image) {
    std::vector<Value> values(image.size() / sizeof(Value));
    std::memcpy(values.data(), image.bytes.get(), image.size());
    return values;
}

model::Mesh box_mesh() {
    model::Mesh mesh;
    mesh.positions = {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {0, 1, 0}, {0, 0, -1}, {2, 0, -1}};
    mesh.triangles = {0, 1, 2, 0, 2, 3, 0, 4, 5, 0, 5, 1};
    return mesh;
}

class Library_Planes : public testing::Test {
protected:
    // The samples of the command's image.
    Image_Samples drawn_by_command(std::vector<std::string> options) {
        const std::string file = folder.file("command.png");
        options.insert(options.begin(), {"render", folder.file("box.obj", box), "-o", file, "--size", "90x60"});
        const replay_tests::Outcome outcome = replay_tests::run_vorna(options);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return read_samples(file);
    }

    replay_tests::Temporary_Folder folder;
};

TEST_F(Library_Planes, are_the_images_and_passes_of_the_command_from_every_camera) {
    const Model model({folder.file("box.obj", box)});
    for (const unsigned threads : {1U, 3U}) {
        Model_Images images(model, {}, {.threads = threads});
        for (const auto& [view, name] : {std::pair(model::View::front, "front"), std::pair(model::View::iso, "iso")}) {
            const Model_Image image = images.draw({.view = view}, {90, 60}, {true, true, true});
            EXPECT_EQ(values_of<std::uint8_t>(image.depths),
                      values_of<std::uint8_t>(drawn_by_command({"--view", name, "--pass", "depth"})));
            EXPECT_TRUE(compare_samples(image.colors, drawn_by_command({"--view", name, "--background", "white"})).is_same);
            EXPECT_THAT(values_of<std::int32_t>(image.faces), testing::IsSupersetOf({-1, 0, 1}));
            EXPECT_LT(image.near, image.far);
        }
    }
    EXPECT_EQ(Model_Images(model, {}, {}).draw({}, {9, 6}, {false, true, false}).colors.bytes, nullptr);
    EXPECT_THAT(
        [&] {
            Model_Images(model, {}, {}).draw({}, {0, 6});
        },
        ThrowsMessage<Usage_Error>(HasSubstr("size.x: expected 1 to")));
    EXPECT_THAT(
        [&] {
            Model_Images(model, {}, {}).draw({.lens = model::Lens{0, 1, 2, 3}}, {9, 6});
        },
        ThrowsMessage<Usage_Error>(HasSubstr("camera.lens.focal_x: expected 1 to")));
}

TEST_F(Library_Planes, faces_have_the_numbers_that_they_were_given_with) {
    model::Mesh first = box_mesh(), second = box_mesh();
    first.triangles = {0, 1, 2, 1, 1, 2, 0, 2, 3};
    second.triangles.erase(second.triangles.begin(), second.triangles.begin() + 6);
    const auto faces_of = [](const Model& model) {
        return values_of<std::int32_t>(Model_Images(model, {}, {}).draw({}, {90, 60}, {false, false, true}).faces);
    };
    std::vector<std::int32_t> expected = faces_of(Model(box_mesh()));
    std::ranges::transform(expected, expected.begin(), [](std::int32_t face) { return face > 0 ? face + 1 : face; });
    std::vector<model::Mesh> meshes{first, second};
    EXPECT_EQ(faces_of(Model(std::move(meshes))), expected);
}

TEST_F(Library_Planes, samples_survive_files_and_differ_where_they_differ) {
    for (const Kind kind : {Kind::colors, Kind::indices, Kind::depths}) {
        Image_Samples image = make_samples(kind, 7, 5);
        for (std::size_t i = 0; i < image.size(); ++i) {
            image.bytes.get()[i] = static_cast<std::uint8_t>(kind == Kind::indices ? i % 2 : 7 * i);
        }
        image.palette = kind == Kind::indices ? std::vector<VT_RGB32>{{1, 2, 3, 255}, {200, 100, 50, 255}} : image.palette;
        const std::string file = folder.file("samples.png");
        write_samples(file, image);
        EXPECT_EQ(png_of(image), replay_tests::read_file(file));
        const Image_Samples again = read_samples(file);
        EXPECT_TRUE(compare_samples(image, again).is_same);
        EXPECT_EQ(digest_of(image), digest_of(again));
        again.bytes.get()[0] ^= 1;
        const Comparison comparison = compare_samples(image, again);
        EXPECT_FALSE(comparison.is_same);
        EXPECT_EQ(comparison.count, 1);
        EXPECT_TRUE(compare_samples(image, again, Tolerance{256, 1}).is_same);
    }
    EXPECT_THROW(png_of(make_samples(Kind::faces, 2, 2)), Usage_Error);
    EXPECT_THROW(make_samples(Kind::colors, 0, 2), Usage_Error);
    EXPECT_THAT([&] { read_samples(folder.file("none.png")); }, ThrowsMessage<Usage_Error>(HasSubstr("none.png")));
    EXPECT_EQ(parsed_color("#ff8000"), (VT_RGB32{0, 128, 255, 255}));
}

TEST_F(Library_Planes, recordings_of_a_canvas_show_what_was_drawn) {
    Recorded_Canvas recorded({.size = {40, 30}, .depth_buffer = true});
    Canvas& canvas = recorded.canvas();
    const std::vector<VT_DCI_Point> points{{3, 3, 100}, {35, 5, 2000}, {10, 25, 60000}};
    canvas.begin_picture(rgb(255, 255, 255));
    canvas.set_color(rgb(200, 30, 30));
    VD_Draw_2DI_Polytriangle(canvas, points);
    canvas.end_picture();
    const std::string text = recorded.finish();
    const Replay_Image again = replay_text("triangle", text);
    EXPECT_EQ(values_of<std::uint16_t>(again.depths), canvas.read_depths());
    const std::vector<VT_RGB32> pixels = canvas.read_pixels();
    EXPECT_EQ(again.colors.bytes.get()[0], pixels[0].red);
    EXPECT_EQ(digest_of(replay_file(folder.file("triangle.json", text)).colors), digest_of(again.colors));
    EXPECT_THROW(recorded.finish(), std::logic_error);
    EXPECT_THAT([] { replay_text("empty", "{"); }, ThrowsMessage<Usage_Error>(HasSubstr("empty: ")));
    EXPECT_THAT([&] { replay_text("large", text, {.max_memory = text.size(), .module = {}}); },
                ThrowsMessage<Load_Error>(HasSubstr("large: ")));
    const std::string beyond = R"({"output": [0, 40, 0, 29], )" + text.substr(1);
    EXPECT_THAT([&] { replay_text("beyond", beyond); },
                ThrowsMessage<Usage_Error>(HasSubstr("beyond: output: expected a rectangle inside the window")));
}

TEST_F(Library_Planes, recordings_are_drawn_in_part) {
    Recorded_Canvas recorded({.size = {20, 10}, .threads = 2});
    Canvas& canvas = recorded.canvas();
    canvas.begin_picture(rgb(255, 255, 255));
    for (const std::int32_t x : {3, 9, 15}) {
        VD_Draw_DCI_Dot(canvas, {x, 5, 0});
    }
    canvas.end_picture();
    const std::string text = recorded.finish();
    const auto dots = [&](std::size_t first, std::size_t last) {
        Replay_Settings settings;
        settings.first = first;
        settings.last = last;
        const std::vector<std::uint32_t> pixels = values_of<std::uint32_t>(replay_text("dots", text, settings).colors);
        return std::ranges::count(pixels, std::uint32_t{0xFF000000});
    };
    const auto all = dots(0, SIZE_MAX);
    EXPECT_EQ(all, 3);
    std::vector<std::ptrdiff_t> counts;
    for (std::size_t last = 0; counts.empty() || counts.back() < all; ++last) {
        ASSERT_LT(last, 20);
        counts.push_back(dots(0, last));
    }
    EXPECT_THAT(counts, testing::IsSupersetOf({0, 1, 2, 3}));
}

// Flat strips store all 32 bits of their colours, alpha too.
TEST_F(Library_Planes, numbers_of_faces_have_32_bits) {
    const Module module(Module::installed_path());
    Canvas canvas(module, {.size = {64, 8}});
    const std::vector<std::uint32_t> numbers{1, 0xFFFFFF, 0x1000000, 0x1000001, 0x7FFFFFFF, 0xABCDEF01};
    canvas.begin_picture(model::color_of_number(0));
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const auto x = static_cast<std::int32_t>(8 * i);
        const std::vector<VT_DCI_Point> strip{{x, 0, 0}, {x, 7, 0}, {x + 6, 0, 0}, {x + 6, 7, 0}};
        VD_Draw_2DI_Colorized_Polytriangle(canvas, strip, std::vector<VT_RGB32>(2, model::color_of_number(numbers[i])));
    }
    canvas.end_picture();
    const std::vector<VT_RGB32> pixels = canvas.read_pixels();
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        EXPECT_EQ(model::number_of_color(pixels[4 * 64 + 8 * i + 3]), numbers[i]);
    }
    EXPECT_EQ(model::number_of_color(pixels.back()), 0U);
    EXPECT_EQ(model::color_of_number(5), (VT_RGB32{5, 0, 0, 255}));
}

TEST_F(Library_Planes, a_stop_check_ends_the_work_of_its_thread) {
    const Model model({folder.file("box.obj", box)});
    static int asked = 0;
    set_stop_check([] { return ++asked > 3; });
    EXPECT_THROW(make_image(model, {}, {.size = {3000, 3000}, .threads = 2}), Interrupted);
    EXPECT_EQ(asked, 4);
    EXPECT_THROW(write_samples(folder.file("stopped.png"), make_samples(Kind::colors, 40, 4000)), Interrupted);
    std::thread([&] { EXPECT_EQ(make_image(model, {}, {.size = {30, 20}}).width, 30); }).join();
    set_stop_check(nullptr);
    EXPECT_FALSE(std::filesystem::exists(folder.file("stopped.png")));
    EXPECT_EQ(make_image(model, {}, {.size = {30, 20}}).width, 30);
}

TEST_F(Library_Planes, textures_are_laid_over_meshes) {
    model::Mesh mesh = box_mesh();
    mesh.coordinates.resize(mesh.positions.size());
    Image_Samples texture = make_samples(Kind::colors, 1, 1);
    const std::uint8_t orange[] = {250, 120, 10, 255};
    std::copy_n(orange, 4, texture.bytes.get());
    add_texture(mesh, texture);
    Model_View view;
    view.look.tint = model::Tint::own;
    const Image image = make_image(Model(std::move(mesh)), view, {.size = {30, 20}, .supersample = 1});
    // Light takes a little of the colour.
    EXPECT_THAT(image.pixels, testing::Contains(testing::Truly([](VT_RGB32 pixel) {
                    return pixel.red > 240 && std::abs(pixel.green - 120) < 6 && pixel.blue < 12;
                })));
    model::Mesh other = box_mesh();
    EXPECT_THROW(add_texture(other, make_samples(Kind::depths, 1, 1)), Usage_Error);
}

TEST_F(Library_Planes, numbers_of_faces_are_alike_or_not) {
    const Image_Samples a = make_samples(Kind::faces, 1, 1), b = make_samples(Kind::faces, 1, 1);
    std::memset(a.bytes.get(), 0, a.size());
    std::memset(b.bytes.get(), 1, b.size());
    EXPECT_FALSE(compare_samples(a, b, Tolerance{1, 1}).is_same);
    EXPECT_TRUE(compare_samples(a, a, Tolerance{1, 1}).is_same);
}

TEST_F(Library_Planes, images_that_stay_in_memory_count) {
    const Model model(box_mesh());
    const auto draw = [&](std::uint64_t max_memory, const Planes& planes) {
        const Image_Settings settings{.supersample = 1, .threads = 1, .max_memory = max_memory, .other_memory = 1};
        return Model_Images(model, {}, settings).draw({}, {4000, 3000}, planes);
    };
    const auto too_much = ThrowsMessage<Usage_Error>(HasSubstr("or more for this image"));
    constexpr std::uint64_t pixels = 12'000'000, room = 32 << 20;
    for (const auto& [planes, bytes] : {std::pair(Planes{true, false, false}, 4 * pixels),
                                        {Planes{false, true, false}, 2 * pixels},
                                        {Planes{false, false, true}, 4 * pixels},
                                        {Planes{true, true, true}, 10 * pixels}}) {
        const auto draw_within = [&draw, &planes = planes](std::uint64_t memory) { draw(memory, planes); };
        const auto draw_without_room = [&draw_within, &bytes = bytes] { draw_within(bytes); };
        EXPECT_THAT(draw_without_room, too_much);
        EXPECT_NO_THROW(draw_within(bytes + room));
    }
    const Image_Settings settings{
        .size = {4000, 3000}, .supersample = 1, .threads = 1, .max_memory = 7 * pixels, .other_memory = 1};
    EXPECT_THAT([&] { make_image(model, {}, settings); }, too_much);
}

TEST_F(Library_Planes, depths_of_a_recorded_canvas_may_be_written_by_hand) {
    Recorded_Canvas recorded({.size = {640, 480}, .depth_buffer = true});
    Canvas& canvas = recorded.canvas();
    const auto draw = [&](std::int32_t depth, VT_RGB32 color) {
        const std::vector<VT_DCI_Point> points{{0, 0, depth}, {639, 0, depth}, {0, 479, depth}, {639, 479, depth}};
        canvas.set_color(color);
        VD_Draw_2DI_Polytriangle(canvas, points);
    };
    canvas.begin_picture(rgb(255, 255, 255));
    draw(100, rgb(200, 30, 30));
    for (int i = 0; i < 40; ++i) {
        draw(3000, rgb(0, 200, 0)); // hidden
    }
    for (std::int32_t row = 40; row < 60; ++row) {
        std::memset(canvas.depth_buffer().rows[row] + 80 * sizeof(std::uint16_t), 0xFF, 40 * sizeof(std::uint16_t));
    }
    draw(3000, rgb(30, 30, 200));
    canvas.end_picture();
    EXPECT_EQ(canvas.read_pixels()[(479 - 50) * 640 + 100].blue, 200);
}

} // namespace
} // namespace vorna::drawing
