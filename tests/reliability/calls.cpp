// Calls of every slot with numbers around a window or at the limits of their types.
#include "tests/reliability/calls.h"

#include <algorithm>
#include <limits>
#include <numbers>

namespace {

using namespace vorna::app::check;

// Where wrapping, shifting and rounding begin: the ends of 16.16, of 17.15, of texture and buffer sizes, of the guard bands.
constexpr std::int32_t special_numbers[] = {
    0,          1,      2,          INT32_MAX, INT32_MAX - 1, 0x40000000, 0x40000001, 0x3FFFFFFF, 0x20000000,
    0x7FFF0000, 65535,  65536,      65537,     32767,         32768,      32769,      16383,      16384,
    16385,      28760,  28761,      4000,      4001,          0x01000000, 0x01000001, 0x00FFFFFF, 46341,
    0x10000,    0x8000, 2147418112, 1 << 29,   1 << 28,       1073709056, 2147450880, 2147483520, 16777215};

template <class Real>
constexpr Real special_reals[] = {std::numeric_limits<Real>::quiet_NaN(),
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

// Arguments made of numbers, and a description of them.
class Number_Arguments : public Random_Arguments {
public:
    Number_Arguments(std::string_view slot, Numbers& numbers, std::int32_t count)
        : Random_Arguments(numbers.random(), slot, numbers.window()), numbers_(numbers), count_(count) {}

    std::string description() const { return description_.str(); }

    std::int32_t point_count() override { return count_; }

    VT_Point_D next_point(Coordinates type, const std::vector<VT_Point_D>& earlier) override {
        VT_Point_D point = type == Coordinates::float32 ? real_point<float>()
                           : type == Coordinates::float64
                               ? real_point<double>()
                               : VT_Point_D{double(numbers_.column()), double(numbers_.row()), double(numbers_.depth())};
        repeat_coordinates(random(), point, earlier);
        describe(point);
        return point;
    }

    std::int32_t parameter_width() override {
        return numbers_.are_hostile() && chance(20) ? random().number(-1, 5) : Random_Arguments::parameter_width();
    }

    VT_Parameter parameter(std::size_t i) override {
        return numbers_.are_hostile() && chance(20) ? numbers_.real<float>(&Numbers::any) : Random_Arguments::parameter(i);
    }

    // Small in most calls: wide and dashed arcs of the longest radii have a hundred thousand segments.
    Ellipse ellipse() override {
        const VT_DCI_Point center = place();
        Ellipse ellipse{center, {random().number(-1, 60), random().number(0, 60), 0}, 0, 2 * std::numbers::pi, 0};
        if (chance(50)) {
            ellipse.start = angle();
            ellipse.end = chance(50) ? ellipse.start + 2 : angle();
        }
        ellipse.rotation = chance(50) ? 0 : angle();
        ellipse.radii = chance(10) ? place() : ellipse.radii;
        description_ << " from " << ellipse.start << " to " << ellipse.end << " turned " << ellipse.rotation << ", radii "
                     << ellipse.radii.x << ' ' << ellipse.radii.y;
        return ellipse;
    }

    // Between any two places without pixels, or a small one with as many as it has.
    Block block(std::int32_t pixel_bytes) override {
        Block block{place(), place(), 0, {}};
        if (chance(70)) {
            const std::int32_t width = random().number(1, 90);
            const std::int32_t height = random().number(1, 60);
            block.start.x = std::min(block.start.x, INT32_MAX - width);
            block.start.y = std::max(block.start.y, INT32_MIN + height);
            block.end = {block.start.x + width - 1, block.start.y - height + 1, block.end.z};
            block.stride = width * pixel_bytes;
            block.bytes.resize(static_cast<std::size_t>(block.stride) * static_cast<std::size_t>(height));
            description_ << " of " << width << " x " << height;
        }
        return block;
    }

    Placed_Image image() override {
        constexpr Buffer_Format formats[] = {Buffer_Format::index8, Buffer_Format::rgb32, Buffer_Format::presentation_rgb32,
                                             Buffer_Format::depth16};
        const VT_Int_Pair size = chance(50) ? window_size() : VT_Int_Pair{random().number(1, 9), random().number(1, 9)};
        const Buffer_Format format = random().one_of(formats);
        return {place(), random_image(random(), size, format)};
    }

private:
    template <class Real> VT_Point_D real_point() {
        const double x = numbers_.real<Real>(&Numbers::column), y = numbers_.real<Real>(&Numbers::row);
        return {x, y, numbers_.real<Real>(&Numbers::depth)};
    }
    VT_DCI_Point place() {
        const VT_DCI_Point place{numbers_.column(), numbers_.row(), numbers_.depth()};
        describe(place);
        return place;
    }
    double angle() { return numbers_.real<double>(&Numbers::any); }

    void describe(const auto& point) { description_ << " (" << point.x << ' ' << point.y << ' ' << point.z << ')'; }

    Numbers& numbers_;
    std::int32_t count_;
    std::ostringstream description_;
};

VT_Reference<const VT_Line_Type_Set> hostile_line_types(Numbers& numbers) {
    Random& random = numbers.random();
    const auto length = [&] { return random.chance(50) ? random.number(0, 9) : numbers.real<double>(&Numbers::any); };
    const VT_Reference<VT_Line_Type> type = random_line_type(random, length);
    type->kind = random.chance(50) ? type->kind : random.number(-1, 9);
    for (double& kind : type->kinds) {
        kind = random.chance(20) ? length() : kind;
    }
    if (random.chance(15)) {
        type->lengths.clear();
        type->kinds.clear();
    }
    const VT_Reference<VT_Line_Type_Set> types(new VT_Line_Type_Set);
    types->per_segment = random.chance(30);
    constexpr double scales[] = {1, 0, -1, 1e-9, 1e9};
    types->scale = random.one_of(scales);
    types->types.assign(static_cast<std::size_t>(random.number(0, 3)), type);
    return types;
}

VT_Reference<const VT_Basic_Material> hostile_material(Numbers& numbers) {
    const VT_Reference<VT_Basic_Material> material = random_material(numbers.random());
    material->has_texture_matrix = numbers.random().chance(30);
    for (auto& row : material->texture_matrix.m) {
        for (double& factor : row) {
            factor = numbers.random().chance(50) ? factor : numbers.real<double>(&Numbers::any);
        }
    }
    return material;
}

} // namespace

std::int32_t Numbers::any() {
    if (random_.chance(20)) {
        return random_.number(INT32_MIN, INT32_MAX);
    }
    const std::int32_t number = random_.one_of(special_numbers);
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
        return random_.one_of(special_reals<Real>);
    }
    const Real fraction = Real(random_.number(-4, 4)) / 8;
    return static_cast<Real>((this->*whole)()) + fraction;
}

template float Numbers::real<float>(std::int32_t (Numbers::*)());
template double Numbers::real<double>(std::int32_t (Numbers::*)());

Slot_Call make_call(std::string_view slot, Numbers& numbers, std::int32_t count, Callee callee) {
    Number_Arguments arguments(slot, numbers, count);
    const Draw draw = make_draw(slot, arguments, callee);
    return {slot, (callee == Callee::standard_function ? ", standard" : "") + arguments.description(), draw};
}

VT_Reference<VT_Rendition> hostile_rendition(Numbers& numbers) {
    Random& random = numbers.random();
    VT_Reference<VT_Rendition> rendition = random_rendition(random, numbers.window());
    const auto replace = [&]<class Number>(Number& number, std::int32_t percent) {
        number = random.chance(percent) ? static_cast<Number>(numbers.any()) : number;
    };
    VT_Face_Attributes& face = rendition->face;
    replace(face.pattern, 30);
    replace(face.flags, 50);
    face.bitmap = random.chance(70) ? face.bitmap : nullptr;
    face.material = random.chance(85) ? hostile_material(numbers) : nullptr;
    VT_Line_Attributes& line = rendition->line;
    replace(line.weight, 20);
    replace(line.style, 10);
    replace(line.flags, 40);
    replace(line.cap, 10);
    replace(line.join, 10);
    if (random.chance(20)) {
        line.line_types = hostile_line_types(numbers);
    }
    replace(rendition->marker.symbol, 10);
    replace(rendition->marker.size, 50);
    replace(line.mode, 16);
    face.mode = rendition->marker.mode = line.mode;
    replace(rendition->drawing_flags, 30);

    VT_Clip_Attributes& clip = rendition->clip;
    if (random.chance(40)) {
        clip.hard_clip = {numbers.column(), numbers.column(), numbers.row(), numbers.row()};
    }
    if (random.chance(30)) {
        clip.complex_clip =
            random.chance(50) ? region_in(numbers.window(), random.number(0, 5)) : random_region(random, [&]() -> VT_Point {
                return {numbers.real<float>(&Numbers::column), numbers.real<float>(&Numbers::row), 0};
            });
        clip.window_offset = random.chance(60) ? VT_Int_Pair{} : VT_Int_Pair{numbers.any(), numbers.any()};
    }
    rendition->window.rectangle = {numbers.column(), numbers.column(), numbers.row(), numbers.row()};
    replace(rendition->window.fill, 50);
    return rendition;
}

VT_Reference<const VT_Contour_Set> region_in(const VT_Int_Rectangle& window, std::int32_t inset) {
    const auto left = static_cast<float>(window.left) + static_cast<float>(inset);
    const auto right = static_cast<float>(window.right);
    const auto bottom = static_cast<float>(window.bottom);
    const auto top = static_cast<float>(window.top);
    return new VT_Contour_Set(
        std::vector<VT_Contour_Set::Contour>{{{left, bottom, 0}, {right, (bottom + top) / 2, 0}, {(left + right) / 3, top, 0}}});
}
