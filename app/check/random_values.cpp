// Random values of the types that drawing calls are made of.
#include "app/check/random_values.h"

#include <algorithm>
#include <utility>

namespace vorna::app::check {

namespace {

// Where blending and merging take branches.
constexpr std::uint8_t special_alphas[] = {0, 1, 127, 128, 254, 255, 255};

} // namespace

VT_RGB32 random_color(Random& random) {
    const std::uint8_t alpha = random.chance(70) ? random.one_of(special_alphas) : random.byte();
    if (random.chance(40)) {
        // Few colours, so that merging and blending meet equal ones and the background.
        constexpr std::uint8_t levels[] = {0, 15, 240, 255};
        return {random.one_of(levels), random.one_of(levels), random.one_of(levels), alpha};
    }
    return {random.byte(), random.byte(), random.byte(), alpha};
}

std::vector<VT_RGB32> random_colors(Random& random, std::size_t count) {
    std::vector<VT_RGB32> colors;
    const bool nearly_flat = random.chance(40);
    const VT_RGB32 base = random_color(random);
    const auto near = [&](std::uint8_t value) {
        return static_cast<std::uint8_t>(std::clamp(value + random.number(-2, 2), 0, 255));
    };
    while (colors.size() < count) {
        colors.push_back(nearly_flat && random.chance(90)
                             ? VT_RGB32{near(base.blue), near(base.green), near(base.red), random.one_of(special_alphas)}
                             : random_color(random));
    }
    return colors;
}

VT_Int_Rectangle random_rectangle(Random& random, const VT_Int_Rectangle& within) {
    const auto interval = [&](std::int32_t least, std::int32_t most) {
        return std::minmax({random.number(least, most), random.number(least, most)});
    };
    const auto [left, right] = interval(within.left, within.right);
    const auto [bottom, top] = interval(within.bottom, within.top);
    return random.chance(30) ? VT_Int_Rectangle{within.left, within.right, bottom, top}
                             : VT_Int_Rectangle{left, right, bottom, top};
}

VT_Int_Rectangle grown(const VT_Int_Rectangle& rectangle, std::int32_t distance) {
    return {rectangle.left - distance, rectangle.right + distance, rectangle.bottom - distance, rectangle.top + distance};
}

VT_Reference<VT_Shared_Image> random_image(Random& random, VT_Int_Pair size, Buffer_Format format) {
    const std::int32_t bytes = size.x * vorna::bytes_per_pixel(format);
    VT_Reference<VT_Shared_Image> image(new VT_Shared_Image(size.x, size.y, format, bytes, nullptr, false, random.chance(50)));
    for (std::int32_t row = 0; row < size.y; ++row) {
        std::generate(image->row(row), image->row(row) + bytes, [&random] { return random.byte(); });
    }
    return image;
}

VT_Reference<VT_Basic_Material> random_material(Random& random) {
    constexpr std::int32_t sides[] = {1, 2, 8, 16, 8, 5};
    VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
    material->texture = random_image(random, {random.one_of(sides), random.one_of(sides)}, Buffer_Format::rgb32);
    return material;
}

VT_Reference<VT_Line_Type> random_line_type(Random& random, const std::function<double()>& length) {
    VT_Reference<VT_Line_Type> type(new VT_Line_Type);
    type->kind = random.chance(20) ? line_type_kind::cased : 0;
    type->width = length();
    type->color = random_color(random);
    if (random.chance(30)) {
        type->mode = random.number(0, 2);
        type->leading[0] = length();
        type->trailing[0] = length();
    }
    for (std::int32_t i = random.number(1, 4); i > 0; --i) {
        type->lengths.push_back(length());
        type->kinds.push_back(random.number(-1, 1));
    }
    return type;
}

VT_Reference<const VT_Contour_Set> random_region(Random& random, const std::function<VT_Point()>& corner) {
    std::vector<VT_Contour_Set::Contour> contours(static_cast<std::size_t>(random.number(0, 3)));
    for (auto& contour : contours) {
        contour.resize(static_cast<std::size_t>(random.chance(90) ? random.number(3, 9) : random.number(0, 2)));
        std::generate(contour.begin(), contour.end(), corner);
    }
    return new VT_Contour_Set(std::move(contours));
}

VT_Reference<const VT_Contour_Set> random_region(Random& random, const VT_Int_Rectangle& window) {
    const VT_Int_Rectangle area = grown(window, 20);
    return random_region(random, [&]() -> VT_Point {
        return {static_cast<float>(random.number(area.left, area.right)),
                static_cast<float>(random.number(area.bottom, area.top)), 0};
    });
}

namespace {

VT_Reference<const VT_Pattern_Bitmap> random_bitmap(Random& random) {
    const std::int32_t width = random.number(1, 20), height = random.number(1, 12);
    std::vector<std::uint8_t> cells(static_cast<std::size_t>(width * height));
    std::generate(cells.begin(), cells.end(),
                  [&] { return random.chance(50) ? static_cast<std::uint8_t>(random.number(1, 255)) : std::uint8_t{0}; });
    return new VT_Pattern_Bitmap(width, height, std::move(cells));
}

VT_Line_Attributes random_line(Random& random) {
    VT_Line_Attributes line;
    line.color = random_color(random);
    line.contrast_color = random_color(random);
    line.index = random.byte();
    line.weight = random.chance(70) ? 1 : random.number(0, 9);
    line.style = random.chance(80) ? line_style::solid : random.number(1, 6);
    line.flags = random.chance(80) ? 0 : line_flag::smoothed;
    line.cap = random.number(0, 2);
    line.join = random.number(0, 2);
    if (random.chance(15)) {
        const VT_Reference<VT_Line_Type_Set> types(new VT_Line_Type_Set);
        types->scale = random.number(1, 3);
        types->types.push_back(random_line_type(random, [&] { return random.number(1, 12); }));
        line.line_types = types;
    }
    return line;
}

} // namespace

VT_Face_Attributes random_face(Random& random) {
    VT_Face_Attributes face;
    face.color = random_color(random);
    face.contrast_color = random_color(random);
    face.index = random.byte();
    face.contrast_index = random.byte();
    face.pattern = random.chance(55) ? face_pattern::solid : random.number(0, 73);
    face.flags = random.chance(30) ? face_flag::opaque_pattern : 0;
    face.flags |= random.chance(15) ? face_flag::inverted_pattern : 0;
    face.bitmap = random_bitmap(random);
    face.material = random_material(random);
    return face;
}

VT_Window_Attributes random_window_attributes(Random& random, const VT_Int_Rectangle& within) {
    return {random_rectangle(random, within), random.chance(70) ? face_pattern::solid : random.number(0, 80),
            random_color(random), random.byte()};
}

VT_Reference<VT_Rendition> random_rendition(Random& random, const VT_Int_Rectangle& window) {
    VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    VT_Face_Attributes& face = rendition->face;
    face = random_face(random);
    if (random.chance(25)) {
        face.pattern = random.number(face_pattern::bitmap, 80); // up to the last hatch
    }
    face.flags |= random.chance(20) ? face_flag::translucent : 0;
    face.flags |= random.chance(20) ? face_flag::special_shading : 0;
    rendition->line = random_line(random);
    rendition->marker.color = random_color(random);
    rendition->marker.index = random.byte();
    rendition->marker.symbol = random.chance(60) ? marker_symbol::dot : random.number(0, 9);
    rendition->marker.size = random.number(1, 9);
    face.mode = rendition->line.mode = rendition->marker.mode = random.chance(20) ? merge_drawing_mode : 0;
    rendition->drawing_flags = random.chance(30) ? drawing_flag::translucent : 0;
    rendition->clip.hard_clip = window;
    rendition->clip.depth_test = random.chance(75);
    rendition->window = random_window_attributes(random, window);
    return rendition;
}

Point_Cloud::Point_Cloud(Random& random, const VT_Int_Rectangle& area) : random_(random), area_(area) {
    if (random.chance(40)) {
        // Small triangles, as in a fine mesh.
        const std::int32_t x = random.number(area.left, area.right), y = random.number(area.bottom, area.top);
        area_ = common_part(area, grown({x, x, y, y}, random.number(1, 6)));
    } else if (random.chance(25)) {
        // Slivers.
        area_.left = random.number(area.left, area.right);
        area_.right = std::min(area.right, area_.left + random.number(0, 3));
    }
    z_least_ = random.chance(40) ? 0 : random.number(0, 65535);
    z_most_ = random.chance(40) ? 65535 : random.number(z_least_, std::min(65535, z_least_ + 300));
    only_extreme_z_ = random.chance(15);
}

VT_DCI_Point Point_Cloud::next(const std::vector<VT_DCI_Point>& earlier) {
    VT_DCI_Point point{random_.number(area_.left, area_.right), random_.number(area_.bottom, area_.top),
                       only_extreme_z_ ? (random_.chance(50) ? z_least_ : z_most_) : random_.number(z_least_, z_most_)};
    repeat_coordinates(random_, point, earlier);
    return point;
}

} // namespace vorna::app::check
