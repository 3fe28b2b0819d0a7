// Edges of models, and pictures with them.
#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/model/clipper.h"
#include "drawing/model/edges.h"
#include "drawing/model/model_reader.h"
#include "tests/support/meshes.h"
#include "tests/support/rendering.h"

namespace vorna::drawing::model {
namespace {

// A box with sides of these lengths, turned around two axes. Its faces are quads, wound counter-clockwise from outside.
std::string box_text(const std::array<double, 3>& sides, double around_y, double around_x) {
    std::ostringstream text;
    text.precision(9);
    for (int corner = 0; corner < 8; ++corner) {
        const double x = (corner & 1 ? 0.5 : -0.5) * sides[0], y = (corner & 2 ? 0.5 : -0.5) * sides[1],
                     z = (corner & 4 ? 0.5 : -0.5) * sides[2];
        const double turned_x = x * std::cos(around_y) + z * std::sin(around_y);
        const double turned_z = z * std::cos(around_y) - x * std::sin(around_y);
        text << "v " << turned_x << ' ' << y * std::cos(around_x) - turned_z * std::sin(around_x) << ' '
             << y * std::sin(around_x) + turned_z * std::cos(around_x) << '\n';
    }
    text << "f 1 3 4 2\nf 5 6 8 7\nf 1 2 6 5\nf 3 7 8 4\nf 1 5 7 3\nf 2 4 8 6\n";
    return text.str();
}

TEST(Edges, are_those_of_polygons_each_once_in_few_chains) {
    // Every corner of a face has a vertex of its own here, for each has its face's normal.
    Load_Limits limits;
    Mesh box = read_obj("m.obj", "vn 0 0 1\nvn 0 1 0\n" + box_text({1, 2, 3}, 0, 0) + "f 1//1 2//2 4//1 3//2\n", limits);
    Mesh grid = bumpy_grid(31, 17, 0), sphere = ball(24, 12);
    const struct {
        Mesh& mesh;
        std::size_t count, most_chains;
    } cases[] = {{box, 12, 4},
                 {grid, 31 * 18 + 32 * 17 + 31 * 17, 100}, // odd points lie on the border only
                 {sphere, 24 * 11 + 24 * 12 + 24 * 10, 2 * 12 + 2}};
    for (const auto& [mesh, count, most_chains] : cases) {
        finish_mesh(mesh, "m");
        const Edges edges = make_edges(mesh);
        EXPECT_EQ(edges.count, count);
        EXPECT_LE(edges.starts.size() - 1, most_chains);
        std::set<std::pair<std::uint32_t, std::uint32_t>> found;
        for (std::size_t chain = 1; chain < edges.starts.size(); ++chain) {
            for (std::size_t place = edges.starts[chain - 1]; place + 1 < edges.starts[chain]; ++place) {
                EXPECT_TRUE(found.insert(std::minmax(edges.chains[place], edges.chains[place + 1])).second);
            }
        }
        EXPECT_EQ(found.size(), count);
        for (std::size_t side = 0; side < edges.triangles.size(); ++side) {
            const std::uint32_t from = edges.triangles[side], to = edges.triangles[side % 3 == 2 ? side - 2 : side + 1];
            if (const std::uint32_t edge = edges.triangle_edges[side]; edge != no_edge) {
                EXPECT_EQ(std::minmax(from, to), std::minmax(edges.chains[edge], edges.chains[edge + 1]));
            } else {
                EXPECT_FALSE(found.contains(std::minmax(from, to)));
            }
        }
    }
}

TEST(Clipper, cuts_segments_where_it_cuts_triangles) {
    const Clip_Point inside{0.25, 0.1, 0.5, 1}, right{3, 0.5, 0.75, 1}, behind{0.25, 0.1, -0.5, -0.2};
    const Clip_Segment cut = clip_segment(right, inside, beyond::right);
    EXPECT_TRUE(cut.visible);
    EXPECT_NEAR(cut.from.x, cut.from.w, 1e-12);
    EXPECT_EQ(cut.to.x, 0.25);
    const Clip_Segment near = clip_segment(inside, behind, beyond::near | beyond::right | beyond::top);
    EXPECT_TRUE(near.visible);
    EXPECT_NEAR(near.to.z, 0, 1e-12);
    // Passes the corner between two planes on the outer side.
    EXPECT_FALSE(clip_segment({-3, 0, 0.5, 1}, {0, 3, 0.5, 1}, beyond::left | beyond::top).visible);
}

constexpr std::array<int, 3> red{255, 0, 0};

class Edge_Pictures : public Rendering {
protected:
    Picture draw(const std::string& model, std::vector<std::string> options) {
        options.insert(options.end(), {"--view", "front", "--size", "200x160", "--color", "white", "--edge-color", "red"});
        return render(model, options);
    }
};

// The sides of a convex body that face the viewer hide nothing of each other: their edges are to be seen whole, and no others.
// Among the boxes are ones that show a side a pixel or two wide, whose depth changes by most of its range over that way. There an
// edge's pixels may lie on the face beyond the next one: these are the few that may be lost.
TEST_F(Edge_Pictures, edges_of_faces_that_are_seen_win_and_no_others_shine_through) {
    std::ptrdiff_t seen = 0, lost = 0, shining = 0;
    for (const auto& sides : {std::array{1.0, 1.0, 1.0}, std::array{1.0, 0.7, 6.0}, std::array{2.0, 0.02, 1.0}}) {
        for (const double around_y : {0.0, 0.004, 0.1, 0.5, 1.3}) {
            for (const double around_x : {0.003, 0.03, 0.4, 1.1}) {
                const std::string model = folder.file("box.obj", box_text(sides, around_y, around_x));
                for (const char* projection : {"--ortho", "--perspective"}) {
                    const Picture faces = draw(model, {projection, "--edges"});
                    const Picture alone = draw(model, {projection, "--shading", "wireframe", "--cull", "back"});
                    for (std::size_t i = 0; i < faces.pixels.size(); ++i) {
                        seen += alone.pixels[i] == red;
                        lost += alone.pixels[i] == red && faces.pixels[i] != red;
                        shining += alone.pixels[i] != red && faces.pixels[i] == red;
                    }
                }
            }
        }
    }
    EXPECT_LT(lost * 1000, seen);
    EXPECT_EQ(shining, 0);
}

TEST_F(Edge_Pictures, smoothed_edges_stay_by_the_plain_ones) {
    const std::string model = folder.file("box.obj", box_text({1, 1, 1}, 0.6, 0.4));
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"--edges"}, std::vector<std::string>{"--shading", "wireframe"}}) {
        std::vector<std::string> with_smoothing = options;
        with_smoothing.emplace_back("--antialias");
        const Picture plain = draw(model, options), smoothed = draw(model, with_smoothing);
        const auto is_near_edge = [&](std::uint32_t x, std::uint32_t y) {
            for (std::uint32_t row = y - 1; row <= y + 1; ++row) {
                for (std::uint32_t column = x - 1; column <= x + 1; ++column) {
                    if (plain.at(column, row) == red) {
                        return true;
                    }
                }
            }
            return false;
        };
        int changed = 0;
        for (std::uint32_t y = 1; y + 1 < plain.height; ++y) {
            for (std::uint32_t x = 1; x + 1 < plain.width; ++x) {
                if (smoothed.at(x, y) != plain.at(x, y)) {
                    ++changed;
                    EXPECT_TRUE(is_near_edge(x, y)) << x << ", " << y;
                }
                // On the line itself at least half of the pixel is red.
                EXPECT_TRUE(plain.at(x, y) != red || smoothed.at(x, y)[0] - smoothed.at(x, y)[1] > 60) << x << ", " << y;
            }
        }
        EXPECT_GT(changed, 300);
    }
}

TEST_F(Edge_Pictures, palette_pictures_have_the_same_edges) {
    const std::string model = folder.file("box.obj", box_text({1, 1, 1}, 0.6, 0.4));
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"--edges"}, std::vector<std::string>{"--shading", "wireframe"}}) {
        std::vector<std::string> with_palette = options;
        with_palette.insert(with_palette.end(), {"--colors", "8"});
        const Picture full = draw(model, options), palette = draw(model, with_palette);
        EXPECT_GT(full.count(red), 300);
        for (std::size_t i = 0; i < full.pixels.size(); ++i) {
            // Dithering takes a few of them a level down.
            const std::array<int, 3>& p = palette.pixels[i];
            ASSERT_EQ(full.pixels[i] == red, p[0] >= 204 && p[1] == 0 && p[2] == 0);
        }
    }
}

TEST_F(Edge_Pictures, features_leave_out_edges_within_even_surfaces) {
    Mesh flat = bumpy_grid(8, 8, 0);
    for (VT_Vector& p : flat.positions) {
        p.z = 0;
    }
    const std::string model = folder.file("flat.obj", obj_text(flat));
    const Picture all = draw(model, {"--edges"}), border = draw(model, {"--edges=feature"});
    EXPECT_GT(border.count(red), 500);
    EXPECT_GT(all.count(red), 4 * border.count(red));
    EXPECT_NE(border.at(100, 80), red);
    // Every edge of a box is a bend. A ball of many faces has an outline only.
    const std::string box = folder.file("box.obj", box_text({1, 1, 1}, 0.6, 0.4)),
                      round = folder.file("ball.obj", obj_text(ball(60, 30)));
    EXPECT_EQ(draw(box, {"--edges"}).pixels, draw(box, {"--edges=feature"}).pixels);
    const Picture outline = draw(round, {"--edges=feature"});
    EXPECT_GT(outline.count(red), 200);
    for (std::uint32_t y = 50; y < 110; ++y) {
        EXPECT_NE(outline.at(100, y), red);
    }
}

// A plate in front of an open sheet that is bent to steps: flat ones, and risers a pixel wide.
TEST_F(Edge_Pictures, edges_close_behind_a_face_stay_hidden) {
    std::string text = "v -1 -0.8 0\nv 1 -0.8 0\nv 1 0.8 0\nv -1 0.8 0\n", faces = "f 1 2 3 4\n";
    int count = 4;
    for (int step = 0; step < 12; ++step) {
        const double x = -0.9 + 0.15 * step;
        for (const auto& [shift, z] : {std::pair(0.0, -0.06), {0.14, -0.06}, {0.15, -0.3}}) {
            text += "v " + std::to_string(x + shift) + " -0.7 " + std::to_string(z - 0.24 * (step % 2) * (shift == 0)) + "\nv " +
                    std::to_string(x + shift) + " 0.7 " + std::to_string(z) + "\n";
            if (count > 4) {
                faces += "f " + std::to_string(count - 1) + ' ' + std::to_string(count + 1) + ' ' + std::to_string(count + 2) +
                         ' ' + std::to_string(count) + '\n';
            }
            count += 2;
        }
    }
    const std::string model = folder.file("steps.obj", text + faces);
    for (const std::vector<std::string>& options : {std::vector<std::string>{}, {"--antialias"}, {"--supersample", "2"}}) {
        std::vector<std::string> all = options;
        all.insert(all.end(), {"--edges", "--ortho"});
        const Picture picture = draw(model, all);
        const auto is_plain = [](const std::array<int, 3>& pixel) { return pixel[0] == pixel[1] && pixel[1] == pixel[2]; };
        int plain = 0;
        for (std::uint32_t y = 30; y < 130; ++y) {
            for (std::uint32_t x = 20; x < 180; ++x) {
                EXPECT_TRUE(is_plain(picture.at(x, y))) << x << ", " << y << ' ' << testing::PrintToString(options);
                plain += picture.at(x, y) != std::array<int, 3>{255, 255, 255};
            }
        }
        EXPECT_GT(plain, 15000);
    }
}

// Strips across the picture from x to x, with the depth of each; 80 pixels are 1.
std::string strips_text(const std::vector<std::pair<double, double>>& places, double low, double high, int& count) {
    std::ostringstream text, faces;
    for (const auto& [x, z] : places) {
        text << "v " << x << ' ' << low << ' ' << z << "\nv " << x << ' ' << high << ' ' << z << '\n';
        if (&x != &places.front().first) {
            faces << "f " << count - 1 << ' ' << count + 1 << ' ' << count + 2 << ' ' << count << '\n';
        }
        count += 2;
    }
    return text.str() + faces.str();
}

// Folds whose sides rise towards the viewer from their lower edges, with this many pixels between edges.
std::vector<std::pair<double, double>> folds(double pixels, double top, double depth) {
    std::vector<std::pair<double, double>> places;
    for (double x = -0.9; x < 0.9; x += pixels / 80) {
        places.emplace_back(x, places.size() % 2 == 0 ? top - depth : top);
    }
    return places;
}

class Fixed_Edge_Pictures : public Edge_Pictures {
protected:
    Picture draw(const std::string& text, std::vector<std::string> options) {
        options.insert(options.end(), {"--camera", "0,0,10,0,0,0", "--ortho", "--zoom", "2.68", "--size", "200x160", "--color",
                                       "white", "--edge-color", "red"});
        return render(folder.file("m.obj", text), options);
    }
    static int reds_within(const Picture& picture, std::uint32_t left, std::uint32_t right, std::uint32_t top,
                           std::uint32_t bottom) {
        int reds = 0;
        for (std::uint32_t y = top; y < bottom; ++y) {
            for (std::uint32_t x = left; x < right; ++x) {
                reds += picture.at(x, y)[0] > picture.at(x, y)[1] + 8;
            }
        }
        return reds;
    }
};

TEST_F(Fixed_Edge_Pictures, edges_in_grooves_are_seen) {
    for (const double pixels : {3.0, 8.0, 20.0}) {
        for (const double depth : {0.05, 0.4, 2.0}) {
            int count = 0;
            const std::string text = strips_text(folds(pixels, 0, depth), -0.8, 0.8, count);
            const Picture faces = draw(text, {"--edges"}), alone = draw(text, {"--shading", "wireframe"});
            int seen = 0, lost = 0;
            for (std::size_t i = 0; i < faces.pixels.size(); ++i) {
                seen += alone.pixels[i] == red;
                lost += alone.pixels[i] == red && faces.pixels[i] != red;
            }
            EXPECT_GT(seen, 1000);
            EXPECT_LT(lost * 1000, seen) << pixels << ' ' << depth;
        }
    }
}

TEST_F(Fixed_Edge_Pictures, grooves_and_slopes_close_behind_a_face_stay_hidden) {
    const std::vector<std::vector<std::string>> looks{{"--edges"}, {"--edges", "--antialias"}};
    for (const std::vector<std::string>& look : looks) {
        for (const double pixels : {1.0, 2.0, 6.0}) {
            int count = 0;
            const std::string plate = strips_text({{-1, 0}, {1, 0}}, -0.9, 0.9, count),
                              behind = strips_text(folds(pixels, -0.02, 0.5), -0.7, 0.7, count);
            EXPECT_EQ(reds_within(draw(plate + behind, look), 22, 178, 12, 148), 0) << pixels;
        }
        // Both slope, three pixels' fall apart.
        int count = 0;
        const std::string plate = strips_text({{-1, -1}, {1, 1}}, -0.9, 0.9, count);
        std::vector<std::pair<double, double>> places;
        for (int i = -8; i <= 8; ++i) {
            places.emplace_back(i * 0.1, i * 0.1 - 3.0 / 80);
        }
        EXPECT_EQ(reds_within(draw(plate + strips_text(places, -0.7, 0.7, count), look), 22, 178, 12, 148), 0);
    }
}

// Long and short edges that pass behind bars.
TEST_F(Fixed_Edge_Pictures, bars_hide_parts_of_edges) {
    int count = 0;
    std::string text;
    for (const double bar : {-0.6, 0.0, 0.6}) {
        text += strips_text({{bar - 0.08, 0}, {bar + 0.08, 0}}, -0.9, 0.9, count);
    }
    text += strips_text({{-0.9, -0.5}, {0.9, -0.5}}, -0.6, -0.3, count);
    text += strips_text({{-0.9, -0.4}, {0.9, -0.6}}, -0.1, 0, count);
    text += strips_text({{-0.9, -0.5}, {-0.3, -0.5}, {0.3, -0.5}, {0.9, -0.5}}, 0.2, 0.5, count);
    for (const std::vector<std::string>& look : {std::vector<std::string>{"--edges"}, {"--edges", "--antialias"}}) {
        const Picture picture = draw(text, look);
        for (const std::uint32_t bar : {52U, 100U, 148U}) {
            EXPECT_EQ(reds_within(picture, bar - 4, bar + 4, 12, 148), 0) << bar << ' ' << look.size();
        }
        for (const std::uint32_t gap : {76U, 124U}) {
            EXPECT_GE(reds_within(picture, gap - 10, gap + 10, 12, 148), 6 * 20) << gap;
        }
    }
}

TEST_F(Edge_Pictures, of_equal_depths_the_face_that_looks_at_the_viewer_is_seen) {
    folder.file("m.mtl", "newmtl red\nKd 1 0 0\nnewmtl blue\nKd 0 0 1\n");
    const std::string corners = "v 0 0 0\nv 2 0 0\nv 0 2 0\n";
    const std::string front = "usemtl red\nf 1 2 3\n", back = "usemtl blue\nf 6 5 4\n";
    for (const std::string& faces : {front + back, back + front}) {
        const std::string model = folder.file("m.obj", "mtllib m.mtl\n" + corners + corners + faces);
        for (const char* shading : {"gouraud", "flat"}) {
            const Picture picture = render(model, {"--view", "front", "--size", "80x80", "--shading", shading});
            const auto is = [&](std::size_t strong) {
                return std::ranges::count_if(picture.pixels, [=](const auto& p) { return p[strong] > p[2 - strong] + 30; });
            };
            EXPECT_GT(is(0), 1500);
            EXPECT_EQ(is(2), 0);
        }
    }
}

} // namespace
} // namespace vorna::drawing::model
