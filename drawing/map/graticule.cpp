// Meridians and parallels.
#include "drawing/map/graticule.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "drawing/map/globe_cutter.h"

namespace vorna::drawing::map {

std::vector<Path> graticule_lines(double step, const Projection& projection) {
    std::vector<Path> lines;
    const auto add = [&](const Path& line) { std::ranges::move(project_line(line, projection), std::back_inserter(lines)); };
    for (double x = -180; x < 180; x += step) {
        Path line;
        for (int y = -90; y <= 90; ++y) {
            line.push_back({x, static_cast<double>(y)});
        }
        add(line);
    }
    for (double y = step * std::floor(90 / step); y >= -90; y -= step) {
        Path line;
        for (int x = -180; x <= 180; ++x) {
            line.push_back({static_cast<double>(x), y});
        }
        if (std::abs(y) < 90) {
            add(line);
        }
    }
    for (Path ring : project_outline(projection)) {
        ring.push_back(ring.front());
        lines.push_back(std::move(ring));
    }
    return lines;
}

} // namespace vorna::drawing::map
