// Signs over a model: the directions of its axes, and a scale bar.
#include "drawing/job/model_overlay.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "drawing/map/map_painter.h"
#include "drawing/model/vectors.h"

namespace vorna::drawing {
namespace {

using map::Position;

// In pixels of an image that is not enlarged.
constexpr int letter_size = 14;
constexpr double margin = 14, line_width = 2;

std::string text_of(double number) {
    std::array<char, 32> text;
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

} // namespace

// The powers of ten that text is read as are exact where a product of doubles is not.
double round_length(double longest) {
    const int power = static_cast<int>(std::floor(std::log10(longest))) + 1;
    for (int exponent = power; exponent >= power - 2; --exponent) {
        for (const char digit : {'5', '2', '1'}) {
            const std::string text = digit + ("e" + std::to_string(exponent));
            double length = 0;
            std::from_chars(text.data(), text.data() + text.size(), length);
            if (length > 0 && length <= longest) {
                return length;
            }
        }
    }
    return longest;
}

Model_Overlay::Model_Overlay(const Overlay_Settings& settings, double radius) : settings_(settings), radius_(radius) {
    Load_Limits limits; // of a font and a few letters
    font_ = map::load_label_font("", limits);
}

Model_Overlay::~Model_Overlay() = default;

void Model_Overlay::prepare(const model::Tile_Grid& grid, const model::Camera& camera, std::int32_t enlarged) {
    enlarged_ = enlarged;
    signs_.clear();
    if (settings_.axes) {
        add_axes(camera, grid.frame);
    }
    if (settings_.scale_bar && !camera.eye_is_place) {
        add_scale_bar(camera, grid.frame);
    }
}

void Model_Overlay::add_text(const std::string& text, Position middle, VT_RGB32 color) {
    Load_Limits limits; // of a few letters
    const double size = letter_size * enlarged_;
    const map::Text letters = font_->text_of(text, size, INFINITY, text, limits);
    const double x = std::floor(middle.x - letters.width / 2), y = std::floor(middle.y - font_->height() * size / 2);
    signs_.push_back({map::face_of(letters, {x, y}), color});
}

void Model_Overlay::add_line(Position from, Position to, double width, VT_RGB32 color) {
    const double dx = to.x - from.x, dy = to.y - from.y, length = std::sqrt(dx * dx + dy * dy);
    if (length > 0) {
        const double x = -dy / length * width / 2, y = dx / length * width / 2;
        signs_.push_back(
            {{{{from.x + x, from.y + y}, {to.x + x, to.y + y}, {to.x - x, to.y - y}, {from.x - x, from.y - y}}}, color});
    }
}

// In the lower left corner, the axis that points away from the viewer first.
void Model_Overlay::add_axes(const model::Camera& camera, const VT_Int_Rectangle& frame) {
    struct Axis {
        const char* name;
        VT_RGB32 color;
        VT_Vector_D direction;
    };
    std::array<Axis, 3> axes{
        {{"X", {48, 48, 205, 255}, {1, 0, 0}}, {"Y", {40, 140, 40, 255}, {0, 1, 0}}, {"Z", {210, 90, 30, 255}, {0, 0, 1}}}};
    const auto toward = [&](const Axis& axis) { return model::dot(camera.toward, axis.direction); };
    std::ranges::sort(axes, {}, toward);
    const double n = enlarged_, side = std::min(frame.right - frame.left, frame.top - frame.bottom) / n;
    const double size = n * std::clamp(side / 12, 20.0, 60.0), beside = n * (margin + letter_size) + size;
    const Position origin{std::floor(frame.left + beside), std::floor(frame.bottom + beside)};
    for (const Axis& axis : axes) {
        const double x = model::dot(camera.right, axis.direction), y = model::dot(camera.up, axis.direction);
        const auto at = [&](double length) { return Position{origin.x + x * length, origin.y + y * length}; };
        add_line(origin, at(size), line_width * n, axis.color);
        add_text(axis.name, at(size + n * letter_size * 0.8), axis.color);
    }
}

// In the lower right corner: a bar of a round length in the model's units, a quarter of the image long or less.
void Model_Overlay::add_scale_bar(const model::Camera& camera, const VT_Int_Rectangle& frame) {
    const auto& row = camera.clip_from_model.m[0];
    const double width = frame.right - frame.left, n = enlarged_;
    const double unit = model::length(VT_Vector_D{row[0], row[1], row[2]}) * width / 2 / radius_; // pixels
    if (!(unit > 0) || !std::isfinite(unit)) {
        return;
    }
    const double length = round_length(width / 4 / unit), right = frame.right - std::round(margin * n),
                 left = right - length * unit, y = frame.bottom + std::round(margin * n), tick = 4 * n;
    add_line({left, y}, {right, y}, line_width * n, settings_.color);
    for (const double x : {left + line_width * n / 2, right - line_width * n / 2}) {
        add_line({x, y - tick}, {x, y + tick}, line_width * n, settings_.color);
    }
    add_text(text_of(length), {(left + right) / 2, y + tick + n * letter_size * 0.7}, settings_.color);
}

void Model_Overlay::draw(VT_Renderer_Data& renderer, const VT_Rendition& rendition) const {
    const VT_Reference<VT_Rendition> over(new VT_Rendition(rendition));
    over->clip.depth_test = false;
    map::Map_Painter painter(renderer, *over, {});
    for (const Sign& sign : signs_) {
        painter.fill_pixels(sign.face, sign.color);
    }
}

} // namespace vorna::drawing
