// Reductions: what is left is needed, and nothing else is.
#include <random>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/recording/delta_debugging.h"
#include "drawing/recording/recording_file.h"
#include "drawing/recording/recording_writer.h"
#include "drawing/recording/reduction.h"

namespace replay_tests {

namespace {

using namespace vorna::drawing::recording;
using vorna::drawing::Load_Limits;

Recording read(const std::string& text) {
    Load_Limits limits;
    limits.add_file("a", text.size());
    return read_document("a", text, limits);
}

TEST(Delta_Debugging, exactly_the_needed_elements_are_left) {
    std::mt19937 random(1);
    for (int round = 0; round < 200; ++round) {
        const std::size_t count = random() % 70;
        std::set<std::size_t> needed;
        for (std::size_t i = random() % 5; count > 0 && i > 0; --i) {
            needed.insert(random() % count);
        }
        const auto kept = minimal_elements(
            count, [&](const std::vector<std::size_t>& elements) { return std::ranges::includes(elements, needed); });
        EXPECT_EQ(kept, std::vector<std::size_t>(needed.begin(), needed.end()));
    }
}

TEST(Delta_Debugging, one_culprit_among_many_takes_few_trials) {
    std::size_t trials = 0;
    minimal_elements(4096, [&](const std::vector<std::size_t>& elements) {
        ++trials;
        return std::ranges::binary_search(elements, std::size_t{1234});
    });
    EXPECT_LE(trials, 2 * 12 + 2);
}

TEST(Delta_Debugging, no_single_element_can_be_left_out_of_the_result) {
    // The fault shows with an even number of elements of at least four.
    const auto keeps = [](const std::vector<std::size_t>& elements) { return elements.size() >= 4 && elements.size() % 2 == 0; };
    EXPECT_EQ(minimal_elements(50, keeps).size(), 4U);
}

const std::string whole = R"({"picture": 1, "window": {"width": 100, "height": 80, "origin": [10, 20]},
    "alpha_blending": true, "options": {"Use Mask": true, "Tiling": 3}, "output": [20, 60, 30, 50],
    "rendition": {"line": {"weight": 3}},
    "calls": [
    {"call": "draw_window", "rectangle": [10, 109, 20, 99], "color": [1, 2, 3]},
    {"call": "draw_dci_dot", "point": [50, 50, 5], "color": [1, 1, 1]},
    {"call": "draw_dci_textured_polytriangle", "points": [30, 30, 0, 40, 30, 0, 35, 40, 0, 45, 45, 0, 50, 30, 7],
     "colors": "0102030405060708090a0b0c0d0e0f1011121314", "parameters": [0, 0, 1, 0, 2, 0, 3, 0, 4, 0],
     "rendition": {"drawing_mode": 5, "face": {"color": [9, 8, 7], "pattern": 65}}},
    {"call": "draw_dci_dot", "point": [51, 50, 5], "color": [1, 1, 1], "standard": true}]})";

// The fault needs a textured strip with the point at depth 7 under pattern 65, and the window's column 45.
bool shows_fault(const std::string& file) {
    const Recording recording = read(file);
    const Window& window = recording.configuration.window;
    const std::int32_t left = window.origin ? window.origin->x : 0;
    if (left > 45 || left + window.width.value_or(64) <= 45) {
        return false;
    }
    return std::ranges::any_of(recording.calls, [](const Call& call) {
        const auto* strip = std::get_if<Textured<VT_DCI_Point>>(&call.arguments);
        return strip && call.rendition && call.rendition->face.pattern == 65 &&
               std::ranges::any_of(strip->points, [](const VT_DCI_Point& point) { return point.z == 7; });
    });
}

TEST(Reduction, leaves_what_the_fault_needs) {
    std::vector<std::string> files;
    std::vector<std::size_t> sizes;
    const Reduction_Settings settings{.keeps =
                                          [&](const std::string& file) {
                                              files.push_back(file);
                                              return shows_fault(file);
                                          },
                                      .file_name = "x.json",
                                      .progress = [&](const Recording&, std::size_t bytes) { sizes.push_back(bytes); }};
    const Recording small = reduced(read(whole), settings);
    EXPECT_EQ(json_of(small), R"({"picture": 1, "window": {"width": 1, "height": 1, "origin": [45, 20]},
"renditions": [{"face": {"pattern": 65}}],
"calls": [{"call": "draw_dci_textured_polytriangle", "rendition": 0, "points": [50,30,7], "colors": "11121314", "parameters": [4,0]}]}
)");
    EXPECT_EQ(points_in(small), 1U);
    EXPECT_EQ(std::set<std::string>(files.begin(), files.end()).size(), files.size()) << "nothing is tried twice";
    EXPECT_LT(sizes.back(), sizes.front());
    const std::size_t runs = files.size();
    EXPECT_EQ(json_of(reduced(read(whole), settings)), json_of(small));
    EXPECT_EQ(files.size(), 2 * runs) << "the same trials again";
}

TEST(Reduction, ends_with_the_smallest_so_far) {
    std::size_t trials = 0;
    const Reduction_Settings settings{.keeps =
                                          [&](const std::string& file) {
                                              if (++trials > 3) {
                                                  throw Reduction_Ended();
                                              }
                                              return shows_fault(file);
                                          },
                                      .file_name = "x.cbor"};
    const Recording small = reduced(read(whole), settings);
    EXPECT_TRUE(shows_fault(json_of(small)));
    EXPECT_LT(small.calls.size(), 4U);
}

} // namespace

} // namespace replay_tests
