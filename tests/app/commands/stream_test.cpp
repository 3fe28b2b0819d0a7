// Models that are read while they are drawn, whole or in shares of their triangles: the same bytes however they are shared out
// and joined, the image of a model in memory, and a line for what cannot be drawn so.
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <filesystem>
#include <limits>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/geometry.h"
#include "tests/support/command_line.h"

namespace vorna::app {
namespace {

using replay_tests::Outcome;
using replay_tests::read_file;
using testing::HasSubstr;
using Words = std::vector<std::string>;
using Triangles = std::vector<std::array<VT_Vector, 3>>;

template <class Number> void add(std::string& bytes, Number number, std::endian order = std::endian::little) {
    std::array<char, sizeof number> raw;
    std::memcpy(raw.data(), &number, sizeof number);
    if (order != std::endian::native) {
        std::ranges::reverse(raw);
    }
    bytes.append(raw.data(), raw.size());
}

void add_place(std::string& bytes, const VT_Vector& v, std::endian order = std::endian::little) {
    for (const float number : {v.x, v.y, v.z}) {
        add(bytes, number, order);
    }
}

std::string stl(const Triangles& triangles) {
    std::string bytes(80, ' ');
    add(bytes, static_cast<std::uint32_t>(triangles.size()));
    for (const auto& corners : triangles) {
        bytes.append(12, '\0');
        for (const VT_Vector& corner : corners) {
            add_place(bytes, corner);
        }
        bytes.append(2, '\0');
    }
    return bytes;
}

// Vertices in the reverse order of the faces that use them, each with a colour, or with a normal that leans to one side.
std::string ply(const Triangles& triangles, std::endian order, bool with_normals) {
    const auto count = static_cast<std::int32_t>(3 * triangles.size());
    std::string bytes = std::string("ply\nformat binary_") + (order == std::endian::big ? "big" : "little") +
                        "_endian 1.0\nelement note 2\nproperty short a\nelement vertex " + std::to_string(count) +
                        "\nproperty float x\nproperty float y\nproperty float z\n" +
                        (with_normals ? "property double nx\nproperty double ny\nproperty double nz\n"
                                      : "property uchar red\nproperty uchar green\nproperty uchar blue\n") +
                        "element face " + std::to_string(triangles.size()) +
                        "\nproperty uchar flags\nproperty list uchar int vertex_indices\nend_header\n";
    bytes.append(4, '\0');
    for (std::int32_t v = count - 1; v >= 0; --v) {
        add_place(bytes, triangles[static_cast<std::size_t>(v) / 3][static_cast<std::size_t>(v) % 3], order);
        for (int k = 0; k < 3; ++k) {
            if (with_normals) {
                add(bytes, k == 2 ? 1.0 : 0.1 * (v % 7 - 3), order);
            } else {
                add(bytes, static_cast<std::uint8_t>(v * 37 + k * 80));
            }
        }
    }
    for (std::int32_t v = count - 1; v > 0; v -= 3) {
        bytes.append("\0\3", 2); // flags and length
        for (int k = 0; k < 3; ++k) {
            add(bytes, v - k, order);
        }
    }
    return bytes;
}

// Corners on a coarse grid: many triangles lie in the same planes, some have no area.
Triangles crowded(unsigned seed, std::size_t count) {
    std::minstd_rand random(seed);
    const auto place = [&] { return static_cast<float>(random() % 5) - 2; };
    Triangles triangles(count);
    for (auto& corners : triangles) {
        std::ranges::generate(corners, [&] { return VT_Vector{place(), place(), place()}; });
    }
    return triangles;
}

// Each in a plane of its own, the nearer ones in no order.
Triangles layered(unsigned seed, std::size_t count) {
    std::minstd_rand random(seed);
    const auto place = [&] { return static_cast<float>(random() % 1000) / 500 - 1; };
    Triangles triangles(count);
    for (std::size_t i = 0; i < count; ++i) {
        const float z = static_cast<float>(i * 37 % count) / static_cast<float>(count);
        std::ranges::generate(triangles[i], [&] { return VT_Vector{place(), place(), z}; });
    }
    return triangles;
}

class Stream : public testing::Test {
protected:
    Outcome run(Words words, const Words& more) const {
        words.insert(words.end(), more.begin(), more.end());
        return replay_tests::run_vorna(words);
    }
    // The file of `vorna render` with these words.
    std::string image(const Words& words, const std::string& model) const {
        const Outcome outcome = run({"render", folder.file(model), "-o", folder.file("out.png")}, words);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return read_file(folder.file("out.png"));
    }
    Words parts(int count, const Words& words, const std::string& model, const std::string& name = "part") const {
        Words files;
        for (int k = 0; k < count; ++k) {
            files.push_back(folder.file(name + std::to_string(k) + ".png"));
            const Outcome outcome = run({"render", folder.file(model), "-o", files.back(), "--parts-of", std::to_string(count),
                                         "--part", std::to_string(k)},
                                        words);
            EXPECT_EQ(outcome.status, 0) << outcome.errors;
        }
        return files;
    }
    std::string joined(const Words& files) const {
        const Outcome outcome = run({"assemble", "-o", folder.file("joined.png")}, files);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return read_file(folder.file("joined.png"));
    }
    std::string folded(const Words& files, const std::string& name) const {
        const Outcome outcome = run({"assemble", "--fold", "-o", folder.file(name)}, files);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return folder.file(name);
    }
    void expect_refusal(const Words& words, const std::string& message) const {
        const Outcome outcome = run(words, {});
        EXPECT_EQ(outcome.status, 2) << outcome.output;
        EXPECT_THAT(outcome.errors, HasSubstr(message));
        EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
    }

    replay_tests::Temporary_Folder folder;
};

TEST_F(Stream, shares_join_to_the_image_of_one_process) {
    const struct {
        Words words;
        int parts;
    } cases[] = {
        {{"--size", "101x67"}, 7},
        {{"--size", "64x64", "--supersample", "1", "--view", "front", "--ortho"}, 2},
        {{"--size", "80x60", "--supersample", "3", "--background", "none", "--cull", "back"}, 3},
        {{"--size", "70x90", "--camera", "0,0,0,3,1,-2", "--fov", "90", "--background", "red,#0000ff"}, 4}, // from inside
        {{"--size", "40x40", "--zoom", "3", "--color", "green", "--specular", "2", "--up", "z"}, 5},
        {{"--size", "33x40", "--background", "black", "--light", "0,0,1"}, 40}, // more shares than some have triangles
    };
    unsigned seed = 0;
    for (const auto& [options, count] : cases) {
        ++seed;
        const Triangles triangles = crowded(seed, seed == 6 ? 9 : 400);
        const std::endian order = seed % 2 == 0 ? std::endian::big : std::endian::little;
        const std::string model = seed % 2 == 0 ? "model.stl" : "model.ply";
        folder.file(model, seed % 2 == 0 ? stl(triangles) : ply(triangles, order, seed == 1));
        Words words = options;
        if (seed != 1) {
            words.insert(words.end(), {"--shading", "flat"});
        }
        Words whole = words;
        whole.emplace_back("--stream");
        const std::string expected = image(whole, model);
        Words files = parts(count, words, model);
        EXPECT_EQ(joined(files), expected) << "seed " << seed;
        // As a tree, and in any order.
        const auto middle = files.begin() + (count + 1) / 2;
        Words halves{folded({middle, files.end()}, "late.png"), folded({files.begin(), middle}, "early.png")};
        EXPECT_EQ(joined(halves), expected) << "seed " << seed;
        std::ranges::reverse(files);
        EXPECT_EQ(joined(files), expected) << "seed " << seed;
    }
}

TEST_F(Stream, later_shares_win_where_depths_are_equal_and_only_there) {
    const Triangles triangles = crowded(9, 400);
    folder.file("model.stl", stl(triangles));
    const Words words{"--size", "64x64", "--shading", "flat"};
    const std::string expected = joined(parts(4, words, "model.stl"));
    // The same triangles in another order look different where depths are equal.
    folder.file("model.stl", stl({triangles.rbegin(), triangles.rend()}));
    EXPECT_NE(joined(parts(4, words, "model.stl")), expected);
    const Triangles apart = layered(3, 50);
    folder.file("model.stl", stl(apart));
    const Words front{"--size", "64x64", "--shading", "flat", "--view", "front", "--up", "y", "--ortho"};
    const std::string in_order = joined(parts(4, front, "model.stl"));
    folder.file("model.stl", stl({apart.rbegin(), apart.rend()}));
    EXPECT_EQ(joined(parts(4, front, "model.stl")), in_order);
}

// Where no depths are equal the order of drawing makes no difference.
TEST_F(Stream, one_process_draws_the_image_of_a_model_in_memory) {
    for (const unsigned seed : {1U, 2U, 3U}) {
        const Triangles triangles = layered(seed, 60);
        folder.file("flat.stl", stl(triangles));
        folder.file("colored.ply", ply(triangles, std::endian::big, false));
        folder.file("normals.ply", ply(triangles, std::endian::little, true));
        for (const Words& options :
             {Words{"flat.stl", "--shading", "flat", "--view", "front"},
              {"colored.ply", "--shading", "flat", "--view", "front", "--ortho", "--supersample", "3", "--background", "none"},
              {"colored.ply", "--shading", "flat", "--view", "back", "--zoom", "2.5", "--cull", "back"},
              {"normals.ply", "--shading", "gouraud", "--view", "front", "--supersample", "1"},
              {"normals.ply", "--camera", "0,0,4,0.1,0,0"}}) {
            Words words(options.begin() + 1, options.end());
            words.insert(words.end(), {"--size", "90x60", "--up", "y"});
            const std::string expected = image(words, options.front());
            words.emplace_back("--stream");
            EXPECT_EQ(image(words, options.front()), expected) << options.front() << ' ' << seed;
        }
    }
}

TEST_F(Stream, batches_of_many_triangles_are_drawn_in_order_by_any_number_of_threads) {
    Triangles triangles = crowded(5, 150000);
    folder.file("model.stl", stl(triangles));
    const Words words{"--size", "96x96", "--shading", "flat", "--stream", "--threads"};
    const auto with_threads = [&](const char* count) {
        Words all = words;
        all.emplace_back(count);
        return image(all, "model.stl");
    };
    const std::string expected = with_threads("1");
    EXPECT_EQ(with_threads("5"), expected);
    EXPECT_EQ(joined(parts(3, {"--size", "96x96", "--shading", "flat"}, "model.stl")), expected);
    // Only the order decides what is seen last.
    std::ranges::reverse(triangles);
    folder.file("model.stl", stl(triangles));
    EXPECT_NE(with_threads("1"), expected);
    // Triangles without area, as many as are read at once, change nothing.
    const Triangles seen = crowded(6, 30);
    folder.file("seen.stl", stl(seen));
    Triangles more(65536 * 2);
    more.insert(more.begin() + 65536, seen.begin(), seen.end());
    folder.file("more.stl", stl(more));
    const Words flat{"--size", "96x96", "--shading", "flat", "--stream"};
    EXPECT_EQ(image(flat, "more.stl"), image(flat, "seen.stl"));
}

TEST_F(Stream, plans_have_the_framing_of_the_model_and_leave_out_what_is_there) {
    folder.file("model.stl", stl(crowded(4, 300)));
    const Words words{"--size", "50x50", "--shading", "flat"};
    Words whole = words, planned{"render", folder.file("model.stl"), "-o", folder.file("all.png"), "--stream", "--plan", "3"};
    whole.emplace_back("--stream");
    const std::string expected = image(whole, "model.stl");
    const Outcome plan = run(planned, words);
    ASSERT_EQ(plan.status, 0) << plan.errors;
    const nlohmann::json json = nlohmann::json::parse(plan.output);
    ASSERT_EQ(json.at("parts").size(), 3U);
    EXPECT_EQ(json.at("parts").at(1).at("triangles"), (nlohmann::json{100, 200}));
    const auto execute = [](const nlohmann::json& entry) {
        auto command = entry.at("command").get<Words>();
        command.erase(command.begin());
        const Outcome outcome = replay_tests::run_vorna(command);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
    };
    std::ranges::for_each(json.at("parts"), execute);
    execute(json.at("assemble"));
    EXPECT_EQ(read_file(folder.file("all.png")), expected);
    // A part that finds the framing by itself belongs to them.
    ASSERT_EQ(
        run({"render", folder.file("model.stl"), "-o", folder.file("all.part-1.png"), "--parts-of", "3", "--part", "1"}, words)
            .status,
        0);
    execute(json.at("assemble"));
    EXPECT_EQ(read_file(folder.file("all.png")), expected);
    std::filesystem::remove(folder.file("all.part-2.png"));
    planned.emplace_back("--plan-lines");
    const std::string lines = run(planned, words).output;
    EXPECT_EQ(std::ranges::count(lines, '\n'), 2);
    EXPECT_THAT(lines, HasSubstr("--part=2"));
    // Another model makes all parts anew.
    folder.file("model.stl", stl(crowded(4, 301)));
    const std::string others = run(planned, words).output;
    EXPECT_EQ(std::ranges::count(others, '\n'), 4);
}

TEST_F(Stream, parts_that_do_not_belong_together_are_refused) {
    folder.file("model.stl", stl(crowded(1, 50)));
    folder.file("other.stl", stl(crowded(2, 50)));
    const Words words{"--size", "24x24", "--shading", "flat"};
    const Words files = parts(4, words, "model.stl");
    const std::string out = folder.file("no.png");
    const auto refuse = [&](const Words& all, const std::string& message) {
        Words command{"assemble", "-o", out};
        command.insert(command.end(), all.begin(), all.end());
        expect_refusal(command, message);
        EXPECT_FALSE(std::filesystem::exists(out));
    };
    refuse({files[0], files[1], files[3]}, "found no triangles of part 2 of 4 of an image of 24x24");
    refuse({files[1], files[2], files[3]}, "found no triangles of part 0 of 4");
    refuse({files[0], files[1]}, "found no triangles of part 2 of 4");
    refuse({files[0], files[1], files[1], files[2], files[3]}, "expected each part once, found triangles of part 1 of 4");
    refuse({"--fold", files[0], files[2]}, "found no triangles of part 1 of 4");
    const std::string middle = folded({files[1], files[2]}, "middle.png");
    refuse({files[0], files[1], middle, files[3]}, "found triangles of part 1 to 2 of 4");
    const Words others = parts(4, words, "other.stl", "other");
    refuse({files[0], files[1], others[2], files[3]}, "other2.png: expected a part of the same inputs");
    Words red = words;
    red.insert(red.end(), {"--color", "red"});
    refuse({files[0], files[1], files[2], parts(4, red, "model.stl", "red")[3]}, "red3.png: expected a part of the same inputs");
    const Words thirds = parts(3, words, "model.stl", "third");
    refuse({files[0], thirds[1], thirds[2]}, "third1.png: expected a part of the same image");
    const std::string tile = folder.file("tile.png");
    ASSERT_EQ(run({"render", folder.file("model.stl"), "-o", tile, "--tiles-of", "1x1", "--tile", "0"}, words).status, 0);
    refuse({files[0], tile}, "tile.png: expected a part of the same image, found part 0 of 1x1");
    refuse({tile, files[0]}, "part0.png: expected a part of the same image");
    refuse({"--fold", tile}, "tile.png: expected a part of the triangles");
    std::string bytes = read_file(files[2]);
    bytes[bytes.size() - 40] = static_cast<char>(bytes[bytes.size() - 40] ^ 1);
    refuse({files[0], files[1], folder.file("part2.png", bytes), files[3]}, "part2.png: expected a part drawn with");
}

TEST_F(Stream, what_cannot_be_drawn_so_is_refused_with_a_line) {
    const Triangles triangles = crowded(1, 20);
    const std::string good = folder.file("good.stl", stl(triangles)), out = folder.file("out.png");
    const auto refuse = [&](const Words& words, const std::string& message, const std::string& model) {
        Words command{"render", model, "-o", out, "--stream"};
        command.insert(command.end(), words.begin(), words.end());
        expect_refusal(command, message);
    };
    refuse({}, "good.stl: expected --shading flat, or normals of its vertices in the file", good);
    refuse({"--shading", "gouraud"}, "good.stl: expected --shading flat", good);
    const Words flat{"--shading", "flat"};
    for (const Words& more : {Words{"--edges"},
                              {"--record", "r.json"},
                              {"--pass", "depth"},
                              {"--look", "studio"},
                              {"--colors", "8"},
                              {"--turntable", "3"},
                              {"--section", "x=0"},
                              {"--axes"},
                              {"--tiles-of", "2x2", "--tile", "0"}}) {
        Words words = flat;
        words.insert(words.end(), more.begin(), more.end());
        refuse(words, more.front(), good);
    }
    refuse({"--shading", "flat", good}, "--stream: expected one model, found 2", good);
    refuse({"--shading", "flat", "--size", "9000x100"}, "drawn in one piece, since the model is read while it is drawn", good);
    refuse(flat, "expected a plain file with --stream", "-");
    const std::string text =
        "solid\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\n";
    refuse(flat, "text.stl: expected a binary STL", folder.file("text.stl", text));
    refuse(flat, "model.obj: expected a binary STL", folder.file("model.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"));
    const std::string bytes = stl(triangles);
    refuse(flat, "short.stl: byte 1083: expected 20 triangles, found the end", folder.file("short.stl", bytes.substr(0, 1083)));
    refuse(flat, "none.stl: empty scene", folder.file("none.stl", stl({})));
    refuse(flat, "point.stl: empty scene", folder.file("point.stl", stl({{}})));
    Triangles infinite = triangles;
    infinite[3][1].y = std::numeric_limits<float>::infinity();
    refuse(flat, "wild.stl: byte 258: expected three finite coordinates", folder.file("wild.stl", stl(infinite)));
    std::string own = ply(triangles, std::endian::little, false);
    refuse(flat, "quads.ply: byte " + std::to_string(own.size() - 13) + ": expected a face of three corners",
           folder.file("quads.ply", std::string(own).replace(own.size() - 13, 1, "\4")));
    refuse(flat, "index.ply: byte " + std::to_string(own.size() - 4) + ": expected a vertex index below 60",
           folder.file("index.ply", std::string(own).replace(own.size() - 4, 1, "\x3C")));
    refuse(flat, "cut.ply: byte " + std::to_string(own.size() - 1) + ": expected 20 triangles",
           folder.file("cut.ply", own.substr(0, own.size() - 1)));
    refuse(flat, "faces before their vertices",
           folder.file("faces.ply", "ply\nformat binary_little_endian 1.0\nelement face 0\nproperty list uchar int vertex_index\n"
                                    "element vertex 0\nproperty float x\nend_header\n"));
    // Shares whose framing is another model's, or none.
    const Words part{"render", good, "-o", out, "--shading", "flat", "--parts-of", "2", "--part", "0", "--framing"};
    const auto refuse_framing = [&](const std::string& framing, const std::string& message) {
        Words words = part;
        words.push_back(framing);
        expect_refusal(words, message);
    };
    std::string numbers = std::string(64, 'a') + ",9,9,9,1";
    for (int i = 0; i < 18; ++i) {
        numbers += ",0.5";
    }
    refuse_framing(numbers, "good.stl: triangles 0 to 9: expected corners inside the framing of the model");
    refuse_framing("1,2,3", "--framing: expected a digest and 22 numbers");
    refuse_framing(numbers + ",1", "--framing: expected a digest and 22 numbers");
    expect_refusal({"render", good, "-o", out, "--shading", "flat", "--parts-of", "2", "--part", "2"}, "--part: expected");
}

} // namespace
} // namespace vorna::app
