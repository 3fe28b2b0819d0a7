// Arguments of the slots as call lists keep them: copies of all that they point to.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <tuple>
#include <type_traits>

#include "host/actions.h"
#include "host/rendition.h"
#include "host/window.h"
#include "vorna/call_list.h"
#include "vorna/draw.h"

namespace vorna {

// What Kept_Arguments does with each list of a call: it refers to the caller's list, counts the memory of a copy, or makes one.
struct List_Passer {
    template <class Element> const Element* operator()(const Element* list, std::size_t) const noexcept { return list; }
};

class List_Counter {
public:
    template <class Element> const Element* operator()(const Element* list, std::size_t count) {
        bytes_ += list ? Call_List::rounded(count * sizeof(Element)) : 0;
        return list;
    }
    std::size_t bytes() const noexcept { return bytes_; }

private:
    std::size_t bytes_ = 0;
};

class List_Copier {
public:
    // memory: as much as a counter counts.
    explicit List_Copier(std::byte* memory) : next_(memory) {}
    template <class Element> const Element* operator()(const Element* list, std::size_t count) {
        if (!list || count == 0) {
            return list;
        }
        std::byte* const copy = next_;
        next_ += Call_List::rounded(count * sizeof(Element));
        // Most lists are those of single colours, lines and triangles; copies of known sizes need no call.
        switch (count) {
        case 1:
            std::memcpy(copy, list, sizeof(Element));
            break;
        case 2:
            std::memcpy(copy, list, 2 * sizeof(Element));
            break;
        case 3:
            std::memcpy(copy, list, 3 * sizeof(Element));
            break;
        default:
            std::memcpy(copy, list, count * sizeof(Element));
        }
        return reinterpret_cast<const Element*>(copy);
    }

private:
    std::byte* next_;
};

constexpr std::size_t list_size(std::int32_t count) noexcept {
    return static_cast<std::size_t>(std::max(count, 0));
}

// The bytes of an image that drawing reads: what lies to the right of the window is not looked at.
constexpr std::size_t image_bytes(const VT_DCI_Point& start, const VT_DCI_Point& end, std::int32_t stride,
                                  std::size_t pixel_bytes, const VT_Int_Rectangle& window) noexcept {
    const std::int64_t columns = std::int64_t{std::min(end.x, window.right)} - start.x + 1;
    const std::int64_t rows = std::int64_t{start.y} - end.y + 1;
    return columns < 1 || rows < 1
               ? 0
               : static_cast<std::size_t>((rows - 1) * stride) + static_cast<std::size_t>(columns) * pixel_bytes;
}

// For each signature of slots:
//   arguments(copy, window, arguments of the slot)   a tuple of them, with lists as copy(list, count) returns them
//   can_be_kept(window, arguments of the slot)
template <class Signature, Primitive primitive> struct Kept_Arguments;

struct Always_Kept {
    static bool can_be_kept(const VT_Int_Rectangle&, const auto&...) noexcept { return true; }
};
struct Never_Kept {
    static bool can_be_kept(const VT_Int_Rectangle&, const auto&...) noexcept { return false; }
};
// Rows above and below the window, and columns to its left, may not be there to be copied.
struct Kept_In_Window {
    static bool can_be_kept(const VT_Int_Rectangle& window, const VT_DCI_Point* start, const VT_DCI_Point* end,
                            std::int32_t stride, const auto&...) noexcept {
        return start->x >= window.left && start->y <= window.top && end->y >= window.bottom && stride >= 0;
    }
};

template <class Point, Primitive primitive> struct Kept_Arguments<VT_Draw_Points<Point>, primitive> : Always_Kept {
    static auto arguments(auto& copy, const VT_Int_Rectangle&, std::int32_t count, const Point* points) {
        return std::tuple(count, copy(points, list_size(count)));
    }
};

template <class Point, Primitive primitive> struct Kept_Arguments<VT_Draw_Colorized<Point>, primitive> : Always_Kept {
    static auto arguments(auto& copy, const VT_Int_Rectangle&, std::int32_t count, const Point* points, const VT_RGB32* colors,
                          bool single_color) {
        constexpr std::int32_t fewer = primitive == Primitive::polyline ? 1 : primitive == Primitive::polytriangle ? 2 : 0;
        const std::size_t color_count = list_size(count - std::min(count, fewer));
        return std::tuple(count, copy(points, list_size(count)),
                          copy(colors, single_color ? std::min<std::size_t>(color_count, 1) : color_count), single_color);
    }
};

template <class Point, Primitive primitive> struct Kept_Arguments<VT_Draw_Gouraud<Point>, primitive> : Always_Kept {
    static auto arguments(auto& copy, const VT_Int_Rectangle&, std::int32_t count, const Point* points, const VT_RGB32* colors) {
        return std::tuple(count, copy(points, list_size(count)), copy(colors, list_size(count)));
    }
};

template <class Point, Primitive primitive> struct Kept_Arguments<VT_Draw_Textured<Point>, primitive> : Always_Kept {
    static auto arguments(auto& copy, const VT_Int_Rectangle&, std::int32_t count, const Point* points, const VT_RGB32* colors,
                          const VT_Parameter* parameters, std::int32_t width, const float* weights, const VT_Vector* normals) {
        const std::size_t size = list_size(count);
        return std::tuple(count, copy(points, size), copy(colors, size), copy(parameters, size * list_size(width)), width,
                          copy(weights, size), copy(normals, size));
    }
};

template <class Point> struct Kept_Arguments<VT_Draw_Polygon<Point>, Primitive::polygon> : Always_Kept {
    static auto arguments(auto& copy, const VT_Int_Rectangle&, std::int32_t count, const Point* points, const VT_RGB32* color) {
        return std::tuple(count, copy(points, list_size(count)), copy(color, 1));
    }
};

template <> struct Kept_Arguments<VT_Draw_Dot, Primitive::other> : Always_Kept {
    static auto arguments(auto& copy, const VT_Int_Rectangle&, const VT_DCI_Point* point, const VT_RGB32* color) {
        return std::tuple(copy(point, 1), copy(color, 1));
    }
};

template <> struct Kept_Arguments<VT_Draw_Ellipse, Primitive::other> : Always_Kept {
    static auto arguments(auto& copy, const VT_Int_Rectangle&, const VT_DCI_Point* center, const VT_DCI_Point* radii,
                          double start, double end, double rotation, const VT_RGB32* color) {
        return std::tuple(copy(center, 1), copy(radii, 1), start, end, rotation, copy(color, 1));
    }
};

template <> struct Kept_Arguments<VT_Draw_Index8_Image, Primitive::other> : Kept_In_Window {
    static auto arguments(auto& copy, const VT_Int_Rectangle& window, const VT_DCI_Point* start, const VT_DCI_Point* end,
                          std::int32_t stride, const std::uint8_t* pixels) {
        return std::tuple(copy(start, 1), copy(end, 1), stride, copy(pixels, image_bytes(*start, *end, stride, 1, window)));
    }
};

template <> struct Kept_Arguments<VT_Draw_RGB32_Image, Primitive::other> : Kept_In_Window {
    static auto arguments(auto& copy, const VT_Int_Rectangle& window, const VT_DCI_Point* start, const VT_DCI_Point* end,
                          std::int32_t stride, const VT_RGB32* pixels, std::int32_t reserved, const VT_Packing* packing) {
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(pixels);
        return std::tuple(copy(start, 1), copy(end, 1), stride,
                          reinterpret_cast<const VT_RGB32*>(copy(bytes, image_bytes(*start, *end, stride, 4, window))), reserved,
                          packing);
    }
};

template <> struct Kept_Arguments<VT_Write_Depth, Primitive::other> : Kept_In_Window {
    static auto arguments(auto& copy, const VT_Int_Rectangle& window, const VT_DCI_Point* top_left,
                          const VT_DCI_Point* bottom_right, std::int32_t stride, const std::uint16_t* depths) {
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(depths);
        const std::size_t count = image_bytes(*top_left, *bottom_right, stride, 2, window);
        return std::tuple(copy(top_left, 1), copy(bottom_right, 1), stride,
                          reinterpret_cast<const std::uint16_t*>(copy(bytes, count)));
    }
};

template <> struct Kept_Arguments<VT_Window_Action, Primitive::other> : Always_Kept {
    static std::tuple<> arguments(auto&, const VT_Int_Rectangle&) { return {}; }
};

// Images of the application may change or be gone after the call, and copies of them are no smaller than what they draw.
template <> struct Kept_Arguments<VT_Draw_Image, Primitive::other> : Never_Kept {};
// What is read is wanted at once.
template <> struct Kept_Arguments<VT_Read_Image, Primitive::other> : Never_Kept {};

} // namespace vorna
