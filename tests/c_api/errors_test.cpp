// Wrong arguments, wrong input and lack of memory give a status and a line, and leave everything usable.
#include <cmath>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/time.h>

#include "tests/c_api/c_support.h"
#include "tests/reliability/counted_heap.h"

namespace {

constexpr float nan_value = std::numeric_limits<float>::quiet_NaN();
const vorna_color white = {255, 255, 255, 255};

// A canvas in a picture.
struct Drawn {
    explicit Drawn(vorna_canvas_settings settings = c_settings(32, 24)) {
        EXPECT_OK(vorna_canvas_create(&settings, &canvas));
        EXPECT_OK(vorna_begin_picture(canvas, &white));
    }
    Drawn(const Drawn&) = delete;
    Drawn& operator=(const Drawn&) = delete;
    ~Drawn() { vorna_canvas_free(canvas); }

    vorna_canvas* canvas = nullptr;
};

TEST(C_Errors, settings_are_checked) {
    vorna_canvas* canvas = reinterpret_cast<vorna_canvas*>(&canvas);
    vorna_canvas_settings settings = c_settings(0, 10);
    EXPECT_FAILS(vorna_canvas_create(&settings, &canvas), VORNA_INVALID_ARGUMENT, "width: expected 1 to 16384, found 0");
    EXPECT_EQ(canvas, nullptr);
    EXPECT_FAILS(vorna_canvas_create(nullptr, &canvas), VORNA_INVALID_ARGUMENT, "settings: expected a pointer, found null");
    EXPECT_FAILS(vorna_canvas_create(&settings, nullptr), VORNA_INVALID_ARGUMENT, "canvas: expected a pointer, found null");
    EXPECT_EQ(vorna_canvas_settings_init(&settings, 4), VORNA_INVALID_ARGUMENT);
    settings = c_settings(10, 10);
    settings.struct_size = 8;
    EXPECT_EQ(vorna_canvas_create(&settings, &canvas), VORNA_INVALID_ARGUMENT);
    settings = c_settings(10, 10);
    settings.module = "nowhere/none.vrd";
    EXPECT_EQ(vorna_canvas_create(&settings, &canvas), VORNA_FAILED);
    EXPECT_NE(std::strstr(vorna_last_message(), "nowhere/none.vrd"), nullptr) << vorna_last_message();
    settings = c_settings(10, 10);
    settings.palette = &white;
    settings.palette_size = 257;
    EXPECT_FAILS(vorna_canvas_create(&settings, &canvas), VORNA_INVALID_ARGUMENT, "palette_size: expected 1 to 256, found 257");
    settings.palette_size = 1;
    settings.cube_red = settings.cube_green = settings.cube_blue = 2;
    EXPECT_FAILS(vorna_canvas_create(&settings, &canvas), VORNA_INVALID_ARGUMENT,
                 "cube_red, cube_green, cube_blue: expected a cube inside the palette");
    settings = c_settings(10, 10);
    settings.pixels = &settings;
    settings.stride = 39;
    EXPECT_FAILS(vorna_canvas_create(&settings, &canvas), VORNA_INVALID_ARGUMENT,
                 "stride: expected 0, or a multiple of 4 from 40 to 2147483647, found 39");
    vorna_canvas_free(nullptr);
    vorna_image_free(nullptr);
    vorna_free(nullptr);
}

TEST(C_Errors, drawing_needs_a_picture_and_arguments_that_belong_together) {
    Drawn drawn;
    vorna_canvas* const canvas = drawn.canvas;
    const vorna_point points[] = {{1, 1, 0}, {20, 9, 0}, {5, nan_value, 0}};
    const vorna_color colors[] = {white, white};
    EXPECT_FAILS(vorna_draw_2d_polyline(nullptr, 2, points), VORNA_INVALID_ARGUMENT, "canvas: expected a pointer, found null");
    EXPECT_FAILS(vorna_draw_2d_polyline(canvas, 2, nullptr), VORNA_INVALID_ARGUMENT, "points: expected a pointer, found null");
    EXPECT_OK(vorna_draw_2d_polyline(canvas, 0, nullptr));
    EXPECT_FAILS(vorna_draw_2d_polyline(canvas, 3, points), VORNA_INVALID_ARGUMENT, "points: expected finite numbers");
    EXPECT_FAILS(vorna_draw_2d_polyline(canvas, SIZE_MAX, points), VORNA_INVALID_ARGUMENT,
                 "count: expected at most 2147483647, found 18446744073709551615");
    const vorna_point_i whole[5] = {};
    EXPECT_FAILS(vorna_draw_dci_colorized_polyline(canvas, 5, whole, 2, colors), VORNA_INVALID_ARGUMENT,
                 "4 colours are needed, not 2");
    EXPECT_FAILS(vorna_draw_dci_gouraud_polyline(canvas, 5, whole, nullptr), VORNA_INVALID_ARGUMENT,
                 "colors: expected a pointer, found null");
    EXPECT_FAILS(vorna_draw_dci_ellipse(canvas, whole, whole, 0, INFINITY, 0, nullptr), VORNA_INVALID_ARGUMENT,
                 "end: expected a finite number");
    EXPECT_FAILS(vorna_draw_dci_rgb32_image(canvas, whole, colors, 1, -1, 0), VORNA_INVALID_ARGUMENT,
                 "height: expected 0 to 2147483647, found -1");
    EXPECT_FAILS(vorna_set_attribute(canvas, VORNA_LINE_CAP, 3), VORNA_INVALID_ARGUMENT, "value: expected 0 to 2, found 3");
    EXPECT_FAILS(vorna_set_attribute(canvas, VORNA_COLOR, 3), VORNA_INVALID_ARGUMENT,
                 "attribute: expected one of this type, found 64");
    EXPECT_FAILS(vorna_set_attribute(canvas, VORNA_DEPTH_TEST, 3), VORNA_INVALID_ARGUMENT, "value: expected 1, 2 or 5, found 3");
    const std::size_t one = 2;
    EXPECT_FAILS(vorna_set_clip_region(canvas, 1, &one, points, 0, 0), VORNA_INVALID_ARGUMENT,
                 "canvas: expected settings with clip_regions");
    vorna_image* image = nullptr;
    EXPECT_FAILS(vorna_read_depth_image(canvas, nullptr, &image), VORNA_INVALID_ARGUMENT, "canvas: expected a depth buffer");
    const vorna_rectangle outside{0, 32, 0, 3};
    EXPECT_FAILS(vorna_read_color_image(canvas, &outside, &image), VORNA_INVALID_ARGUMENT,
                 "an area inside the window, (0, 0) to (31, 23), was expected, not (0, 0) to (32, 3)");
    EXPECT_EQ(vorna_canvas_finish_recording(canvas, nullptr), VORNA_INVALID_ARGUMENT);
    EXPECT_FAILS(vorna_begin_picture(canvas, nullptr), VORNA_INVALID_ARGUMENT,
                 "canvas: expected no picture, found one that vorna_end_picture has not ended");
    EXPECT_OK(vorna_end_picture(canvas));
    EXPECT_FAILS(vorna_draw_2d_polyline(canvas, 2, points), VORNA_INVALID_ARGUMENT,
                 "canvas: expected a picture that vorna_begin_picture has begun");
    // Other threads have messages of their own.
    std::thread([] { EXPECT_STREQ(vorna_last_message(), ""); }).join();
}

TEST(C_Errors, a_canvas_is_as_before_after_settings_that_fail) {
    vorna_canvas_settings settings = c_settings(32, 24);
    settings.records = 1;
    Drawn drawn(settings);
    const vorna_point points[] = {{1, 1, 0}, {20, 9, 0}};
    EXPECT_OK(vorna_end_picture(drawn.canvas));
    settings.origin_x = INT32_MAX;
    EXPECT_EQ(vorna_canvas_configure(drawn.canvas, &settings), VORNA_INVALID_ARGUMENT);
    EXPECT_FAILS(vorna_canvas_set_option(drawn.canvas, "Nonsense", 1), VORNA_INVALID_ARGUMENT,
                 "Nonsense: the renderer has no such option");
    EXPECT_OK(vorna_canvas_set_option(drawn.canvas, "Force Merge Control On", 0)); // establishes the window again
    vorna_rectangle window;
    EXPECT_OK(vorna_canvas_window(drawn.canvas, &window));
    EXPECT_EQ(window.left, 0);
    EXPECT_OK(vorna_begin_picture(drawn.canvas, nullptr));
    EXPECT_OK(vorna_draw_2d_polyline(drawn.canvas, 2, points));
    EXPECT_OK(vorna_end_picture(drawn.canvas));
    std::vector<vorna_color> drawn_pixels(32 * 24);
    EXPECT_OK(vorna_canvas_read_pixels(drawn.canvas, drawn_pixels.data(), 0));
    // The recording has the line too.
    vorna_recording* recording = nullptr;
    vorna_image* image = nullptr;
    EXPECT_OK(vorna_canvas_finish_recording(drawn.canvas, &recording));
    EXPECT_OK(vorna_recording_replay(recording, nullptr, &image, nullptr));
    vorna_buffer buffer;
    EXPECT_OK(vorna_image_buffer(image, &buffer));
    EXPECT_EQ(std::memcmp(buffer.pixels, drawn_pixels.data(), 4 * drawn_pixels.size()), 0);
    vorna_image_free(image);
    vorna_recording_free(recording);
}

TEST(C_Errors, input_errors_name_the_file_and_the_place) {
    vorna_recording* recording = nullptr;
    const std::string text = R"({"picture": {"calls": [{"draw": 3}]}})";
    EXPECT_EQ(vorna_recording_parse(text.data(), text.size(), nullptr, &recording), VORNA_INVALID_INPUT);
    EXPECT_EQ(std::string(vorna_last_message()).rfind("recording: ", 0), 0U) << vorna_last_message();
    EXPECT_EQ(vorna_recording_parse(nullptr, 0, nullptr, &recording), VORNA_INVALID_INPUT);
    vorna_image* image = nullptr;
    EXPECT_EQ(vorna_image_read("none.png", nullptr, &image), VORNA_INVALID_INPUT);
    EXPECT_NE(std::strstr(vorna_last_message(), "none.png: "), nullptr) << vorna_last_message();
    EXPECT_EQ(vorna_image_decode("\x89PNG", 4, nullptr, &image), VORNA_INVALID_INPUT);
    EXPECT_EQ(vorna_image_decode(nullptr, 0, nullptr, &image), VORNA_INVALID_INPUT);
    EXPECT_EQ(vorna_image_create(1 << 30, 1, VORNA_RGB32, &image), VORNA_INVALID_ARGUMENT);
    vorna_model* model = nullptr;
    const char* const files[] = {"none.obj"};
    EXPECT_EQ(vorna_model_read(1, files, nullptr, &model), VORNA_INVALID_INPUT);
    EXPECT_FAILS(vorna_model_read(0, nullptr, nullptr, &model), VORNA_INVALID_INPUT, "files: expected one or more");
    vorna_mesh mesh;
    EXPECT_OK(vorna_mesh_init(&mesh, sizeof mesh));
    const vorna_point corners[] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    const uint32_t triangle[] = {0, 1, 3};
    mesh.positions = corners;
    mesh.vertex_count = 3;
    mesh.triangles = triangle;
    mesh.triangle_count = 1;
    EXPECT_EQ(vorna_model_create(&mesh, &model), VORNA_INVALID_INPUT);
    vorna_map* map = nullptr;
    EXPECT_EQ(vorna_map_parse("json", "{", 1, nullptr, nullptr, &map), VORNA_INVALID_INPUT);
    EXPECT_EQ(vorna_map_parse("ply", "{", 1, nullptr, nullptr, &map), VORNA_INVALID_INPUT);
    // A limit that the document exceeds.
    vorna_reading reading;
    EXPECT_OK(vorna_reading_init(&reading, sizeof reading));
    reading.max_memory = 100;
    EXPECT_EQ(vorna_map_parse("json", R"({"type": "Point", "coordinates": [1, 2]})", 40, nullptr, &reading, &map),
              VORNA_INVALID_INPUT);
    EXPECT_EQ(vorna_recording_parse(text.data(), text.size(), &reading, &recording), VORNA_INVALID_INPUT);
}

// Work that is done whole, or fails for lack of memory with the canvas and all handles as they were.
template <class Work> void fail_every_allocation(Work work) {
    int failures = 0;
    for (std::int64_t count = 1; count < 100000; ++count) {
        const std::int64_t before = live_allocations();
        vorna_status status = VORNA_OK;
        bool has_failed = false;
        {
            const Failing_Allocation failing(count);
            status = work();
            has_failed = failing.has_failed();
        }
        if (status != VORNA_OK) {
            ASSERT_EQ(status, VORNA_OUT_OF_MEMORY) << vorna_last_message() << " at allocation " << count;
            ASSERT_STREQ(vorna_last_message(), "not enough memory");
            EXPECT_LE(live_allocations(), before + 1) << "leaks at allocation " << count;
            ++failures;
        }
        if (!has_failed) {
            break;
        }
    }
    EXPECT_GT(failures, 0);
}

TEST(C_Errors, lack_of_memory_is_a_status) {
    vorna_last_message(); // this thread's message exists
    vorna_canvas_settings settings = c_settings(16, 16);
    settings.depth_buffer = 1;
    { const Drawn warm(settings); }
    fail_every_allocation([&] {
        vorna_canvas* canvas = nullptr;
        const vorna_status status = vorna_canvas_create(&settings, &canvas);
        vorna_canvas_free(canvas);
        return status;
    });
    fail_every_allocation([&] {
        vorna_image* image = nullptr;
        const vorna_status status = vorna_image_create(16, 16, VORNA_RGB32, &image);
        vorna_image_free(image);
        return status;
    });
    Drawn drawn(settings);
    const vorna_point points[] = {{1, 1, 0}, {10, 9, 0}, {5, 14, 0}};
    EXPECT_OK(vorna_set_attribute(drawn.canvas, VORNA_LINE_WIDTH, 5));
    fail_every_allocation([&] { return vorna_draw_2d_polyline(drawn.canvas, 3, points); });
    fail_every_allocation([&] {
        char digest[65];
        vorna_image* image = nullptr;
        vorna_status status = vorna_read_color_image(drawn.canvas, nullptr, &image);
        if (status == VORNA_OK) {
            status = vorna_image_digest(image, digest);
        }
        vorna_image_free(image);
        return status;
    });
}

volatile std::sig_atomic_t interrupts = 0;

// The signal waits until the unfinished file is removed, and is raised again then.
TEST(C_Errors, an_interrupt_ends_a_file_that_is_being_written) {
    vorna_mesh mesh;
    EXPECT_OK(vorna_mesh_init(&mesh, sizeof mesh));
    const vorna_point corners[] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    const uint32_t triangle[] = {0, 1, 2};
    mesh.positions = corners;
    mesh.vertex_count = 3;
    mesh.triangles = triangle;
    mesh.triangle_count = 1;
    vorna_model* model = nullptr;
    EXPECT_OK(vorna_model_create(&mesh, &model));
    vorna_image_settings settings;
    EXPECT_OK(vorna_image_settings_init(&settings, sizeof settings));
    settings.width = settings.height = 16000;
    settings.threads = 1;
    const auto before = std::signal(SIGINT, [](int) { interrupts = interrupts + 1; });
    const auto alarm_before = std::signal(SIGALRM, [](int) { std::raise(SIGINT); });
    const itimerval often{{0, 30000}, {0, 30000}}, never{};
    setitimer(ITIMER_REAL, &often, nullptr);
    const std::string file = testing::TempDir() + "c_api_interrupted.png";
    std::filesystem::remove(file); // of an earlier run, which an interrupt would keep
    const vorna_status status = vorna_model_render_file(model, nullptr, &settings, file.c_str(), nullptr);
    setitimer(ITIMER_REAL, &never, nullptr);
    std::signal(SIGINT, before);
    std::signal(SIGALRM, alarm_before);
    EXPECT_EQ(status, VORNA_INTERRUPTED) << vorna_last_message();
    EXPECT_EQ(vorna_last_message(), file + ": interrupted by a signal");
    EXPECT_GE(interrupts, 1);
    EXPECT_FALSE(std::filesystem::exists(file));
    // The program goes on, and so does what it draws.
    settings.width = settings.height = 40;
    EXPECT_OK(vorna_model_render_file(model, nullptr, &settings, file.c_str(), nullptr));
    EXPECT_TRUE(std::filesystem::remove(file));
    vorna_model_free(model);
}

// Random arguments: every call gives one of the statuses, and the canvas still draws in the end.
TEST(C_Errors, random_arguments_do_no_harm) {
    std::mt19937 random(11);
    const auto any = [&](std::int32_t least, std::int32_t most) {
        return std::uniform_int_distribution<std::int32_t>(least, most)(random);
    };
    const auto whole = [&] {
        constexpr std::int32_t odd[] = {0, 1, -1, INT32_MIN, INT32_MAX, 65535, 1 << 30};
        return any(0, 4) == 0 ? odd[any(0, 6)] : any(-40, 80);
    };
    const auto number = [&]() -> double {
        const double odd[] = {0, -0.5, 1e30, -1e300, INFINITY, std::nan(""), 1e9};
        return any(0, 30) == 0 ? odd[any(0, 6)] : any(-4000, 8000) / 100.0;
    };
    for (int round = 0; round < 40; ++round) {
        vorna_canvas_settings settings = c_settings(any(1, 64), any(1, 64));
        settings.origin_x = any(-100, 100);
        settings.indexed = any(0, 1);
        settings.depth_buffer = any(0, 1);
        settings.alpha_blending = any(0, 1);
        settings.clip_regions = any(0, 1);
        settings.records = any(0, 3) == 0;
        Drawn drawn(settings);
        vorna_canvas* const canvas = drawn.canvas;
        for (int call = 0; call < 60; ++call) {
            const std::size_t count = static_cast<std::size_t>(any(0, 12));
            std::vector<vorna_point> points(12);
            std::vector<vorna_point_i> places(12);
            std::vector<vorna_point_d> positions(12);
            std::vector<vorna_color> colors(12, {1, 2, 3, static_cast<std::uint8_t>(any(0, 255))});
            std::vector<vorna_texture_point> texture(12, {static_cast<float>(number()), 0.5F});
            for (std::size_t i = 0; i < 12; ++i) {
                points[i] = {static_cast<float>(number()), static_cast<float>(number()), static_cast<float>(number())};
                places[i] = {whole(), whole(), whole()};
                positions[i] = {number(), number(), number()};
            }
            const vorna_point* const p = any(0, 9) == 0 ? nullptr : points.data();
            const vorna_rectangle area{whole(), whole(), whole(), whole()};
            vorna_status status = VORNA_OK;
            switch (any(0, 17)) {
            case 0:
                status = vorna_draw_2d_polyline(canvas, count, p);
                break;
            case 1:
                status = vorna_draw_dci_gouraud_polytriangle(canvas, count, places.data(), colors.data());
                break;
            case 2:
                status = vorna_draw_3d_textured_polytriangle(canvas, count, positions.data(), colors.data(), texture.data());
                break;
            case 3:
                status = vorna_draw_2d_polygon(canvas, count, p, nullptr);
                break;
            case 4:
                status = vorna_draw_2di_colorized_polymarker(canvas, count, places.data(), count / 2, colors.data());
                break;
            case 5:
                status = vorna_draw_dci_ellipse(canvas, &places[0], &places[1], number(), number(), number(), nullptr);
                break;
            case 6:
                status = vorna_draw_dci_elliptical_arc(canvas, &places[0], &places[1], number(), number(), 0, nullptr);
                break;
            case 7:
                status = vorna_draw_dci_rgb32_image(canvas, &places[0], colors.data(), 3, 4, 0);
                break;
            case 8:
                status = vorna_draw_window(canvas, &area, any(-1, 90), white);
                break;
            case 9:
                status = vorna_clear_depth_rectangle(canvas, any(0, 1) == 0 ? nullptr : &area);
                break;
            case 10:
                status = vorna_set_attribute(canvas, any(0, 52), any(-2, 90));
                break;
            case 11:
                status = vorna_set_color(canvas, any(60, 72), colors[0]);
                break;
            case 12:
                status = vorna_set_clip(canvas, any(0, 2) == 0 ? nullptr : &area);
                break;
            case 13:
                status = vorna_set_clip_region(canvas, count > 3 ? 1 : 0, &count, p, whole(), whole());
                break;
            case 14:
                status = vorna_set_face_bitmap(canvas, any(-1, 3), any(-1, 4), reinterpret_cast<uint8_t*>(colors.data()));
                break;
            case 15: {
                vorna_image* image = nullptr;
                status = vorna_read_color_image(canvas, &area, &image);
                vorna_image_free(image);
                break;
            }
            case 16:
                status = vorna_present(canvas, &area);
                break;
            default:
                status = vorna_draw_dci_dot(canvas, &places[0], nullptr);
                break;
            }
            ASSERT_TRUE(status == VORNA_OK || status == VORNA_INVALID_ARGUMENT) << status << ": " << vorna_last_message();
        }
        const vorna_color color = vorna_rgba(9, 8, 7, 255);
        EXPECT_OK(vorna_end_picture(canvas));
        settings.indexed = 0;
        std::vector<vorna_color> memory(64 * 64);
        settings.pixels = round % 2 == 0 ? memory.data() : nullptr;
        EXPECT_OK(vorna_canvas_configure(canvas, &settings));
        EXPECT_OK(vorna_begin_picture(canvas, &color));
        EXPECT_OK(vorna_end_picture(canvas));
        vorna_buffer buffer;
        EXPECT_OK(vorna_canvas_buffer(canvas, &buffer));
        EXPECT_EQ(static_cast<const vorna_color*>(buffer.pixels)->red, 9);
        EXPECT_EQ(memory[0].red, settings.pixels ? 9 : 0);
        settings.pixels = nullptr;
        EXPECT_OK(vorna_canvas_configure(canvas, &settings)); // the memory goes before the canvas
    }
}

} // namespace
