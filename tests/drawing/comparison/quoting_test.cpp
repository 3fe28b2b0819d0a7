// Names in documents and shells.
#include <gtest/gtest.h>

#include "drawing/comparison/quoting.h"

namespace replay_tests {

namespace {

using namespace vorna::drawing::comparison;

TEST(Quoting, markup_has_no_character_that_xml_lacks) {
    EXPECT_EQ(markup_escaped("a<b>&\"c'"), "a&lt;b&gt;&amp;&quot;c&#39;");
    EXPECT_EQ(markup_escaped("a\nb\tc"), "a&#10;b&#9;c");
    const std::string replaced = "\xEF\xBF\xBD";
    for (const std::string wrong : {"\x1B", "\x7F", "\xC2\x85", "\xFF", "\xEF\xBF\xBE", "\xEF\xBF\xBF"}) {
        EXPECT_EQ(markup_escaped("a" + wrong + "b"), "a" + replaced + "b");
    }
    EXPECT_EQ(markup_escaped(std::string(1, '\0')), replaced);
    EXPECT_EQ(markup_escaped("\xC3\xA9\xF0\x9F\x96\x8C"), "\xC3\xA9\xF0\x9F\x96\x8C");
}

TEST(Quoting, shells_read_a_word) {
    EXPECT_EQ(shell_quoted("it's $(x) `y` \\ -n"), "'it'\\''s $(x) `y` \\ -n'");
    EXPECT_EQ(shell_quoted(""), "''");
    EXPECT_TRUE(is_plain("it's"));
    EXPECT_FALSE(is_plain("a\nb"));
    EXPECT_FALSE(is_plain("\xFF"));
}

} // namespace

} // namespace replay_tests
