// How files to draw are recognised, and who reads them.
#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/files/address_sanitizer.h"
#include "drawing/files/text_encoding.h"
#include "drawing/job/formats.h"
#include "drawing/model/model_reader.h"
#include "tests/support/command_line.h"

namespace vorna::drawing {
namespace {

using testing::HasSubstr;

const std::string shape = "v 0 0 0\nv 1 0 0\nv 0 1 0\n", triangle = "f 1 2 3\n";

class Formats : public testing::Test {
protected:
    model::Mesh load(const std::string& name, const std::string& content) {
        std::vector<Input> inputs{open_input(folder.file(name, content), "", limits)};
        return model::load_models(inputs, limits);
    }

    std::string refusal(const std::string& name, const std::string& content) {
        try {
            load(name, content);
        } catch (const model::Model_Error& error) {
            return error.what();
        }
        return "no error";
    }

    replay_tests::Temporary_Folder folder;
    Load_Limits limits;
};

std::string utf16(const std::u16string& text, bool big_endian) {
    std::string bytes;
    for (const char16_t unit : u"\uFEFF" + text) {
        const char high = static_cast<char>(unit >> 8), low = static_cast<char>(unit & 0xFF);
        bytes += big_endian ? high : low;
        bytes += big_endian ? low : high;
    }
    return bytes;
}

TEST_F(Formats, text_may_be_in_utf_16) {
    for (const bool big_endian : {false, true}) {
        EXPECT_EQ(utf8_from_utf16(utf16(u"v \u00E9\u20AC\U0001F600!", big_endian)), "v \u00E9\u20AC\U0001F600!");
        const std::string halves = utf16(u"a", big_endian) + utf16({u'b', char16_t{0xDC00}, char16_t{0xD800}, u'c'}, big_endian);
        EXPECT_EQ(utf8_from_utf16(halves), "a\uFEFFb\uFFFD\uFFFDc");
        const std::u16string wide(shape.begin(), shape.end());
        EXPECT_EQ(load("wide.obj", utf16(u"# \u20AC\n" + wide + u"f 1 2 3", big_endian)).triangle_count(), 1U);
    }
    // A binary file may begin with the same two bytes.
    EXPECT_FALSE(is_utf16(std::string("\xFF\xFE\x00\x00", 4)));
    EXPECT_FALSE(is_utf16(std::string("\xFF\xFE\x41\x42", 4)));
    EXPECT_EQ(load("mark.obj", "\xEF\xBB\xBF" + shape + triangle).triangle_count(), 1U);
}

TEST_F(Formats, vrml_is_named_in_the_refusal) {
    EXPECT_THAT(refusal("a.wrl", "#VRML V2.0 utf8\n"), HasSubstr("a.wrl: expected a model that can be read, found VRML"));
    EXPECT_THAT(refusal("a.vrml", "#VRML V1.0 ascii\n"), HasSubstr("found VRML"));
}

// assimp reads faces of two corners, and no vertex that is not there.
TEST_F(Formats, assimp_is_asked_for_what_a_reader_refuses) {
    const model::Mesh mesh = load("edge.obj", shape + triangle + "f 1 2\n");
    EXPECT_EQ(mesh.triangle_count(), 1U);
    // That is no damage, and so no warning.
    EXPECT_TRUE(mesh.warnings.empty());
    EXPECT_THAT(mesh.notes, testing::ElementsAre(HasSubstr(
                                "edge.obj:5: expected a vertex index, found the end of the line; read by assimp instead")));
    EXPECT_THAT(load("far.obj", "mtllib ../out.mtl\n" + shape + triangle + "f 1 2\n").warnings,
                testing::ElementsAre(HasSubstr("out.mtl: lies outside the model's folder and is not read")));
    const std::string both = refusal("wrong.obj", shape + "f 1 2 9\n");
    EXPECT_THAT(both, HasSubstr("wrong.obj:4: expected a vertex index from 1 to 3 or from -3 to -1, found '9'; assimp: "));
    EXPECT_EQ(both.find("expected a model file"), both.npos);
    // Half of a model is not drawn.
    EXPECT_THAT(refusal("cut.obj", shape + triangle + "f 1 2"), testing::EndsWith("found the end of the file"));
}

// ASE files have smoothing groups, of which assimp makes normals.
TEST_F(Formats, a_crease_angle_counts_for_normals_that_assimp_makes) {
    const std::string vertices = "*MESH_VERTEX_LIST {\n*MESH_VERTEX 0 0 0 0\n*MESH_VERTEX 1 1 0 0\n*MESH_VERTEX 2 0 1 0\n"
                                 "*MESH_VERTEX 3 1 0 1\n}\n",
                      rest = " AB: 1 BC: 1 CA: 1 *MESH_SMOOTHING *MESH_MTLID 0\n";
    const std::string file = folder.file(
        "fold.ase",
        "*3DSMAX_ASCIIEXPORT 200\n*GEOMOBJECT {\n*NODE_NAME \"fold\"\n*MESH {\n*MESH_NUMVERTEX 4\n*MESH_NUMFACES 2\n" + vertices +
            "*MESH_FACE_LIST {\n*MESH_FACE 0: A: 0 B: 1 C: 2" + rest + "*MESH_FACE 1: A: 2 B: 1 C: 3" + rest + "}\n}\n}\n");
    const auto bends = [&](std::optional<double> crease) {
        std::vector<Input> inputs{open_input(file, "", limits)};
        const model::Mesh mesh = model::load_models(inputs, limits, false, crease);
        // Both faces have corners at the second and the third vertex.
        int bent = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            for (std::size_t j = 3; j < 6; ++j) {
                const auto a = mesh.triangles.at(i), b = mesh.triangles.at(j);
                const auto x_of = [](const VT_Vector& v) { return std::array{v.x, v.y, v.z}; };
                bent += x_of(mesh.positions[a]) == x_of(mesh.positions[b]) && x_of(mesh.normals[a]) != x_of(mesh.normals[b]);
            }
        }
        return bent;
    };
    EXPECT_EQ(bends({}), 0); // both are of no group
    EXPECT_EQ(bends(0), 2);
    EXPECT_EQ(bends(180), 0);
}

TEST_F(Formats, a_library_that_lacks_memory_is_told_as_that) {
#if defined(HAS_ADDRESS_SANITIZER)
    GTEST_SKIP() << "the sanitizer reserves more memory than the limit of the library's process";
#endif
    const std::string message = refusal("large.off", "OFF\n1000000000 1 0\n0 0 0\n");
    EXPECT_THAT(message,
                testing::AllOf(HasSubstr("large.off: expected what can be read within"), testing::Not(HasSubstr("alloc"))));
}

TEST_F(Formats, dxf_files_with_more_faces_than_lines_are_models) {
    const auto dxf = [](const std::string& entities) { return "0\nSECTION\n2\nENTITIES\n" + entities + "0\nENDSEC\n0\nEOF\n"; };
    const std::string face =
        "0\n3DFACE\n8\n0\n10\n0\n20\n0\n30\n0\n11\n1\n21\n0\n31\n0\n12\n1\n22\n1\n32\n1\n13\n0\n23\n1\n33\n1\n";
    const std::string line = "0\nLINE\n8\n0\n10\n0\n20\n0\n11\n1\n21\n1\n";
    const auto is_model = [&](const std::string& content) {
        return open_input(folder.file("a.dxf", content), "", limits).format->kind == Input_Kind::model;
    };
    EXPECT_TRUE(is_model(dxf(face)));
    EXPECT_TRUE(is_model(dxf(face + line + face)));
    EXPECT_TRUE(is_model(dxf("0\nPOLYLINE\n66\n1\n70\n64\n0\nSEQEND\n")));
    EXPECT_FALSE(is_model(dxf("0\nPOLYLINE\n66\n1\n70\n1\n0\nSEQEND\n")));
    EXPECT_FALSE(is_model(dxf(face + line)));
    EXPECT_FALSE(is_model(dxf("")));
    EXPECT_EQ(load("b.dxf", dxf(face)).triangle_count(), 2U);
}

} // namespace
} // namespace vorna::drawing
