// Calls of every slot.
#include "app/check/call_maker.h"

#include <algorithm>
#include <numbers>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "vorna/draw.h"

namespace vorna::app::check {

namespace {

constexpr double turn = 2 * std::numbers::pi;
constexpr std::int32_t plain_depth = 100;

// A block of the rectangle's size with unset bytes. extra: pixels between the end of a row and the start of the next.
Block unset_block(const VT_Int_Rectangle& place, std::int32_t depth, std::int32_t extra, std::int32_t pixel_bytes) {
    Block block{{place.left, place.top, depth}, {place.right, place.bottom, depth}, 0, {}};
    block.stride = (place.right - place.left + 1 + extra) * pixel_bytes;
    block.bytes.resize(static_cast<std::size_t>(block.stride) * static_cast<std::size_t>(place.top - place.bottom + 1));
    return block;
}

// The longest radius with which an ellipse about the centre stays in a window of the size, however it is turned.
std::int32_t longest_radius(const VT_DCI_Point& center, VT_Int_Pair size) {
    return std::min({center.x, center.y, size.x - 1 - center.x, size.y - 1 - center.y});
}

} // namespace

bool clips_to_hard_clip(std::string_view slot) {
    return slot.starts_with("draw_2d_") || slot.starts_with("draw_2di_") || slot.starts_with("draw_3d_");
}

VT_Int_Pair Call_Arguments::window_size() const noexcept {
    return {window_.right - window_.left + 1, window_.top - window_.bottom + 1};
}

VT_Point_D Call_Arguments::next_point(Coordinates, const std::vector<VT_Point_D>& earlier) {
    const VT_Int_Pair size = window_size();
    const VT_Int_Pair corners[] = {{window_.left + size.x / 4, window_.bottom + size.y / 4},
                                   {window_.right - size.x / 4, window_.bottom + size.y / 3},
                                   {window_.left + size.x / 2, window_.top - size.y / 4}};
    const VT_Int_Pair corner = corners[earlier.size() % std::size(corners)];
    return {double(corner.x), double(corner.y), double(plain_depth)};
}

std::vector<VT_RGB32> Call_Arguments::colors(std::size_t count) {
    return std::vector<VT_RGB32>(count, {40, 120, 250, 255});
}

Ellipse Call_Arguments::ellipse() {
    const VT_Int_Pair size = window_size();
    const VT_DCI_Point center{size.x / 2, size.y / 2, 0};
    const std::int32_t radius = longest_radius(center, size) / 2;
    return {center, {radius, radius, 0}, 0, turn, 0};
}

Block Call_Arguments::block(std::int32_t pixel_bytes) {
    Block block = unset_block(window_, plain_depth, 0, pixel_bytes);
    std::fill(block.bytes.begin(), block.bytes.end(), std::uint8_t{180});
    return block;
}

Placed_Image Call_Arguments::image() {
    Random noise(1);
    return {{window_.left, window_.top, plain_depth}, random_image(noise, window_size(), Buffer_Format::rgb32)};
}

VT_Point_D Random_Arguments::next_point(Coordinates type, const std::vector<VT_Point_D>& earlier) {
    if (earlier.empty()) {
        constexpr std::int32_t plane_distances[] = {0, 0, 10, 100, 3000};
        constexpr std::int32_t space_distances[] = {0, 10, 100, 3000, 30'000};
        const std::int32_t distance = type == Coordinates::float64 ? random_.one_of(space_distances)
                                      : clips_to_hard_clip(slot_)  ? random_.one_of(plane_distances)
                                                                   : 0;
        cloud_.emplace(random_, grown(window(), distance));
    }
    const VT_DCI_Point place = cloud_->next({});
    VT_Point_D point{double(place.x), double(place.y), double(place.z)};
    // Fractions too small to lead out of the window.
    if (type != Coordinates::int32) {
        point.x += random_.number(-1, 1) / 4.0;
        point.y += random_.number(-1, 1) / 4.0;
    }
    repeat_coordinates(random_, point, earlier);
    return point;
}

// Inside the window; the centre is a column and row of the buffer.
Ellipse Random_Arguments::ellipse() {
    const VT_Int_Pair size = window_size();
    const VT_DCI_Point center{random_.number(0, size.x - 1), random_.number(0, size.y - 1), 0};
    const std::int32_t longest = longest_radius(center, size);
    Ellipse ellipse{center, {random_.number(0, longest), random_.number(0, longest), 0}, 0, turn, 0};
    if (random_.chance(40)) {
        ellipse.rotation = random_.number(0, 8) * turn / 8;
    }
    if (random_.chance(30)) {
        ellipse.start = random_.number(0, 100) * turn / 100;
        ellipse.end = ellipse.start + random_.number(0, 100) * turn / 100;
    }
    return ellipse;
}

Block Random_Arguments::block(std::int32_t pixel_bytes) {
    const VT_Int_Rectangle place = random_rectangle(random_, window());
    const std::int32_t depth = random_.number(0, 65535);
    Block block = unset_block(place, depth, random_.number(0, 3), pixel_bytes);
    std::generate(block.bytes.begin(), block.bytes.end(), [this] { return random_.byte(); });
    return block;
}

// Images made for presentation are as large as the window and lie on it; their start is a column and a row.
Placed_Image Random_Arguments::image() {
    const VT_Int_Pair size = window_size();
    if (random_.chance(30)) {
        const VT_DCI_Point start{random_.number(-5, size.x), random_.number(-5, size.y), 0};
        return {start, random_image(random_, size, Buffer_Format::presentation_rgb32)};
    }
    const VT_Int_Rectangle place = random_rectangle(random_, window());
    const VT_DCI_Point start{place.left, place.top, random_.number(0, 65535)};
    const Buffer_Format format = random_.chance(50) ? Buffer_Format::index8 : Buffer_Format::rgb32;
    return {start, random_image(random_, {place.right - place.left + 1, place.top - place.bottom + 1}, format)};
}

namespace {

// Calls one of the three functions of a slot.
template <class Drawing_Function, class Signature> struct Target {
    Action_Slot<Signature> VT_Action_Table::*slot;
    Signature* standard;
    Callee callee;

    template <class... Arguments>
    void operator()(VT_Renderer_Data& renderer, const VT_Rendition& rendition, Arguments&&... arguments) const {
        const auto& action = renderer.actions.*slot;
        if (callee == Callee::drawing_function) {
            Drawing_Function{}(renderer, rendition, std::forward<Arguments>(arguments)...);
        } else if (callee == Callee::slot && action.enabled) {
            action.function(*action.owner, rendition, std::forward<Arguments>(arguments)...);
        } else {
            standard(renderer, rendition, std::forward<Arguments>(arguments)...);
        }
    }
};

// draw_of: an overload for each signature. It makes the arguments and returns the call with them.
class Call_Maker {
public:
    Call_Maker(std::string_view slot, Call_Arguments& arguments) : slot_(slot), arguments_(arguments) {}

    template <class Point> Draw draw_of(VT_Draw_Points<Point>*, auto target) {
        return [target, list = point_list<Point>()](auto& renderer, const auto& rendition) {
            target(renderer, rendition, list.count, list.points.data());
        };
    }

    template <class Point> Draw draw_of(VT_Draw_Colorized<Point>*, auto target) {
        const bool single = arguments_.chance(30);
        return [target, list = point_list<Point>(), single](auto& renderer, const auto& rendition) {
            target(renderer, rendition, list.count, list.points.data(), list.colors.data(), single);
        };
    }

    // Polygons have this type too, but take one colour or none.
    template <class Point> Draw draw_of(VT_Draw_Gouraud<Point>*, auto target) {
        const bool has_colors = !slot_.ends_with("polygon") || arguments_.chance(50);
        return [target, list = point_list<Point>(), has_colors](auto& renderer, const auto& rendition) {
            target(renderer, rendition, list.count, list.points.data(), has_colors ? list.colors.data() : nullptr);
        };
    }

    template <class Point> Draw draw_of(VT_Draw_Textured<Point>*, auto target) {
        Point_List<Point> list = point_list<Point>();
        const std::int32_t width = arguments_.parameter_width();
        std::vector<VT_Parameter> parameters(list.points.size() * static_cast<std::size_t>(std::max(width, 1)));
        for (std::size_t i = 0; i < parameters.size(); ++i) {
            parameters[i] = arguments_.parameter(i);
        }
        return
            [target, list = std::move(list), parameters = std::move(parameters), width](auto& renderer, const auto& rendition) {
                target(renderer, rendition, list.count, list.points.data(), list.colors.data(), parameters.data(), width, nullptr,
                       nullptr);
            };
    }

    Draw draw_of(VT_Draw_Dot*, auto target) {
        const VT_DCI_Point point = converted<VT_DCI_Point>(arguments_.next_point(Coordinates::int32, {}));
        return [target, point, color = some_color()](auto& renderer, const auto& rendition) {
            target(renderer, rendition, &point, color ? &*color : nullptr);
        };
    }

    Draw draw_of(VT_Draw_Ellipse*, auto target) {
        const Ellipse e = arguments_.ellipse();
        return [target, e, color = some_color()](auto& renderer, const auto& rendition) {
            target(renderer, rendition, &e.center, &e.radii, e.start, e.end, e.rotation, color ? &*color : nullptr);
        };
    }

    Draw draw_of(VT_Draw_Index8_Image*, auto target) {
        return [target, block = arguments_.block(1)](auto& renderer, const auto& rendition) {
            target(renderer, rendition, &block.start, &block.end, block.stride, block.template pixels<std::uint8_t>());
        };
    }

    Draw draw_of(VT_Draw_RGB32_Image*, auto target) {
        return [target, block = arguments_.block(4)](auto& renderer, const auto& rendition) {
            target(renderer, rendition, &block.start, &block.end, block.stride, block.template pixels<VT_RGB32>(), 0, nullptr);
        };
    }

    Draw draw_of(VT_Write_Depth*, auto target) {
        const bool has_depths = !arguments_.chance(20);
        return [target, block = arguments_.block(2), has_depths](auto& renderer, const auto& rendition) {
            target(renderer, rendition, &block.start, &block.end, block.stride,
                   has_depths ? block.template pixels<std::uint16_t>() : nullptr);
        };
    }

    Draw draw_of(VT_Read_Image*, auto target) {
        return [target, block = arguments_.block(1)](auto& renderer, const auto& rendition) {
            constexpr Buffer_Format format = Buffer_Format::whatever_is_there;
            VT_Reference<VT_Shared_Image> image;
            target(renderer, rendition, &block.start, &block.end, &format, image);
        };
    }

    Draw draw_of(VT_Draw_Image*, auto target) {
        return [target, placed = arguments_.image()](auto& renderer, const auto& rendition) {
            target(renderer, rendition, &placed.start, placed.image.get());
        };
    }

    // Rectangle and colour are in the rendition.
    Draw draw_of(VT_Window_Action*, auto target) { return target; }

private:
    // With a colour for each point.
    template <class Point> struct Point_List {
        std::int32_t count = 0; // as it is passed, at most the number of points
        std::vector<Point> points;
        std::vector<VT_RGB32> colors;
    };

    template <class Point> Point_List<Point> point_list() {
        Point_List<Point> list{arguments_.point_count(), {}, {}};
        std::vector<VT_Point_D> chosen;
        for (std::int32_t i = 0; i < std::max(list.count, 1); ++i) {
            chosen.push_back(arguments_.next_point(coordinates_of<Point>, chosen));
            list.points.push_back(converted<Point>(chosen.back()));
        }
        list.colors = arguments_.colors(chosen.size());
        return list;
    }

    std::optional<VT_RGB32> some_color() {
        return arguments_.chance(50) ? std::optional(arguments_.colors(1).front()) : std::nullopt;
    }

    template <class Point>
    static constexpr Coordinates coordinates_of = std::is_same_v<Point, VT_DCI_Point> ? Coordinates::int32
                                                  : std::is_same_v<Point, VT_Point>   ? Coordinates::float32
                                                                                      : Coordinates::float64;
    template <class Point> static Point converted(const VT_Point_D& point) {
        using Coordinate = decltype(Point::x);
        return {static_cast<Coordinate>(point.x), static_cast<Coordinate>(point.y), static_cast<Coordinate>(point.z)};
    }

    std::string_view slot_;
    Call_Arguments& arguments_;
};

template <class Signature> constexpr bool takes_points = false;
template <class... More>
constexpr bool takes_points<void(VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, More...)> = true;

struct Slot_Entry {
    std::string_view name;
    bool takes_points;
    Draw (*make)(std::string_view slot, Call_Arguments& arguments, Callee callee);
};

template <auto Slot, auto Standard, class Drawing_Function>
Draw make(std::string_view slot, Call_Arguments& arguments, Callee callee) {
    using Signature = std::remove_pointer_t<decltype(Standard)>;
    return Call_Maker(slot, arguments).draw_of(Standard, Target<Drawing_Function, Signature>{Slot, Standard, callee});
}

constexpr Slot_Entry slots[] = {
#define VT_ACTION(slot, name, ...)                                                                                               \
    {#slot, takes_points<__VA_ARGS__>,                                                                                           \
     make<&VT_Action_Table::slot, &VD_Standard_##name, std::remove_const_t<decltype(VD_##name)>>},
#include "host/action_list.inc"
#undef VT_ACTION
};

} // namespace

Draw make_draw(std::string_view slot, Call_Arguments& arguments, Callee callee) {
    const auto* const entry = std::ranges::find(slots, slot, &Slot_Entry::name);
    if (entry == std::end(slots)) {
        throw std::out_of_range(std::string(slot) + ": no such slot");
    }
    return entry->make(slot, arguments, callee);
}

namespace {

std::vector<std::string_view> names_of(bool only_lists) {
    std::vector<std::string_view> names;
    for (const Slot_Entry& slot : slots) {
        if (slot.takes_points || !only_lists) {
            names.push_back(slot.name);
        }
    }
    return names;
}

} // namespace

const std::vector<std::string_view>& slot_names() {
    static const std::vector<std::string_view> names = names_of(false);
    return names;
}

const std::vector<std::string_view>& point_slot_names() {
    static const std::vector<std::string_view> names = names_of(true);
    return names;
}

} // namespace vorna::app::check
