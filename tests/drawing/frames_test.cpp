// Frames that several threads draw, and when they do.
#include <cstring>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/files/helpers.h"
#include "drawing/job/frame_drawer.h"
#include "drawing/job/image_plan.h"
#include "drawing/job/model_drawing.h"
#include "drawing/job/model_style.h"
#include "drawing/model/facing.h"
#include "tests/support/meshes.h"

namespace vorna::drawing {
namespace {

using model::Mesh;

constexpr VT_Int_Pair size{301, 203};
const Module_Choice module{KRB_MODULE, {}};

struct Style {
    std::string name;
    model::Model_Style model;
    bool indexed = false, smooth = false, open = false, close = false;
};

std::vector<Style> styles() {
    std::vector<Style> all{{.name = "gouraud"},
                           {.name = "indices", .indexed = true},
                           {.name = "open", .open = true},
                           {.name = "clipped", .close = true},
                           {.name = "flat"},
                           {.name = "edges"},
                           {.name = "smooth edges", .smooth = true}};
    all[4].model.look.shading = model::Shading::flat;
    all[5].model.edges = all[6].model.edges = model::Edge_Choice::all;
    return all;
}

std::unique_ptr<Model_Drawing> drawing_of(const Style& style, unsigned threads) {
    Mesh mesh = model::ball(230, 150); // parts for several threads
    if (style.open) {
        mesh.triangles.resize(mesh.triangles.size() / 2);
    }
    model::finish_mesh(mesh, "ball");
    Load_Limits limits(std::nullopt, false, threads);
    std::vector<std::string> warnings;
    model::Camera_Settings camera;
    camera.aspect = static_cast<double>(size.x) / size.y;
    if (style.close) {
        camera.aim = model::Aim{{0.3, 0.2, 1.05}, {0, 0, 0}, {0, 1, 0}};
    }
    const Background background = model_gradient;
    const VT_Reference<const VT_Palette> palette = style.indexed ? VT_Reference<const VT_Palette>(new VT_Palette) : nullptr;
    return std::make_unique<Model_Drawing>(make_parts(mesh, style.model, background, limits, warnings),
                                           look_of(style.model, background, style.smooth, palette), camera);
}

struct Frame {
    std::vector<std::uint8_t> pixels;
    std::vector<std::uint16_t> depths; // of some pixels
};

// tile_size: 0 = the whole frame.
Frame drawn(const Style& style, std::int32_t tile_size, unsigned threads) {
    const std::unique_ptr<Model_Drawing> drawing = drawing_of(style, threads);
    const Drawing_Needs needs = drawing->needs(size, 1);
    Tile_Grid grid({0, size.x - 1 + needs.beyond, 0, size.y - 1 + needs.beyond});
    grid.area = {0, size.x - 1, 0, size.y - 1};
    if (tile_size > 0) {
        grid.tile_size = {tile_size, tile_size};
        grid.margin = needs.margin;
    }
    const VT_Reference<Frame_Buffer> buffer =
        make_frame_buffer(size.x, size.y, style.indexed ? Buffer_Format::index8 : Buffer_Format::rgb32);
    Frame_Drawer drawer(module, threads);
    Frame frame;
    for (int again = 0; again < 2; ++again) {
        drawing->prepare(grid, 1, 0);
        drawer.draw(*drawing, grid, model_gradient, *buffer);
    }
    for (std::int32_t row = 0; row < size.y; ++row) {
        const std::uint8_t* start = buffer->rows[row];
        frame.pixels.insert(frame.pixels.end(), start, start + size.x * bytes_per_pixel(buffer->format));
    }
    for (const VT_Int_Pair pixel : {VT_Int_Pair{0, 0}, {150, 100}, {64, 63}, {300, 202}, {128, 127}}) {
        frame.depths.push_back(drawer.depth_at(*drawing, grid, model_gradient, pixel));
    }
    return frame;
}

TEST(Frames, depend_neither_on_tiles_nor_on_threads) {
    for (const Style& style : styles()) {
        const Frame whole = drawn(style, 0, 1);
        EXPECT_NE(whole.depths[1], 0xFFFF) << style.name;
        for (const auto& [tile_size, threads] : {std::pair(64, 1U), {64, 2U}, {128, 7U}, {24, 3U}}) {
            const Frame tiled = drawn(style, tile_size, threads);
            EXPECT_TRUE(tiled.pixels == whole.pixels) << style.name << ", tiles of " << tile_size;
            EXPECT_EQ(tiled.depths, whole.depths) << style.name << ", tiles of " << tile_size;
        }
    }
}

Plan_Request request_of(VT_Int_Pair image, double work, unsigned threads, std::int32_t margin = 0) {
    Plan_Request request;
    request.part.size = image;
    request.beyond = 1;
    request.margin = margin;
    request.pixel_memory = 8;
    request.threads = threads;
    request.work = work;
    request.max_memory = std::uint64_t{1} << 30;
    return request;
}

TEST(Frames, are_shared_where_the_work_pays_for_threads) {
    constexpr double second = 1e9;
    const double cost = thread_cost();
    EXPECT_EQ(threads_worth(2 * cost, 8), 1U);
    EXPECT_EQ(threads_worth(13 * cost, 8), std::max(1U, static_cast<unsigned>(13 * cost < 1e4 ? 1 : 3)));
    EXPECT_EQ(threads_worth(second, 8), 8U);
    EXPECT_FALSE(shared_grid(request_of({1920, 1080}, cost, 8)));
    EXPECT_FALSE(shared_grid(request_of({1920, 1080}, second, 1)));
    EXPECT_FALSE(shared_grid(request_of({8, 8}, second, 8)));
    for (const unsigned threads : {2U, 8U, 64U}) {
        const auto grid = shared_grid(request_of({1920, 1080}, second, threads));
        ASSERT_TRUE(grid);
        EXPECT_GE(grid->count(), 4 * threads);
        EXPECT_LE(grid->count(), 12 * threads);
        EXPECT_EQ(plan_image(request_of({1920, 1080}, second, threads)).grid.count(), grid->count());
        // Margins are drawn for nothing: fewer tiles, or one.
        const auto with_margin = shared_grid(request_of({1920, 1080}, second, threads, 128));
        EXPECT_LT(with_margin ? with_margin->count() : 1, grid->count());
    }
    EXPECT_EQ(plan_image(request_of({1920, 1080}, cost, 8)).grid.count(), 1U);
}

} // namespace
} // namespace vorna::drawing
