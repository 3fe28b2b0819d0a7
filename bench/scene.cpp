// What the benchmarks draw.
#include "bench/scene.h"

#include <random>

#include "app/scene/model_reader.h"
#include "app/scene/scene_renderer.h"
#include "renderer/host/renderer_data.h"

namespace bench {

namespace {

// The same numbers with every standard library.
class Random {
public:
    std::int32_t below(std::int32_t end) { return static_cast<std::int32_t>(engine_() % static_cast<std::uint32_t>(end)); }
    std::int32_t depth() { return below(65536); }
    // Alphas between a quarter and three quarters; neighbouring colours so far apart that nothing is drawn flat.
    VT_RGB32 color() {
        const auto byte = [this] { return static_cast<std::uint8_t>(below(256)); };
        return {byte(), byte(), byte(), static_cast<std::uint8_t>(64 + below(128))};
    }

private:
    std::mt19937 engine_{1};
};

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

} // namespace

std::int64_t Scene::triangle_count() const noexcept {
    return static_cast<std::int64_t>(points.size()) - 2 * static_cast<std::int64_t>(lengths.size());
}

Scene scattered_triangles(std::int32_t legs, std::int32_t count) {
    Random random;
    Scene scene;
    for (std::int32_t i = 0; i < count; ++i) {
        const std::int32_t x = random.below(window_size.x - legs);
        const std::int32_t y = random.below(window_size.y - legs);
        for (const VT_Int_Pair corner : {VT_Int_Pair{0, 0}, VT_Int_Pair{legs, 0}, VT_Int_Pair{0, legs}}) {
            scene.points.push_back({x + corner.x, y + corner.y, random.depth()});
            scene.colors.push_back(random.color());
        }
        scene.lengths.push_back(3);
    }
    return scene;
}

Scene tiled_triangles(std::int32_t legs, std::int32_t layers) {
    Random random;
    Scene scene;
    const std::int32_t columns = (window_size.x - 1) / legs + 1;
    for (std::int32_t layer = 0; layer < layers; ++layer) {
        for (std::int32_t y = 0; y + legs < window_size.y; y += legs) {
            for (std::int32_t column = 0; column < columns; ++column) {
                for (const std::int32_t row : {y, y + legs}) {
                    scene.points.push_back({column * legs, row, random.depth()});
                    scene.colors.push_back(random.color());
                }
            }
            scene.lengths.push_back(2 * columns);
        }
    }
    return scene;
}

Scene model_in_front(const std::string& file) {
    Scene scene;
    const VT_Reference<Recorder> recorder(new Recorder(scene));
    const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    app::scene::Scene_Renderer renderer(app::scene::load_model(file), {143, 169, 196, 255}, false);
    app::scene::Camera_Settings settings;
    settings.view = app::scene::View::front;
    settings.aspect = static_cast<double>(window_size.x - 1) / (window_size.y - 1);
    renderer.draw(*recorder, *rendition, {0, window_size.x - 1, 0, window_size.y - 1},
                  app::scene::fit_camera(settings, renderer.points()), {});
    return scene;
}

} // namespace bench
