// Canvases of both interfaces that are to draw the same, and the arguments of calls.
#pragma once

#include <cstring>
#include <random>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/c_api/c_support.h"
#include "vorna/canvas.h"

inline constexpr std::int32_t width = 96, height = 72;

struct Pair_Settings {
    bool is_indexed;
    std::uint32_t threads; // of the C canvas; the other has one
};

// One canvas of each interface, with the same settings and attributes.
class Pair {
public:
    explicit Pair(Pair_Settings wanted) : canvas_(module_, settings(wanted.is_indexed)) {
        const bool is_indexed = wanted.is_indexed;
        vorna_canvas_settings given = c_settings(width, height);
        given.threads = wanted.threads;
        given.origin_x = -7;
        given.origin_y = 5;
        given.indexed = is_indexed;
        given.depth_buffer = 1;
        given.alpha_blending = !is_indexed;
        given.clip_regions = 1;
        EXPECT_OK(vorna_canvas_create(&given, &c_));
        canvas_.options().set_window_origin({-7, 5});
        canvas_.establish();
        begin();
        empty_pixels_ = canvas_.read_pixels();
        empty_depths_ = canvas_.read_depths();
    }
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;
    ~Pair() { vorna_canvas_free(c_); }

    vorna_canvas* c() noexcept { return c_; }
    vorna::Canvas& canvas() noexcept { return canvas_; }
    VT_Rendition& rendition() noexcept { return canvas_.rendition(); }

    // Both have the same pixels and depths, others than those of an empty picture; a new picture begins.
    void expect_same(const std::string& call) {
        std::vector<vorna_color> pixels(width * height);
        std::vector<std::uint16_t> depths(width * height);
        EXPECT_OK(vorna_canvas_read_pixels(c_, pixels.data(), 0));
        EXPECT_OK(vorna_canvas_read_depths(c_, depths.data(), 0));
        const std::vector<VT_RGB32> expected = canvas_.read_pixels();
        EXPECT_EQ(std::memcmp(pixels.data(), expected.data(), 4 * expected.size()), 0) << call;
        EXPECT_EQ(depths, canvas_.read_depths()) << call;
        EXPECT_TRUE(expected != empty_pixels_ || depths != empty_depths_) << call << " draws nothing";
        EXPECT_OK(vorna_end_picture(c_));
        canvas_.end_picture();
        begin();
    }

private:
    void begin() {
        const vorna_color background = vorna_rgba(230, 240, 250, 255);
        EXPECT_OK(vorna_begin_picture(c_, &background));
        canvas_.begin_picture(vorna::rgb(230, 240, 250));
    }
    static vorna::Canvas_Settings settings(bool is_indexed) {
        return {.size = {width, height},
                .indexed = is_indexed,
                .depth_buffer = true,
                .alpha_blending = !is_indexed,
                .clip_regions = true};
    }

    vorna::Module module_{vorna::Module::installed_path()};
    vorna::Canvas canvas_;
    vorna_canvas* c_ = nullptr;
    std::vector<VT_RGB32> empty_pixels_;
    std::vector<std::uint16_t> empty_depths_;
};

// Points in the window or around it, in an order that does not depend on the machine.
struct Arguments {
    static constexpr std::size_t count = 9;

    Arguments() {
        for (std::size_t i = 0; i < count; ++i) {
            const auto color = [this] { return static_cast<std::uint8_t>(random() % 256); };
            colors.push_back(vorna_rgba(color(), color(), color(), 255));
            texture_points.push_back({static_cast<float>(i % 4) * 0.1F, static_cast<float>(i % 3) * 0.4F});
        }
    }

    template <class Point> std::vector<Point> points(bool is_inside) {
        const int margin = is_inside ? 0 : 20;
        constexpr int depth = 60000;
        std::vector<Point> list;
        for (std::size_t i = 0; i < count; ++i) {
            const auto within = [&](int first, int size) {
                return first - margin + static_cast<int>(random() % static_cast<unsigned>(size + 2 * margin));
            };
            using Number = decltype(Point::x);
            list.push_back(
                {static_cast<Number>(within(-7, width)), static_cast<Number>(within(5, height)), static_cast<Number>(depth)});
        }
        return list;
    }

    std::mt19937 random{8};
    std::vector<vorna_color> colors;
    std::vector<vorna_texture_point> texture_points;
};

template <class Host, class Given> std::span<const Host> host(const std::vector<Given>& list) {
    static_assert(sizeof(Host) == sizeof(Given) || sizeof(Given) == 2 * sizeof(Host));
    return {reinterpret_cast<const Host*>(list.data()), list.size() * sizeof(Given) / sizeof(Host)};
}

inline VT_RGB32 host(vorna_color color) {
    return {color.blue, color.green, color.red, color.alpha};
}
