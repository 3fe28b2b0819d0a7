// Concurrent drawing: independent renderers of one module, and commands that draw one image with several threads. The results
// equal those of one thread.
#include <algorithm>
#include <cmath>
#include <fstream>
#include <new>
#include <optional>
#include <sstream>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/check/scene.h"
#include "tests/fuzz/command_script.h"
#include "tests/reliability/counted_heap.h"
#include "vorna/canvas.h"
#include "vorna/module.h"

namespace {

using namespace vorna::app::check;

constexpr int thread_count = 4;

// Calls of every slot with random arguments, in one of the six configurations and in two sizes of window.
std::vector<VT_RGB32> drawn_with_seed(const vorna::Module& module, int seed) {
    std::vector<VT_RGB32> pixels;
    Random random(static_cast<std::uint64_t>(seed));
    vorna::Canvas canvas(module, {.size = {64, 48}, .indexed = seed % 2 != 0, .depth_buffer = seed % 3 != 0});
    canvas.set_option("Use Mask", true);
    canvas.set_option("Enable Tiling", true);
    for (const std::int32_t side : {64, 40}) {
        Window window;
        window.size = {side, 48};
        window.origin = {};
        canvas.options().set_window_size(window.size);
        canvas.establish();
        canvas.begin_picture(vorna::rgb(10, 20, 30));
        for (const Call& call : random_scene(random, window, 3)) {
            call.draw_with(canvas.renderer());
        }
        canvas.end_picture();
        const auto drawn = canvas.read_pixels();
        pixels.insert(pixels.end(), drawn.begin(), drawn.end());
    }
    return pixels;
}

TEST(Threads, draw_on_canvases_of_their_own) {
    const vorna::Module module(KRB_MODULE);
    std::vector<std::vector<VT_RGB32>> together(thread_count);
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < thread_count; ++i) {
            threads.emplace_back([&, i] { together[static_cast<std::size_t>(i)] = drawn_with_seed(module, i); });
        }
    }
    for (int i = 0; i < thread_count; ++i) {
        EXPECT_EQ(together[static_cast<std::size_t>(i)], drawn_with_seed(module, i)) << i;
    }
}

TEST(Threads, load_and_leave_modules) {
    std::vector<std::jthread> threads;
    for (int i = 0; i < thread_count; ++i) {
        threads.emplace_back([] {
            for (int k = 0; k < 5; ++k) {
                const vorna::Module module(KRB_MODULE);
                vorna::Canvas canvas(module, {.size = {8, 8}});
                canvas.begin_picture(vorna::rgb(1, 2, 3));
            }
        });
    }
}

// Hills: some thousand triangles with a texture.
fuzzing::Command_Script hills() {
    constexpr int side = 24;
    std::ostringstream obj, texture;
    obj << "mtllib hills.mtl\nusemtl grass\n";
    for (int z = 0; z <= side; ++z) {
        for (int x = 0; x <= side; ++x) {
            obj << "v " << x << ' ' << 3 * std::sin(0.5 * x) * std::cos(0.4 * z) << ' ' << z << "\nvt " << x / 6.0 << ' '
                << z / 6.0 << '\n';
        }
    }
    for (int i = 1; i < side * (side + 1); ++i) {
        if (i % (side + 1) != 0) {
            const int corners[] = {i, i + 1, i + side + 2, i + side + 1};
            obj << 'f';
            for (const int corner : corners) {
                obj << ' ' << corner << '/' << corner;
            }
            obj << '\n';
        }
    }
    return {{}, {{"hills.obj", obj.str()}, {"hills.mtl", "newmtl grass\nKd 0.3 0.8 0.2\n"}}};
}

std::string content_of(const std::string& name) {
    std::ifstream stream(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(Threads, share_posters_turntables_and_parts) {
    const fuzzing::Command_Folder folder;
    folder.write_files(hills());
    const std::vector<std::vector<std::string>> ways = {
        {"-o", "out.png", "--edges", "--antialias"},
        {"-o", "out.png", "--tile-size", "8", "--supersample", "3"},
        {"-o", "out.png", "--tile-size", "8", "--colors", "8", "--palette", "6x6x6"},
        {"-o", "out.png", "--tile-size", "16", "--shading", "hidden-line"},
        {"-o", "out.png", "--tile-size", "16", "--shading", "textured", "--background", "none"},
        {"-o", "out-{}.png", "--turntable", "7", "--edges=feature"},
        {"-o", "out-{}.png", "--turntable", "3", "--tile-size", "16", "--supersample", "2"},
        {"-o", "out.png", "--tiles-of", "2x2", "--tile", "3", "--tile-size", "8"}};
    for (const auto& way : ways) {
        std::vector<std::string> before;
        for (const char* threads : {"1", "4"}) {
            std::vector<std::string> arguments{"render", "hills.obj", "--size", "99x80", "--threads", threads};
            arguments.insert(arguments.end(), way.begin(), way.end());
            const vorna::app::Ending outcome = fuzzing::run_command(arguments);
            ASSERT_EQ(outcome.status, 0) << testing::PrintToString(arguments) << ": " << outcome.message;
            std::vector<std::string> written;
            for (const std::string& name : folder.names()) {
                if (name.starts_with("out")) {
                    written.push_back(content_of(name));
                }
            }
            EXPECT_TRUE(before.empty() || before == written) << testing::PrintToString(way);
            before = written;
        }
        for (const std::string& name : folder.names()) {
            if (name.starts_with("out")) {
                std::remove(name.c_str());
            }
        }
    }
    for (const char* tile : {"0", "1"}) {
        ASSERT_EQ(
            fuzzing::run_command({"render", "hills.obj", "-o", tile, "--size", "99x80", "--tiles-of", "2x1", "--tile", tile})
                .status,
            0);
    }
    ASSERT_EQ(fuzzing::run_command({"assemble", "0", "1", "-o", "one", "--threads", "1"}).status, 0);
    ASSERT_EQ(fuzzing::run_command({"assemble", "0", "1", "-o", "four", "--threads", "4"}).status, 0);
    EXPECT_EQ(content_of("one"), content_of("four"));
}

// Threads of a canvas, whose recorder notes what it is given.
TEST(Threads, replay_recordings) {
    const fuzzing::Command_Folder folder;
    folder.write_files(hills());
    ASSERT_EQ(
        fuzzing::run_command({"render", "hills.obj", "-o", "out.png", "--record", "drawn.json", "--size", "200x150", "--edges"})
            .status,
        0);
    for (const char* threads : {"1", "4"}) {
        const std::vector<std::string> arguments{"replay",    "drawn.json",
                                                 "--threads", threads,
                                                 "--color",   std::string(threads) + "-color",
                                                 "--depth",   std::string(threads) + "-depth",
                                                 "--record",  std::string(threads) + "-again"};
        const vorna::app::Ending outcome = fuzzing::run_command(arguments);
        ASSERT_EQ(outcome.status, 0) << outcome.message;
    }
    for (const std::string file : {"color", "depth", "again"}) {
        EXPECT_EQ(content_of("1-" + file), content_of("4-" + file)) << file;
        EXPECT_FALSE(content_of("1-" + file).empty());
    }
}

// A surface with creases of some pieces of text, as OBJ, PLY and STL.
fuzzing::Command_Script creases() {
    constexpr int side = 110;
    std::ostringstream obj, ply, stl;
    const auto vertex = [](int x, int z) {
        return std::to_string(x) + ' ' + std::to_string(x * z % 7) + ' ' + std::to_string(z);
    };
    ply << "ply\nformat ascii 1.0\nelement vertex " << side * side
        << "\nproperty float x\nproperty float y\nproperty float z\nelement face " << 2 * (side - 1) * (side - 1)
        << "\nproperty list uchar int vertex_index\nend_header\n";
    for (int z = 0; z < side; ++z) {
        for (int x = 0; x < side; ++x) {
            obj << "v " << vertex(x, z) << '\n';
            ply << vertex(x, z) << '\n';
        }
    }
    stl << "solid creases\n";
    for (int z = 0; z + 1 < side; ++z) {
        for (int x = 0; x + 1 < side; ++x) {
            for (const int turn : {0, 1}) {
                const int corners[3][2] = {{x, z}, {x + turn, z + 1}, {x + 1, z + 1 - turn}};
                obj << 'f';
                ply << 3;
                stl << "facet normal 0 1 0\nouter loop\n";
                for (const auto& [column, row] : corners) {
                    obj << ' ' << row * side + column + 1;
                    ply << ' ' << row * side + column;
                    stl << "vertex " << vertex(column, row) << '\n';
                }
                obj << '\n';
                ply << '\n';
                stl << "endloop\nendfacet\n";
            }
        }
    }
    stl << "endsolid\n";
    return {{}, {{"creases.obj", obj.str()}, {"creases.ply", ply.str()}, {"creases.stl", stl.str()}}};
}

// Several threads read and prepare the models, also when allocations fail in some of them.
TEST(Threads, read_and_prepare_models) {
    const fuzzing::Command_Folder folder;
    folder.write_files(creases());
    const std::vector<std::string> inputs = folder.names();
    for (const std::string& input : inputs) {
        std::vector<std::string> arguments{"render", input, "-o", "out.png", "--size", "60x40", "--edges", "--threads", "1"};
        ASSERT_EQ(fuzzing::run_command(arguments).status, 0);
        const std::string expected = content_of("out.png");
        arguments.back() = "4";
        const auto allocations_of = [](const std::vector<std::string>& line) {
            std::optional<Failing_Allocations> none;
            const int status = fuzzing::run_command(line, [&] { none.emplace(INT64_MAX, 1); }).status;
            return std::pair(none->passed(), status);
        };
        const std::pair<std::int64_t, int> outcome = allocations_of(arguments);
        ASSERT_EQ(outcome.second, 0);
        const std::int64_t all = outcome.first;
        EXPECT_EQ(content_of("out.png") == expected, true) << input;
        std::remove("out.png");
        std::vector<std::string> missing = arguments;
        missing[1] = "missing";
        const std::int64_t before = allocations_of(missing).first; // for the options and the message
        constexpr int moments = 20;
        int failures = 0;
        for (int i = 0; i < moments; ++i) {
            std::optional<Failing_Allocations> failing;
            try {
                const auto ending = fuzzing::run_command(
                    arguments, [&] { failing.emplace(before + (all - before) * i / moments, thread_count); });
                failures += ending.status != 0;
            } catch (const std::bad_alloc&) {
                ++failures;
            }
            failing.reset();
            std::remove("out.png"); // of drawings that have found another way
            EXPECT_EQ(folder.names(), inputs) << i;
        }
        EXPECT_GT(failures, moments / 2) << input;
    }
}

// As many allocations fail as there are threads, at moments spread over the drawing, so that several threads fail at once.
TEST(Threads, fail_while_they_draw) {
    const fuzzing::Command_Folder folder;
    folder.write_files(hills());
    const std::vector<std::string> inputs = folder.names();
    const std::vector<std::vector<std::string>> ways = {
        {"-o", "out.png", "--tile-size", "8", "--repeat", "2", "--edges"}, // tiles drawn for measuring
        {"-o", "out.png", "--tile-size", "8", "--supersample", "2", "--edges"},
        {"-o", "out-{}.png", "--turntable", "7", "--edges", "--zoom", "0.8"}};
    for (const auto& way : ways) {
        SCOPED_TRACE(testing::PrintToString(way));
        std::vector<std::string> arguments{"render", "hills.obj", "--size", "99x80", "--threads", "4"};
        arguments.insert(arguments.end(), way.begin(), way.end());
        const auto allocations_of = [](const std::vector<std::string>& line) {
            std::optional<Failing_Allocations> none;
            EXPECT_EQ(fuzzing::run_command(line, [&] { none.emplace(INT64_MAX, 1); }).status, 0);
            return none->passed();
        };
        const std::int64_t all = allocations_of(arguments);
        std::vector<std::string> planned = arguments;
        planned.emplace_back("--dry-run");
        const std::int64_t before = allocations_of(planned);
        for (const std::string& name : folder.names()) {
            if (std::ranges::find(inputs, name) == inputs.end()) {
                std::remove(name.c_str());
            }
        }
        constexpr int moments = 40;
        int failures = 0;
        for (int i = 1; i < moments; ++i) {
            std::optional<Failing_Allocations> failing;
            try {
                const auto outcome = fuzzing::run_command(
                    arguments, [&] { failing.emplace(before + (all - before) * i / moments, thread_count); });
                // Near the end it may have made all its allocations before.
                if (outcome.status == 0) {
                    break;
                }
            } catch (const std::bad_alloc&) {
            }
            failing.reset();
            EXPECT_EQ(folder.names(), inputs) << i;
            ++failures;
        }
        EXPECT_GT(failures, moments / 2);
        std::printf("%d failures after %d to %d allocations\n", failures, static_cast<int>(before), static_cast<int>(all));
    }
}

} // namespace
