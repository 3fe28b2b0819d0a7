// Meshes to test with, and their texts.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "drawing/model/mesh.h"

namespace vorna::drawing::model {

// A rectangle of columns x rows quads in the plane z = 0, bent by noise. Coordinates are multiples of 1/64, which every number
// reader gets exactly.
inline Mesh bumpy_grid(std::uint32_t columns, std::uint32_t rows, unsigned seed) {
    std::mt19937 random(seed);
    Mesh mesh;
    for (std::uint32_t y = 0; y <= rows; ++y) {
        for (std::uint32_t x = 0; x <= columns; ++x) {
            mesh.positions.push_back({static_cast<float>(x), static_cast<float>(y), static_cast<float>(random() % 64) / 64.0F});
        }
    }
    for (std::uint32_t y = 0; y < rows; ++y) {
        for (std::uint32_t x = 0; x < columns; ++x) {
            const std::uint32_t a = y * (columns + 1) + x, b = a + 1, c = a + columns + 1, d = c + 1;
            mesh.triangles.insert(mesh.triangles.end(), {a, b, d, a, d, c});
        }
    }
    return mesh;
}

// A closed ball of radius 1, its triangles counter-clockwise from outside.
inline Mesh ball(std::uint32_t meridians, std::uint32_t parallels) {
    constexpr double pi = 3.14159265358979323846;
    Mesh mesh;
    mesh.positions.push_back({0, 1, 0});
    for (std::uint32_t p = 1; p < parallels; ++p) {
        const double polar = pi * p / parallels;
        for (std::uint32_t m = 0; m < meridians; ++m) {
            const double around = 2 * pi * m / meridians;
            mesh.positions.push_back({static_cast<float>(std::sin(polar) * std::sin(around)), static_cast<float>(std::cos(polar)),
                                      static_cast<float>(std::sin(polar) * std::cos(around))});
        }
    }
    mesh.positions.push_back({0, -1, 0});
    const auto last = static_cast<std::uint32_t>(mesh.positions.size() - 1);
    const auto at = [=](std::uint32_t p, std::uint32_t m) { return 1 + (p - 1) * meridians + m % meridians; };
    for (std::uint32_t m = 0; m < meridians; ++m) {
        mesh.triangles.insert(mesh.triangles.end(), {0, at(1, m), at(1, m + 1)});
        for (std::uint32_t p = 1; p + 1 < parallels; ++p) {
            mesh.triangles.insert(mesh.triangles.end(),
                                  {at(p, m), at(p + 1, m), at(p + 1, m + 1), at(p, m), at(p + 1, m + 1), at(p, m + 1)});
        }
        mesh.triangles.insert(mesh.triangles.end(), {at(parallels - 1, m), last, at(parallels - 1, m + 1)});
    }
    return mesh;
}

inline std::string obj_text(const Mesh& mesh) {
    std::ostringstream text;
    for (const VT_Vector& p : mesh.positions) {
        text << "v " << p.x << ' ' << p.y << ' ' << p.z << '\n';
    }
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        text << "f " << mesh.triangles[i] + 1 << ' ' << mesh.triangles[i + 1] + 1 << ' ' << mesh.triangles[i + 2] + 1 << '\n';
    }
    return text.str();
}

// The triangles' corners in an order that does not depend on numbering or rotation.
using Corner = std::array<float, 3>;
inline std::vector<std::array<Corner, 3>> sorted_triangles(const Mesh& mesh) {
    std::vector<std::array<Corner, 3>> triangles;
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        std::array<Corner, 3> corners;
        for (std::size_t k = 0; k < 3; ++k) {
            const VT_Vector& p = mesh.positions[mesh.triangles[i + k]];
            corners[k] = {p.x, p.y, p.z};
        }
        std::rotate(corners.begin(), std::min_element(corners.begin(), corners.end()), corners.end());
        triangles.push_back(corners);
    }
    std::sort(triangles.begin(), triangles.end());
    return triangles;
}

} // namespace vorna::drawing::model
