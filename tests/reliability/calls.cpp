// Calls of every slot.
#include "tests/reliability/calls.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <optional>
#include <sstream>
#include <type_traits>

#include "vorna/draw.h"

namespace {

constexpr std::int32_t parameter_width = 2;
constexpr std::int32_t most_parameter_width = 5;

// Where wrapping, shifting and rounding begin: the ends of 16.16, of 17.15, of texture and buffer sizes, of the guard bands.
constexpr std::int32_t telling_numbers[] = {
    0,          1,      2,          INT32_MAX, INT32_MAX - 1, 0x40000000, 0x40000001, 0x3FFFFFFF, 0x20000000,
    0x7FFF0000, 65535,  65536,      65537,     32767,         32768,      32769,      16383,      16384,
    16385,      28760,  28761,      4000,      4001,          0x01000000, 0x01000001, 0x00FFFFFF, 46341,
    0x10000,    0x8000, 2147418112, 1 << 29,   1 << 28,       1073709056, 2147450880, 2147483520, 16777215};

template <class Real>
constexpr Real telling_reals[] = {std::numeric_limits<Real>::quiet_NaN(),
                                  std::numeric_limits<Real>::infinity(),
                                  -std::numeric_limits<Real>::infinity(),
                                  std::numeric_limits<Real>::max(),
                                  std::numeric_limits<Real>::lowest(),
                                  std::numeric_limits<Real>::min(),
                                  std::numeric_limits<Real>::denorm_min(),
                                  -std::numeric_limits<Real>::denorm_min(),
                                  Real(-0.0),
                                  Real(2147483648.0),
                                  Real(-2147483648.0),
                                  Real(-2147483904.0),
                                  Real(4294967296.0),
                                  Real(9223372036854775808.0),
                                  Real(1e30),
                                  Real(-1e30),
                                  Real(1e-30)};

// One overload a signature: it makes the arguments, and what it returns draws with them.
class Maker {
public:
    using Draw = decltype(Slot_Call::draw);

    Maker(std::string_view slot, Numbers& numbers, std::int32_t count)
        : slot_(slot), numbers_(numbers), random_(numbers.random()), count_(count) {}

    template <class Point, class Through> Draw arguments(VT_Draw_Points<Point>*, Through through) {
        return [through, count = count_, points = points<Point>()](VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
            through(renderer, rendition, count, points.data());
        };
    }

    template <class Point, class Through> Draw arguments(VT_Draw_Colorized<Point>*, Through through) {
        return [through, count = count_, points = points<Point>(), colors = colors(),
                single = random_.chance(30)](VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
            through(renderer, rendition, count, points.data(), colors.data(), single);
        };
    }

    // Polygons share their type with primitives of one colour a point.
    template <class Point, class Through> Draw arguments(VT_Draw_Gouraud<Point>*, Through through) {
        const bool own_color = slot_.ends_with("polygon") && random_.chance(50);
        return [through, count = count_, points = points<Point>(), colors = colors(), own_color](VT_Renderer_Data& renderer,
                                                                                                 const VT_Rendition& rendition) {
            through(renderer, rendition, count, points.data(), own_color ? nullptr : colors.data());
        };
    }

    template <class Point, class Through> Draw arguments(VT_Draw_Textured<Point>*, Through through) {
        std::vector<VT_Parameter> parameters;
        const std::int32_t width =
            numbers_.are_hostile() && random_.chance(20) ? random_.number(-1, most_parameter_width) : parameter_width;
        for (std::size_t i = 0; i < points_to_make() * static_cast<std::size_t>(std::max(width, 1)); ++i) {
            parameters.push_back(numbers_.are_hostile() && random_.chance(20)
                                     ? numbers_.real<float>(&Numbers::any)
                                     : static_cast<float>(random_.number(-50, 150)) / 100);
        }
        return [through, count = count_, points = points<Point>(), colors = colors(), parameters,
                width](VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
            through(renderer, rendition, count, points.data(), colors.data(), parameters.data(), width, nullptr, nullptr);
        };
    }

    template <class Through> Draw arguments(VT_Draw_Dot*, Through through) {
        return [through, point = point(), color = some_color()](VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
            through(renderer, rendition, &point, color ? &*color : nullptr);
        };
    }

    // Wide and dashed arcs of the largest radii have a hundred thousand segments.
    template <class Through> Draw arguments(VT_Draw_Ellipse*, Through through) {
        const auto angle = [&] { return numbers_.real<double>(&Numbers::any); };
        const VT_DCI_Point center = point();
        const VT_DCI_Point radii = random_.chance(10) ? point() : VT_DCI_Point{random_.number(-1, 60), random_.number(0, 60), 0};
        const bool is_whole = random_.chance(50);
        const double start = is_whole ? 0 : angle();
        const double end = is_whole ? 2 * std::numbers::pi : random_.chance(50) ? start + 2 : angle();
        const double rotation = random_.chance(50) ? 0 : angle();
        description_ << " from " << start << " to " << end << " turned " << rotation << ", radii " << radii.x << ' ' << radii.y;
        return [through, center, radii, start, end, rotation, color = some_color()](VT_Renderer_Data& renderer,
                                                                                    const VT_Rendition& rendition) {
            through(renderer, rendition, &center, &radii, start, end, rotation, color ? &*color : nullptr);
        };
    }

    template <class Through> Draw arguments(VT_Draw_Index8_Image*, Through through) {
        return [through, image = placed<std::uint8_t>()](VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
            through(renderer, rendition, &image.start, &image.end, image.stride, image.data());
        };
    }
    template <class Through> Draw arguments(VT_Draw_RGB32_Image*, Through through) {
        return [through, image = placed<VT_RGB32>()](VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
            through(renderer, rendition, &image.start, &image.end, image.stride, image.data(), 0, nullptr);
        };
    }
    template <class Through> Draw arguments(VT_Write_Depth*, Through through) {
        return [through, image = placed<std::uint16_t>()](VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
            through(renderer, rendition, &image.start, &image.end, image.stride, image.data());
        };
    }
    template <class Through> Draw arguments(VT_Read_Image*, Through through) {
        return [through, area = placed<std::uint8_t>()](VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
            constexpr Buffer_Format format = Buffer_Format::whatever_is_there;
            VT_Reference<VT_Shared_Image> image;
            through(renderer, rendition, &area.start, &area.end, &format, image);
        };
    }

    template <class Through> Draw arguments(VT_Draw_Image*, Through through) {
        const VT_Int_Rectangle& window = numbers_.window();
        const VT_Int_Pair size = random_.chance(50) ? VT_Int_Pair{window.right - window.left + 1, window.top - window.bottom + 1}
                                                    : VT_Int_Pair{random_.number(1, 9), random_.number(1, 9)};
        constexpr Buffer_Format formats[] = {Buffer_Format::index8, Buffer_Format::rgb32, Buffer_Format::presentation_rgb32,
                                             Buffer_Format::depth16};
        const Buffer_Format format = random_.one_of(formats);
        const VT_Reference<VT_Shared_Image> image(new VT_Shared_Image(
            size.x, size.y, format, size.x * vorna::bytes_per_pixel(format), nullptr, false, random_.chance(50)));
        return [through, image, start = point()](VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
            through(renderer, rendition, &start, image.get());
        };
    }

    template <class Through> Draw arguments(VT_Window_Action*, Through through) {
        const VT_DCI_Point one = point();
        const VT_DCI_Point other = point();
        const VT_Window_Attributes window{
            {one.x, other.x, one.y, other.y}, random_.chance(50) ? vorna::face_pattern::solid : numbers_.any(), {1, 2, 3, 4}, 5};
        return [through, window](VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
            VT_Rendition painting(rendition);
            painting.window = window;
            through(renderer, painting);
        };
    }

    std::string description() const { return description_.str(); }

private:
    VT_DCI_Point point() {
        const VT_DCI_Point point{numbers_.column(), numbers_.row(), numbers_.depth()};
        description_ << " (" << point.x << ' ' << point.y << ' ' << point.z << ')';
        return point;
    }

    std::optional<VT_RGB32> some_color() { return random_.chance(50) ? std::optional(colors().front()) : std::nullopt; }

    // Between any two places without pixels, or small ones with as many as they have.
    template <class Pixel> struct Placed {
        VT_DCI_Point start, end;
        std::int32_t stride = 0;
        std::vector<Pixel> pixels;

        const Pixel* data() const { return pixels.empty() ? nullptr : pixels.data(); }
    };
    template <class Pixel> Placed<Pixel> placed() {
        Placed<Pixel> image{point(), point(), 0, {}};
        if (random_.chance(70)) {
            const std::int32_t width = random_.number(1, 90);
            const std::int32_t height = random_.number(1, 60);
            image.start.x = std::min(image.start.x, INT32_MAX - width);
            image.start.y = std::max(image.start.y, INT32_MIN + height);
            image.end = {image.start.x + width - 1, image.start.y - height + 1, image.end.z};
            image.stride = width * static_cast<std::int32_t>(sizeof(Pixel));
            image.pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
            description_ << " of " << width << " x " << height;
        }
        return image;
    }

    // A pointer to no points would not be one that a host may pass.
    std::size_t points_to_make() const { return count_ < 1 ? 1 : static_cast<std::size_t>(count_); }

    template <class Point> std::vector<Point> points() {
        using Coordinate = decltype(Point::x);
        std::vector<Point> points;
        while (points.size() < points_to_make()) {
            Point point;
            if constexpr (std::is_integral_v<Coordinate>) {
                point = {numbers_.column(), numbers_.row(), numbers_.depth()};
            } else {
                point = {numbers_.real<Coordinate>(&Numbers::column), numbers_.real<Coordinate>(&Numbers::row),
                         numbers_.real<Coordinate>(&Numbers::depth)};
            }
            // Level and upright edges, and places that come again.
            if (!points.empty() && random_.chance(15)) {
                const std::int32_t what = random_.number(1, 3);
                point.x = (what & 1) != 0 ? points.back().x : point.x;
                point.y = (what & 2) != 0 ? points.back().y : point.y;
            }
            description_ << " (" << point.x << ' ' << point.y << ' ' << point.z << ')';
            points.push_back(point);
        }
        return points;
    }

    std::vector<VT_RGB32> colors() {
        std::vector<VT_RGB32> colors;
        while (colors.size() < points_to_make()) {
            constexpr std::uint8_t alphas[] = {0, 1, 128, 254, 255, 255};
            colors.push_back({random_.byte(), random_.byte(), random_.byte(), random_.one_of(alphas)});
        }
        return colors;
    }

    std::string_view slot_;
    Numbers& numbers_;
    Random& random_;
    std::int32_t count_;
    std::ostringstream description_;
};

template <class Function> constexpr bool takes_points = false;
template <class... More>
constexpr bool takes_points<void(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, More...)> = true;

double hostile_length(Numbers& numbers) {
    return numbers.random().chance(50) ? numbers.random().number(0, 9) : numbers.real<double>(&Numbers::any);
}

VT_Reference<const VT_Line_Type_Set> hostile_line_types(Numbers& numbers) {
    Random& random = numbers.random();
    const VT_Reference<VT_Line_Type> type(new VT_Line_Type);
    type->kind = random.chance(25) ? 7 : random.number(-1, 9);
    type->width = hostile_length(numbers);
    type->mode = random.number(0, 3);
    type->leading[0] = hostile_length(numbers);
    type->trailing[0] = hostile_length(numbers);
    for (std::int32_t i = random.number(0, 3); i > 0; --i) {
        type->lengths.push_back(hostile_length(numbers));
        type->kinds.push_back(random.chance(20) ? hostile_length(numbers) : random.number(-1, 1));
    }
    const VT_Reference<VT_Line_Type_Set> types(new VT_Line_Type_Set);
    types->per_segment = random.chance(30);
    constexpr double scales[] = {1, 0, -1, 1e-9, 1e9};
    types->scale = random.one_of(scales);
    types->types.assign(static_cast<std::size_t>(random.number(0, 3)), type);
    return types;
}

VT_Reference<VT_Basic_Material> texture_of(Random& random, std::int32_t width, std::int32_t height) {
    const VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
    const VT_Reference<VT_Shared_Image> image(
        new VT_Shared_Image(width, height, Buffer_Format::rgb32, 4 * width, nullptr, false, true));
    for (std::int32_t row = 0; row < height; ++row) {
        for (std::int32_t i = 0; i < 4 * width; ++i) {
            image->row(row)[i] = random.byte();
        }
    }
    material->texture = image;
    return material;
}

VT_Reference<const VT_Contour_Set> hostile_region(Numbers& numbers) {
    std::vector<VT_Contour_Set::Contour> contours(static_cast<std::size_t>(numbers.random().number(0, 3)));
    for (auto& contour : contours) {
        for (std::int32_t i = numbers.random().number(0, 6); i > 0; --i) {
            contour.push_back({numbers.real<float>(&Numbers::column), numbers.real<float>(&Numbers::row), 0});
        }
    }
    return new VT_Contour_Set(std::move(contours));
}

} // namespace

std::int32_t Numbers::any() {
    if (random_.chance(20)) {
        return random_.number(INT32_MIN, INT32_MAX);
    }
    const std::int32_t number = random_.one_of(telling_numbers);
    return random_.chance(50) ? number : -1 - number;
}

std::int32_t Numbers::coordinate(std::int32_t low, std::int32_t high) {
    if (!are_hostile_) {
        const std::int32_t reach = random_.chance(80) ? 0 : 100;
        return random_.number(low - reach, high + reach);
    }
    const std::int32_t kind = random_.number(1, 100);
    if (kind <= 30) {
        return random_.number(low, high);
    }
    if (kind <= 50) {
        // At the window's edges and just beyond.
        const std::int64_t edge = std::int64_t{random_.chance(50) ? low : high} + random_.number(-2, 2);
        return edge < INT32_MIN || edge > INT32_MAX ? low : static_cast<std::int32_t>(edge);
    }
    return any();
}

template <class Real> Real Numbers::real(std::int32_t (Numbers::*whole)()) {
    if (are_hostile_ && random_.chance(25)) {
        return random_.one_of(telling_reals<Real>);
    }
    const Real fraction = Real(random_.number(-4, 4)) / 8;
    return static_cast<Real>((this->*whole)()) + fraction;
}

template float Numbers::real<float>(std::int32_t (Numbers::*)());
template double Numbers::real<double>(std::int32_t (Numbers::*)());

const std::vector<std::string_view>& point_slots() {
    static const std::vector<std::string_view> names = [] {
        std::vector<std::string_view> list;
        vorna::for_each_action([&]<class Function>(std::string_view name, Action_Slot<Function> VT_Action_Table::*, Function*) {
            if constexpr (takes_points<Function>) {
                list.push_back(name);
            }
        });
        return list;
    }();
    return names;
}

const std::vector<std::string_view>& all_slots() {
    static const std::vector<std::string_view> names{
#define VT_ACTION(slot, name, ...) #slot,
#include "host/action_list.inc"
#undef VT_ACTION
    };
    return names;
}

Slot_Call make_call(std::string_view slot, Numbers& numbers, std::int32_t count, bool is_standard) {
    Slot_Call call{slot, {}, {}};
    const auto make = [&]<class Function>(const auto& drawn, Function* standard) {
        Maker maker(slot, numbers, count);
        call.draw = maker.arguments(standard, [=](auto&&... all) { is_standard ? standard(all...) : drawn(all...); });
        call.description = (is_standard ? ", standard" : "") + maker.description();
    };
#define VT_ACTION(slot_name, name, ...)                                                                                          \
    if (slot == #slot_name) {                                                                                                    \
        make(VD_##name, &VD_Standard_##name);                                                                                    \
    }
#include "host/action_list.inc"
#undef VT_ACTION
    return call;
}

VT_Reference<VT_Rendition> hostile_rendition(Numbers& numbers, const VT_Int_Rectangle& window) {
    Random& random = numbers.random();
    VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->set_color({random.byte(), random.byte(), random.byte(), random.byte()});
    const auto number = [&](std::int32_t often, std::int32_t usual) { return random.chance(often) ? usual : numbers.any(); };

    VT_Face_Attributes& face = rendition->face;
    face.index = rendition->line.index = rendition->marker.index = random.byte();
    face.pattern = random.chance(40) ? vorna::face_pattern::solid : random.chance(50) ? random.number(0, 100) : numbers.any();
    face.flags = random.chance(50) ? 0 : static_cast<std::uint32_t>(numbers.any());
    if (random.chance(70)) {
        face.bitmap = new VT_Pattern_Bitmap(3, 2, {1, 0, 1, 0, 0, 1});
    }
    if (random.chance(85)) {
        constexpr std::int32_t sides[] = {1, 2, 8, 3};
        VT_Reference<VT_Basic_Material> material = texture_of(random, random.one_of(sides), random.one_of(sides));
        material->has_texture_matrix = random.chance(30);
        for (auto& row : material->texture_matrix.m) {
            for (double& factor : row) {
                factor = random.chance(50) ? factor : numbers.real<double>(&Numbers::any);
            }
        }
        face.material = material;
    }
    VT_Line_Attributes& line = rendition->line;
    line.weight = random.chance(60) ? 1 : random.chance(50) ? random.number(-1, 9) : numbers.any();
    line.style = random.chance(70) ? 0 : random.chance(70) ? random.number(-1, 6) : numbers.any();
    line.flags = random.chance(60) ? 0 : static_cast<std::uint32_t>(numbers.any());
    line.cap = number(90, random.number(0, 3));
    line.join = number(90, random.number(0, 3));
    if (random.chance(20)) {
        line.line_types = hostile_line_types(numbers);
    }
    rendition->marker.symbol = random.chance(50) ? 0 : random.chance(80) ? random.number(0, 9) : numbers.any();
    rendition->marker.size = random.chance(50) ? random.number(0, 9) : numbers.any();
    face.mode = line.mode = rendition->marker.mode = random.chance(20) ? vorna::merge_drawing_mode : number(80, 0);
    rendition->drawing_flags = static_cast<std::uint32_t>(number(70, 0));

    VT_Clip_Attributes& clip = rendition->clip;
    clip.depth_test = random.chance(80);
    clip.hard_clip = window;
    if (random.chance(40)) {
        clip.hard_clip = {numbers.column(), numbers.column(), numbers.row(), numbers.row()};
    }
    if (random.chance(30)) {
        clip.complex_clip = random.chance(50) ? region_in(window, random.number(0, 5)) : hostile_region(numbers);
        clip.window_offset = random.chance(60) ? VT_Int_Pair{} : VT_Int_Pair{numbers.any(), numbers.any()};
    }
    return rendition;
}

std::string describe(const VT_Rendition& rendition) {
    std::ostringstream text;
    const VT_Int_Rectangle& clip = rendition.clip.hard_clip;
    text << "pattern " << rendition.face.pattern << " flags " << rendition.face.flags << ", weight " << rendition.line.weight
         << " style " << rendition.line.style << " flags " << rendition.line.flags << " cap " << rendition.line.cap << " join "
         << rendition.line.join << " types " << !(rendition.line.line_types == VT_Line_Type_Set::None) << ", symbol "
         << rendition.marker.symbol << " size " << rendition.marker.size << ", mode " << rendition.line.mode << ", clip "
         << clip.left << ' ' << clip.right << ' ' << clip.bottom << ' ' << clip.top << ", region "
         << static_cast<bool>(rendition.clip.complex_clip) << ", depth test " << rendition.clip.depth_test;
    if (!(rendition.line.line_types == VT_Line_Type_Set::None)) {
        const VT_Line_Type_Set& set = *rendition.line.line_types;
        text << ", scale " << set.scale << (set.per_segment ? " per segment" : "");
        if (!set.types.empty()) {
            const VT_Line_Type& type = *set.types.front();
            text << " kind " << type.kind << " width " << type.width << " mode " << type.mode << " leading " << type.leading[0]
                 << " trailing " << type.trailing[0];
            for (std::size_t i = 0; i < type.lengths.size(); ++i) {
                text << ' ' << type.kinds[i] << ':' << type.lengths[i];
            }
        }
    }
    return text.str();
}

VT_Reference<const VT_Contour_Set> region_in(const VT_Int_Rectangle& window, std::int32_t inset) {
    const auto left = static_cast<float>(window.left) + static_cast<float>(inset);
    const auto right = static_cast<float>(window.right);
    const auto bottom = static_cast<float>(window.bottom);
    const auto top = static_cast<float>(window.top);
    return new VT_Contour_Set(
        std::vector<VT_Contour_Set::Contour>{{{left, bottom, 0}, {right, (bottom + top) / 2, 0}, {(left + right) / 3, top, 0}}});
}
