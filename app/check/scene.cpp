// Calls of every slot with coordinates that the slot allows.
#include "app/check/scene.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <type_traits>
#include <utility>

namespace vorna::app::check {

namespace {

constexpr VT_RGB32 bright{40, 120, 250, 255};
constexpr std::uint8_t bright_index = 180;

VT_RGB32 random_color(Random& random) {
    constexpr std::uint8_t alphas[] = {0, 1, 128, 254, 255, 255, 255};
    return {random.byte(), random.byte(), random.byte(), random.one_of(alphas)};
}

VT_Reference<const VT_Line_Type_Set> random_line_types(Random& random) {
    const VT_Reference<VT_Line_Type> type(new VT_Line_Type);
    type->kind = random.chance(20) ? 7 : 0;
    type->width = random.number(1, 4);
    type->color = random_color(random);
    for (std::int32_t i = random.number(1, 4); i > 0; --i) {
        type->lengths.push_back(random.number(1, 12));
        type->kinds.push_back(random.number(-1, 1));
    }
    const VT_Reference<VT_Line_Type_Set> types(new VT_Line_Type_Set);
    types->scale = random.number(1, 3);
    types->types.push_back(type);
    return types;
}

VT_Reference<VT_Shared_Image> random_image(Random& random, VT_Int_Pair size, Buffer_Format format) {
    const std::int32_t bytes = size.x * (format == Buffer_Format::index8 ? 1 : 4);
    VT_Reference<VT_Shared_Image> image(new VT_Shared_Image(size.x, size.y, format, bytes, nullptr, false, random.chance(50)));
    for (std::int32_t row = 0; row < size.y; ++row) {
        std::generate(image->row(row), image->row(row) + bytes, [&random] { return random.byte(); });
    }
    return image;
}

VT_Reference<const VT_Basic_Material> random_material(Random& random) {
    constexpr std::int32_t sides[] = {1, 2, 8, 16, 8, 5};
    const VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
    material->texture = random_image(random, {random.one_of(sides), random.one_of(sides)}, Buffer_Format::rgb32);
    return material;
}

// A rectangle inside another one.
VT_Int_Rectangle random_rectangle(Random& random, const VT_Int_Rectangle& within) {
    const std::int32_t left = random.number(within.left, within.right), bottom = random.number(within.bottom, within.top);
    return {left, random.number(left, within.right), bottom, random.number(bottom, within.top)};
}

VT_Reference<VT_Rendition> plain_rendition(const Window& window) {
    VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->set_color(bright);
    rendition->face.index = rendition->line.index = rendition->marker.index = bright_index;
    rendition->clip.hard_clip = window.area();
    rendition->window.rectangle = window.area();
    rendition->window.color = bright;
    rendition->window.index = bright_index;
    const VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
    const VT_Reference<VT_Shared_Image> texture(new VT_Shared_Image(8, 8, Buffer_Format::rgb32, 32, nullptr, false, true));
    for (std::int32_t row = 0; row < 8; ++row) {
        std::fill(texture->row(row), texture->row(row) + 32, std::uint8_t{255});
    }
    material->texture = texture;
    rendition->face.material = material;
    return rendition;
}

VT_Reference<VT_Rendition> random_rendition(Random& random, const Window& window) {
    VT_Reference<VT_Rendition> rendition = plain_rendition(window);
    rendition->set_color(random_color(random));
    rendition->set_contrast_color(random_color(random));
    rendition->face.index = random.byte();
    rendition->line.index = random.byte();
    rendition->marker.index = random.byte();

    VT_Face_Attributes& face = rendition->face;
    face.pattern = random.chance(50) ? vorna::face_pattern::solid : random.number(0, 80);
    std::vector<std::uint8_t> cells(5 * 7);
    for (std::uint8_t& cell : cells) {
        cell = static_cast<std::uint8_t>(random.number(0, 1));
    }
    face.bitmap = new VT_Pattern_Bitmap(5, 7, std::move(cells));
    face.flags = random.chance(60) ? 0 : random.byte() & (1U | 2U | 8U | 32U);
    face.material = random_material(random);

    VT_Line_Attributes& line = rendition->line;
    line.weight = random.chance(70) ? 1 : random.number(0, 9);
    line.style = random.chance(80) ? 0 : random.number(1, 6);
    line.flags = random.chance(80) ? 0 : vorna::line_flag::smoothed;
    line.cap = random.number(0, 2);
    line.join = random.number(0, 2);
    if (random.chance(15)) {
        line.line_types = random_line_types(random);
    }
    rendition->marker.symbol = random.chance(60) ? 0 : random.number(0, 9);
    rendition->marker.size = random.number(1, 9);
    face.mode = line.mode = rendition->marker.mode = random.chance(20) ? vorna::merge_drawing_mode : 0;
    rendition->drawing_flags = random.chance(30) ? vorna::drawing_flag::translucent : 0;
    rendition->clip.depth_test = random.chance(75);
    return rendition;
}

// A slot of the action table with the function that stands in for it.
template <class Function> struct Target {
    Action_Slot<Function> VT_Action_Table::*slot;
    Function* standard;

    template <class... Arguments> void operator()(VT_Renderer_Data& renderer, Arguments&&... arguments) const {
        const auto& action = renderer.actions.*slot;
        if (action.enabled) {
            action.function(*action.owner, std::forward<Arguments>(arguments)...);
        } else {
            standard(renderer, std::forward<Arguments>(arguments)...);
        }
    }
};

template <class Function> Target(Action_Slot<Function> VT_Action_Table::*, Function*) -> Target<Function>;

// Makes the arguments of one call: plain ones without a generator.
class Argument_Maker {
public:
    Argument_Maker(std::string_view slot, const Window& window, Random* random, VT_Rendition& rendition)
        : slot_(slot), window_(window), area_(window.area()), random_(random), rendition_(rendition) {}

    using Draw = decltype(Call::draw);

    template <class Point> Draw arguments_of(Target<VT_Draw_Points<Point>> target) {
        return [target, points = points<Point>()](VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
            target(renderer, rendition, count_of(points), points.data());
        };
    }

    template <class Point> Draw arguments_of(Target<VT_Draw_Colorized<Point>> target) {
        const bool single = random_ && random_->chance(30);
        return [target, points = points<Point>(), colors = colors(), single](VT_Renderer_Data& renderer,
                                                                             const VT_Rendition& rendition) {
            target(renderer, rendition, count_of(points), points.data(), colors.data(), single);
        };
    }

    // Polygons share their type with primitives of one colour a point.
    template <class Point> Draw arguments_of(Target<VT_Draw_Gouraud<Point>> target) {
        const bool rendition_colors = slot_.find("polygon") != std::string_view::npos && (!random_ || random_->chance(50));
        return [target, points = points<Point>(), colors = colors(), rendition_colors](VT_Renderer_Data& renderer,
                                                                                       const VT_Rendition& rendition) {
            target(renderer, rendition, count_of(points), points.data(), rendition_colors ? nullptr : colors.data());
        };
    }

    template <class Point> Draw arguments_of(Target<VT_Draw_Textured<Point>> target) {
        std::vector<VT_Parameter> parameters;
        parameters.reserve(std::size_t{parameter_width} * most_points);
        for (int i = 0; i < parameter_width * most_points; ++i) {
            parameters.push_back(random_ ? static_cast<float>(random_->number(-50, 150)) / 100 : static_cast<float>(i % 3) / 3);
        }
        return [target, points = points<Point>(), colors = colors(), parameters](VT_Renderer_Data& renderer,
                                                                                 const VT_Rendition& rendition) {
            target(renderer, rendition, count_of(points), points.data(), colors.data(), parameters.data(),
                   std::int32_t{parameter_width}, nullptr, nullptr);
        };
    }

    Draw arguments_of(Target<VT_Draw_Dot> target) {
        const VT_DCI_Point point = points<VT_DCI_Point>()[0];
        const bool has_color = random_ && random_->chance(50);
        return [target, point, color = colors()[0], has_color](VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
            target(renderer, rendition, &point, has_color ? &color : nullptr);
        };
    }

    // Inside the window; the centre is a column and row of the buffer.
    Draw arguments_of(Target<VT_Draw_Ellipse> target) {
        constexpr double turn = 2 * std::numbers::pi;
        const VT_Int_Pair size = window_.size;
        VT_DCI_Point center{size.x / 2, size.y / 2, 0};
        if (random_) {
            center = {random_->number(0, size.x - 1), random_->number(0, size.y - 1), 0};
        }
        // A turned ellipse reaches as far as its longer radius in every direction.
        const std::int32_t room = std::min({center.x, center.y, size.x - 1 - center.x, size.y - 1 - center.y});
        VT_DCI_Point radii{room / 2, room / 2, 0};
        double start = 0, end = turn, rotation = 0;
        if (random_) {
            radii = {random_->number(0, room), random_->number(0, room), 0};
            if (random_->chance(40)) {
                rotation = random_->number(0, 8) * turn / 8;
            }
            if (random_->chance(30)) {
                start = random_->number(0, 100) * turn / 100;
                end = start + random_->number(0, 100) * turn / 100;
            }
        }
        return [=](VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
            target(renderer, rendition, &center, &radii, start, end, rotation, nullptr);
        };
    }

    Draw arguments_of(Target<VT_Draw_Index8_Image> target) {
        const Block block = block_of(1);
        return [target, block](VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
            target(renderer, rendition, &block.top_left, &block.bottom_right, block.stride, block.bytes.data());
        };
    }

    Draw arguments_of(Target<VT_Draw_RGB32_Image> target) {
        const Block block = block_of(4);
        return [target, block](VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
            target(renderer, rendition, &block.top_left, &block.bottom_right, block.stride,
                   reinterpret_cast<const VT_RGB32*>(block.bytes.data()), 0, nullptr);
        };
    }

    // Images made for presentation are as large as the window and lie on it; where they start counts in columns and rows.
    Draw arguments_of(Target<VT_Draw_Image> target) {
        Random plain(1);
        Random& random = random_ ? *random_ : plain;
        VT_DCI_Point start{area_.left, area_.top, 0};
        VT_Reference<VT_Shared_Image> image;
        if (random_ && random.chance(30)) {
            image = random_image(random, window_.size, Buffer_Format::presentation_rgb32);
            start = {random.number(-5, window_.size.x), random.number(-5, window_.size.y), 0};
        } else {
            const VT_Int_Rectangle place = random_ ? random_rectangle(random, area_) : area_;
            start = {place.left, place.top, random.number(0, 65535)};
            image = random_image(random, {place.right - place.left + 1, place.top - place.bottom + 1},
                                 random.chance(50) ? Buffer_Format::index8 : Buffer_Format::rgb32);
        }
        return
            [=](VT_Renderer_Data& renderer, const VT_Rendition& rendition) { target(renderer, rendition, &start, image.get()); };
    }

    // Painting is cut to the window, clearing is not.
    Draw arguments_of(Target<VT_Window_Action> target) {
        if (random_) {
            const bool is_painting = slot_ == "draw_window";
            const std::int32_t reach = is_painting ? 20 : 0;
            VT_Window_Attributes& attributes = rendition_.window;
            attributes.rectangle =
                random_rectangle(*random_, {area_.left - reach, area_.right + reach, area_.bottom - reach, area_.top + reach});
            attributes.color = random_color(*random_);
            attributes.index = random_->byte();
            attributes.fill = random_->chance(70) ? vorna::face_pattern::solid : random_->number(0, 80);
        }
        return [target](VT_Renderer_Data& renderer, const VT_Rendition& rendition) { target(renderer, rendition); };
    }

    Draw arguments_of(Target<VT_Write_Depth> target) {
        const Block block = block_of(2);
        const bool has_depths = !random_ || random_->chance(80);
        return [target, block, has_depths](VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
            target(renderer, rendition, &block.top_left, &block.bottom_right, block.stride,
                   has_depths ? reinterpret_cast<const std::uint16_t*>(block.bytes.data()) : nullptr);
        };
    }

    Draw arguments_of(Target<VT_Read_Image> target) {
        const VT_Int_Rectangle place = random_ ? random_rectangle(*random_, area_) : area_;
        return [target, place](VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
            const VT_DCI_Point top_left{place.left, place.top, 0}, bottom_right{place.right, place.bottom, 0};
            const Buffer_Format format = Buffer_Format::whatever_is_there;
            VT_Reference<VT_Shared_Image> image;
            target(renderer, rendition, &top_left, &bottom_right, &format, image);
        };
    }

private:
    static constexpr std::int32_t most_points = 9;
    static constexpr std::int32_t parameter_width = 2;

    // Rows of pixels with a place in the window.
    struct Block {
        VT_DCI_Point top_left, bottom_right;
        std::int32_t stride = 0;
        std::vector<std::uint8_t> bytes;
    };

    Block block_of(std::int32_t pixel_bytes) {
        const VT_Int_Rectangle place = random_ ? random_rectangle(*random_, area_) : area_;
        Block block{{place.left, place.top, depth()}, {place.right, place.bottom, depth()}, 0, {}};
        block.stride = (place.right - place.left + 1 + (random_ ? random_->number(0, 3) : 0)) * pixel_bytes;
        block.bytes.resize(static_cast<std::size_t>(block.stride) * static_cast<std::size_t>(place.top - place.bottom + 1));
        std::generate(block.bytes.begin(), block.bytes.end(), [this] { return random_ ? random_->byte() : bright_index; });
        return block;
    }

    template <class Point> static std::int32_t count_of(const std::vector<Point>& points) {
        return static_cast<std::int32_t>(points.size());
    }

    std::int32_t depth() { return random_ ? random_->number(0, 65535) : 100; }

    std::vector<VT_RGB32> colors() {
        std::vector<VT_RGB32> colors(most_points, bright);
        if (random_) {
            std::generate(colors.begin(), colors.end(), [this] { return random_color(*random_); });
        }
        return colors;
    }

    template <class Point> std::vector<Point> points() {
        if (!random_) {
            return {point<Point>(area_.left + window_.size.x / 4, area_.bottom + window_.size.y / 4),
                    point<Point>(area_.right - window_.size.x / 4, area_.bottom + window_.size.y / 3),
                    point<Point>(area_.left + window_.size.x / 2, area_.top - window_.size.y / 4)};
        }
        constexpr std::int32_t plane_reaches[] = {0, 0, 10, 100, 3000};
        constexpr std::int32_t space_reaches[] = {0, 10, 100, 3000, 30'000};
        const std::int32_t reach = std::is_same_v<Point, VT_Point_D> ? random_->one_of(space_reaches)
                                   : cuts_to_hard_clip(slot_)        ? random_->one_of(plane_reaches)
                                                                     : 0;
        std::vector<Point> points(static_cast<std::size_t>(random_->number(1, most_points)));
        for (Point& each : points) {
            each = point<Point>(random_->number(area_.left - reach, area_.right + reach),
                                random_->number(area_.bottom - reach, area_.top + reach));
            // Fractions too small to lead out of the window.
            if constexpr (!std::is_same_v<Point, VT_DCI_Point>) {
                each.x += static_cast<decltype(each.x)>(random_->number(-1, 1)) / 4;
                each.y += static_cast<decltype(each.y)>(random_->number(-1, 1)) / 4;
            }
        }
        return points;
    }

    template <class Point> Point point(std::int32_t x, std::int32_t y) {
        using Coordinate = decltype(Point::x);
        return {static_cast<Coordinate>(x), static_cast<Coordinate>(y), static_cast<Coordinate>(depth())};
    }

    std::string_view slot_;
    const Window& window_;
    VT_Int_Rectangle area_;
    Random* random_;
    VT_Rendition& rendition_;
};

using Make = decltype(Call::draw) (*)(Argument_Maker&);

template <auto Slot, auto Standard> decltype(Call::draw) make(Argument_Maker& maker) {
    return maker.arguments_of(Target{Slot, Standard});
}

struct Slot_Maker {
    std::string_view name;
    Make make;
};

constexpr Slot_Maker makers[] = {
#define VT_ACTION(slot, name, ...) {#slot, make<&VT_Action_Table::slot, &VD_Standard_##name>},
#include "host/action_list.inc"
#undef VT_ACTION
};

Call make_call(std::string_view slot, const Window& window, Random* random) {
    const auto* maker =
        std::find_if(std::begin(makers), std::end(makers), [slot](const auto& each) { return each.name == slot; });
    Call call{maker->name, random ? random_rendition(*random, window) : plain_rendition(window), {}};
    Argument_Maker arguments(slot, window, random, *call.rendition);
    call.draw = maker->make(arguments);
    return call;
}

} // namespace

const std::vector<std::string_view>& slot_names() {
    static const std::vector<std::string_view> names = [] {
        std::vector<std::string_view> list;
        for (const Slot_Maker& maker : makers) {
            list.push_back(maker.name);
        }
        return list;
    }();
    return names;
}

bool cuts_to_hard_clip(std::string_view slot) {
    return slot.starts_with("draw_2d_") || slot.starts_with("draw_2di_") || slot.starts_with("draw_3d_");
}

bool draws_primitives(std::string_view slot) {
    return slot.starts_with("draw_") && slot != "draw_window" && slot.find("image") == std::string_view::npos;
}

Call plain_call(std::string_view slot, const Window& window) {
    return make_call(slot, window, nullptr);
}

Call random_call(Random& random, std::string_view slot, const Window& window) {
    return make_call(slot, window, &random);
}

std::vector<Call> random_scene(Random& random, const Window& window, int rounds) {
    std::vector<Call> calls;
    std::vector<std::string_view> order = slot_names();
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t left = order.size(); left > 0; --left) {
            std::swap(order[static_cast<std::size_t>(random.number(0, static_cast<std::int32_t>(left) - 1))], order[left - 1]);
            calls.push_back(random_call(random, order[left - 1], window));
        }
    }
    return calls;
}

} // namespace vorna::app::check
