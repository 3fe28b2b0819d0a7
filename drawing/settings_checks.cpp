// Checks of the library's settings.
#include "drawing/settings_checks.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "drawing/files/setting_names.h"
#include "drawing/job/formats.h"
#include "drawing/job/image_plan.h"
#include "drawing/job/print_size.h"
#include "drawing/map/color_ramps.h"

namespace vorna::drawing {
namespace {

void expect(bool is_right, const std::string& what) {
    if (!is_right) {
        throw Usage_Error(what);
    }
}

// Refuses what is no number, too.
template <class Number> void expect_range(const char* member, Number value, Number least, Number most) {
    if (!(value >= least && value <= most)) {
        std::ostringstream text;
        text << member << ": expected " << least << " to " << most << ", found " << value;
        throw Usage_Error(text.str());
    }
}

// One of the names, or none.
void expect_name(const char* member, const std::string& name, const std::vector<std::string>& names) {
    if (!name.empty() && std::ranges::find(names, name) == names.end()) {
        throw Usage_Error(std::string(member) + ": expected one of " + list_of_names(names) + ", found '" + name + "'");
    }
}

void check_dashes(const char* member, const std::optional<map::Dashes>& dashes) {
    constexpr double longest = 10000;
    bool fits = !dashes || dashes->size() % 2 == 0;
    for (std::size_t i = 0; fits && dashes && i < dashes->size(); ++i) {
        const double length = (*dashes)[i];
        fits = length <= longest && (i % 2 == 1 ? length > 0 : length >= 0);
    }
    expect(fits, std::string(member) + ": expected lengths of dashes from 0 to 10000, each with that of a gap above 0");
}

} // namespace

void check(const Reading& reading) {
    expect_range("threads", reading.threads, 0U, 1024U);
    if (reading.crease) {
        expect_range("crease", *reading.crease, 0.0, 180.0);
    }
    if (reading.section) {
        const VT_Vector_D& normal = reading.section->normal;
        const double squared = normal.x * normal.x + normal.y * normal.y + normal.z * normal.z;
        expect(std::isfinite(squared + reading.section->offset) && squared > 0,
               "section: expected finite numbers and a direction that is not 0");
    }
    check_input_format(reading.input_format);
}

void check(const model::Camera_Settings& camera) {
    using namespace model;
    expect_range("camera.zoom", camera.zoom, 0.01, 1000.0);
    expect_range("camera.half_tangent", camera.half_tangent, half_tangent_of(1), half_tangent_of(150));
    constexpr double farthest_shift = 100, longest_focal = 1e7;
    expect_range("camera.shift_x", camera.shift_x, -farthest_shift, farthest_shift);
    expect_range("camera.shift_y", camera.shift_y, -farthest_shift, farthest_shift);
    if (camera.lens) {
        expect(camera.projection == Projection::perspective, "camera.lens: expected a camera with perspective");
        expect_range("camera.lens.focal_x", camera.lens->focal_x, 1.0, longest_focal);
        expect_range("camera.lens.focal_y", camera.lens->focal_y, 1.0, longest_focal);
        expect_range("camera.lens.center_x", camera.lens->center_x, -longest_focal, longest_focal);
        expect_range("camera.lens.center_y", camera.lens->center_y, -longest_focal, longest_focal);
    }
}

void check(const Model_View& view) {
    using namespace model;
    const VT_Vector_D& light = view.look.light;
    expect(std::isfinite(light.x + light.y + light.z) && (light.x != 0 || light.y != 0 || light.z != 0),
           "look.light: expected a direction of finite numbers");
    expect_range("look.specular", view.look.specular, 0.0, 10.0);
    expect_range("line_width", view.line_width, 1, largest_point);
    expect_range("point_size", view.point_size, 0, largest_point);
    check(view.camera);
    expect(!view.scale_bar || view.camera.projection == Projection::orthographic,
           "scale_bar: expected a camera without perspective");
    const bool is_shaded = view.has_faces() && view.look.shading != Shading::hidden_line && view.look.tint == Tint::lit;
    expect(!view.studio || is_shaded, "studio: expected lit and shaded faces");
}

void check(const map::Map_Settings& settings) {
    if (settings.bbox) {
        const map::Extent& box = *settings.bbox;
        expect(std::isfinite(box.west + box.east) && std::isfinite(box.south + box.north) && box.south < box.north &&
                   box.west != box.east,
               "bbox: expected finite numbers, the south below the north, and a west that is not the east");
    }
    if (settings.center) {
        expect_range("center", settings.center->x, -360.0, 360.0);
        expect_range("center", settings.center->y, -90.0, 90.0);
    }
    expect_range("opacity", settings.opacity, 0.0, 1.0);
    if (settings.graticule != 0) {
        expect_range("graticule", settings.graticule, 0.1, 90.0);
    }
    check_dashes("border", settings.border);
    check_dashes("outline", settings.outline);
    expect_range("border_width", settings.border_width, 1, 1000);
    expect_range("casing_width", settings.casing_width, 1, 1000);
    expect_range("marker_size", settings.marker.size, 1, 1000);
    expect_range("label_size", settings.label_size, 4, 1000);
    expect_range("halo", settings.halo, 0.0, 20.0);
    expect_range("class_count", settings.classing.count, std::size_t{1}, std::size_t{64});
    const std::vector<double>& breaks = settings.classing.breaks;
    const auto falls = [](double a, double b) { return !(a < b); };
    expect(breaks.size() < 64 && std::ranges::adjacent_find(breaks, falls) == breaks.end() &&
               std::ranges::all_of(breaks, [](double b) { return std::isfinite(b); }),
           "breaks: expected up to 63 increasing numbers");
    expect(breaks.empty() || settings.classing.method != "categories", "breaks: expected classes of numbers");
    expect_name("ramp", settings.classing.ramp, map::ramp_names());
    expect_name("classes", settings.classing.method, {"quantiles", "equal", "natural", "categories"});
    expect_range("widths", settings.width_from, 0, 1000);
    expect_range("widths", settings.width_to, 0, 1000);
}

void check(const Print_Settings& settings) {
    if (settings.dpi != 0) {
        expect_range("dpi", settings.dpi, 1.0, 10000.0);
    }
    expect_name("unit", settings.unit, unit_names());
    expect(settings.unit.empty() || !settings.scale.empty(), "unit: expected scale beside it");
}

void check(const Image_Settings& settings, VT_Int_Pair size, std::int32_t supersample) {
    expect_range("supersample", supersample, 1, 8);
    const std::int32_t most = largest_side / supersample;
    check(settings.print);
    expect_range("size.x", size.x, 1, most);
    expect_range("size.y", size.y, 1, most);
    expect_range("threads", settings.threads, 0U, 1024U);
    expect(!settings.indexed || !settings.transparent, "transparent: expected 32 bits a pixel");
    expect(!settings.indexed || supersample == 1, "supersample: expected 32 bits a pixel");
    expect(!settings.indexed || !settings.smooth_lines, "smooth_lines: expected 32 bits a pixel");
}

} // namespace vorna::drawing
