// Images as plans of parts: the same bytes as in one piece, parts of equal work, and nothing drawn twice or joined wrongly.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/command_line.h"
#include "tests/support/meshes.h"

namespace vorna::app {
namespace {

using nlohmann::json;
using replay_tests::Outcome;
using replay_tests::read_file;
using testing::HasSubstr;
using Words = std::vector<std::string>;

Outcome run(Words words) {
    return replay_tests::run_vorna(words);
}

class Render_Plan : public testing::Test {
protected:
    Render_Plan() {
        folder.file("ball.obj", drawing::model::obj_text(drawing::model::ball(61, 37)));
        folder.file("map.json", R"({"type":"Polygon","coordinates":[[[0,0],[9,1],[9,9],[4,5],[0,9],[0,0]]]})");
    }

    json plan(const Words& words, int parts) {
        Words all{"render", "-o", folder.file("joined.png"), "--plan", std::to_string(parts)};
        all.insert(all.end(), words.begin(), words.end());
        const Outcome outcome = run(all);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return json::parse(outcome.output);
    }

    // Without the program's name.
    static Words command_of(const json& entry) {
        auto words = entry.at("command").get<Words>();
        words.erase(words.begin());
        return words;
    }

    static void draw(const json& plan) {
        for (const json& part : plan.at("parts")) {
            const Outcome outcome = run(command_of(part));
            EXPECT_EQ(outcome.status, 0) << outcome.errors;
        }
    }

    replay_tests::Temporary_Folder folder;
};

TEST_F(Render_Plan, parts_of_a_plan_make_the_image_of_one_command) {
    const struct {
        Words words;
        int parts;
    } cases[] = {
        {{folder.file("ball.obj"), "--size", "701x403", "--view", "front", "--zoom", "0.4"}, 7},
        {{folder.file("ball.obj"), "--size", "203x64", "--colors", "8", "--edges"}, 5},
        {{folder.file("ball.obj"), "--size", "160x160", "--pass", "depth"}, 3},
        {{folder.file("map.json"), "--border", "dashed"}, 4},                       // as high as it needs to be
        {{folder.file("ball.obj"), "--size", "64x16", "--background", "none"}, 16}, // as many as there are cells
        {{folder.file("ball.obj"), "--size", "24x24"}, 9},
    };
    for (const auto& [words, parts] : cases) {
        Words whole{"render", "-o", folder.file("whole.png")};
        whole.insert(whole.end(), words.begin(), words.end());
        ASSERT_EQ(run(whole).status, 0);
        const json plan = this->plan(words, parts);
        ASSERT_EQ(plan.at("parts").size(), static_cast<std::size_t>(parts));
        draw(plan);
        const Outcome joined = run(command_of(plan.at("assemble")));
        EXPECT_EQ(joined.status, 0) << joined.errors;
        EXPECT_EQ(read_file(folder.file("joined.png")), read_file(folder.file("whole.png"))) << testing::PrintToString(words);
    }
}

TEST_F(Render_Plan, parts_have_equal_work_rather_than_equal_areas) {
    const json plan = this->plan({folder.file("ball.obj"), "--size", "16000x8000", "--supersample", "1"}, 16);
    double least_area = 1e9, most_area = 0, most = 0, all = 0;
    for (const json& part : plan.at("parts")) {
        const double area = part.at("area")[2].get<double>() * part.at("area")[3].get<double>();
        least_area = std::min(least_area, area);
        most_area = std::max(most_area, area);
        const double seconds = part.at("seconds").get<double>() - plan.at("setup_seconds").get<double>();
        most = std::max(most, seconds);
        all += seconds;
        EXPECT_GT(part.at("memory").get<std::uint64_t>(), std::uint64_t{1} << 20);
    }
    EXPECT_LT(most, 1.2 * all / 16);
    EXPECT_GT(most_area, 1.5 * least_area);
}

TEST_F(Render_Plan, what_is_there_and_whole_is_left_out) {
    const Words words{folder.file("ball.obj"), "--size", "320x200"};
    const json plan = this->plan(words, 4);
    draw(plan);
    const auto name = [&](int number) {
        return plan.at("parts")[static_cast<std::size_t>(number)].at("file").get<std::string>();
    };
    std::string damaged = read_file(name(1));
    damaged[damaged.size() / 2] = static_cast<char>(~damaged[damaged.size() / 2]);
    std::ofstream(name(1), std::ios::binary) << damaged;
    std::filesystem::remove(name(3));
    const auto done = [&](const Words& options) {
        std::vector<bool> found;
        const json again = this->plan(options, 4);
        for (const json& part : again.at("parts")) {
            found.push_back(part.at("done"));
        }
        return found;
    };
    EXPECT_THAT(done(words), testing::ElementsAre(true, false, true, false));
    const Outcome lines =
        run({"render", words[0], "--size", "320x200", "-o", folder.file("joined.png"), "--plan", "4", "--plan-lines"});
    EXPECT_EQ(std::ranges::count(lines.output, '\n'), 3) << lines.output;
    EXPECT_THAT(lines.output, testing::MatchesRegex(".*render .*--tile=1 .*\n.*render .*--tile=3 .*\n.*assemble .*\n"));
    // Threads and the like change no pixel.
    EXPECT_THAT(done({words[0], "--size", "320x200", "--threads", "2", "--max-memory", "512M"}),
                testing::ElementsAre(true, false, true, false));
    EXPECT_THAT(done({words[0], "--size", "320x200", "--light", "0,0,1"}), testing::ElementsAre(false, false, false, false));
    // The model has changed and has as many bytes.
    std::string model = read_file(words[0]);
    std::iter_swap(model.begin() + static_cast<std::ptrdiff_t>(model.find('1')),
                   model.begin() + static_cast<std::ptrdiff_t>(model.find('2')));
    folder.file("ball.obj", model);
    EXPECT_THAT(done(words), testing::ElementsAre(false, false, false, false));
}

TEST_F(Render_Plan, resume_draws_what_is_missing_damaged_or_of_others) {
    const std::string part = folder.file("part.png");
    const auto draw = [&](const Words& more) {
        Words words{"render", folder.file("ball.obj"), "-o", part, "--size", "64x64", "--tiles-of", "2x2", "--tile", "1",
                    "--hash"};
        words.insert(words.end(), more.begin(), more.end());
        const Outcome outcome = run(words);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return outcome.output;
    };
    const std::string digest = draw({});
    const auto age = [&] { return std::filesystem::last_write_time(part); };
    const auto long_ago = age() - std::chrono::hours(1);
    const auto is_drawn = [&](const Words& more) {
        std::filesystem::last_write_time(part, long_ago);
        const std::string found = draw(more);
        const bool same = std::ranges::find(more, "--cull") != more.end();
        EXPECT_TRUE(same || found == digest);
        return age() != long_ago;
    };
    EXPECT_FALSE(is_drawn({"--resume"}));
    EXPECT_TRUE(is_drawn({}));
    EXPECT_TRUE(is_drawn({"--resume", "--cull", "back"}));
    EXPECT_TRUE(is_drawn({"--resume"}));
    std::filesystem::resize_file(part, std::filesystem::file_size(part) - 1);
    EXPECT_TRUE(is_drawn({"--resume"}));
}

TEST_F(Render_Plan, parts_of_other_models_or_options_are_not_joined) {
    const json plan = this->plan({folder.file("ball.obj"), "--size", "96x96"}, 2);
    draw(plan);
    for (const char* other : {"--color=red", "--tile-size=8192"}) { // from such tiles one pixel is drawn for one
        Words words = command_of(plan.at("parts")[1]);
        words.insert(words.begin() + 1, other);
        ASSERT_EQ(run(words).status, 0);
        const Outcome outcome = run(command_of(plan.at("assemble")));
        EXPECT_EQ(outcome.status, 2) << other;
        EXPECT_THAT(outcome.errors, HasSubstr("expected a part of the same inputs, drawn with the same options, as")) << other;
        EXPECT_FALSE(std::filesystem::exists(folder.file("joined.png")));
    }
    // A file that says it is the part and lies elsewhere.
    Words moved = command_of(plan.at("parts")[1]);
    std::ranges::for_each(moved, [](std::string& word) {
        if (word.starts_with("--area=")) {
            word = "--area=0,0,96x8";
        }
    });
    ASSERT_EQ(run(moved).status, 0);
    EXPECT_THAT(run(command_of(plan.at("assemble"))).errors, HasSubstr("expected parts that cover the image once"));
}

// Files count by their contents where the command names them, whatever the names; others by their places beside the model too.
TEST_F(Render_Plan, parts_know_the_files_that_they_were_drawn_from) {
    const auto is_done = [&](const Words& words) { return plan(words, 1).at("parts")[0].at("done").get<bool>(); };
    std::filesystem::create_directories(folder.file("a"));
    const std::string red = folder.file("a/colors", "#ff0000\n#ffffff\n"), blue = folder.file("colors", "#0000ff\n#ffffff\n");
    const std::string ball = folder.file("ball.obj");
    draw(plan({ball, "--palette", red}, 1));
    EXPECT_TRUE(is_done({ball, "--palette", red}));
    EXPECT_TRUE(is_done({ball, "--palette", folder.file("./a/../a/colors")}));
    EXPECT_TRUE(is_done({folder.file("a/../ball.obj"), "--palette", folder.file("copy", "#ff0000\n#ffffff\n")}));
    EXPECT_FALSE(is_done({ball, "--palette", blue}));
    // Two textures with the same name are exchanged.
    std::filesystem::create_directories(folder.file("b"));
    const std::string dark = folder.file("a/paint.ppm", "P6 1 1 255\n   "), light = folder.file("b/paint.ppm", "P6 1 1 255\n~~~");
    folder.file("two.mtl", "newmtl m\nmap_Kd a/paint.ppm\nnewmtl n\nmap_Kd b/paint.ppm\n");
    const std::string model =
        folder.file("two.obj", "mtllib two.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nusemtl m\nf 1/1 2/1 3/1\n"
                               "v 0 0 1\nusemtl n\nf 1/1 2/1 4/1\n");
    draw(plan({model}, 1));
    EXPECT_TRUE(is_done({model}));
    std::filesystem::rename(dark, folder.file("kept"));
    std::filesystem::rename(light, dark);
    std::filesystem::rename(folder.file("kept"), light);
    EXPECT_FALSE(is_done({model}));
}

TEST_F(Render_Plan, wrong_areas_and_plans_are_refused) {
    const Words part{
        "render", folder.file("ball.obj"), "-o", folder.file("p.png"), "--size", "100x60", "--tiles-of", "2x1", "--tile", "0"};
    for (const char* area :
         {"0,0,50x60", "0,0,48x61", "4,0,48x60", "0,8,48x48", "-8,0,48x60", "0,0,x60", "0,0,108x60", "8", "0,0,0x60"}) {
        Words words = part;
        words.push_back(std::string("--area=") + area);
        const Outcome outcome = run(words);
        EXPECT_EQ(outcome.status, 2) << area;
        EXPECT_THAT(outcome.errors, HasSubstr("--area: expected X,Y,WxH"));
    }
    const struct {
        Words words;
        std::string message;
    } cases[] = {
        {{"--size", "64x64", "--plan", "65"}, "expected at most 64 parts of this image, found 65"},
        {{"--plan", "2", "--tiles-of", "2x1", "--tile", "0"}, "--tiles-of: expected no --plan beside it"},
        {{"--plan-lines"}, "--plan-lines: expected --plan beside it"},
        {{"--resume"}, "--resume: expected --output-folder, --tiles-of or --parts-of beside it"},
    };
    for (const auto& [more, message] : cases) {
        Words words{"render", folder.file("ball.obj"), "-o", folder.file("p.png")};
        words.insert(words.end(), more.begin(), more.end());
        const Outcome outcome = run(words);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.errors, HasSubstr(message));
    }
    for (const char* name : {"two\nlines.obj", "two\rlines.obj"}) {
        const Outcome lines = run({"render", folder.file(name, read_file(folder.file("ball.obj"))), "-o", folder.file("p.png"),
                                   "--plan", "2", "--plan-lines"});
        EXPECT_EQ(lines.status, 2);
        EXPECT_EQ(lines.output, "");
        EXPECT_THAT(lines.errors, HasSubstr("--plan-lines: expected names and values without line breaks"));
    }
    EXPECT_THAT(replay_tests::run_vorna({"render", "-", "-o", "p.png", "--plan", "2", "--input-format", "obj"},
                                        read_file(folder.file("ball.obj")))
                    .errors,
                HasSubstr("--plan: expected files with names, found standard input"));
}

} // namespace
} // namespace vorna::app
