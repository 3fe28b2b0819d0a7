// Settings of maps, models and images against the options of the command: the same files.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/c_api/c_support.h"

namespace {

struct Settings {
    vorna_map_settings map;
    vorna_image_settings image;
    vorna_reading reading;
    vorna_view view;
};
struct Case {
    std::function<void(Settings&)> set;
    std::string options;
};

class C_Options : public testing::Test {
protected:
    C_Options() { std::filesystem::create_directories(folder); }
    ~C_Options() override { std::filesystem::remove_all(folder); }

    std::string file(const std::string& name, const std::string& content) const {
        std::ofstream(folder / name) << content;
        return folder / name;
    }
    static std::string read(const std::filesystem::path& path) {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    // Every case gives a file of its own, with the bytes of the command's.
    void expect_files_of_the_command(const std::string& input, bool is_map, const std::vector<Case>& cases) const {
        std::vector<std::string> files;
        for (const Case& one : cases) {
            Settings settings{};
            EXPECT_OK(vorna_map_settings_init(&settings.map, sizeof settings.map));
            EXPECT_OK(vorna_image_settings_init(&settings.image, sizeof settings.image));
            EXPECT_OK(vorna_reading_init(&settings.reading, sizeof settings.reading));
            EXPECT_OK(vorna_view_init(&settings.view, sizeof settings.view));
            settings.image.width = 160;
            settings.image.height = 120;
            one.set(settings);
            const std::string own = folder / "own.png", other = folder / "command.png";
            is_map ? draw_map(input, settings, own) : draw_model(input, settings, own);
            const std::string command =
                "'" VORNA_COMMAND "' render '" + input + "' -o '" + other + "' --background white " + one.options;
            ASSERT_EQ(std::system(command.c_str()), 0) << command;
            files.push_back(read(own));
            EXPECT_TRUE(!files.back().empty() && files.back() == read(other)) << one.options;
            for (std::size_t i = 0; i + 1 < files.size(); ++i) {
                EXPECT_NE(files[i], files.back()) << cases[i].options << " and " << one.options;
            }
        }
    }

    const std::filesystem::path folder = std::filesystem::temp_directory_path() / ("vorna-c-options-" + std::to_string(getpid()));

private:
    // Both ways to a file give the same one.
    static void draw_map(const std::string& input, const Settings& settings, const std::string& file) {
        vorna_map* map = nullptr;
        vorna_image* image = nullptr;
        const char* const files[] = {input.c_str()};
        EXPECT_OK(vorna_map_read_files(1, files, &settings.map, &settings.reading, &map));
        EXPECT_OK(vorna_map_render(map, &settings.image, &image));
        EXPECT_OK(vorna_image_write(image, file.c_str()));
        const std::string written = read(file);
        EXPECT_OK(vorna_map_render_file(map, &settings.image, file.c_str(), nullptr));
        EXPECT_TRUE(read(file) == written);
        vorna_image_free(image);
        vorna_map_free(map);
    }
    static void draw_model(const std::string& input, const Settings& settings, const std::string& file) {
        vorna_model* model = nullptr;
        vorna_image* image = nullptr;
        const char* const files[] = {input.c_str()};
        EXPECT_OK(vorna_model_read(1, files, &settings.reading, &model));
        EXPECT_OK(vorna_model_render(model, &settings.view, &settings.image, &image));
        EXPECT_OK(vorna_image_write(image, file.c_str()));
        vorna_image_free(image);
        vorna_model_free(model);
    }
};

std::string feature(const std::string& fields, const std::string& kind, const std::string& places) {
    return R"({"type":"Feature","properties":{)" + fields + R"(},"geometry":{"type":")" + kind + R"(","coordinates":)" + places +
           "}}";
}

TEST_F(C_Options, maps_are_those_of_the_command) {
    const std::string map =
        file("map.json",
             R"({"type":"FeatureCollection","features":[)" +
                 feature(R"("name":"West","pop":5,"kind":"a")", "Polygon", "[[[0,0],[10,0],[10,10],[0,10],[0,0]]]") + "," +
                 feature(R"("name":"East","pop":70,"kind":"b")", "Polygon", "[[[10,0],[20,0],[20,10],[10,10],[10,0]]]") + "," +
                 feature(R"("name":"North","pop":900,"kind":"a")", "Polygon", "[[[0,10],[20,10],[20,18],[0,18],[0,10]]]") + "," +
                 feature(R"("flow":2)", "LineString", "[[0,-3],[20,-3]]") + "," +
                 feature(R"("flow":8)", "LineString", "[[0,-6],[20,-6]]") + "]}");
    const std::string style = file("style.json", R"({"title":"Styled","layers":[{"filter":"pop > 20","fill":"red"}]})");
    const double breaks[] = {20, 500};
    const vorna_color red = {0, 0, 255, 255};
    expect_files_of_the_command(map, true,
                                {{[](Settings&) {}, "--size 160x120"},
                                 {[](Settings& s) { s.map.filter = "pop > 20"; }, "--size 160x120 --filter 'pop > 20'"},
                                 {[](Settings& s) {
                                      s.map.fill_by = "pop";
                                      s.map.class_count = 2;
                                      s.map.classes = "equal";
                                      s.map.ramp = "Reds";
                                      s.map.reverse_ramp = 1;
                                  },
                                  "--size 160x120 --fill-by pop --class-count 2 --classes equal --ramp Reds --reverse-ramp"},
                                 {[&](Settings& s) {
                                      s.map.fill_by = "pop";
                                      s.map.breaks = breaks;
                                      s.map.break_count = 2;
                                      s.map.legend = 1;
                                  },
                                  "--size 160x120 --fill-by pop --breaks 20,500 --legend"},
                                 {[](Settings& s) {
                                      s.map.width_by = "flow";
                                      s.map.widths[0] = 3;
                                      s.map.widths[1] = 11;
                                  },
                                  "--size 160x120 --width-by flow --widths 3,11"},
                                 {[](Settings& s) {
                                      s.map.label_by = "kind";
                                      s.map.label_key = "pop";
                                      s.map.halo = 0;
                                  },
                                  "--size 160x120 --label-by kind --label-key pop --halo 0"},
                                 {[&](Settings& s) {
                                      s.map.labels = 1;
                                      s.map.halo = 3;
                                      s.map.halo_color = &red;
                                      s.map.font = "DejaVu Sans:bold";
                                  },
                                  "--size 160x120 --labels --halo 3 --halo-color red --font 'DejaVu Sans:bold'"},
                                 {[&](Settings& s) { s.map.style = style.c_str(); }, "--size 160x120 --style '" + style + "'"},
                                 {[](Settings& s) {
                                      s.map.title = "Title";
                                      s.map.attribution = "nobody";
                                  },
                                  "--size 160x120 --title Title --attribution nobody"},
                                 {[](Settings& s) { s.map.map_scale = VORNA_KILOMETRES; }, "--size 160x120 --map-scale km"},
                                 {[](Settings& s) { s.map.map_scale = VORNA_MILES; }, "--size 160x120 --map-scale miles"},
                                 {[](Settings& s) {
                                      s.map.projection = "plane";
                                      s.map.flip_y = 1;
                                  },
                                  "--size 160x120 --projection plane --flip-y"},
                                 {[](Settings& s) { s.image.dpi = 254; }, "--size 160x120 --dpi 254"},
                                 {[](Settings& s) { s.image.paper = "30x20mm"; }, "--paper 30x20mm"},
                                 {[](Settings& s) {
                                      s.image.width = s.image.height = 0;
                                      s.image.scale = "1:100000000";
                                  },
                                  "--scale 1:100000000"},
                                 {[](Settings& s) {
                                      s.map.projection = "plane";
                                      s.image.scale = "1:2";
                                      s.image.unit = "cm";
                                      s.image.dpi = 20;
                                  },
                                  "--size 160x120 --projection plane --scale 1:2 --unit cm --dpi 20"}});
    expect_files_of_the_command(
        PLATE, true,
        {{[](Settings&) {}, "--size 160x120"}, {[](Settings& s) { s.map.layout = "Sheet"; }, "--size 160x120 --layout Sheet"}});
}

TEST_F(C_Options, models_are_those_of_the_command) {
    const std::string model = file("box.data", "v 0 0 0\nv 2 0 0\nv 2 1 0\nv 0 1 0\nv 0 0 -1\nv 2 0 -1\nf 1 2 3 4\nf 1 5 6 2\n");
    const double plane[] = {1, 0, 0, 0.5};
    const auto parallel = [](Settings& s) {
        s.reading.input_format = "obj";
        s.view.orthographic = 1;
        s.view.view = VORNA_FRONT;
    };
    expect_files_of_the_command(model, false,
                                {{[&](Settings& s) {
                                      s.reading.input_format = "obj";
                                      s.reading.section = plane;
                                  },
                                  "--size 160x120 --input-format obj --section x=0.5"},
                                 {[&](Settings& s) {
                                      parallel(s);
                                      s.image.scale = "2:1";
                                  },
                                  "--size 160x120 --input-format obj --ortho --view front --scale 2:1"},
                                 {[&](Settings& s) {
                                      parallel(s);
                                      s.image.scale = "1:1";
                                      s.image.unit = "in";
                                      s.image.paper = "A6";
                                      s.image.dpi = 30;
                                  },
                                  "--input-format obj --ortho --view front --scale 1:1 --unit in --paper A6 --dpi 30"}});

    // Arrays are cut as files are.
    const vorna_point corners[] = {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {0, 1, 0}};
    const std::uint32_t triangles[] = {0, 1, 2, 0, 2, 3};
    vorna_mesh mesh;
    EXPECT_OK(vorna_mesh_init(&mesh, sizeof mesh));
    mesh.vertex_count = 4;
    mesh.positions = corners;
    mesh.triangle_count = 2;
    mesh.triangles = triangles;
    mesh.section = plane;
    vorna_model* made = nullptr;
    std::size_t count = 0;
    EXPECT_OK(vorna_model_create(&mesh, &made));
    EXPECT_OK(vorna_model_counts(made, &count, nullptr, nullptr));
    EXPECT_EQ(count, 3U);
    vorna_model_free(made);
}

TEST_F(C_Options, mistakes_are_named) {
    const std::string point = file("point.json", R"({"type":"Point","coordinates":[1,2]})");
    vorna_map* map = nullptr;
    const auto refused = [&](auto set, const char* message, vorna_status status = VORNA_INVALID_INPUT) {
        vorna_map_settings settings;
        EXPECT_OK(vorna_map_settings_init(&settings, sizeof settings));
        set(settings);
        EXPECT_EQ(vorna_map_read(point.c_str(), &settings, nullptr, &map), status);
        EXPECT_EQ(std::string(vorna_last_message()).substr(0, std::string(message).size()), message);
    };
    refused([](auto& s) { s.class_count = 0; }, "class_count: expected 1 to 64, found 0", VORNA_INVALID_ARGUMENT);
    refused([](auto& s) { s.break_count = 1; }, "breaks: expected a pointer, found null", VORNA_INVALID_ARGUMENT);
    refused([](auto& s) { s.map_scale = 3; }, "map_scale: expected 0 to 2, found 3", VORNA_INVALID_ARGUMENT);
    refused([](auto& s) { s.flip_y = 2; }, "flip_y: expected -1 to 1, found 2", VORNA_INVALID_ARGUMENT);
    refused([](auto& s) { s.reserved = 1; }, "reserved: expected 0 to 0, found 1", VORNA_INVALID_ARGUMENT);
    refused([](auto& s) { s.halo = 21; }, "halo: expected 0 to 20, found 21");
    refused([](auto& s) { s.widths[1] = 1001; }, "widths: expected 0 to 1000, found 1001");
    refused([](auto& s) { s.classes = "some"; }, "classes: expected one of quantiles, equal, natural, categories, found 'some'");
    refused([](auto& s) { s.layout = "A"; }, "layout: expected a drawing (DXF), found");
    EXPECT_FAILS(vorna_map_read_files(0, nullptr, nullptr, nullptr, &map), VORNA_INVALID_INPUT, "inputs: expected one or more");

    const std::string plan =
        file("plan.dxf", "0\nSECTION\n2\nENTITIES\n0\nLINE\n10\n0\n20\n0\n11\n5\n21\n3\n0\nWIPEOUT\n0\nENDSEC\n0\nEOF\n");
    std::size_t count = 0;
    const char* line = nullptr;
    EXPECT_OK(vorna_map_read(plan.c_str(), nullptr, nullptr, &map));
    EXPECT_OK(vorna_map_warning_count(map, &count));
    ASSERT_EQ(count, 1U);
    EXPECT_OK(vorna_map_warning(map, 0, &line));
    EXPECT_NE(std::string(line).find("WIPEOUT"), std::string::npos) << line;
    EXPECT_FAILS(vorna_map_warning(map, 1, &line), VORNA_INVALID_ARGUMENT, "number: expected less than 1, found 1");
    vorna_map_free(map);
}

} // namespace
