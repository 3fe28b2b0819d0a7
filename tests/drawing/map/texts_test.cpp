// Texts as letters and pixels: shaping, directions, fonts, coverage.
#include <algorithm>
#include <cmath>
#include <numeric>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/map/label_font.h"
#include "drawing/map/lettering.h"

namespace vorna::drawing::map {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class Texts : public testing::Test {
protected:
    void SetUp() override {
        if (!WITH_FREETYPE) {
            GTEST_SKIP() << "a build without FreeType has no texts";
        }
        font = load_label_font("", limits);
    }
    Text text_of(const std::string& text, double size = 100) { return font->text_of(text, size, INFINITY, "map.json", limits); }

    Load_Limits limits;
    std::unique_ptr<Label_Font> font;
};

std::vector<const Face*> outlines_of(const Text& text) {
    std::vector<const Face*> outlines;
    std::ranges::transform(text.letters, std::back_inserter(outlines), &Letter::outline);
    return outlines;
}

double left_end(const Text& text, std::size_t letter) {
    return text.letters.at(letter).at.x;
}

TEST_F(Texts, grow_with_the_size_alone) {
    const Text small = text_of("Vienna", 12), large = text_of("Vienna", 120);
    ASSERT_EQ(small.letters.size(), 6U);
    EXPECT_EQ(outlines_of(small), outlines_of(large));
    EXPECT_NEAR(10 * small.width, large.width, 1e-9);
    EXPECT_NEAR(font->height(), 0.729, 0.001); // of DejaVu Sans
    EXPECT_LT(text_of("AV").width, text_of("A").width + text_of("V").width);
    EXPECT_TRUE(text_of("a\xFF\xC3").letters.size() == 1); // without invalid UTF-8
    EXPECT_EQ(text_of(std::string(100000, 'W')).letters.size(), Label_Font::longest_text);
}

// The first letter is the rightmost one.
TEST_F(Texts, of_hebrew_and_arabic_begin_on_the_right) {
    const Text hebrew = text_of("\u05D0\u05D1\u05D2"); // alef, bet, gimel
    ASSERT_EQ(hebrew.letters.size(), 3U);
    EXPECT_EQ(hebrew.letters[2].outline, text_of("\u05D0").letters[0].outline);
    EXPECT_LT(left_end(hebrew, 1), left_end(hebrew, 2));
    // Numbers in it run to the right, and a Latin word after it stands to its left.
    const Text mixed = text_of("\u05D0 12 ab");
    EXPECT_EQ(outlines_of(mixed), (std::vector<const Face*>{text_of("a").letters[0].outline, text_of("b").letters[0].outline,
                                                            text_of("1").letters[0].outline, text_of("2").letters[0].outline,
                                                            text_of("\u05D0").letters[0].outline}));
    // Arabic letters join: the same letter has four shapes.
    const Text joined = text_of("\u0628\u0628\u0628"), alone = text_of("\u0628");
    ASSERT_EQ(joined.letters.size(), 3U);
    std::vector<const Face*> shapes = outlines_of(joined);
    shapes.push_back(alone.letters.at(0).outline);
    std::ranges::sort(shapes);
    EXPECT_EQ(std::unique(shapes.begin(), shapes.end()), shapes.end());
    // Lam and alef are one letter.
    EXPECT_EQ(text_of("\u0644\u0627").letters.size(), 1U);
}

TEST_F(Texts, keep_marks_on_their_letters) {
    const Text text = text_of("e\u0301x\u0323");
    const Text plain = text_of("ex");
    EXPECT_NEAR(text.width, plain.width, 1);
    for (const Letter& letter : text.letters) {
        EXPECT_LT(letter.start, letter.end);
    }
}

TEST_F(Texts, name_characters_that_no_font_has_once) {
    EXPECT_THAT(font->warnings(), IsEmpty());
    font->note("a\U0010FFFD b", limits);
    font->note("\U0010FFFD", limits);
    ASSERT_EQ(font->warnings().size(), 1U);
    EXPECT_THAT(font->warnings()[0], HasSubstr("texts: not drawn, since no font has them: U+10FFFD"));
    EXPECT_EQ(text_of("a\U0010FFFD").letters.size(), 1U);
    font->note("\U0010FFFC\U0010FFFB\U0010FFFA\U0010FFF9\U0010FFF8", limits);
    EXPECT_THAT(font->warnings()[0], testing::EndsWith(" and 1 other character"));
    font->note("\U0010FFF7", limits);
    EXPECT_THAT(font->warnings()[0], testing::EndsWith(" and 2 other characters"));
    EXPECT_THROW(load_label_font("No Such Family", limits), Usage_Error);
    EXPECT_THROW(load_label_font("/dev/null", limits), Usage_Error);
}

// A face as a letter.
Lettering lettering_of(const Face& face, Position at, Position along, double halo = 0) {
    Lettering lettering;
    lettering.paint.halo_width = halo;
    lettering.letters.push_back({&face, at, along});
    lettering.find_box();
    return lettering;
}

constexpr VT_Int_Rectangle window{0, 99, 0, 99};

Letter_Pixels pixels_of(const Lettering& lettering, std::int32_t times = 1, const VT_Int_Rectangle& part = window) {
    Letter_Pixels found;
    for_each_area(lettering, times, part, [&](const Letter_Pixels& pixels) { found = pixels; });
    return found;
}

double sum_of(const std::vector<std::uint8_t>& shares) {
    return std::accumulate(shares.begin(), shares.end(), 0.0) / 255;
}

const Face square{{{0, 0}, {1, 0}, {1, 1}, {0, 1}}};

TEST(Lettering, covers_shares_of_pixels) {
    // Four and a half by three and a quarter pixels.
    const Face box{{{0, 0}, {4.5, 0}, {4.5, 3.25}, {0, 3.25}}};
    const Letter_Pixels pixels = pixels_of(lettering_of(box, {10, 20}, {1, 0}));
    const auto share = [&](int x, int y) {
        return int{pixels.letters[static_cast<std::size_t>((y - pixels.area.bottom) * (pixels.area.right - pixels.area.left + 1) +
                                                           x - pixels.area.left)]};
    };
    EXPECT_EQ(share(9, 20), 0);
    EXPECT_EQ(share(10, 20), 255);
    EXPECT_EQ(share(14, 20), 128);
    EXPECT_EQ(share(13, 23), 64);
    EXPECT_EQ(share(14, 23), 32);
    EXPECT_EQ(share(15, 20), 0);
    // Turned by some angle it covers as much, whatever the direction of its outline, and twice as wide four times as much.
    Face reversed = square;
    std::ranges::reverse(reversed[0]);
    for (const Face* face : std::initializer_list<const Face*>{&square, &reversed}) {
        EXPECT_NEAR(sum_of(pixels_of(lettering_of(*face, {40, 40}, {16, 12})).letters), 400, 1.5);
        EXPECT_NEAR(sum_of(pixels_of(lettering_of(*face, {20, 20}, {16, 12}), 2).letters), 1600, 3);
    }
    // What outlines share counts once.
    Lettering twice = lettering_of(square, {40, 40}, {20, 0});
    twice.letters.push_back({&square, {50, 40}, {20, 0}});
    twice.find_box();
    EXPECT_NEAR(sum_of(pixels_of(twice).letters), 600, 1e-6);
}

TEST(Lettering, has_a_round_halo) {
    const Letter_Pixels pixels = pixels_of(lettering_of(square, {40, 40}, {20, 0}, 5));
    // Four sides and a circle.
    EXPECT_NEAR(sum_of(pixels.halo), 400 + 4 * 20 * 5 + 25 * 3.1416, 12);
    EXPECT_NEAR(sum_of(pixels.letters), 400, 1e-6);
}

// A window shows what the image shows there.
TEST(Lettering, does_not_depend_on_the_window) {
    const Face star{{{0, 0}, {1, 0.35}, {0.1, 1.02}, {0.45, -0.3}, {0.83, 0.97}}};
    const Lettering lettering = lettering_of(star, {31.3, 32.7}, {31.7, 13.1}, 2.5);
    const Letter_Pixels whole = pixels_of(lettering);
    const std::int32_t width = whole.area.right - whole.area.left + 1;
    for (const VT_Int_Rectangle& part : {VT_Int_Rectangle{40, 52, 41, 49}, {0, 44, 30, 37}, {55, 99, 0, 99}}) {
        const Letter_Pixels pixels = pixels_of(lettering, 1, part);
        ASSERT_FALSE(pixels.letters.empty());
        std::size_t at = 0;
        for (std::int32_t y = pixels.area.bottom; y <= pixels.area.top; ++y) {
            for (std::int32_t x = pixels.area.left; x <= pixels.area.right; ++x, ++at) {
                const auto same = static_cast<std::size_t>((y - whole.area.bottom) * width + x - whole.area.left);
                ASSERT_EQ(pixels.letters[at], whole.letters[same]) << x << ' ' << y;
                ASSERT_EQ(pixels.halo[at], whole.halo[same]) << x << ' ' << y;
            }
        }
    }
}

} // namespace
} // namespace vorna::drawing::map
