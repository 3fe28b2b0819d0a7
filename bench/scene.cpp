// What the benchmarks draw.
#include "bench/scene.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace bench {

namespace {

constexpr VT_Int_Pair window_center{window_size.x / 2, window_size.y / 2};

// The i-th of count points on the way round the window's centre.
VT_Point around_center(std::int32_t i, std::int32_t count, double distance) {
    const double angle = 2 * std::numbers::pi * i / count;
    return {static_cast<float>(window_center.x + distance * std::cos(angle)),
            static_cast<float>(window_center.y + distance * std::sin(angle)), 0};
}

} // namespace

std::vector<VT_RGB32> noise_texels() {
    Random random;
    std::vector<VT_RGB32> texels(static_cast<std::size_t>(texture_side) * texture_side);
    for (VT_RGB32& texel : texels) {
        texel = random.opaque_color();
    }
    return texels;
}

std::int64_t Scene::triangle_count() const noexcept {
    const auto in_strips = static_cast<std::int64_t>(points.size()) - 2 * static_cast<std::int64_t>(lengths.size());
    return in_strips + (polygon.empty() ? 0 : static_cast<std::int64_t>(polygon.size()) - 2);
}

double Scene::area() const noexcept {
    double doubled = 0;
    for_each_strip([&doubled](const Strip& strip) {
        for (std::int32_t k = 0; k + 2 < strip.length; ++k) {
            const VT_DCI_Point* const point = strip.points + k;
            doubled += std::abs(1.0 * (point[1].x - point[0].x) * (point[2].y - point[0].y) -
                                1.0 * (point[2].x - point[0].x) * (point[1].y - point[0].y));
        }
    });
    return doubled / 2;
}

Scene scattered_triangles(std::int32_t legs, std::int32_t count, const Variation& variation, VT_Int_Pair window) {
    constexpr std::int32_t depth_range = 20000;
    Random random(variation);
    Scene scene;
    for (std::int32_t i = 0; i < count; ++i) {
        const std::int32_t size = std::min(random.varied(legs), window.y - 1);
        const std::int32_t x = random.below(window.x - size);
        const std::int32_t y = random.below(window.y - size);
        const std::int32_t nearest = (65536 - depth_range) / count * (count - i);
        for (const VT_Int_Pair corner : {VT_Int_Pair{0, 0}, VT_Int_Pair{size, 0}, VT_Int_Pair{0, size}}) {
            scene.points.push_back({x + corner.x, y + corner.y, nearest + random.below(depth_range)});
            scene.colors.push_back(random.color());
        }
        scene.lengths.push_back(3);
    }
    while (scene.texture_points.size() < scene.points.size()) {
        scene.texture_points.push_back({random.thousandths(), random.thousandths()});
    }
    return scene;
}

namespace {

// A layer of strips that tile the window.
void add_layer(Scene& scene, std::int32_t legs, Random& random, const auto& depth) {
    for (std::int32_t y = 0, height = random.varied(legs); y + height < window_size.y; y += height) {
        std::int32_t points = 0;
        for (std::int32_t x = 0; x < window_size.x; x += random.varied(legs)) {
            for (const std::int32_t row : {y, y + height}) {
                scene.points.push_back({x, row, depth()});
                scene.colors.push_back(random.color());
                ++points;
            }
        }
        scene.lengths.push_back(points);
    }
}

} // namespace

Scene tiled_triangles(std::int32_t legs, std::int32_t layers, const Variation& variation) {
    Random random(variation);
    Scene scene;
    for (std::int32_t layer = 0; layer < layers; ++layer) {
        add_layer(scene, legs, random, [&random] { return random.depth(); });
    }
    return scene;
}

Scene layered_triangles(std::int32_t legs, std::int32_t layers, Layer_Order order, const Variation& variation) {
    Random random(variation);
    Scene sorted;
    const std::int32_t range = 65536 / layers;
    for (std::int32_t layer = 0; layer < layers; ++layer) {
        const std::int32_t place = order == Layer_Order::front_first ? layer : layers - 1 - layer;
        add_layer(sorted, legs, random, [&, nearest = place * range] { return nearest + random.below(range); });
    }
    if (order != Layer_Order::shuffled) {
        return sorted;
    }
    std::vector<Strip> strips;
    sorted.for_each_strip([&strips](const Strip& strip) { strips.push_back(strip); });
    Scene shuffled;
    while (!strips.empty()) {
        const auto chosen = strips.begin() + random.below(static_cast<std::int32_t>(strips.size()));
        shuffled.points.insert(shuffled.points.end(), chosen->points, chosen->points + chosen->length);
        shuffled.colors.insert(shuffled.colors.end(), chosen->colors, chosen->colors + chosen->length);
        shuffled.lengths.push_back(chosen->length);
        *chosen = strips.back();
        strips.pop_back();
    }
    return shuffled;
}

Scene long_strip(std::int32_t count) {
    constexpr std::int32_t size = 10;
    constexpr std::int32_t columns = window_size.x / size, bands = window_size.y / size;
    Random random;
    Scene scene;
    for (std::int32_t i = 0; i < count; ++i) {
        const std::int32_t band = i / 2 / columns % bands;
        scene.points.push_back({i / 2 % columns * size, (band + i % 2) * size, random.depth()});
        scene.colors.push_back(random.color());
    }
    scene.lengths.push_back(count);
    return scene;
}

Scene jagged_star(std::int32_t count) {
    constexpr float radius = window_center.y - 1;
    Random random;
    Scene scene;
    for (std::int32_t i = 0; i < count; ++i) {
        const float share = i % 2 == 0 ? 0.3F + 0.3F * random.thousandths() : 0.7F + 0.3F * random.thousandths();
        scene.polygon.push_back(around_center(i, count, radius * share));
    }
    return scene;
}

bool Circle::contains(std::int32_t column, std::int32_t row) const noexcept {
    const VT_Int_Pair from_center{column - window_center.x, row - window_center.y};
    return from_center.x * from_center.x + from_center.y * from_center.y <= radius * radius;
}

std::vector<VT_Point> Circle::outline(std::int32_t count) const {
    std::vector<VT_Point> points;
    for (std::int32_t i = 0; i < count; ++i) {
        points.push_back(around_center(i, count, radius));
    }
    return points;
}

} // namespace bench
