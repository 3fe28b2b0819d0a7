// Classes, colour ramps and conditions.
#include <algorithm>
#include <cmath>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/map/classes.h"
#include "drawing/map/color_ramps.h"
#include "drawing/map/filter.h"
#include "drawing/map/simple_style.h"
#include "host/rendition.h"

namespace vorna::drawing::map {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(Classes, quantiles_have_as_many_values_and_equal_ones_the_same_width) {
    const std::vector<double> values{9, 1, 2, 3, 4, 100, 5, 6, 7, 8};
    EXPECT_THAT(class_limits(values, Class_Method::quantiles, 5), ElementsAre(2, 4, 6, 8));
    EXPECT_THAT(class_limits(values, Class_Method::equal, 3), ElementsAre(testing::DoubleEq(34), testing::DoubleEq(67)));
    EXPECT_THAT(class_limits({1, 1, 1, 1, 2}, Class_Method::quantiles, 4), ElementsAre(1));
    for (const Class_Method method : {Class_Method::quantiles, Class_Method::equal, Class_Method::natural}) {
        EXPECT_THAT(class_limits({}, method, 5), IsEmpty());
        EXPECT_THAT(class_limits({7, 7}, method, 5), IsEmpty());
    }
    EXPECT_EQ(class_of(2, {2, 4}), 0U);
    EXPECT_EQ(class_of(2.1, {2, 4}), 1U);
    EXPECT_EQ(class_of(5, {2, 4}), 2U);
}

double deviation_of(const std::vector<double>& values, const std::vector<double>& limits) {
    double total = 0;
    for (std::size_t k = 0; k <= limits.size(); ++k) {
        double sum = 0, count = 0;
        for (const double v : values) {
            sum += class_of(v, limits) == k ? v : 0;
            count += class_of(v, limits) == k ? 1 : 0;
        }
        for (const double v : values) {
            total += class_of(v, limits) == k ? (v - sum / count) * (v - sum / count) : 0;
        }
    }
    return total;
}

// Against every choice of limits.
TEST(Classes, natural_ones_deviate_least) {
    std::mt19937 random(3); // NOLINT(bugprone-random-generator-seed): the same values each time
    for (int round = 0; round < 20; ++round) {
        std::vector<double> values;
        for (int i = 0; i < 12; ++i) {
            values.push_back(static_cast<double>(random() % 40) - 20);
        }
        const std::vector<double> limits = class_limits(values, Class_Method::natural, 3);
        ASSERT_EQ(limits.size(), 2U);
        double least = INFINITY;
        for (const double a : values) {
            for (const double b : values) {
                if (a < b && b < *std::ranges::max_element(values)) {
                    least = std::min(least, deviation_of(values, {a, b}));
                }
            }
        }
        EXPECT_NEAR(deviation_of(values, limits), least, 1e-9);
    }
    EXPECT_THAT(class_limits({1e308, -1e308, 0, 9e307}, Class_Method::natural, 2), ElementsAre(0));
    std::vector<double> many(5000);
    for (std::size_t i = 0; i < many.size(); ++i) {
        many[i] = static_cast<double>(i) + (i < 2500 ? 0 : 1e6);
    }
    const std::vector<double> limits = class_limits(many, Class_Method::natural, 2);
    ASSERT_EQ(limits.size(), 1U);
    EXPECT_NEAR(limits[0], 2499, 3);
}

TEST(Color_Ramps, have_the_published_colours_and_interpolate_beyond) {
    const auto colors = ramp_colors("YlOrRd", 3);
    ASSERT_TRUE(colors);
    EXPECT_THAT(*colors,
                ElementsAre(VT_RGB32{0xa0, 0xed, 0xff, 255}, VT_RGB32{0x4c, 0xb2, 0xfe, 255}, VT_RGB32{0x20, 0x3b, 0xf0, 255}));
    EXPECT_FALSE(ramp_colors("Rainbow", 3));
    EXPECT_EQ(ramp_names().size(), 35U);
    for (const std::string& name : ramp_names()) {
        for (const unsigned count : {1U, 2U, 9U, 12U, 64U}) {
            const auto found = ramp_colors(name, count);
            ASSERT_EQ(found->size(), count) << name;
            EXPECT_EQ(found->front().alpha, 255);
        }
    }
    EXPECT_EQ(ramp_colors("Blues", 17)->back(), ramp_colors("Blues", 9)->back());
    EXPECT_EQ((*ramp_colors("Blues", 17))[8], (*ramp_colors("Blues", 9))[4]);
}

bool accepts(const std::string& condition, const std::vector<Value>& values) {
    return Filter("filter", condition).accepts(values);
}

TEST(Filters, compare_numbers_as_numbers_and_texts_as_texts) {
    EXPECT_TRUE(accepts("pop > 1e3", {1001.0}));
    EXPECT_FALSE(accepts("pop > 1e3", {Value()}));
    EXPECT_TRUE(accepts("pop is null", {Value()}));
    EXPECT_FALSE(accepts("pop IS NOT NULL", {Value()}));
    EXPECT_TRUE(accepts("kind = city and (pop < 5 or \"the name\" != 'x y')", {std::string("city"), 9.0, std::string("z")}));
    EXPECT_FALSE(accepts("kind = city and (pop < 5 or \"the name\" <> 'x y')", {std::string("city"), 9.0, std::string("x y")}));
    EXPECT_TRUE(accepts("a = 1 or a = 2 and b = 3", {1.0, 4.0})); // and binds closer
    EXPECT_TRUE(accepts("kind in (city, 'town', 3)", {3.0}));
    EXPECT_FALSE(accepts("not kind in (city, town)", {std::string("town")}));
    EXPECT_TRUE(accepts("n = '3'", {3.0}));
    // Tables often hold numbers as texts.
    EXPECT_TRUE(accepts("n > 9 and n = 10 and n in (1e1) and n != 9", {std::string("10")}));
    EXPECT_TRUE(accepts("n = 02134", {std::string("2134")}));
    EXPECT_FALSE(accepts("n = '02134'", {std::string("2134")}));
    EXPECT_FALSE(accepts("n < 20", {std::string("3 km")})); // a text
    EXPECT_TRUE(accepts("n = Nan or n = 1e999", {std::string("Nan")}));
    EXPECT_TRUE(accepts("n = 1e999", {std::string("1e999")}));
    EXPECT_THAT(Filter("f", "a = 1 and b = 2 and a < 3").fields(), ElementsAre("a", "b"));
    for (const auto& [text, message] : {std::pair("a >", "filter: column 4: expected a value, found the end"),
                                        {"a ~ 1", "column 3: expected a comparison"},
                                        {"(a = 1", "column 7: expected ')'"},
                                        {"a = 'x", "column 5: expected a closing quote"},
                                        {"a = 1 b", "column 7: expected the end, 'and' or 'or', found 'b'"},
                                        {"", "column 1: expected a field"},
                                        {"a in (1", "expected ',' or ')'"}}) {
        try {
            Filter("filter", text);
            ADD_FAILURE() << text;
        } catch (const Map_Error& error) {
            EXPECT_THAT(error.what(), HasSubstr(message));
        }
    }
    EXPECT_THROW(Filter("filter", std::string(100000, '(')), Map_Error);
}

TEST(Simple_Style, takes_all_that_the_convention_allows) {
    Shape shape;
    set_simple_style(shape, std::vector<Value>{std::string("#102030"), 0.5, std::string("red"), std::string("1"), 4.0,
                                               std::string("#fff"), std::string("large"), std::string("star")});
    EXPECT_EQ(shape.fill, (VT_RGB32{0x30, 0x20, 0x10, 128}));
    EXPECT_EQ(shape.stroke, (VT_RGB32{0, 0, 255, 255}));
    EXPECT_EQ(shape.stroke_width, 4);
    EXPECT_EQ(shape.marker_color, (VT_RGB32{255, 255, 255, 255}));
    EXPECT_EQ(shape.marker_size, 13);
    EXPECT_EQ(shape.marker_symbol, vorna::marker_symbol::star);
    Shape plain;
    set_simple_style(plain, std::vector<Value>{std::string("no colour"), 2.0, Value(), -1.0, -3.0, 7.0, 8.0, std::string("x")});
    EXPECT_FALSE(plain.fill || plain.stroke || plain.stroke_width || plain.marker_color || plain.marker_size ||
                 plain.marker_symbol);
}

} // namespace
} // namespace vorna::drawing::map
