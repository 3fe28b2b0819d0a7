// The model readers: what they read, what they refuse and how they say so.
#include <bit>
#include <cstring>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/job/formats.h"
#include "drawing/model/model_reader.h"
#include "tests/support/command_line.h"
#include "tests/support/meshes.h"

namespace vorna::drawing::model {
namespace {

using testing::HasSubstr;

using Reader = Mesh(const std::string&, std::string_view, Load_Limits&);

Mesh read(Reader* reader, const std::string& file, std::string_view content) {
    Load_Limits limits;
    return reader(file, content, limits);
}

template <class Number> void put(std::string& bytes, Number value, std::endian order) {
    std::array<char, sizeof(Number)> copy;
    std::memcpy(copy.data(), &value, sizeof(Number));
    if (order != std::endian::native) {
        std::ranges::reverse(copy);
    }
    bytes.append(copy.data(), copy.size());
}

std::string ply_header(const std::string& format, std::size_t vertices, std::size_t faces) {
    return "ply\nformat " + format + " 1.0\ncomment by hand\nelement vertex " + std::to_string(vertices) +
           "\nproperty float x\nproperty float y\nproperty double z\nproperty uchar red\nproperty uchar green\nproperty uchar "
           "blue\n"
           "element face " +
           std::to_string(faces) +
           "\nproperty list uchar int vertex_indices\nproperty short flags\nelement edge 1\nproperty list char uint "
           "ends\nend_header\n";
}

std::string text_ply(const Mesh& mesh) {
    std::ostringstream text;
    text << ply_header("ascii", mesh.positions.size(), mesh.triangle_count());
    for (const VT_Vector& p : mesh.positions) {
        text << p.x << ' ' << p.y << ' ' << p.z << " 10 20 30\r\n";
    }
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        text << "3 " << mesh.triangles[i] << ' ' << mesh.triangles[i + 1] << ' ' << mesh.triangles[i + 2] << " -7\n";
    }
    text << "2 0 1\n";
    return text.str();
}

std::string binary_ply(const Mesh& mesh, std::endian order) {
    std::string bytes = ply_header(order == std::endian::little ? "binary_little_endian" : "binary_big_endian",
                                   mesh.positions.size(), mesh.triangle_count());
    for (const VT_Vector& p : mesh.positions) {
        put(bytes, p.x, order);
        put(bytes, p.y, order);
        put(bytes, static_cast<double>(p.z), order);
        bytes += {10, 20, 30};
    }
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        bytes += 3;
        for (std::size_t k = 0; k < 3; ++k) {
            put(bytes, static_cast<std::int32_t>(mesh.triangles[i + k]), order);
        }
        put(bytes, std::int16_t{-7}, order);
    }
    bytes += 2;
    put(bytes, std::uint32_t{0}, order);
    put(bytes, std::uint32_t{1}, order);
    return bytes;
}

std::string text_stl(const Mesh& mesh) {
    std::ostringstream text;
    text << "solid a shape\n";
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        text << " facet normal 0 0 0\n  outer loop\n";
        for (std::size_t k = 0; k < 3; ++k) {
            const VT_Vector& p = mesh.positions[mesh.triangles[i + k]];
            text << "   vertex " << p.x << ' ' << p.y << ' ' << p.z << '\n';
        }
        text << "  endloop\n endfacet\n";
    }
    text << "endsolid a shape\n";
    return text.str();
}

// Begins like a text on purpose.
std::string binary_stl(const Mesh& mesh) {
    std::string bytes = "solid but binary";
    bytes.resize(80);
    put(bytes, static_cast<std::uint32_t>(mesh.triangle_count()), std::endian::little);
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        bytes.append(12, '\0');
        for (std::size_t k = 0; k < 3; ++k) {
            const VT_Vector& p = mesh.positions[mesh.triangles[i + k]];
            put(bytes, p.x, std::endian::little);
            put(bytes, p.y, std::endian::little);
            put(bytes, p.z, std::endian::little);
        }
        bytes.append(2, '\0');
    }
    return bytes;
}

struct Format {
    const char* file;
    Reader* reader;
    std::string content;
};

std::vector<Format> every_format_of(const Mesh& mesh) {
    return {{"text.ply", read_ply, text_ply(mesh)},
            {"little.ply", read_ply, binary_ply(mesh, std::endian::little)},
            {"big.ply", read_ply, binary_ply(mesh, std::endian::big)},
            {"a.obj", read_obj, obj_text(mesh)},
            {"text.stl", read_stl, text_stl(mesh)},
            {"binary.stl", read_stl, binary_stl(mesh)}};
}

std::string message_of(Reader* reader, const std::string& content) {
    try {
        read(reader, "m", content);
    } catch (const Model_Error& error) {
        return error.what();
    }
    return "no error";
}

class Reader_Files : public testing::Test {
protected:
    replay_tests::Temporary_Folder folder;
};

TEST(Readers, every_format_gives_the_same_triangles_over_shared_vertices) {
    const Mesh mesh = bumpy_grid(9, 7, 1);
    for (const Format& format : every_format_of(mesh)) {
        const Mesh read_mesh = read(format.reader, format.file, format.content);
        EXPECT_EQ(read_mesh.positions.size(), mesh.positions.size()) << format.file;
        EXPECT_EQ(sorted_triangles(read_mesh), sorted_triangles(mesh)) << format.file;
    }
    EXPECT_EQ(read(read_ply, "m", binary_ply(mesh, std::endian::big)).colors.at(5), (VT_RGB32{30, 20, 10, 255}));
}

TEST(Obj_Reader, understands_every_form_of_a_face) {
    const Mesh mesh = read(read_obj, "m",
                           "v 0 0 0\nv +1 0 0 # comment\n v\t1 1e0 0\nv 0 1 1e-60\n"
                           "vt 0 0\nvn 0 0 2\nvn 0 1 0\n"
                           "f 1 2 3 4\n"
                           "f -4/1 -3/1 \\\n -2/1\n"
                           "f 1//1 2//1 3//1\r\n"
                           "f 1/1/1 2/1/-1 3/1/1");
    EXPECT_EQ(mesh.triangle_count(), 5U);
    // Corners are shared when position and normal are: four without a normal, three with the first, one with the second.
    EXPECT_EQ(mesh.positions.size(), 8U);
    EXPECT_EQ(mesh.triangles, (std::vector<std::uint32_t>{0, 1, 2, 0, 2, 3, 0, 1, 2, 4, 5, 6, 4, 7, 6}));
    EXPECT_EQ(mesh.normals[4].z, 2);
    EXPECT_EQ(mesh.normals[7].y, 1);
    EXPECT_EQ(mesh.positions[3].z, 0);
}

// Slashes without a number behind them say nothing.
TEST(Obj_Reader, reads_corners_whose_numbers_are_left_out) {
    const std::string places = "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvn 0 0 1\n";
    for (const char* face : {"f 1/ 2/ 3/", "f 1// 2// 3//", "f 1/1/ 2/1/ 3/1/\r\n", "f 1 2/ 3//"}) {
        const Mesh mesh = read(read_obj, "m", places + face);
        EXPECT_EQ(mesh.triangles, (std::vector<std::uint32_t>{0, 1, 2})) << face;
        EXPECT_EQ(mesh.positions.size(), 3U) << face;
    }
}

TEST(Obj_Reader, shares_corners_however_many_a_position_has) {
    constexpr std::size_t normals = 40;
    std::string text = "v 0 0 0\nv 1 0 0\nv 0 1 0\n", faces;
    for (std::size_t n = 1; n <= normals; ++n) {
        const std::string number = std::to_string(n);
        text += "vn 0 " + number + " 1\n";
        faces += "f 1//" + number + " 2//" + number + " 3//" + number + '\n';
    }
    const Mesh mesh = read(read_obj, "m", text + faces + faces);
    ASSERT_EQ(mesh.triangle_count(), 2 * normals);
    EXPECT_EQ(mesh.positions.size(), 3 * normals);
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        EXPECT_EQ(mesh.triangles[i], i % (3 * normals));
    }
}

TEST(Ply_Reader, understands_headers_of_old_programs_and_normals_that_are_no_numbers) {
    const Mesh mesh = read(read_ply, "m",
                           "ply\r\nformat ascii 1.0\r\nCreated by a program\r\nobj_info\tnum_cols 2\r\nelement\tvertex 3\r\n"
                           "property float32 x\r\nproperty float y\r\nproperty float z\r\nproperty float nx\r\n"
                           "property float ny\r\nproperty float nz\r\nproperty float quality\r\nelement face 1\r\n"
                           "property list uint8_t int32_t vertex_index\r\nend_header\r\n"
                           "0 0 0 nan 0 1 inf\r\n1 0 0 0 0 1 nan\r\n0 1 0 0 1 0 7\r\n3 0 1 2\r\n");
    EXPECT_EQ(mesh.triangles, (std::vector<std::uint32_t>{0, 1, 2}));
    ASSERT_EQ(mesh.normals.size(), 3U);
    EXPECT_EQ(mesh.normals[0].z, 0); // computed later
    EXPECT_EQ(mesh.normals[1].z, 1);
}

TEST_F(Reader_Files, libraries_of_materials_are_found_whatever_the_capitals_of_their_names) {
    folder.file("Paints.MTL", "newmtl blue\nKd 0 0 1\n");
    const Mesh mesh =
        read(read_obj, folder.file("m.obj"), "mtllib paints.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl blue\nf 1 2 3\n");
    EXPECT_TRUE(mesh.warnings.empty());
    ASSERT_EQ(mesh.colors.size(), 3U);
    EXPECT_EQ(mesh.colors[0], (VT_RGB32{255, 0, 0, 255}));
}

TEST_F(Reader_Files, obj_materials_give_vertices_their_diffuse_colour) {
    folder.file("two paints.mtl", "newmtl dark red\nKd 0.5 0 0\nnewmtl blue\nNs 5\nKd 0 0 1\n");
    const std::string shape =
        "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\nusemtl dark red\nf 1 2 3\nusemtl blue\nf 3 2 1\nusemtl unknown\nf 1 2 3\n";
    const Mesh mesh = read(read_obj, folder.file("m.obj"), "mtllib two paints.mtl\n" + shape);
    ASSERT_EQ(mesh.colors.size(), 9U);
    EXPECT_EQ(mesh.colors[0].alpha, 0);
    EXPECT_EQ(mesh.colors[3], (VT_RGB32{0, 0, 128, 255}));
    EXPECT_EQ(mesh.colors[6], (VT_RGB32{255, 0, 0, 255}));
    EXPECT_TRUE(read(read_obj, folder.file("m.obj"), "mtllib missing.mtl\n" + shape).colors.empty());
}

TEST(Readers, a_broken_file_is_refused_with_its_place_and_what_was_expected) {
    const std::string two_vertices = "element vertex 2\nproperty float x\nproperty float y\nproperty float z\n";
    const std::string one_face = "element face 1\nproperty list uchar int vertex_indices\n";
    const std::string text = "ply\nformat ascii 1.0\n", binary = "ply\nformat binary_little_endian 1.0\n", end = "end_header\n";
    const struct {
        Reader* reader;
        std::string content, message;
    } cases[] = {
        {read_obj, "v 0 0\n", "m:1: expected a vertex coordinate, found the end of the line"},
        {read_obj, "v 0 0 0\nv 0 x\x01y 0\n", "m:2: expected a vertex coordinate, found 'x?y'"},
        {read_obj, "v 0 0 0\n\nf 1 1 2\n", "m:3: expected a vertex index from 1 to 1 or from -1 to -1, found '2'"},
        {read_obj, "v 0 0 0\nf 1//1 1 1\n", "m:2: expected no normal index, since nothing comes before"},
        {read_obj, "v 0 0 0\nf 1 1 99999999999999999999", "expected a vertex index, found '99999999999999999999'"},
        {read_ply, "plain", "m:1: expected 'ply', found 'plain'"},
        {read_ply, "ply\nelement vertex 1\nproperty half x\n", "m:3: expected a property type, found 'half'"},
        {read_ply, text + two_vertices + end + "0 0 0\n0 0", "m:9: expected a vertex coordinate, found the end of the file"},
        {read_ply, text + two_vertices + one_face + end + "0 0 0\n1 1 1\n3 0 1 2\n",
         "m:12: expected a vertex index below 2, found '2'"},
        {read_ply, binary + two_vertices + one_face + end + std::string(24, '\0') + "\x01\xFF\xFF\xFF\xFF",
         "expected a vertex index below 2"},
        {read_stl, "solid\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 0 1 0\nendloop\n",
         "m:6: expected 'vertex', found 'endloop'"},
        {read_stl, "solid\nfascet\n", "m:2: expected 'facet' or 'endsolid', found 'fascet'"},
        {read_stl, std::string(80, ' ') + "\xFF\xFF\xFF\xFF",
         "m: byte 84: expected 4294967295 facets of 50 bytes, found the end of the file"},
        {read_stl,
         std::string(80, ' ') + std::string("\x01\0\0\0", 4) + std::string(12, '\0') + "\xFF\xFF\xFF\x7F" + std::string(34, '\0'),
         "m: byte 96: expected three finite coordinates"},
    };
    for (const auto& [reader, content, message] : cases) {
        EXPECT_THAT(message_of(reader, content), HasSubstr(message)) << content;
    }
}

TEST_F(Reader_Files, a_model_without_anything_to_draw_is_refused) {
    EXPECT_THROW(load_model(folder.file("missing.obj")), Model_Error);
    EXPECT_THROW(load_model(folder.file("unknown.xyzzy", "what is this")), Model_Error);
    for (const char* text : {"", "v 0 0 0\nv 1 0 0\nf 1 2 1\n", "v 1 2 3\nv 1 2 3\nv 1 2 3\nf 1 2 3\n"}) {
        try {
            load_model(folder.file("empty.obj", text));
            ADD_FAILURE() << text;
        } catch (const Model_Error& error) {
            EXPECT_THAT(error.what(), HasSubstr("empty.obj: empty scene: expected")) << text;
        }
    }
    // A text that is no model at all, unlike one with statements of its own.
    try {
        load_model(folder.file("text.obj", "# notes\nDear all,\n"));
        ADD_FAILURE();
    } catch (const Model_Error& error) {
        EXPECT_THAT(error.what(), HasSubstr("text.obj:2: expected lines of an OBJ model, as v X Y Z, found 'Dear'"));
    }
    EXPECT_EQ(load_model(folder.file("own.obj", "mine 1\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")).triangle_count(), 1U);
}

// Whatever is cut off or overwritten, a reader refuses the file or gives a mesh that can be drawn.
TEST(Readers, binary_files_cut_off_anywhere_are_refused) {
    const Mesh mesh = bumpy_grid(3, 2, 3);
    const auto refuses_parts = [](Reader* reader, const std::string& file) {
        for (std::size_t size = 0; size < file.size(); ++size) {
            EXPECT_NE(message_of(reader, file.substr(0, size)), "no error") << size << " of " << file.size();
        }
    };
    // A part of a file that begins with "solid" is text without facets.
    refuses_parts(read_stl, binary_stl(mesh).replace(0, 5, "parts"));
    for (const std::endian order : {std::endian::little, std::endian::big}) {
        refuses_parts(read_ply, binary_ply(mesh, order));
    }
}

TEST(Load_Limits, count_a_file_once) {
    Load_Limits limits;
    const std::uint64_t size = std::uint64_t{1} << 28, once = 64 * size;
    limits.add_file("a", size);
    limits.add_file("a", size);
    EXPECT_EQ(limits.memory(), once);
    limits.add_file("b", size);
    EXPECT_EQ(limits.memory(), 2 * once);
}

TEST(Readers, damaged_files_never_give_damaged_meshes) {
    std::mt19937 random(3);
    for (const Format& format : every_format_of(bumpy_grid(3, 2, 3))) {
        for (int round = 0; round < 1000; ++round) {
            std::string content = format.content.substr(0, round % 3 ? format.content.size() : random() % format.content.size());
            for (unsigned damage = random() % 4; damage > 0 && !content.empty(); --damage) {
                content[random() % content.size()] = static_cast<char>(random() % 2 ? random() % 256 : '0' + random() % 10);
            }
            try {
                const Mesh mesh = read(format.reader, format.file, content);
                ASSERT_EQ(mesh.triangles.size() % 3, 0U);
                ASSERT_TRUE(std::ranges::all_of(mesh.triangles, [&](std::uint32_t v) { return v < mesh.positions.size(); }));
                ASSERT_TRUE(
                    std::ranges::all_of(mesh.positions, [](const VT_Vector& p) { return std::isfinite(p.x + p.y + p.z); }));
                ASSERT_TRUE(mesh.normals.empty() || mesh.normals.size() == mesh.positions.size());
                ASSERT_TRUE(mesh.colors.empty() || mesh.colors.size() == mesh.positions.size());
            } catch (const Model_Error&) {
            }
        }
    }
}

TEST(Mesh, finished_meshes_lie_in_the_unit_sphere_with_normals_of_length_one) {
    for (const float scale : {1e-30F, 1.0F, 1e30F}) {
        Mesh mesh = ball(16, 8);
        const std::size_t stray = mesh.positions.size();
        mesh.positions.push_back({100, 100, 100}); // belongs to no triangle
        for (VT_Vector& p : mesh.positions) {
            p = {p.x * scale + 3 * scale, p.y * scale, p.z * scale};
        }
        finish_mesh(mesh, "m");
        for (std::size_t v = 0; v < mesh.positions.size(); ++v) {
            if (v == stray) {
                continue;
            }
            const VT_Vector p = mesh.positions[v], n = mesh.normals[v];
            EXPECT_LE(p.x * p.x + p.y * p.y + p.z * p.z, 1.0001F);
            EXPECT_NEAR(n.x * n.x + n.y * n.y + n.z * n.z, 1, 1e-5);
            EXPECT_GT((n.x * p.x + n.y * p.y + n.z * p.z) / std::sqrt(p.x * p.x + p.y * p.y + p.z * p.z), 0.97F);
        }
    }
}

} // namespace
} // namespace vorna::drawing::model
