// The C interface in several threads, each with handles of its own: what it draws, records, renders and reports are those of one
// thread.
#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "vorna/vorna.h"

namespace {

#define EXPECT_OK(call) EXPECT_EQ(call, VORNA_OK) << vorna_last_message()

std::string bytes_of(vorna_image* image) {
    vorna_buffer buffer{};
    EXPECT_OK(vorna_image_buffer(image, &buffer));
    std::string bytes(static_cast<const char*>(buffer.pixels), buffer.stride * static_cast<std::size_t>(buffer.height));
    vorna_image_free(image);
    return bytes;
}

struct Outcome {
    std::string pixels, document, replayed, rendered, message;

    friend bool operator==(const Outcome&, const Outcome&) = default;
};

void draw(vorna_canvas* canvas, unsigned seed) {
    std::mt19937 random(seed);
    const auto number = [&](int most) { return static_cast<int>(random() % static_cast<unsigned>(most)); };
    const vorna_color background = vorna_rgba(20, 30, 40, 255);
    EXPECT_OK(vorna_begin_picture(canvas, &background));
    for (int i = 0; i < 60; ++i) {
        std::vector<vorna_point_i> points(7);
        std::vector<vorna_point> corners(7);
        std::vector<vorna_color> colors(7);
        for (std::size_t k = 0; k < points.size(); ++k) {
            points[k] = {number(80), number(60), number(65536)};
            corners[k] = {static_cast<float>(number(120)) - 20, static_cast<float>(number(90)) - 15, 0};
            colors[k] = vorna_rgba(static_cast<std::uint8_t>(number(256)), static_cast<std::uint8_t>(number(256)), 90, 255);
        }
        EXPECT_OK(vorna_set_color(canvas, VORNA_COLOR, colors[0]));
        EXPECT_OK(vorna_set_attribute(canvas, VORNA_LINE_WIDTH, 1 + number(5)));
        EXPECT_OK(vorna_set_attribute(canvas, VORNA_FACE_PATTERN, number(80)));
        EXPECT_OK(vorna_draw_dci_gouraud_polytriangle(canvas, points.size(), points.data(), colors.data()));
        EXPECT_OK(vorna_draw_2d_polyline(canvas, corners.size(), corners.data()));
        EXPECT_OK(vorna_draw_2d_polygon(canvas, corners.size(), corners.data(), &colors[1]));
    }
    EXPECT_OK(vorna_end_picture(canvas));
}

// Faces of a grid, on two threads of the library's own.
std::string rendered(unsigned seed) {
    constexpr std::uint32_t side = 30;
    std::vector<vorna_point> positions;
    std::vector<std::uint32_t> triangles;
    for (std::uint32_t i = 0; i < side * side; ++i) {
        const std::uint32_t x = i % side, y = i / side;
        positions.push_back({static_cast<float>(x), static_cast<float>(y), static_cast<float>((x * y + seed) % 5)});
        if (x + 1 < side && y + 1 < side) {
            triangles.insert(triangles.end(), {i, i + 1, i + side, i + side, i + 1, i + side + 1});
        }
    }
    vorna_mesh mesh;
    EXPECT_OK(vorna_mesh_init(&mesh, sizeof mesh));
    mesh.vertex_count = positions.size();
    mesh.positions = positions.data();
    mesh.triangle_count = triangles.size() / 3;
    mesh.triangles = triangles.data();
    vorna_image_settings settings;
    EXPECT_OK(vorna_image_settings_init(&settings, sizeof settings));
    settings.width = 90;
    settings.height = 70;
    settings.threads = 2;
    settings.module = KRB_MODULE;
    vorna_model* model = nullptr;
    vorna_image* image = nullptr;
    EXPECT_OK(vorna_model_create(&mesh, &model));
    EXPECT_OK(vorna_model_render(model, nullptr, &settings, &image));
    vorna_model_free(model);
    return image ? bytes_of(image) : "";
}

Outcome outcome_of(unsigned seed) {
    Outcome outcome;
    vorna_canvas_settings settings;
    EXPECT_OK(vorna_canvas_settings_init(&settings, sizeof settings));
    settings.module = KRB_MODULE;
    settings.width = -static_cast<std::int32_t>(seed);
    settings.height = 60;
    settings.indexed = seed % 2 != 0;
    settings.depth_buffer = 1;
    settings.records = 1;
    vorna_canvas* canvas = nullptr;
    EXPECT_EQ(vorna_canvas_create(&settings, &canvas), VORNA_INVALID_ARGUMENT);
    settings.width = 80;
    EXPECT_OK(vorna_canvas_create(&settings, &canvas));
    if (!canvas) {
        return outcome;
    }
    draw(canvas, seed);
    outcome.pixels.resize(sizeof(vorna_color) * 80 * 60);
    EXPECT_OK(vorna_canvas_read_pixels(canvas, reinterpret_cast<vorna_color*>(outcome.pixels.data()), 0));
    vorna_recording *recording = nullptr, *parsed = nullptr;
    EXPECT_OK(vorna_canvas_finish_recording(canvas, &recording));
    vorna_canvas_free(canvas);
    char* text = nullptr;
    std::size_t size = 0;
    EXPECT_OK(vorna_recording_text(recording, &text, &size));
    vorna_recording_free(recording);
    outcome.document.assign(text, size);
    vorna_free(text);
    EXPECT_OK(vorna_recording_parse(outcome.document.data(), size, nullptr, &parsed));
    vorna_replay_settings replay;
    EXPECT_OK(vorna_replay_settings_init(&replay, sizeof replay));
    replay.module = KRB_MODULE;
    vorna_image* image = nullptr;
    EXPECT_OK(vorna_recording_replay(parsed, &replay, &image, nullptr));
    vorna_recording_free(parsed);
    outcome.replayed = image ? bytes_of(image) : "";
    outcome.rendered = rendered(seed);
    outcome.message = vorna_last_message(); // of this thread's first call that failed
    return outcome;
}

TEST(C_Threads, have_handles_and_messages_of_their_own) {
    constexpr unsigned count = 3;
    std::vector<Outcome> together(count);
    {
        std::vector<std::jthread> threads;
        for (unsigned i = 0; i < count; ++i) {
            threads.emplace_back([&, i] { together[i] = outcome_of(i); });
        }
    }
    for (unsigned i = 0; i < count; ++i) {
        EXPECT_TRUE(together[i] == outcome_of(i)) << i;
        EXPECT_EQ(together[i].message, "width: expected 1 to 16384, found " + std::to_string(-static_cast<int>(i)));
        EXPECT_FALSE(together[i].rendered.empty());
    }
    EXPECT_NE(together[0].pixels, together[2].pixels);
}

} // namespace
