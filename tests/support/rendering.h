// Running `vorna render` and looking at its pictures.
#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/command_line.h"
#include "tests/support/png_pixels.h"

namespace vorna::drawing::model {

// A colour image whatever its file holds: red, green and blue by row from the top; of gray samples the high bytes.
struct Picture {
    explicit Picture(const replay_tests::Png_Pixels& png) : width(png.width), height(png.height) {
        for (std::size_t i = 0; i < png.bytes.size(); i += png.pixel_bytes) {
            const std::uint8_t* rgb = png.palette.empty() ? &png.bytes[i] : &png.palette[3U * png.bytes[i]];
            const bool is_gray = png.color_type == 0;
            pixels.push_back(is_gray ? std::array<int, 3>{rgb[0], rgb[0], rgb[0]} : std::array<int, 3>{rgb[0], rgb[1], rgb[2]});
        }
    }

    const std::array<int, 3>& at(std::uint32_t x, std::uint32_t y) const { return pixels[y * width + x]; }
    auto count(const std::array<int, 3>& color) const { return std::ranges::count(pixels, color); }

    std::uint32_t width, height;
    std::vector<std::array<int, 3>> pixels;
};

// The options, with the renderer's own pixels where they do not say how many are drawn for one.
inline std::vector<std::string> with_drawn_pixels(std::vector<std::string> options) {
    if (std::ranges::find(options, "--supersample") == options.end()) {
        options.insert(options.end(), {"--supersample", "1"});
    }
    return options;
}

// Whether an image drawn so needs a build with FreeType.
inline bool has_letters(const std::vector<std::string>& options) {
    return std::ranges::any_of(options, [](const std::string& option) { return option == "--axes" || option == "--scale-bar"; });
}

class Rendering : public testing::Test {
protected:
    // Draws the renderer's own pixels unless the options say otherwise.
    Picture render(const std::string& model, std::vector<std::string> options = {}, const std::string& expected_errors = "") {
        const std::string output = folder.file("out.png");
        options.insert(options.begin(), {"render", model, "-o", output});
        const replay_tests::Outcome outcome = replay_tests::run_vorna(with_drawn_pixels(options));
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.errors, expected_errors);
        return Picture(replay_tests::read_png(output));
    }

    replay_tests::Temporary_Folder folder;
};

} // namespace vorna::drawing::model
