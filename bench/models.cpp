// Models as a camera sees them.
#include "bench/models.h"

#include <algorithm>
#include <array>
#include <utility>

#include "drawing/job/formats.h"
#include "drawing/model/scene_renderer.h"
#include "host/renderer_data.h"

namespace bench {

namespace {

using vorna::drawing::model::Camera_Settings;
using vorna::drawing::model::Mesh;
using vorna::drawing::model::View;

// Takes down what reaches its polytriangle slot.
class Recorder : public VT_Renderer_Data {
public:
    explicit Recorder(Scene& scene) : scene_(scene) { actions.draw_dci_gouraud_polytriangle = {this, record, 0, 1}; }

private:
    static void record(VT_Renderer_Data& data, const VT_Rendition&, std::int32_t count, const VT_DCI_Point* points,
                       const VT_RGB32* colors) {
        Scene& scene = static_cast<Recorder&>(data).scene_;
        scene.points.insert(scene.points.end(), points, points + count);
        scene.colors.insert(scene.colors.end(), colors, colors + count);
        scene.lengths.push_back(count);
    }

    Scene& scene_;
};

// Of a finished mesh. The random numbers say how large.
Scene seen_from(View view, const Mesh& mesh, Random random) {
    Scene scene;
    const VT_Int_Pair size{std::min(random.varied(window_size.x), window_size.x),
                           std::min(random.varied(window_size.y), window_size.y)};
    const VT_Reference<Recorder> recorder(new Recorder(scene));
    const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    vorna::drawing::model::Scene_Renderer renderer(mesh, vorna::drawing::model::Facing(mesh), {143, 169, 196, 255}, false);
    Camera_Settings settings;
    settings.view = view;
    settings.aspect = static_cast<double>(size.x - 1) / (size.y - 1);
    renderer.prepare(vorna::drawing::model::Tile_Grid({0, size.x - 1, 0, size.y - 1}),
                     vorna::drawing::model::fit_camera(settings, renderer.points()), {});
    renderer.draw(*recorder, *rendition, 0);
    return scene;
}

struct Box {
    VT_Vector low, high;
};

void add_box(Mesh& mesh, const Box& box) {
    // Bits 0 to 2 of a corner: right, above, in front. Sides are wound counter-clockwise from outside.
    constexpr std::array<std::array<std::uint32_t, 4>, 6> sides{
        {{4, 5, 7, 6}, {1, 0, 2, 3}, {0, 4, 6, 2}, {5, 1, 3, 7}, {6, 7, 3, 2}, {0, 1, 5, 4}}};
    const auto first = static_cast<std::uint32_t>(mesh.positions.size());
    for (std::uint32_t corner = 0; corner < 8; ++corner) {
        mesh.positions.push_back(
            {(corner & 1 ? box.high : box.low).x, (corner & 2 ? box.high : box.low).y, (corner & 4 ? box.high : box.low).z});
    }
    for (const auto& [a, b, c, d] : sides) {
        mesh.triangles.insert(mesh.triangles.end(), {first + a, first + b, first + c, first + a, first + c, first + d});
    }
}

// In metres, y upwards.
std::vector<Box> boxes_of_building(Random& random) {
    constexpr std::int32_t storeys = 10, rooms = 10, pieces = 4;
    constexpr float side = 5, height = 3, thickness = 0.2F;
    std::vector<Box> boxes;
    const auto add = [&boxes](float x, float y, float z, float width, float tall, float deep) {
        boxes.push_back({{x, y, z}, {x + width, y + tall, z + deep}});
    };
    for (std::int32_t storey = 0; storey < storeys; ++storey) {
        const float floor = height * static_cast<float>(storey);
        for (std::int32_t i = 0; i <= rooms; ++i) {
            for (std::int32_t k = 0; k < rooms; ++k) {
                const float along = side * static_cast<float>(k), across = side * static_cast<float>(i);
                add(along, floor, across, side, height, thickness);
                add(across, floor, along, thickness, height, side);
            }
        }
        for (std::int32_t room = 0; room < rooms * rooms; ++room) {
            const float x = side * static_cast<float>(room % rooms), z = side * static_cast<float>(room / rooms);
            add(x, floor + height - thickness, z, side, thickness, side);
            for (std::int32_t piece = 0; piece < pieces; ++piece) {
                add(x + 0.5F + 3 * random.thousandths(), floor, z + 0.5F + 3 * random.thousandths(), 0.3F + random.thousandths(),
                    0.3F + random.thousandths(), 0.3F + random.thousandths());
            }
        }
    }
    for (std::size_t left = boxes.size(); left > 1; --left) {
        std::swap(boxes[left - 1], boxes[static_cast<std::size_t>(random.below(static_cast<std::int32_t>(left)))]);
    }
    return boxes;
}

} // namespace

Scene model_in_front(const std::string& file, const Variation& variation) {
    return seen_from(View::front, vorna::drawing::load_model(file), Random(variation));
}

Scene building_at_angle(const Variation& variation) {
    Random random(variation);
    Mesh mesh;
    for (const Box& box : boxes_of_building(random)) {
        add_box(mesh, box);
    }
    finish_mesh(mesh, "building");
    return seen_from(View::iso, mesh, random);
}

} // namespace bench
