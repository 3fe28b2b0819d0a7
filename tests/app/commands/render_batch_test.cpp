// Many files drawn each by itself.
#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

#include "tests/support/command_line.h"

namespace {

using replay_tests::Outcome;
using testing::HasSubstr;

const std::string corner = "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nf 1 2 3\nf 1 3 4\nf 1 4 2\n";

class Render_Batch : public testing::Test {
protected:
    Outcome render(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "render");
        arguments.insert(arguments.end(), {"--output-folder", images, "--size", "32x32"});
        return replay_tests::run_vorna(arguments);
    }
    std::string image(const std::string& name) const { return images + "/" + name; }

    replay_tests::Temporary_Folder folder;
    std::string images = folder.file("images") + "/new";
};

TEST_F(Render_Batch, every_file_becomes_the_image_that_it_becomes_alone) {
    std::vector<std::string> files;
    for (int i = 0; i < 9; ++i) {
        files.push_back(
            folder.file("part" + std::to_string(i) + ".obj", corner + "v " + std::to_string(i + 1) + " 2 3\nf 5 1 2\n"));
    }
    files.push_back(folder.file("line.json", R"({"type":"LineString","coordinates":[[0,0],[9,9]]})"));
    const Outcome outcome = render(files);
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    for (const std::string& file : files) {
        const std::string alone = folder.file("alone.png");
        ASSERT_EQ(replay_tests::run_vorna({"render", file, "-o", alone, "--size", "32x32"}).status, 0);
        const std::string name = std::filesystem::path(file).stem().string() + ".png";
        EXPECT_EQ(replay_tests::run_vorna({"compare", alone, image(name)}).status, 0) << name;
    }
}

TEST_F(Render_Batch, failures_are_listed_in_the_order_of_the_files_and_stop_nothing) {
    const std::string good = folder.file("good.obj", corner), broken = folder.file("broken.obj", "v 0\n"),
                      other = folder.file("other.stl", "solid\n");
    const Outcome outcome = render({broken, good, other, "--threads", "2"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.errors, testing::MatchesRegex("vorna: .*broken.obj:1: .*\nvorna: .*other.stl: .*\n"));
    EXPECT_TRUE(std::filesystem::exists(image("good.png")));
    EXPECT_FALSE(std::filesystem::exists(image("broken.png")));
    EXPECT_FALSE(std::filesystem::exists(image("other.png")));
}

TEST_F(Render_Batch, resume_leaves_out_images_that_are_there) {
    const std::string first = folder.file("first.obj", corner), second = folder.file("second.obj", corner);
    ASSERT_EQ(render({first}).status, 0);
    std::filesystem::resize_file(image("first.png"), 5);
    ASSERT_EQ(render({first, second, "--resume"}).status, 0);
    EXPECT_EQ(std::filesystem::file_size(image("first.png")), 5U);
    EXPECT_GT(std::filesystem::file_size(image("second.png")), 5U);
    ASSERT_EQ(render({first, second}).status, 0);
    EXPECT_GT(std::filesystem::file_size(image("first.png")), 5U);
}

TEST_F(Render_Batch, folders_and_lists_name_files_and_a_manifest_tells_of_each) {
    std::filesystem::create_directory(folder.file("models"));
    folder.file("models/b.obj", corner);
    folder.file("models/a.STL", "solid\n");
    folder.file("models/readme.txt", "no model");
    folder.file("models/scene.mtl", "newmtl a\n");
    const std::string listed = folder.file("listed.obj", corner), manifest = folder.file("manifest.jsonl");
    const std::string list = folder.file("list", "\n" + listed + "\r\n");
    const Outcome outcome = render({folder.file("models"), "--files-from", list, "--manifest", manifest});
    EXPECT_EQ(outcome.status, 1);
    ASSERT_EQ(render({"--files-from", list, "--resume", "--manifest", manifest}).status, 0);
    std::vector<std::string> found;
    std::istringstream lines(replay_tests::read_file(manifest));
    for (std::string line; std::getline(lines, line);) {
        const nlohmann::json entry = nlohmann::json::parse(line);
        EXPECT_GE(entry.at("seconds"), 0);
        found.push_back(std::filesystem::path(entry.at("file").get<std::string>()).filename().string() + ' ' +
                        std::filesystem::path(entry.at("image").get<std::string>()).filename().string() + ' ' +
                        entry.at("status").get<std::string>() + (entry.contains("message") ? " why" : ""));
    }
    ASSERT_EQ(found.size(), 4U);
    EXPECT_EQ(found.back(), "listed.obj listed.png kept");
    std::sort(found.begin(), found.begin() + 3);
    EXPECT_THAT(found,
                testing::ElementsAre("a.STL a.png failed why", "b.obj b.png drawn", "listed.obj listed.png drawn", testing::_));
    const Outcome by_standard_input = replay_tests::run_vorna(
        {"render", "--files-from", "-", "--output-folder", images, "--size", "9x9", "--manifest", "-"}, listed);
    EXPECT_EQ(nlohmann::json::parse(by_standard_input.output).at("status"), "drawn") << by_standard_input.errors;
    EXPECT_THAT(render({"--files-from", folder.file("empty", "")}).errors,
                HasSubstr("empty: expected names of files, one a line"));
    std::filesystem::create_directory(folder.file("nothing"));
    EXPECT_THAT(render({folder.file("nothing")}).errors, HasSubstr("nothing: expected a folder with models"));
}

#if !defined(_WIN32)
TEST_F(Render_Batch, without_its_manifest_a_batch_ends_and_a_file_that_takes_too_long_is_given_up) {
    const std::string one = folder.file("one.obj", corner), other = folder.file("other.obj", corner);
    const Outcome full = render({one, other, "--manifest", "/dev/full"});
    EXPECT_EQ(full.status, 1);
    EXPECT_THAT(full.errors, HasSubstr("/dev/full: cannot be written"));
    std::string large = corner;
    for (int i = 0; i < 200000; ++i) {
        large += "v " + std::to_string(i % 977) + ' ' + std::to_string(i % 991) + " 1\nf 1 2 " + std::to_string(i + 5) + '\n';
    }
    const std::string slow = folder.file("slow.obj", large);
    const Outcome late = render({slow, one, "--time-limit", "0.02", "--threads", "1"});
    EXPECT_EQ(late.status, 1);
    EXPECT_THAT(late.errors, HasSubstr("slow.obj: expected an image within 0.02 s, found none"));
    EXPECT_FALSE(std::filesystem::exists(image("slow.png")));
    EXPECT_EQ(render({slow, "--time-limit", "600", "--allow-empty"}).status, 0);
    // Nobody writes into the pipe.
    const std::string pipe = folder.file("pipe.obj");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const Outcome waiting = render({pipe, one, "--time-limit", "0.3"});
    EXPECT_EQ(waiting.status, 1);
    EXPECT_THAT(waiting.errors, HasSubstr("pipe.obj: expected an image within 0.3 s, found none"));
    EXPECT_TRUE(std::filesystem::exists(image("one.png")));
}
#endif

TEST_F(Render_Batch, wrong_usage_draws_nothing) {
    const std::string one = folder.file("a.obj", corner), other = folder.file("b.obj", corner),
                      same = folder.file("a.stl", "solid\n");
    const bool writes_jpeg = render({one, "--output-format", "jpg"}).status == 0;
    const std::string no_jpeg = writes_jpeg ? "expected an opaque image in JPEG files" : "--output-format: expected png";
    std::filesystem::remove_all(images);
    const struct {
        std::vector<std::string> arguments;
        std::string message;
    } cases[] = {
        {{one, same}, "--output-folder: expected files with different names"},
        {{one, folder.file("a.obj.zst", "")}, "which would both become " + image("a.png")},
        {{one, folder.file("a.stl.gz", "")}, "which would both become " + image("a.png")},
        {{one, "-"}, "--output-folder: expected files with names, found standard input"},
        {{one, "-o", folder.file("b.png")}, "expected no --output-folder beside it, found both"},
        {{one, "--turntable", "3"}, "expected no --turntable beside it, found both"},
        // What is wrong whatever the file is told once.
        {{one, other, "--tile-size", "9"}, "--tile-size: expected a multiple of 8"},
        {{one, other, "--output-format", "jpg", "--background", "none"}, no_jpeg},
        {{one, other, "--background", "mud"}, "--background: expected none"},
        {{one, other, "--edges=some"}, "--edges: expected all or feature"},
        {{one, other, "--section", "q"}, "--section: expected an axis"},
        {{one, other, "--palette", folder.file("none.gpl")}, "none.gpl: cannot be read"},
        {{one, other, "--palette", "-"}, "--palette -: expected a file with --output-folder"},
        {{one, other, "--input-format", "q"}, "--input-format: expected a suffix"},
        {{one, other, "--kernels", "q"}, "--kernels: expected"},
        {{one, other, "--border", "q"}, "--border: expected none, solid"},
        {{one, other, "--overlay", folder.file("none.json")}, "none.json: cannot be read"},
        {{one, other, "--overlay", "-"}, "--overlay -: expected a file with --output-folder"},
    };
    for (const auto& [arguments, message] : cases) {
        const Outcome outcome = render(arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.errors, testing::AllOf(HasSubstr(message), testing::EndsWith("\n")));
        EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
        EXPECT_FALSE(std::filesystem::exists(images));
    }
    EXPECT_THAT(replay_tests::run_vorna({"render", one, "--output-folder", "-"}).errors,
                HasSubstr("--output-folder: expected a folder, found - for standard output"));
    EXPECT_THAT(replay_tests::run_vorna({"render", one, "-o", folder.file("b.png"), "--resume"}).errors,
                HasSubstr("--resume: expected --output-folder, --tiles-of or --parts-of beside it, found none"));
}

} // namespace
