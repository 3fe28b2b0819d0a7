// Standard ellipses: all that renderers hand over, rotated ones, arcs, pies and wide lines, in every pixel format.
//
// The point at angle t is centre + rotation * (a cos t, b sin t); a shape runs counter-clockwise from start to end. The centre is
// a column and row of the buffer, as in the ellipses of renderers. Thin shapes become a set of pixels: an outline the pixels
// nearest to the curve, a filled shape also all pixels whose centres lie inside. They are drawn row by row, so that a translucent
// shape covers each pixel once. All other lines are drawn as polylines.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

#include "vorna/draw.h"
#include "vorna/standard/conversion.h"
#include "vorna/standard/drawing_area.h"
#include "vorna/standard/lines.h"
#include "vorna/standard/merging.h"
#include "vorna/standard/standard_call.h"

namespace {

constexpr double full_turn = 2 * std::numbers::pi;

struct Vector {
    double x, y;
};

class Curve {
public:
    Curve(Vector center, double a, double b, double start, double end, double rotation) noexcept
        : center_(center), a_(a), b_(b), start_(start), sweep_(end - start), cosine_(std::cos(rotation)),
          sine_(std::sin(rotation)) {
        // Angles rounded to single precision may still make a whole turn.
        constexpr double tolerance = 1e-6;
        if (sweep_ >= full_turn - tolerance || sweep_ <= -full_turn + tolerance) {
            sweep_ = full_turn;
        } else if (sweep_ < 0) {
            sweep_ += full_turn;
        }
        // A whole turn would cover the line of a flat ellipse twice.
        if (is_whole() && (a_ == 0 || b_ == 0)) {
            start_ = a_ == 0 ? full_turn / 4 : 0;
            sweep_ = full_turn / 2;
        }
    }

    bool is_whole() const noexcept { return sweep_ == full_turn; }
    double start() const noexcept { return start_; }
    double end() const noexcept { return start_ + sweep_; }
    Vector center() const noexcept { return center_; }
    double longest_radius() const noexcept { return std::max(std::abs(a_), std::abs(b_)); }

    Vector at(double t) const noexcept {
        const double u = a_ * std::cos(t);
        const double v = b_ * std::sin(t);
        return {center_.x + u * cosine_ - v * sine_, center_.y + u * sine_ + v * cosine_};
    }

    // The part of a row inside the whole ellipse; false when it is empty.
    bool row_inside(double y, double& left, double& right) const noexcept {
        // With u = x c + y s and v = y c - x s, (u / a)^2 + (v / b)^2 = 1 is a quadratic equation in x.
        const double dy = y - center_.y;
        const double a2 = a_ * a_;
        const double b2 = b_ * b_;
        const double p = b2 * cosine_ * cosine_ + a2 * sine_ * sine_;
        const double q = (b2 - a2) * sine_ * cosine_ * dy;
        const double r = (b2 * sine_ * sine_ + a2 * cosine_ * cosine_) * dy * dy - a2 * b2;
        const double discriminant = q * q - p * r;
        if (a_ == 0 || b_ == 0 || !(discriminant >= 0)) {
            return false;
        }
        const double root = std::sqrt(discriminant);
        left = center_.x + (-q - root) / p;
        right = center_.x + (-q + root) / p;
        return true;
    }

    // Whether a point, in coordinates of the ellipse, lies between the radii of start and end.
    bool is_in_sector(const Vector& point) const noexcept {
        const double dx = point.x - center_.x;
        const double dy = point.y - center_.y;
        const double t = std::atan2((dy * cosine_ - dx * sine_) / b_, (dx * cosine_ + dy * sine_) / a_);
        const double beyond_start = std::fmod(std::fmod(t - start_, full_turn) + full_turn, full_turn);
        return beyond_start <= sweep_;
    }

private:
    Vector center_;
    double a_, b_, start_, sweep_, cosine_, sine_;
};

// The pixels of a shape that lie inside a rectangle.
class Pixel_Set {
public:
    explicit Pixel_Set(const VT_Int_Rectangle& visible) : visible_(visible) {}

    const VT_Int_Rectangle& visible() const noexcept { return visible_; }

    void add(std::int32_t row, double left, double right) {
        const double first = std::ceil(std::max<double>(left, visible_.left));
        const double last = std::floor(std::min<double>(right, visible_.right));
        if (row >= visible_.bottom && row <= visible_.top && first <= last) {
            runs_.push_back({row, static_cast<std::int32_t>(first), static_cast<std::int32_t>(last)});
        }
    }
    void add(const Vector& point) {
        const double column = std::floor(point.x + 0.5);
        const double row = std::floor(point.y + 0.5);
        if (row >= visible_.bottom && row <= visible_.top) {
            add(static_cast<std::int32_t>(row), column, column);
        }
    }

    // Whether a box of that size around a point may overlap the rectangle.
    bool may_show(const Vector& point, double reach) const noexcept {
        return point.x + reach >= visible_.left - 1 && point.x - reach <= visible_.right + 1 &&
               point.y + reach >= visible_.bottom - 1 && point.y - reach <= visible_.top + 1;
    }

    // Calls draw(row, first column, last column) for the runs of each row, upwards and to the right, with every pixel once.
    template <class Draw> void for_each_run(Draw&& draw) {
        std::sort(runs_.begin(), runs_.end(),
                  [](const Run& a, const Run& b) { return a.row != b.row ? a.row < b.row : a.first < b.first; });
        for (std::size_t i = 0; i < runs_.size();) {
            Run run = runs_[i];
            for (++i; i < runs_.size() && runs_[i].row == run.row && runs_[i].first <= run.last + 1; ++i) {
                run.last = std::max(run.last, runs_[i].last);
            }
            draw(run.row, run.first, run.last);
        }
    }

private:
    struct Run {
        std::int32_t row, first, last;
    };

    VT_Int_Rectangle visible_;
    std::vector<Run> runs_;
};

// The pixels of the curve between two angles, in order. The arc is halved until it is invisible or shorter than half a pixel.
void find_pixels(std::vector<Vector>& found, const Pixel_Set& pixels, const Curve& curve, double from, double to) {
    const double middle = from + (to - from) / 2;
    const double length = curve.longest_radius() * (to - from);
    const Vector point = curve.at(middle);
    if (!pixels.may_show(point, length / 2 + 1)) {
        return;
    }
    if (length <= 0.5 || middle == from || middle == to) {
        const Vector pixel{std::floor(point.x + 0.5), std::floor(point.y + 0.5)};
        if (found.empty() || found.back().x != pixel.x || found.back().y != pixel.y) {
            found.push_back(pixel);
        }
    } else {
        find_pixels(found, pixels, curve, from, middle);
        find_pixels(found, pixels, curve, middle, to);
    }
}

// A pixel is left out when the pixels before and after it touch at a corner, which keeps the outline thin.
void add_curve(Pixel_Set& pixels, const Curve& curve) {
    std::vector<Vector> found;
    find_pixels(found, pixels, curve, curve.start(), curve.end());
    for (std::size_t i = 0; i < found.size(); ++i) {
        pixels.add(found[i]);
        const bool cuts_corner =
            i + 2 < found.size() && std::abs(found[i + 2].x - found[i].x) == 1 && std::abs(found[i + 2].y - found[i].y) == 1;
        i += cuts_corner ? 1 : 0;
    }
}

void add_line(Pixel_Set& pixels, const Vector& from, const Vector& to) {
    const Vector middle{(from.x + to.x) / 2, (from.y + to.y) / 2};
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    if (!pixels.may_show(middle, length / 2 + 1)) {
        return;
    }
    if (length <= 0.5) {
        pixels.add(middle);
    } else {
        add_line(pixels, from, middle);
        add_line(pixels, middle, to);
    }
}

// The column where the ray from the centre crosses a row, if it does.
void add_crossing(std::vector<double>& crossings, const Vector& center, const Vector& outer, double y) {
    const double part = (y - center.y) / (outer.y - center.y);
    if (part >= 0 && std::isfinite(part)) {
        crossings.push_back(center.x + (outer.x - center.x) * part);
    }
}

// The pixels inside a whole ellipse or a pie: the part of each row inside the ellipse, cut at the two radii.
void add_inside(Pixel_Set& pixels, const Curve& curve) {
    for (std::int32_t row = pixels.visible().bottom; row <= pixels.visible().top; ++row) {
        double left = 0;
        double right = 0;
        if (!curve.row_inside(row, left, right)) {
            continue;
        }
        std::vector<double> cuts{left};
        if (!curve.is_whole()) {
            add_crossing(cuts, curve.center(), curve.at(curve.start()), row);
            add_crossing(cuts, curve.center(), curve.at(curve.end()), row);
            std::for_each(cuts.begin(), cuts.end(), [&](double& cut) { cut = std::clamp(cut, left, right); });
            std::sort(cuts.begin(), cuts.end());
        }
        cuts.push_back(right);
        for (std::size_t i = 0; i + 1 < cuts.size(); ++i) {
            const Vector middle{(cuts[i] + cuts[i + 1]) / 2, static_cast<double>(row)};
            if (curve.is_whole() || curve.is_in_sector(middle)) {
                pixels.add(row, cuts[i], cuts[i + 1]);
            }
        }
    }
}

// Draws runs of 32-bit pixels by the rules of the renderer's ellipses in every configuration: opaque ones are stored, translucent
// ones blended as lines are, none merge. They are blended here with the contents of the buffer, because no slot has exactly this
// rule in all configurations. Without depth they are drawn as images, which store pixels; with depth as lines, which test it.
class Run_Painter {
public:
    Run_Painter(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t z, VT_RGB32 color)
        : renderer_(renderer), plain_(new VT_Rendition(rendition)), z_(z), color_(color),
          has_depth_(vorna::has_depth_in_force(renderer, rendition)) {
        plain_->line.weight = 1;
        plain_->line.style = vorna::line_style::solid;
        plain_->line.flags &= ~vorna::line_flag::smoothed;
        plain_->drawing_flags = 0;
    }

    void operator()(std::int32_t row, std::int32_t first, std::int32_t last) {
        colors_.assign(static_cast<std::size_t>(last - first) + 1, color_);
        if (color_.alpha < 255) {
            blend(row, first, last);
        }
        const VT_DCI_Point start{first, row, z_};
        const VT_DCI_Point end{last, row, z_};
        if (has_depth_ && color_.alpha == 255) {
            vorna::draw_level_line(renderer_, *plain_, start, end, {&color_, 1});
        } else if (has_depth_) {
            std::vector<VT_DCI_Point> pixels;
            for (VT_DCI_Point pixel = start; pixel.x <= last; ++pixel.x) {
                pixels.push_back(pixel);
            }
            vorna::draw_level_line(renderer_, *plain_, std::move(pixels), colors_);
        } else {
            VD_Draw_DCI_RGB32_Image(renderer_, *plain_, &start, &end, 0, colors_.data(), 0, nullptr);
        }
    }

private:
    void blend(std::int32_t row, std::int32_t first, std::int32_t last) {
        constexpr Buffer_Format format = Buffer_Format::rgb32;
        const VT_DCI_Point start{first, row, 0};
        const VT_DCI_Point end{last, row, 0};
        VD_Read_Color_Image(renderer_, *plain_, &start, &end, &format, stored_);
        for (std::size_t i = 0; stored_ && i < colors_.size(); ++i) {
            const std::uint8_t* const under = stored_->row(0) + 4 * i;
            const auto mix = [&](int from, int to) {
                return static_cast<std::uint8_t>(from + ((to - from) * color_.alpha >> 8));
            };
            colors_[i] = {mix(under[0], color_.blue), mix(under[1], color_.green), mix(under[2], color_.red), 255};
        }
    }

    VT_Renderer_Data& renderer_;
    VT_Reference<VT_Rendition> plain_;
    std::int32_t z_;
    VT_RGB32 color_;
    bool has_depth_;
    std::vector<VT_RGB32> colors_;
    VT_Reference<VT_Shared_Image> stored_;
};

void draw_pixels(VT_Renderer_Data& renderer, const VT_Rendition& rendition, Pixel_Set& pixels, std::int32_t z,
                 const VT_RGB32* color) {
    if (renderer.current_renderer_options().color_system() == 1) {
        pixels.for_each_run(Run_Painter(renderer, rendition, z, color ? *color : rendition.line.color));
        return;
    }
    pixels.for_each_run([&](std::int32_t row, std::int32_t first, std::int32_t last) {
        for (VT_DCI_Point point{first, row, z}; point.x <= last; ++point.x) {
            VD_Draw_DCI_Dot(renderer, rendition, &point, color);
        }
    });
}

bool is_thin(const VT_Line_Attributes& line) noexcept {
    return vorna::drawn_by_renderer(line) && !(line.flags & vorna::line_flag::smoothed) && !vorna::has_line_types(line);
}

// As many points as keep the polyline within a quarter of a pixel of the curve.
void draw_polyline(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Curve& curve, std::int32_t z,
                   const VT_RGB32* color) {
    constexpr double deviation = 0.25;
    const double radius = std::max(curve.longest_radius(), 1.0);
    const double widest = 2 * std::acos(1 - deviation / radius);
    const auto segments = static_cast<std::int32_t>(std::ceil((curve.end() - curve.start()) / std::min(widest, 0.5)));
    std::vector<VT_Point> points;
    for (std::int32_t i = 0; i <= segments; ++i) {
        const Vector point = curve.at(curve.start() + (curve.end() - curve.start()) * i / std::max(segments, 1));
        points.push_back({static_cast<float>(point.x), static_cast<float>(point.y), static_cast<float>(z)});
    }
    if (curve.is_whole()) {
        points.back() = points.front();
    }
    vorna::draw_arc(renderer, rendition, segments + 1, vorna::rounded_points(segments + 1, points.data()).data(), color);
}

void draw_ellipse(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_DCI_Point& center,
                  const VT_DCI_Point& radii, double start, double end, double rotation, const VT_RGB32* color, bool is_filled) {
    const VT_Int_Rectangle visible = vorna::visible_rectangle(renderer, rendition);
    if (!std::isfinite(start) || !std::isfinite(end) || !std::isfinite(rotation) || vorna::is_empty(visible)) {
        return;
    }
    const VT_Int_Pair origin = vorna::window_origin(renderer.current_renderer_options());
    const Curve curve({static_cast<double>(center.x) + origin.x, static_cast<double>(center.y) + origin.y}, radii.x, radii.y,
                      start, end, rotation);
    if (!is_filled && !is_thin(rendition.line)) {
        draw_polyline(renderer, rendition, curve, center.z, color);
        return;
    }
    Pixel_Set pixels(visible);
    add_curve(pixels, curve);
    if (is_filled) {
        add_inside(pixels, curve);
    }
    if (is_filled && !curve.is_whole()) {
        add_line(pixels, curve.center(), curve.at(curve.start()));
        add_line(pixels, curve.center(), curve.at(curve.end()));
    }
    draw_pixels(renderer, rendition, pixels, center.z, color);
}

} // namespace

// A filled shape. Unless the angles make a whole turn, a pie.
void VD_Standard_Draw_DCI_Ellipse(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_DCI_Point* center,
                                  const VT_DCI_Point* radii, double start, double end, double rotation, const VT_RGB32* color) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_DCI_Ellipse");
    draw_ellipse(renderer, rendition, *center, *radii, start, end, rotation, color, true);
}

void VD_Standard_Draw_DCI_Elliptical_Arc(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_DCI_Point* center,
                                         const VT_DCI_Point* radii, double start, double end, double rotation,
                                         const VT_RGB32* color) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_DCI_Elliptical_Arc");
    draw_ellipse(renderer, rendition, *center, *radii, start, end, rotation, color, false);
}
