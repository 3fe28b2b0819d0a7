// DXF files of tests. Groups are written in one line, parted by bars.
#pragma once

#include <algorithm>
#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "drawing/map/map_reader.h"

namespace vorna::drawing::map {

inline std::string lines(std::string text) {
    std::ranges::replace(text, '|', '\n');
    return text;
}

inline std::string drawing(const std::string& entities, const std::string& tables = "", const std::string& blocks = "",
                           const std::string& header = "", const std::string& objects = "") {
    return lines("0|SECTION|2|HEADER|" + header + "0|ENDSEC|0|SECTION|2|TABLES|" + tables + "0|ENDSEC|0|SECTION|2|BLOCKS|" +
                 blocks + "0|ENDSEC|0|SECTION|2|ENTITIES|" + entities + "0|ENDSEC|0|SECTION|2|OBJECTS|" + objects +
                 "0|ENDSEC|0|EOF|");
}

inline Map read(const std::string& content, const Map_Query& query = {}) {
    Load_Limits limits;
    return read_dxf("test.dxf", content, query, limits);
}

inline Shape only_shape(const std::string& entity) {
    const Map map = read(drawing(entity));
    EXPECT_EQ(map.shapes.size(), 1U);
    return map.shapes.at(0);
}

inline Extent extent_of(const Shape& shape) {
    Extent extent{1e300, 1e300, -1e300, -1e300};
    for_each_path(shape, [&](const Path& path) {
        for (const Position& p : path) {
            extent = {std::min(extent.west, p.x), std::min(extent.south, p.y), std::max(extent.east, p.x),
                      std::max(extent.north, p.y)};
        }
    });
    return extent;
}

inline double length_of(const Shape& shape) {
    double length = 0;
    for (const Path& line : shape.lines) {
        for (std::size_t i = 0; i + 1 < line.size(); ++i) {
            length += std::hypot(line[i + 1].x - line[i].x, line[i + 1].y - line[i].y);
        }
    }
    return length;
}

} // namespace vorna::drawing::map
