// What the reader refuses, and what it says.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/recording/document.h"
#include "drawing/recording/recording_reader.h"

namespace {

using namespace vorna::drawing::recording;

struct Broken {
    std::string text;
    std::string message;
};

std::string message_of(const std::string& text) {
    try {
        read_recording(text);
        return "(nothing)";
    } catch (const Recording_Error& error) {
        return error.what();
    }
}

void expect_messages(const std::vector<Broken>& pictures) {
    for (const Broken& broken : pictures) {
        EXPECT_EQ(message_of(broken.text), broken.message) << broken.text;
    }
}

// A picture with one more top-level key.
std::string with(const std::string& key) {
    return R"({"picture": 1, "calls": [], )" + key + "}";
}

// A picture of one good call and this one.
std::string calling(const std::string& call, const std::string& more = "") {
    return R"({"picture": 1, )" + more + R"("calls": [{"call": "set_zbuffer_test", "value": 1}, )" + call + "]}";
}

TEST(Recording_Reader, refuses_what_is_no_document) {
    EXPECT_EQ(message_of(""), "parse error at line 1, column 1: syntax error while parsing value - unexpected end of input; "
                              "expected '[', '{', or a literal");
    EXPECT_EQ(message_of("v 0 0 0\n"), "expected a recording, which is a JSON or CBOR document, found another kind of file");
    EXPECT_EQ(message_of(R"({"picture": 1, "calls": [{"call": 1e999}]})"), "calls[0].call: number overflow parsing '1e999'");
    EXPECT_THAT(message_of(R"({"picture": 1, "calls": [[1, 2], [3, ]]})"),
                testing::StartsWith("calls[1][1]: parse error at line 1"));
    EXPECT_EQ(message_of(R"({"picture": 1, "window": {"width": 3, "width": 4}, "calls": []})"), "window.width: given twice");
    EXPECT_THAT(message_of(with("\"options\": " + std::string(100000, '['))), testing::EndsWith("[0]: nested too deeply"));
}

TEST(Recording_Reader, names_the_path_and_the_expected_form) {
    const std::string point = "expected [x, y] or [x, y, z] of whole numbers of 32 bits";
    const std::string color = "expected [r, g, b] or [r, g, b, a], each 0 to 255";
    const std::string side = "expected a whole number from 1 to 16384";
    expect_messages({
        {"[]", "expected an object"},
        {R"({"calls": []})", "the key 'picture' is missing"},
        {R"({"picture": 2, "calls": []})", "picture: expected 1, the version of the format"},
        {R"({"picture": 1, "calls": {}})", "calls: expected a list"},
        {with(R"("colour_system": 1)"), "colour_system: unknown key, expected one of: window, color_system, buffer_depth, "
                                        "alpha_blending, palette, options, picture, "
                                        "zbuffer_write, zbuffer_test, output, rendition, texels, complex_clips, "
                                        "renditions, calls"},
        {with(R"("color_system": 2147483648)"), "color_system: expected a whole number from -2147483648 to 2147483647"},
        {with(R"("alpha_blending": 1)"), "alpha_blending: expected true or false"},
        {with(R"("palette": {"colors": [[0, 0, 256]]})"), "palette.colors[0]: " + color},
        {with(R"("palette": {"colors": [[0, 0, 0, 0]]})"), "palette.colors[0]: expected [r, g, b], each 0 to 255"},
        {with(R"("palette": {"cube": {"base": 256, "levels": [2, 2, 2]}})"),
         "palette.cube.base: expected a whole number from 0 to 255"},
        {with(R"("options": {"Use Mask": "yes"})"),
         "options.Use Mask: expected true or false, a whole number of 32 bits, or [r, g, b]"},
        {with(R"("rendition": {"face": {"pattern": -1}})"),
         "rendition.face.pattern: expected a whole number from 0 to 2147483647"},
        {with(R"("rendition": {"complex_clip": [[[0, 0], [1, "1"]]]})"),
         "rendition.complex_clip[0][1]: expected [x, y] of numbers"},
        {with(R"("rendition": {"line": {"line_types": {"types": [null, {"elements": [[1, 0.5]]}]}}})"),
         "rendition.line.line_types.types[1].elements[0]: expected [length, kind], a number and a whole number"},
        {with(R"("rendition": {"face": {"bitmap": {"width": 1, "height": 1, "rows": ["2"]}}})"),
         "rendition.face.bitmap.rows[0]: expected a string of 0 and 1"},
        {with(R"("rendition": {"face": {"texture": {"width": 3}}})"),
         "rendition.face.texture: expected width, height, and width times height texels"},
        {calling(R"({"call": 7})"), "calls[1].call: expected the name of a call"},
        {calling(R"({"call": "draw_dci_circle"})"), "calls[1].call: there is no call 'draw_dci_circle'"},
        {calling(R"({"call": "draw_dci_dot"})"), "calls[1]: the key 'point' is missing"},
        {calling(R"({"call": "draw_dci_dot", "point": [1, 2, 3], "colour": null})"),
         "calls[1].colour: unknown key, expected one of: call, rendition, standard, point, color"},
        {calling(R"({"call": "draw_dci_dot", "point": [1, 2147483648]})"), "calls[1].point: " + point},
        {calling(R"({"call": "draw_dci_polytriangle", "points": [[1, 2], [1, 2, 3.5]]})"), "calls[1].points[1]: " + point},
        {calling(R"({"call": "draw_dci_polytriangle", "points": [1, 2, 3, 4, 5]})"),
         "calls[1].points: expected 3 numbers for each, not 5 in all"},
        {calling(R"({"call": "draw_dci_polytriangle", "points": [1, 2, 3, 4, 5, 6.5]})"),
         "calls[1].points[5]: expected a whole number of 32 bits"},
        {calling(R"({"call": "draw_dci_gouraud_polyline", "points": [1, 2, 3], "colors": "0102030g"})"),
         "calls[1].colors: expected hexadecimal digits, 8 for each"},
        {calling(R"({"call": "draw_dci_gouraud_polytriangle", "points": [1, 2, 3], "colors": null})"),
         "calls[1].colors: expected a list"},
        {calling(R"({"call": "draw_dci_dot", "point": [1, 2], "rendition": 1})", R"("renditions": [{}], )"),
         "calls[1].rendition: expected the number of one of the 1 shared renditions"},
        {with(R"("renditions": [{"complex_clip": -1}])"),
         "renditions[0].complex_clip: expected the number of one of the 0 shared complex_clips"},
        {calling(R"({"call": "establish", "palette": {"base": 1}})"),
         "calls[1].palette.base: unknown key, expected one of: colors, cube"},
        {calling(R"({"call": "draw_dci_dot", "point": [1, 2], "rendition": {"marker": {"size": null}}})"),
         "calls[1].rendition.marker.size: expected a whole number from -2147483648 to 2147483647"},
    });
}

TEST(Recording_Reader, refuses_arrays_that_do_not_fit_each_other) {
    const std::string four = R"("points": [[0, 0], [9, 0], [0, 9], [9, 9]])";
    const std::string corners = R"("start": [0, 1], "end": [1, 0], )";
    expect_messages({
        {calling(R"({"call": "draw_dci_colorized_polytriangle", "colors": [[0, 0, 0]], )" + four + "}"),
         "calls[1].colors: expected 2, one per triangle, not 1"},
        {calling(R"({"call": "draw_2d_colorized_polymarker", )" + four + "}"),
         "calls[1].colors: expected 4, one per marker, not 0"},
        {calling(R"({"call": "draw_3d_gouraud_polytriangle", )" + four + "}"),
         "calls[1].colors: expected 4, one per point, not 0"},
        {calling(R"({"call": "draw_dci_textured_polytriangle", "parameters": [[0, 0]], "colors": [[1, 2, 3], [1, 2, 3]], )"
                 R"("points": [[0, 0], [1, 1]]})"),
         "calls[1].parameters: expected 2, one per point, not 1"},
        {calling(R"({"call": "draw_dci_index8_image", )" + corners + R"("pixels": [[1, 2]]})"),
         "calls[1].pixels: expected 2 rows, not 1"},
        {calling(R"({"call": "draw_dci_index8_image", )" + corners + R"("pixels": [[1, 2], [3]]})"),
         "calls[1].pixels[1]: expected 2 values, not 1"},
        {calling(R"({"call": "present", "rectangle": [0, 1, 0, 1], "standard": true})"),
         "calls[1].standard: expected nothing: this call goes to no slot"},
        {calling(R"({"call": "draw_dci_image", "start": [0, 0], "image": {"format": 4, "width": 1, "height": 1, "pixels": []}})"),
         "calls[1].image.format: expected 1, 2, 3 or 9"},
        {calling(R"({"call": "write_depth_rectangle", "top_left": [0, 1], "bottom_right": [0, 0], "depths": [[1]]})"),
         "calls[1].depths: expected 2 rows, not 1"},
        {with(R"("rendition": {"face": {"bitmap": {"width": 2, "height": 1, "rows": ["0"]}}})"),
         "rendition.face.bitmap: expected width, height, and as many rows of as many cells"},
        {with(R"("rendition": {"face": {"texture": {"width": 2, "height": 2, "texels": [[0, 0, 0]]}}})"),
         "rendition.face.texture: expected width, height, and width times height texels"},
    });
}

} // namespace
