// Work on models that is split into pieces and parts: the same results and the same messages, whatever the number of threads.
#include <algorithm>
#include <atomic>
#include <map>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "drawing/files/helpers.h"
#include "drawing/files/long_list.h"
#include "drawing/model/edges.h"
#include "drawing/model/facing.h"
#include "drawing/model/model_reader.h"
#include "drawing/model/places.h"
#include "drawing/model/strips.h"
#include "tests/support/meshes.h"

namespace vorna::drawing::model {
namespace {

constexpr unsigned thread_counts[] = {1, 2, 5};

template <class List> std::string bytes_of(const List& list) {
    return std::string(reinterpret_cast<const char*>(list.data()), list.size() * sizeof list[0]) + "|";
}

std::string bytes_of(const Mesh& mesh) {
    return bytes_of(mesh.positions) + bytes_of(mesh.normals) + bytes_of(mesh.colors) + bytes_of(mesh.triangles) +
           bytes_of(mesh.lines) + bytes_of(mesh.points) + bytes_of(mesh.diagonals) + bytes_of(mesh.smoothing) +
           bytes_of(mesh.coordinates) + bytes_of(mesh.triangle_materials);
}

using Reader = Mesh(const std::string&, std::string_view, Load_Limits&);

// The mesh as bytes, or what is wrong.
std::string outcome(Reader* reader, const std::string& text, unsigned threads) {
    Load_Limits limits(std::nullopt, false, threads);
    try {
        const Mesh mesh = reader("m", text, limits);
        return std::to_string(mesh.triangle_count()) + " triangles " + bytes_of(mesh);
    } catch (const Model_Error& error) {
        return error.what();
    }
}

std::string joined(const std::vector<std::string>& lines, const std::string& before) {
    std::string text;
    for (const std::string& line : lines) {
        text += before + line + '\n';
    }
    return text;
}

// Lines of an OBJ model of some pieces, with all kinds of statements between the usual ones.
std::vector<std::string> obj_lines(std::mt19937& random) {
    std::vector<std::string> lines;
    std::size_t positions = 0, coordinates = 0, normals = 0;
    const auto some = [&](std::size_t count) { return std::to_string(1 + random() % count); };
    for (int i = 0; i < 40000; ++i) {
        const unsigned kind = positions < 10 || normals == 0 || coordinates == 0 ? static_cast<unsigned>(random() % 30)
                                                                                 : static_cast<unsigned>(random() % 1000);
        const auto number = [&] { return std::to_string(static_cast<int>(random() % 2000) - 1000) + "e-2"; };
        if (kind < 10) {
            lines.push_back("v " + number() + ' ' + number() + '\t' + number() + (random() % 2 ? " \r" : ""));
            ++positions;
        } else if (kind < 20) {
            lines.push_back("vn " + number() + ' ' + number() + ' ' + number());
            ++normals;
        } else if (kind < 30) {
            lines.push_back("vt " + number() + ' ' + number() + (random() % 2 ? " 0" : ""));
            ++coordinates;
        } else if (kind < 40) {
            const std::vector<std::string> others{"g part " + some(9),
                                                  "o thing",
                                                  "s " + some(3),
                                                  "# note",
                                                  "",
                                                  "usemtl none",
                                                  "extension 1 2",
                                                  "l " + some(positions) + ' ' + some(positions),
                                                  "p -1",
                                                  "v 1 2 3 0.5 0.25 1",
                                                  "f -1 -2 -3",
                                                  "  f 1 2 3"};
            lines.push_back(others[random() % others.size()]);
            positions += lines.back().starts_with("v 1 2 3");
        } else {
            std::string face = "f";
            const bool has_normals = random() % 4 == 0, has_coordinates = random() % 4 == 0;
            for (std::size_t corner = random() % 8 == 0 ? 4 : 3; corner > 0; --corner) {
                face += ' ' + some(positions) +
                        (has_coordinates ? '/' + some(coordinates)
                         : has_normals   ? "/"
                                         : "") +
                        (has_normals ? '/' + some(normals) : "");
            }
            lines.push_back(face);
        }
    }
    return lines;
}

// Indented lines are read one by one.
TEST(Pieces, of_an_obj_file_make_the_same_mesh_as_its_lines) {
    std::mt19937 random(3);
    for (int round = 0; round < 3; ++round) {
        const std::vector<std::string> lines = obj_lines(random);
        const std::string expected = outcome(read_obj, joined(lines, " "), 1);
        EXPECT_GT(expected.size(), 100000U);
        for (const unsigned threads : thread_counts) {
            EXPECT_EQ(outcome(read_obj, joined(lines, ""), threads) == expected, true) << round << ", " << threads << " threads";
        }
    }
}

TEST(Pieces, of_an_obj_file_fail_as_its_lines_do) {
    std::mt19937 random(4);
    const std::vector<std::string> lines = obj_lines(random);
    const std::vector<std::string> wrong_lines{"f 1 2 900000",
                                               "f 1 2",
                                               "f 1//900000 2 3",
                                               "f 1 2 12345678901234567890",
                                               "f 1 2 9999999999999999999",
                                               "f 0 1 2",
                                               "v 1 2",
                                               "v 1 2 1e99",
                                               "f 1 2 3\\",
                                               "f 1/ 2/ 3/x",
                                               "f 1 2 3/0"};
    for (const std::string& wrong : wrong_lines) {
        std::vector<std::string> damaged = lines;
        const std::size_t place = random() % lines.size();
        damaged[place] = wrong;
        const std::string expected = outcome(read_obj, joined(damaged, " "), 1);
        for (const unsigned threads : thread_counts) {
            EXPECT_EQ(outcome(read_obj, joined(damaged, ""), threads).substr(0, 200), expected.substr(0, 200))
                << wrong << ", " << threads << " threads";
        }
    }
    // A reference to what comes later, in the same piece and in the next one.
    for (const int faces : {1, 30000}) {
        std::vector<std::string> early{"v 0 0 0", "v 1 0 0", "f 1 2 3"};
        early.insert(early.end(), static_cast<std::size_t>(faces), "v 0 1 0");
        EXPECT_EQ(outcome(read_obj, joined(early, ""), 2),
                  "m:3: expected a vertex index from 1 to 2 or from -2 to -1, found '3'");
    }
}

// Pieces take memory of each thread, but whether a file can be read does not depend on their number.
TEST(Pieces, leave_memory_for_the_mesh_whatever_the_number_of_threads) {
    std::mt19937 random(5);
    const std::string text = joined(obj_lines(random), "");
    const auto is_read = [&](std::uint64_t memory, unsigned threads) {
        Load_Limits limits(memory, false, threads);
        try {
            read_obj("m", text, limits);
            return true;
        } catch (const std::exception&) {
            return false;
        }
    };
    std::uint64_t least = text.size();
    while (!is_read(least, 1)) {
        least += least / 8;
    }
    for (const unsigned threads : {2U, 8U, 79U, 1024U}) {
        for (std::uint64_t memory = least; memory < 16 * least; memory += memory / 4) {
            EXPECT_TRUE(is_read(memory + memory / 4, threads)) << memory << " bytes, " << threads << " threads";
        }
    }
}

// A record in two lines is no plain one: it and those after it are read value by value.
TEST(Pieces, of_a_ply_file_make_the_same_mesh_as_its_values) {
    const Mesh grid = bumpy_grid(150, 100, 5);
    for (const bool has_quads : {false, true}) {
        std::vector<std::string> vertices, faces;
        for (const VT_Vector& p : grid.positions) {
            std::ostringstream line;
            line << p.x << ' ' << p.y << ' ' << p.z << " 0 0.5 1 10 20 30";
            vertices.push_back(line.str());
        }
        for (std::size_t t = 0; t < grid.triangle_count(); ++t) {
            std::ostringstream line;
            const std::uint32_t* corners = &grid.triangles[3 * t];
            line << (has_quads && t % 7 == 0 ? 4 : 3) << ' ' << corners[0] << ' ' << corners[1] << ' ' << corners[2];
            line << (has_quads && t % 7 == 0 ? " 0 9" : " 9");
            faces.push_back(line.str());
        }
        const auto text = [&] {
            return "ply\nformat ascii 1.0\nelement vertex " + std::to_string(vertices.size()) +
                   "\nproperty float x\nproperty float y\nproperty float z\nproperty float nx\nproperty float ny\nproperty float "
                   "nz\nproperty uchar red\nproperty uchar green\nproperty uchar blue\nelement face " +
                   std::to_string(faces.size()) + "\nproperty list uchar int vertex_indices\nproperty int flags\nend_header\n" +
                   joined(vertices, "") + joined(faces, "");
        };
        const std::string plain = text();
        const auto in_two_lines = [](std::string& line) { line.replace(line.find(' '), 1, "\n"); };
        in_two_lines(vertices.front());
        in_two_lines(faces.front());
        const std::string expected = outcome(read_ply, text(), 1);
        EXPECT_GT(expected.size(), 100000U);
        in_two_lines(vertices[7000]);
        in_two_lines(faces[20000]);
        const std::string mixed = text();
        for (const unsigned threads : thread_counts) {
            EXPECT_EQ(outcome(read_ply, plain, threads) == expected, true) << threads << " threads";
            EXPECT_EQ(outcome(read_ply, mixed, threads) == expected, true) << threads << " threads";
        }
        faces[25000] = "3 1 2 99999 0";
        EXPECT_EQ(outcome(read_ply, text(), 2),
                  "m:" + std::to_string(16 + 15251 + 25000 + 4 + 1) + ": expected a vertex index below 15251, found '99999'");
    }
}

TEST(Pieces, of_an_stl_file_make_the_same_mesh_as_its_words) {
    const Mesh grid = bumpy_grid(60, 60, 6);
    const auto text = [&](const std::string& outer, std::size_t step) {
        std::ostringstream lines;
        lines << "solid grid\n";
        for (std::size_t t = 0; t < grid.triangle_count(); ++t) {
            lines << " facet normal 0 0 1\n  " << (t % step == 0 ? outer : "outer loop") << '\n';
            for (std::size_t corner = 3 * t; corner < 3 * t + 3; ++corner) {
                const VT_Vector& p = grid.positions[grid.triangles[corner]];
                lines << "   vertex " << p.x - 30 << ' ' << p.y << ' ' << p.z << '\n';
            }
            lines << "  endloop\n endfacet\n" << (t % 1000 == 999 ? "endsolid\nsolid next\n" : "");
        }
        return lines.str() + "endsolid\n";
    };
    const std::string expected = outcome(read_stl, text("outer\nloop", 1), 1);
    EXPECT_GT(expected.size(), 100000U);
    for (const unsigned threads : thread_counts) {
        EXPECT_EQ(outcome(read_stl, text("outer loop", 1), threads) == expected, true) << threads << " threads";
        EXPECT_EQ(outcome(read_stl, text("outer\nloop", 700), threads) == expected, true) << threads << " threads";
        std::string damaged = text("outer loop", 1);
        damaged.replace(damaged.rfind("vertex"), 6, "vertix");
        const auto line =
            std::count(damaged.begin(), damaged.begin() + static_cast<std::ptrdiff_t>(damaged.find("vertix")), '\n');
        EXPECT_EQ(outcome(read_stl, damaged, threads), "m:" + std::to_string(line + 1) + ": expected 'vertex', found 'vertix'");
    }
}

TEST(Places, are_numbered_in_the_order_of_their_first_points) {
    std::mt19937 random(7);
    std::vector<VT_Vector> points(200000);
    for (VT_Vector& point : points) {
        const auto coordinate = [&] { return static_cast<float>(static_cast<int>(random() % 41) - 20); };
        point = {coordinate(), coordinate() * -0.0F, coordinate()};
    }
    std::map<std::pair<float, float>, std::uint32_t> numbers;
    std::vector<std::uint32_t> expected, firsts;
    for (std::uint32_t i = 0; i < points.size(); ++i) {
        const auto [place, is_new] = numbers.try_emplace({points[i].x, points[i].z}, static_cast<std::uint32_t>(numbers.size()));
        expected.push_back(place->second);
        if (is_new) {
            firsts.push_back(i);
        }
    }
    for (const unsigned threads : thread_counts) {
        const Places places = find_places(points, threads);
        EXPECT_EQ(places.numbers, expected);
        EXPECT_EQ(places.firsts, firsts);
    }
    EXPECT_EQ(find_places({}, 2).count(), 0U);
}

// Also while a list grows from an ordinary block into large pages.
TEST(Long_Lists, keep_their_elements_and_lie_in_whole_pages) {
    using vorna::drawing::large_page;
    vorna::drawing::Long_List<std::uint32_t> list;
    for (std::uint32_t i = 0; i < 2'000'000; ++i) {
        list.push_back(i);
    }
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(list.data()) % large_page, 0U);
    const auto copy = list;
    for (std::uint32_t i = 0; i < list.size(); ++i) {
        ASSERT_TRUE(list[i] == i && copy[i] == i) << i;
    }
    list.assign(3'000'000, 7U);
    EXPECT_EQ(std::ranges::count(list, 7U), 3'000'000);
}

TEST(Groups, keep_the_order_of_their_numbers) {
    std::mt19937 random(8);
    for (const std::uint32_t group_count : {0U, 1U, 300U, 70000U}) {
        std::vector<std::uint32_t> groups(100000, no_group);
        std::vector<std::vector<std::uint32_t>> expected(group_count);
        for (std::uint32_t i = 0; i < groups.size() && group_count > 0; ++i) {
            if (random() % 5 > 0) {
                groups[i] = static_cast<std::uint32_t>(random() % group_count);
                expected[groups[i]].push_back(i);
            }
        }
        for (const unsigned threads : thread_counts) {
            auto found = grouped(
                static_cast<std::uint32_t>(groups.size()), group_count, threads, [&](std::uint32_t i) { return groups[i]; },
                [](std::uint32_t i) { return i; });
            ASSERT_EQ(found.count(), group_count);
            for (std::uint32_t group = 0; group < group_count; ++group) {
                ASSERT_TRUE(std::ranges::equal(found[group], expected[group])) << group << " of " << group_count;
            }
        }
    }
}

// Faces of all directions at shared vertices, so that vertices are split, and edges that more than two faces share.
TEST(Threads, make_the_same_normals_strips_and_edges) {
    Mesh mesh = bumpy_grid(200, 150, 9);
    mesh.triangles.insert(mesh.triangles.end(), mesh.triangles.begin(), mesh.triangles.begin() + 900);
    mesh.diagonals.assign(mesh.triangle_count(), 4);
    std::vector<std::string> outcomes;
    for (const unsigned threads : thread_counts) {
        Mesh finished = mesh;
        finish_mesh(finished, "m", {}, threads);
        EXPECT_GT(finished.positions.size(), mesh.positions.size() + 10000);
        const Strips strips = make_strips(finished.triangles, static_cast<std::uint32_t>(finished.positions.size()), threads);
        const Edges edges = make_edges(finished, threads);
        const Facing facing(finished, threads);
        outcomes.push_back(bytes_of(finished) + bytes_of(strips.vertices) + bytes_of(strips.triangle_order) +
                           bytes_of(strips.starts) + bytes_of(edges.points) + bytes_of(edges.triangles) + bytes_of(edges.chains) +
                           bytes_of(edges.starts) + bytes_of(edges.triangle_edges) + bytes_of(facing.normals()));
    }
    EXPECT_TRUE(outcomes[1] == outcomes[0]);
    EXPECT_TRUE(outcomes[2] == outcomes[0]);
}

TEST(Threads, join_in_order_and_pass_on_what_a_task_throws) {
    for (const std::size_t threads : thread_counts) {
        std::vector<std::size_t> places(places_in_order(threads)), joined;
        const auto make = [&](std::size_t task, std::size_t place) { places[place] = task * task; };
        share_in_order(1000, threads, make, [&](std::size_t task, std::size_t place) {
            EXPECT_EQ(places[place], task * task);
            joined.push_back(task);
            return task < 900;
        });
        ASSERT_EQ(joined.size(), 901U);
        EXPECT_TRUE(std::ranges::is_sorted(joined));
        std::atomic<std::size_t> done = 0;
        const auto fail = [&](std::size_t task, std::size_t) {
            if (task == 50) {
                throw std::bad_alloc();
            }
            ++done;
        };
        EXPECT_THROW(share_tasks(100000, threads, fail), std::bad_alloc);
        EXPECT_LT(done, 100000U);
        EXPECT_THROW(share_in_order(1000, threads, fail, [](std::size_t, std::size_t) { return true; }), std::bad_alloc);
        EXPECT_THROW(share_in_order(1000, threads, make,
                                    [&](std::size_t task, std::size_t place) {
                                        fail(task, place);
                                        return true;
                                    }),
                     std::bad_alloc);
    }
}

} // namespace
} // namespace vorna::drawing::model
