// The lines of a model, as edges without faces.
#include "drawing/model/mesh_lines.h"

#include <utility>
#include <vector>

namespace vorna::drawing::model {
namespace {

constexpr std::uint32_t unknown = 0xFFFFFFFF;

std::uint8_t mean(std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>((a + b + 1) / 2);
}

} // namespace

std::unique_ptr<Edge_Renderer> make_line_renderer(const Mesh& mesh, VT_RGB32 base_color, bool own_colors) {
    if (mesh.lines.empty()) {
        return nullptr;
    }
    Edges edges;
    edges.count = mesh.line_count();
    std::vector<std::uint32_t> number_of(mesh.positions.size(), unknown);
    const auto point_of = [&](std::uint32_t vertex) {
        if (number_of[vertex] == unknown) {
            number_of[vertex] = static_cast<std::uint32_t>(edges.points.size());
            edges.points.push_back(mesh.positions[vertex]);
        }
        return number_of[vertex];
    };
    const bool colored = own_colors && !mesh.colors.empty();
    const auto color_of = [&](std::uint32_t vertex) {
        const VT_RGB32 own = mesh.colors[vertex];
        return own.alpha == 0 ? base_color : own;
    };
    std::vector<VT_RGB32> colors;
    for (std::size_t i = 0; i < mesh.lines.size(); i += 2) {
        const std::uint32_t from = mesh.lines[i], to = mesh.lines[i + 1];
        if (i == 0 || from != mesh.lines[i - 1]) {
            edges.starts.push_back(static_cast<std::uint32_t>(edges.chains.size()));
            edges.chains.push_back(point_of(from));
        }
        edges.chains.push_back(point_of(to));
        if (colored) {
            const VT_RGB32 a = color_of(from), b = color_of(to);
            colors.resize(edges.chains.size()); // the last place of a chain has no edge
            colors[edges.chains.size() - 2] = {mean(a.blue, b.blue), mean(a.green, b.green), mean(a.red, b.red), 255};
        }
    }
    edges.starts.push_back(static_cast<std::uint32_t>(edges.chains.size()));
    return std::make_unique<Edge_Renderer>(std::move(edges), std::move(colors), base_color);
}

} // namespace vorna::drawing::model
