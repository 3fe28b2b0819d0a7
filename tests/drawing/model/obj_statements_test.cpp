// Statements of OBJ files, libraries of materials and files that models name; keywords of STL files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/job/formats.h"
#include "drawing/model/model_reader.h"
#include "drawing/model/named_files.h"
#include "tests/support/command_line.h"

namespace vorna::drawing::model {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr VT_RGB32 red{0, 0, 255, 255}, green{0, 255, 0, 255}, blue{255, 0, 0, 255};

class Obj_Statements : public testing::Test {
protected:
    Mesh read(const std::string& content) {
        Load_Limits limits;
        return read_obj(folder.file("m.obj"), content, limits);
    }
    // Of the faces of three materials, red, green and blue.
    std::vector<VT_RGB32> colors_with(const std::string& libraries) {
        const Mesh mesh =
            read(libraries + "v 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl red\nf 1 2 3\nusemtl green\nf 1 2 3\nusemtl blue\nf 1 2 3\n");
        warnings = mesh.warnings;
        const auto color_of = [&](std::size_t face) { return mesh.colors.at(mesh.triangles.at(3 * face)); };
        return {color_of(0), color_of(1), color_of(2)};
    }

    replay_tests::Temporary_Folder folder;
    std::vector<std::string> warnings;
};

TEST_F(Obj_Statements, one_line_names_several_libraries_whose_names_may_hold_blanks) {
    folder.file("a.mtl", "newmtl red\nKd 1 0 0\n");
    folder.file("my green paints.MTL", "newmtl green\nKd 0 1 0\n");
    folder.file("plain", "newmtl blue\nKd 0 0 1\n");
    folder.file("a.mtl plain", "newmtl red\nKd 1 0 0\nnewmtl green\nKd 0 1 0\nnewmtl blue\nKd 0 0 1\n");
    for (const char* libraries : {"mtllib a.mtl my green paints.mtl plain\n", "mtllib plain A.MTL\tmy green paints.mtl # all\n",
                                  "mtllib a.mtl plain\n", "mtllib plain\nmtllib a.mtl\nmtllib my green paints.mtl\n"}) {
        EXPECT_THAT(colors_with(libraries), ElementsAre(red, green, blue)) << libraries;
        EXPECT_TRUE(warnings.empty()) << libraries;
    }
    EXPECT_EQ(colors_with("mtllib gone.mtl a.mtl lost too.mtl\n")[0], red);
    EXPECT_THAT(warnings, ElementsAre(HasSubstr("gone.mtl: cannot be read"), HasSubstr("lost too.mtl: cannot be read")));
}

TEST_F(Obj_Statements, a_line_of_a_library_that_cannot_be_read_costs_only_itself) {
    folder.file("a.mtl", "newmtl red\nKd 1 0 0\nd x\nnewmtl green\nKd 0 x 0\nKd 0 1 0\nTr\nnewmtl blue\nKd 0 0 1 # all of it\n");
    EXPECT_THAT(colors_with("mtllib a.mtl\n"), ElementsAre(red, green, blue));
    EXPECT_THAT(warnings,
                ElementsAre(testing::EndsWith("a.mtl:3: expected an opacity, found 'x'; this line and 2 more left out")));
}

TEST_F(Obj_Statements, comments_end_statements_and_names_may_hold_their_sign) {
    folder.file(
        "a.mtl",
        "newmtl red # the first\nKd 1 0 0\nmap_Kd paint.png # of wood\nnewmtl Material #2\nKd 0 1 0\nmap_Kd paint #1.png\n");
    folder.file("paint.png", "");
    folder.file("paint #1.png", "");
    const Mesh mesh =
        read("mtllib a.mtl # materials\nv 0 0 0 # a\nv 1 0 0 0.5 # b\nv 0 1 0\nvt 0.5 # u alone\nvt 1 0 0 #\nvn 0 0 1 # up\n"
             "usemtl red\t# shiny\ns off # flat\nf 1/1 2/2 3/1 # a triangle\nusemtl Material #2\nf 1/1/1 2/1/1 3/1/1 #1\n"
             "l 1 2 # a line\np 3 # a point\n");
    EXPECT_EQ(mesh.triangle_count(), 2U);
    EXPECT_EQ(mesh.line_count(), 1U);
    EXPECT_EQ(mesh.points.size(), 1U);
    EXPECT_THAT(mesh.smoothing, ElementsAre(not_smooth, not_smooth));
    EXPECT_THAT(mesh.triangle_materials, ElementsAre(0, 1));
    EXPECT_EQ(mesh.colors[3], green);
    ASSERT_EQ(mesh.images.size(), 2U);
    EXPECT_THAT(mesh.images[0].name, testing::EndsWith("paint.png"));
    EXPECT_THAT(mesh.images[1].name, testing::EndsWith("paint #1.png"));
}

TEST_F(Obj_Statements, an_index_before_all_elements_has_no_range) {
    EXPECT_THAT([&] { read("f 1 2 3\n"); },
                testing::ThrowsMessage<Model_Error>(
                    HasSubstr("m.obj:1: expected no vertex index, since nothing comes before that it could name, found '1'")));
}

TEST(Stl_Reader, keywords_may_have_capitals) {
    Load_Limits limits;
    const std::string text =
        "SOLID part\nFACET NORMAL 0 0 1\n OUTER LOOP\n  VERTEX 0 0 0\n  Vertex 1 0 0\n  vertex 0 1 0\n ENDLOOP\n"
        "EndFacet\nENDSOLID part\n";
    EXPECT_EQ(read_stl("m", text, limits).triangle_count(), 1U);
    EXPECT_THAT([&] { read_stl("m", "SOLID\nFASCET\n", limits); },
                testing::ThrowsMessage<Model_Error>(HasSubstr("m:2: expected 'facet' or 'endsolid', found 'FASCET'")));
}

// Listing the folder for each of them would take more steps than the memory allows.
TEST(Named_Files, list_a_folder_once_for_many_missing_files) {
    const replay_tests::Temporary_Folder folder;
    for (int i = 0; i < 60; ++i) {
        folder.file("file" + std::to_string(i), "");
    }
    folder.file("Last.PNG", "");
    Load_Limits limits(std::uint64_t{8} << 20);
    const std::string model = folder.file("m.obj");
    Named_Files files(model, limits);
    for (int i = 0; i < 500; ++i) {
        const std::string name = "gone" + std::to_string(i);
        EXPECT_FALSE(files.find(model, "sub\\" + name).has_value());
        EXPECT_EQ(files.path(model, name), folder.file(name));
    }
    EXPECT_EQ(files.path(model, "C:\\images\\last.png"), folder.file("Last.PNG"));
    EXPECT_EQ(files.path(model, "../last.png"), folder.file("Last.PNG"));
}

} // namespace
} // namespace vorna::drawing::model
