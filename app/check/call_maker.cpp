// Calls of every slot.
#include "app/check/call_maker.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "vorna/draw.h"

namespace vorna::app::check {

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
