// Settings of other versions of the interface, and canvases with several threads.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/c_api/c_support.h"

namespace {

// Settings as a program has them that was compiled for a version with fewer or more members.
template <class Settings> class Other_Version {
public:
    // The bytes around the settings are neither zero nor read.
    Other_Version(vorna_status (*init)(Settings*, std::size_t), std::size_t size)
        : bytes_(std::max(size, sizeof(Settings)) + 64, 0xA5), size_(size), status(init(settings(), size)) {}

    Settings* settings() { return reinterpret_cast<Settings*>(bytes_.data()); }
    std::span<std::uint8_t> tail() { return std::span(bytes_).subspan(sizeof(Settings), size_ - sizeof(Settings)); }
    bool is_untouched_behind() const {
        return std::all_of(bytes_.begin() + static_cast<std::ptrdiff_t>(size_), bytes_.end(),
                           [](auto byte) { return byte == 0xA5; });
    }

private:
    std::vector<std::uint8_t> bytes_;
    std::size_t size_;

public:
    const vorna_status status;
};

template <class Settings> void expect_sizes(vorna_status (*init)(Settings*, std::size_t)) {
    Settings whole;
    EXPECT_OK(init(&whole, sizeof whole));
    for (std::size_t size = 2 * sizeof(std::size_t); size <= sizeof(Settings) + 16; size += alignof(Settings)) {
        Other_Version<Settings> other(init, size);
        EXPECT_OK(other.status) << size;
        EXPECT_TRUE(other.is_untouched_behind()) << size;
        EXPECT_EQ(other.settings()->struct_size, size);
        const std::size_t known = std::min(size, sizeof(Settings)), first = sizeof(std::size_t);
        const auto* const found = reinterpret_cast<const std::uint8_t*>(other.settings());
        EXPECT_EQ(std::memcmp(found + first, reinterpret_cast<const std::uint8_t*>(&whole) + first, known - first), 0) << size;
    }
    for (const std::size_t size :
         {std::size_t{0}, sizeof(void*), sizeof(Settings) - 1, sizeof(Settings) + 4, std::size_t{4104}}) {
        EXPECT_EQ(init(&whole, size), VORNA_INVALID_ARGUMENT) << size;
    }
}

TEST(C_Settings, init_fills_as_much_as_the_program_has) {
    expect_sizes(vorna_canvas_settings_init);
    expect_sizes(vorna_reading_init);
    expect_sizes(vorna_mesh_init);
    expect_sizes(vorna_view_init);
    expect_sizes(vorna_image_settings_init);
    expect_sizes(vorna_map_settings_init);
    expect_sizes(vorna_replay_settings_init);
}

// A canvas of 24 x 16 pixels that draws a line; null when it is refused.
std::vector<vorna_color> drawn(const vorna_canvas_settings* settings) {
    vorna_canvas* canvas = nullptr;
    std::vector<vorna_color> pixels;
    if (vorna_canvas_create(settings, &canvas) == VORNA_OK) {
        const vorna_point line[] = {{2, 3, 0}, {20, 12, 0}};
        pixels.resize(24 * 16);
        EXPECT_OK(vorna_begin_picture(canvas, nullptr));
        EXPECT_OK(vorna_draw_2d_polyline(canvas, 2, line));
        EXPECT_OK(vorna_end_picture(canvas));
        EXPECT_OK(vorna_canvas_read_pixels(canvas, pixels.data(), 0));
        vorna_canvas_free(canvas);
    }
    return pixels;
}

bool are_same(const std::vector<vorna_color>& a, const std::vector<vorna_color>& b) {
    return a.size() == b.size() && !a.empty() && std::memcmp(a.data(), b.data(), 4 * a.size()) == 0;
}

TEST(C_Settings, members_of_other_versions_have_their_defaults) {
    const vorna_canvas_settings settings = c_settings(24, 16);
    const std::vector<vorna_color> expected = drawn(&settings);
    // Behind the members of a shorter struct lie other things.
    Other_Version<vorna_canvas_settings> shorter(vorna_canvas_settings_init, offsetof(vorna_canvas_settings, palette));
    shorter.settings()->width = 24;
    shorter.settings()->height = 16;
    EXPECT_TRUE(are_same(drawn(shorter.settings()), expected));

    Other_Version<vorna_canvas_settings> longer(vorna_canvas_settings_init, sizeof(vorna_canvas_settings) + 16);
    longer.settings()->width = 24;
    longer.settings()->height = 16;
    EXPECT_TRUE(are_same(drawn(longer.settings()), expected));
    longer.tail().back() = 1;
    EXPECT_TRUE(drawn(longer.settings()).empty());
    EXPECT_EQ(std::string(vorna_last_message()), "struct_size: expected zeros behind the first " +
                                                     std::to_string(sizeof(vorna_canvas_settings)) +
                                                     " bytes, since the members there belong to a later version");
}

TEST(C_Threads, kept_calls_are_drawn_before_pixels_are_read) {
    std::vector<vorna_color> pixels(24 * 16);
    std::vector<std::uint8_t> reference;
    for (const std::uint32_t threads : {1U, 3U, 0U}) {
        vorna_canvas_settings settings = c_settings(24, 16);
        settings.threads = threads;
        settings.pixels = pixels.data();
        std::fill(pixels.begin(), pixels.end(), vorna_color{});
        vorna_canvas* canvas = nullptr;
        EXPECT_OK(vorna_canvas_create(&settings, &canvas));
        const vorna_color white = vorna_rgba(255, 255, 255, 255);
        EXPECT_OK(vorna_begin_picture(canvas, &white));
        vorna_point line[] = {{2, 3, 0}, {20, 12, 0}};
        EXPECT_OK(vorna_draw_2d_polyline(canvas, 2, line));
        line[0] = line[1]; // the canvas has a copy
        EXPECT_OK(vorna_flush(canvas));
        // The caller's memory holds the line within the picture.
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(pixels.data());
        const std::vector<std::uint8_t> found(bytes, bytes + 4 * pixels.size());
        if (reference.empty()) {
            reference = found;
            EXPECT_NE(std::count(found.begin(), found.end(), 255), static_cast<std::ptrdiff_t>(found.size()));
        }
        EXPECT_EQ(found, reference) << threads;
        EXPECT_OK(vorna_end_picture(canvas));
        vorna_canvas_free(canvas);
    }
    vorna_canvas_settings settings = c_settings(24, 16);
    settings.threads = 1025;
    vorna_canvas* canvas = nullptr;
    EXPECT_FAILS(vorna_canvas_create(&settings, &canvas), VORNA_INVALID_ARGUMENT, "threads: expected 0 to 1024, found 1025");
    EXPECT_FAILS(vorna_flush(nullptr), VORNA_INVALID_ARGUMENT, "canvas: expected a pointer, found null");
}

} // namespace
