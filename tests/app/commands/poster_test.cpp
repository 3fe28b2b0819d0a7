// Large pictures: the same bytes however they are cut, drawn and joined; bounded memory; nothing left of what was given up.
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#if !defined(_WIN32)
#include <csignal>

#include <sys/wait.h>
#include <unistd.h>
#endif

#include "drawing/files/memory.h"
#include "drawing/image/sha256.h"
#include "drawing/job/image_part.h"
#include "tests/support/command_line.h"
#include "tests/support/images.h"
#include "tests/support/meshes.h"
#include "tests/support/png_pixels.h"

namespace vorna::app {
namespace {

using namespace drawing;

using replay_tests::Outcome;
using replay_tests::read_file;
using testing::ElementsAre;
using testing::HasSubstr;
using Options = std::vector<std::string>;

std::string digest(const std::vector<std::uint8_t>& bytes) {
    Sha256 hash;
    // In pieces that do not fit its blocks.
    for (std::size_t start = 0; start < bytes.size(); start += 1000) {
        hash.add(&bytes[start], std::min<std::size_t>(1000, bytes.size() - start));
    }
    return hash.finish();
}

TEST(Sha256, gives_the_digests_that_are_known) {
    EXPECT_EQ(digest({}), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(digest({'a', 'b', 'c'}), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(digest(std::vector<std::uint8_t>(1000000, 'a')),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Memory, is_read_and_said) {
    EXPECT_EQ(parsed_memory("--m", "512M"), std::uint64_t{512} << 20);
    EXPECT_EQ(parsed_memory("--m", "2G"), std::uint64_t{2} << 30);
    EXPECT_EQ(parsed_memory("--m", "1g"), std::uint64_t{1} << 30);
    EXPECT_EQ(parsed_memory("--m", "77"), 77U);
    for (const char* wrong : {"", "G", "0", "-1G", "1.5G", "2GB", "99999999999T"}) {
        EXPECT_THROW(parsed_memory("--m", wrong), Usage_Error) << wrong;
    }
    EXPECT_EQ(memory_text((std::uint64_t{5} << 20) + 1), "6M");
}

TEST(Image_Parts, cover_the_picture_and_begin_at_multiples_of_8) {
    for (const VT_Int_Pair size : {VT_Int_Pair{437, 301}, {64, 24}, {40000, 20000}}) {
        for (const VT_Int_Pair parts : {VT_Int_Pair{1, 1}, {3, 2}, {8, 3}}) {
            std::int64_t pixels = 0;
            for (std::int32_t number = 0; number < parts.x * parts.y; ++number) {
                const VT_Int_Rectangle area = Image_Part{size, parts.x, parts.y, number}.area();
                EXPECT_EQ(area.left % 8 + area.bottom % 8, 0);
                EXPECT_LE(area.left, area.right);
                EXPECT_LE(area.bottom, area.top);
                pixels += std::int64_t{area.right - area.left + 1} * (area.top - area.bottom + 1);
            }
            EXPECT_EQ(pixels, std::int64_t{size.x} * size.y);
        }
    }
}

// Long edges, steep and flat, that end in corners.
const std::string wedge = "v -1 -1 0\nv 1 -0.99 0.1\nv 0.3 1 -0.2\nv -0.1 0.2 1\nf 1 2 3\nf 1 2 4\nf 2 3 4\nf 3 1 4\n";

class Poster : public testing::Test {
protected:
    Poster() {
        folder.file("paint.mtl", "newmtl a\nmap_Kd paint.png\nnewmtl b\nmap_Kd paint.png\nd 0.5\n");
        folder.file("paint.png", vorna::drawing::model::png_file(vorna::drawing::model::gradient()));
        const std::string square = "v -1 -1 0\nv 1 -1 0.6\nv 1 1 0\nv -1 1 -0.8\nv -1 -0.5 1\nv 1 0 0.2\nv 0 1 0\n"
                                   "vt -0.5 0\nvt 3 0\nvt 3 2.5\nvt 0 2\n";
        folder.file("square.obj", "mtllib paint.mtl\n" + square + "usemtl a\nf 1/1 2/2 3/3 4/4\nusemtl b\nf 5/1 6/2 7/3\n");
        folder.file("wedge.obj", wedge);
        folder.file("ball.obj", vorna::drawing::model::obj_text(vorna::drawing::model::ball(61, 37)));
        folder.file("grid.obj", vorna::drawing::model::obj_text(vorna::drawing::model::bumpy_grid(90, 60, 1)));
    }

    // Runs `vorna render`; gives the picture's file and hash.
    std::pair<std::string, std::string> render(const std::string& model, const Options& options, const Options& more = {}) {
        Options arguments{"render", folder.file(model), "-o", folder.file("out.png"), "--hash"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Outcome outcome = replay_tests::run_vorna(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return {read_file(folder.file("out.png")), outcome.output};
    }

    // The files of all parts.
    Options render_parts(const std::string& model, const Options& options, int columns, int rows) {
        Options names;
        for (int number = 0; number < columns * rows; ++number) {
            names.push_back(folder.file("part" + std::to_string(number) + ".png"));
            Options arguments{
                "render", folder.file(model),     "-o",         names.back(),
                "--tile", std::to_string(number), "--tiles-of", std::to_string(columns) + "x" + std::to_string(rows)};
            arguments.insert(arguments.end(), options.begin(), options.end());
            const Outcome outcome = replay_tests::run_vorna(arguments);
            EXPECT_EQ(outcome.status, 0) << outcome.errors;
        }
        return names;
    }

    Outcome assemble(Options parts) {
        parts.insert(parts.begin(), {"assemble", "-o", folder.file("joined.png"), "--hash"});
        return replay_tests::run_vorna(parts);
    }

    std::vector<std::string> leftovers() const {
        std::vector<std::string> names = folder.names();
        std::erase_if(names, [](const std::string& name) { return name.find(".vorna-unfinished-") == std::string::npos; });
        return names;
    }

    replay_tests::Temporary_Folder folder;
};

TEST_F(Poster, bytes_do_not_depend_on_tiles_threads_and_parts) {
    const struct {
        const char* model;
        Options options;
    } cases[] = {
        {"ball.obj", {"--shading", "flat"}},
        {"ball.obj", {"--colors", "8", "--zoom", "3"}},
        {"ball.obj", {"--shading", "flat", "--edges=feature", "--colors", "8"}},
        {"grid.obj", {"--edges", "--antialias", "--cull", "back"}},
        {"grid.obj", {"--shading", "wireframe", "--antialias", "--zoom", "2"}},
        {"wedge.obj", {"--edges", "--antialias"}},
        {"wedge.obj", {"--edges", "--zoom", "9"}},
        {"wedge.obj", {"--shading", "wireframe", "--colors", "8", "--edge-color", "red", "--ortho"}},
        {"wedge.obj", {"--shading", "wireframe", "--antialias"}},
        {"square.obj", {"--shading", "textured", "--edges"}},
        {"square.obj",
         {"--shading", "textured", "--supersample", "2", "--palette", folder.file("few", "#000\n#fff\n#a64\n#48c\n")}},
        {"grid.obj", {"--edges", "--supersample", "3", "--zoom", "2"}},
        {"wedge.obj", {"--edges=feature", "--supersample", "8", "--background", "none"}},
        {"wedge.obj", {"--edges", "--antialias", "--background", "none"}},
        {"ball.obj", {"--shading", "hidden-line", "--palette", "2x2x2", "--background", "#123456"}},
        {"square.obj", {"--shading", "textured", "--colors", "8", "--zoom", "3"}},
    };
    for (auto [model, options] : cases) {
        // More than one block of rows.
        options.insert(options.end(), {"--size", "701x403"});
        const auto whole = render(model, options, {"--threads", "1"});
        const bool indexed = std::ranges::any_of(options, [](const auto& o) { return o == "--colors" || o == "--palette"; });
        const replay_tests::Png_Pixels pixels =
            indexed ? replay_tests::read_png(folder.file("out.png")) : replay_tests::read_colors(folder.file("out.png"));
        EXPECT_EQ(whole.second, digest(pixels.bytes) + "\n");
        for (const Options& cut : {Options{"--tile-size", "64", "--threads", "3"}, {"--tile-size", "152", "--threads", "1"}}) {
            EXPECT_EQ(render(model, options, cut), whole) << model << ' ' << testing::PrintToString(options);
        }
        const Outcome joined = assemble(render_parts(model, options, 3, 2));
        EXPECT_EQ(joined.output, whole.second) << joined.errors;
        EXPECT_EQ(read_file(folder.file("joined.png")), whole.first) << model << ' ' << testing::PrintToString(options);
    }
}

TEST_F(Poster, a_single_part_is_a_part) {
    const auto whole = render("ball.obj", {"--size", "101x70"}, {});
    const Outcome joined = assemble(render_parts("ball.obj", {"--size", "101x70"}, 1, 1));
    EXPECT_EQ(joined.errors, "");
    EXPECT_EQ(read_file(folder.file("joined.png")), whole.first);
}

TEST_F(Poster, hashes_do_not_depend_on_the_kernel_set) {
    for (const Options& options : {Options{}, {"--colors", "8", "--edges"}, {"--edges", "--antialias"}}) {
        const std::string hash = render("grid.obj", options, {"--kernels", "portable", "--tile-size", "128"}).second;
        int others = 0;
        for (const char* set : {"baseline", "avx2", "avx512", "neon"}) {
            Options arguments{"render", folder.file("grid.obj"), "-o", folder.file("out.png"), "--hash", "--kernels", set};
            arguments.insert(arguments.end(), options.begin(), options.end());
            if (const Outcome outcome = replay_tests::run_vorna(arguments); outcome.status == 0) {
                EXPECT_EQ(outcome.output, hash) << set;
                ++others;
            }
        }
        if (others == 0) {
            GTEST_SKIP() << "this processor runs the portable kernels only";
        }
    }
}

TEST_F(Poster, parts_that_do_not_make_a_picture_are_refused) {
    const Options options{"--size", "200x100"};
    const Options parts = render_parts("wedge.obj", options, 2, 2);
    const std::string other = folder.file("other.png"), broken = folder.file("broken.png");
    std::filesystem::copy_file(folder.file("part3.png"), folder.file("kept.png"));
    render_parts("wedge.obj", {"--size", "208x100"}, 2, 2);
    std::filesystem::rename(folder.file("part3.png"), other);
    render_parts("wedge.obj", options, 2, 2);
    folder.file("broken.png", read_file(parts[3]).substr(0, 300));
    std::string bytes = read_file(parts[3]);
    constexpr std::size_t first_checksum = 29; // of the chunk with the size
    bytes[first_checksum] = static_cast<char>(~bytes[first_checksum]);
    const std::string damaged = folder.file("damaged.png", bytes);
    const struct {
        Options files;
        std::string message;
    } cases[] = {
        {{parts[0], parts[1], parts[3]}, "expected all parts, found no part 2 of 2x2 of an image of 200x100"},
        {{parts[0], parts[1], parts[2], parts[2]}, parts[2] + ": expected each part once"},
        {{parts[0], parts[1], parts[2], other}, other + ": expected a part of the same image"},
        {{parts[0], parts[1], parts[2], broken},
         broken + ": expected a part drawn with --tiles-of, found a file that ends too early"},
        {{parts[0], parts[1], parts[2], damaged},
         damaged + ": expected a part drawn with --tiles-of, found a file that has been damaged"},
        {{folder.file("paint.png")}, "found an image that does not say where it belongs"},
        {{folder.file("wedge.obj")}, "found another kind of file"},
    };
    for (const auto& [files, message] : cases) {
        const Outcome outcome = assemble(files);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.errors, HasSubstr(message));
        EXPECT_FALSE(std::filesystem::exists(folder.file("joined.png")));
        EXPECT_THAT(leftovers(), ElementsAre());
    }
}

TEST_F(Poster, what_does_not_fit_into_memory_is_refused_before_it_is_drawn) {
    const Options command{"render", folder.file("ball.obj"), "-o", folder.file("out.png"), "--size", "200000x3000"};
    Options tight = command;
    tight.insert(tight.end(), {"--max-memory", "24M"});
    const Outcome outcome = replay_tests::run_vorna(tight);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.errors, testing::StartsWith("vorna: --max-memory: expected "));
    EXPECT_THAT(outcome.errors, testing::EndsWith("M or more for this image, found 24M\n"));
    EXPECT_FALSE(std::filesystem::exists(folder.file("out.png")));
}

#if !defined(_WIN32)
TEST_F(Poster, an_interrupt_leaves_no_file) {
    const std::string model = folder.file("ball.obj"), output = folder.file("out.png");
    const pid_t child = fork();
    if (child == 0) {
        execl(VORNA_COMMAND, "vorna", "render", model.c_str(), "-o", output.c_str(), "--size", "60000x60000", nullptr);
        _exit(127);
    }
    ASSERT_GT(child, 0);
    for (int i = 0; i < 1000 && leftovers().empty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    EXPECT_EQ(leftovers().size(), 1U);
    kill(child, SIGINT);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
    EXPECT_THAT(leftovers(), ElementsAre());
    EXPECT_FALSE(std::filesystem::exists(output));
}
#endif

} // namespace
} // namespace vorna::app
