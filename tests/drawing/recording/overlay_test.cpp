// Renditions laid over each other key by key.
#include <gtest/gtest.h>

#include "drawing/recording/recording_reader.h"

namespace {

using namespace vorna::drawing::recording;

// The rendition of the recording with that of its one call laid over it.
Rendition overlaid_pair(const std::string& under, const std::string& over) {
    const Recording recording =
        read_recording(R"({"picture": 1, "rendition": )" + under +
                       R"(, "calls": [{"call": "draw_dci_dot", "point": [0, 0], "rendition": )" + over + "}]}");
    return overlaid(recording.rendition, *recording.calls[0].rendition);
}

TEST(Overlay, merges_groups_and_replaces_everything_else) {
    const Rendition result = overlaid_pair(
        R"({"depth_test": false, "flags": 4, "face": {"color": [1, 2, 3], "pattern": 7},
            "line": {"weight": 3, "line_types": {"scale": 2, "types": [null]}}})",
        R"({"flags": 8, "face": {"color": [4, 5, 6, 7]}, "line": {"style": 1, "line_types": {"scale": 5}}})");
    EXPECT_EQ(result.depth_test, false);
    EXPECT_EQ(result.flags, 8U);
    EXPECT_EQ(result.face.color, (VT_RGB32{6, 5, 4, 7}));
    EXPECT_EQ(result.face.pattern, 7);
    EXPECT_EQ(result.line.weight, 3);
    EXPECT_EQ(result.line.style, 1);
    EXPECT_EQ((*result.line.line_types)->scale, 5);
    EXPECT_EQ((*(*result.line.line_types)->types)->size(), 1U);
}

TEST(Overlay, takes_null_as_a_value) {
    const std::string under = R"({"complex_clip": [[[0, 0], [9, 0], [0, 9]]], "line": {"line_types": {"scale": 2}}})";
    const Rendition cleared = overlaid_pair(under, R"({"complex_clip": null})");
    EXPECT_TRUE(cleared.complex_clip && !*cleared.complex_clip);
    EXPECT_TRUE(cleared.line.line_types && *cleared.line.line_types);
}

} // namespace
