// Standard images. Images of the other pixel format are converted by the palette and drawn through the slot of the buffer's
// format; shared images may have every format. All keep to the hard clip. Images of the buffer's format, and depths, come here
// when their slot does not accept them: the part inside the window goes back to the slot. Reading outside the window, or from a
// buffer that does not exist, gives no image.
#include <cmath>
#include <cstring>
#include <unordered_map>
#include <vector>

#include "vorna/draw.h"
#include "vorna/standard/drawing_area.h"
#include "vorna/standard/merging.h"
#include "vorna/standard/standard_call.h"

namespace {

// An image between two corners, and the part of it that is drawn. Its rows run downwards.
struct Placed_Image {
    VT_DCI_Point start, end;
    std::int32_t stride;
    const std::uint8_t* pixels; // null = zeros
    VT_Int_Rectangle drawn;

    Placed_Image(const VT_Int_Rectangle& shown, const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right,
                 std::int32_t bytes_per_row, const void* source)
        : start(top_left), end(bottom_right), stride(bytes_per_row),
          pixels(static_cast<const std::uint8_t*>(source)), drawn{std::max(shown.left, start.x), std::min(shown.right, end.x),
                                                                  std::max(shown.bottom, end.y), std::min(shown.top, start.y)} {}

    std::int32_t width() const noexcept { return drawn.right - drawn.left + 1; }
    std::int32_t height() const noexcept { return drawn.top - drawn.bottom + 1; }

    template <class Pixel> Pixel pixel(std::int32_t column, std::int32_t row) const noexcept {
        Pixel result{};
        if (pixels) {
            const std::int64_t at = (std::int64_t{start.y} - row) * stride +
                                    (std::int64_t{column} - start.x) * static_cast<std::int64_t>(sizeof(Pixel));
            std::memcpy(&result, pixels + at, sizeof(Pixel));
        } else {
            std::memset(static_cast<void*>(&result), 0, sizeof(Pixel));
        }
        return result;
    }

    // The depth in a column, the same in every row. In renderers a row continues from the depth at the end of the row above,
    // which is unknown for a part.
    std::int32_t depth_at(std::int32_t column) const noexcept {
        const double columns = double(end.x) - start.x;
        const double rise = double(end.z) - start.z;
        return columns == 0 ? start.z
                            : static_cast<std::int32_t>(start.z + std::trunc(rise * (double(column) - start.x) / columns));
    }
    // The first drawn pixel of the highest drawn row.
    template <class Pixel> const Pixel* first() const noexcept {
        return pixels ? reinterpret_cast<const Pixel*>(pixels + (std::int64_t{start.y} - drawn.top) * stride +
                                                       (std::int64_t{drawn.left} - start.x) *
                                                           static_cast<std::int64_t>(sizeof(Pixel)))
                      : nullptr;
    }
    VT_DCI_Point top_left() const noexcept { return {drawn.left, drawn.top, depth_at(drawn.left)}; }
    VT_DCI_Point bottom_right() const noexcept { return {drawn.right, drawn.bottom, depth_at(drawn.right)}; }

    // Calls visit for every drawn pixel, from the highest row downwards.
    template <class Pixel, class Convert> auto converted(Convert convert) const {
        std::vector<decltype(convert(Pixel{}))> result;
        result.reserve(static_cast<std::size_t>(width()) * static_cast<std::size_t>(height()));
        for (std::int32_t row = drawn.top; row >= drawn.bottom; --row) {
            for (std::int32_t column = drawn.left; column <= drawn.right; ++column) {
                result.push_back(convert(pixel<Pixel>(column, row)));
            }
        }
        return result;
    }
};

// Draws the part of an image inside the window through the slot, when the slot does not accept the whole image.
template <class Pixel, auto Slot, class... More>
void draw_inside(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_DCI_Point* start, const VT_DCI_Point* end,
                 std::int32_t stride, const Pixel* pixels, More... more) {
    const auto& slot = renderer.actions.*Slot;
    const Placed_Image image(vorna::window_rectangle(renderer.current_renderer_options()), *start, *end, stride, pixels);
    if (slot.enabled && !vorna::is_empty(image.drawn) && !vorna::Slot_Contract<Slot>::admits(renderer, rendition, start, end)) {
        const VT_DCI_Point top_left = image.top_left();
        const VT_DCI_Point bottom_right = image.bottom_right();
        slot.function(*slot.owner, rendition, &top_left, &bottom_right, stride, image.first<Pixel>(), more...);
    }
}

// Finds the closest palette entries; each colour is looked up once.
class Closest_Indices {
public:
    explicit Closest_Indices(const VT_Palette& palette) : palette_(palette) {}

    std::uint8_t operator()(VT_RGB32 color) {
        color.alpha = 255;
        const auto [place, is_new] = found_.try_emplace(vorna::word_of(color));
        if (is_new) {
            place->second = static_cast<std::uint8_t>(palette_.closest_match(color, false));
        }
        return place->second;
    }

private:
    const VT_Palette& palette_;
    std::unordered_map<std::uint32_t, std::uint8_t> found_;
};

// Blends pixel by pixel with the contents of the buffer; pixels of alpha 0 leave colour and depth unchanged.
void draw_blended(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const Placed_Image& image) {
    const VT_Palette& palette = renderer.current_renderer_options().palette();
    Closest_Indices closest(palette);
    constexpr Buffer_Format format = Buffer_Format::index8;
    const VT_DCI_Point top_left = image.top_left();
    const VT_DCI_Point bottom_right = image.bottom_right();
    VT_Reference<VT_Shared_Image> stored;
    VD_Read_Color_Image(renderer, rendition, &top_left, &bottom_right, &format, stored);
    for (std::int32_t row = image.drawn.top; row >= image.drawn.bottom; --row) {
        for (std::int32_t column = image.drawn.left; column <= image.drawn.right; ++column) {
            const auto color = image.pixel<VT_RGB32>(column, row);
            if (color.alpha == 0) {
                continue;
            }
            const VT_RGB32 under =
                stored ? palette.color(stored->row(image.drawn.top - row)[column - image.drawn.left]) : VT_RGB32{};
            const std::uint8_t index = closest(vorna::blended(color, under));
            const VT_DCI_Point point{column, row, image.depth_at(column)};
            VD_Draw_DCI_Index8_Image(renderer, rendition, &point, &point, 1, &index);
        }
    }
}

} // namespace

void VD_Standard_Draw_DCI_Index8_Image(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_DCI_Point* start,
                                       const VT_DCI_Point* end, std::int32_t stride, const std::uint8_t* pixels) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_DCI_Index8_Image");
    const VT_Renderer_Options& options = renderer.current_renderer_options();
    if (options.color_system() != 1) {
        draw_inside<std::uint8_t, &VT_Action_Table::draw_dci_index8_image>(renderer, rendition, start, end, stride, pixels);
        return;
    }
    const Placed_Image image(vorna::visible_rectangle(renderer, rendition), *start, *end, stride, pixels);
    if (vorna::is_empty(image.drawn)) {
        return;
    }
    const auto colors = image.converted<std::uint8_t>([&](std::uint8_t index) { return options.palette().color(index); });
    const VT_DCI_Point top_left = image.top_left();
    const VT_DCI_Point bottom_right = image.bottom_right();
    VD_Draw_DCI_RGB32_Image(renderer, rendition, &top_left, &bottom_right, 4 * image.width(), colors.data(), 0, nullptr);
}

void VD_Standard_Draw_DCI_RGB32_Image(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_DCI_Point* start,
                                      const VT_DCI_Point* end, std::int32_t stride, const VT_RGB32* pixels, std::int32_t reserved,
                                      const VT_Packing* packing) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_DCI_RGB32_Image");
    const VT_Renderer_Options& options = renderer.current_renderer_options();
    if (options.color_system() == 1) {
        draw_inside<VT_RGB32, &VT_Action_Table::draw_dci_rgb32_image>(renderer, rendition, start, end, stride, pixels, reserved,
                                                                      packing);
        return;
    }
    const Placed_Image image(vorna::visible_rectangle(renderer, rendition), *start, *end, stride, pixels);
    if (vorna::is_empty(image.drawn)) {
        return;
    }
    if (rendition.drawing_flags & vorna::drawing_flag::translucent) {
        draw_blended(renderer, rendition, image);
        return;
    }
    const auto indices = image.converted<VT_RGB32>(Closest_Indices(options.palette()));
    const VT_DCI_Point top_left = image.top_left();
    const VT_DCI_Point bottom_right = image.bottom_right();
    VD_Draw_DCI_Index8_Image(renderer, rendition, &top_left, &bottom_right, image.width(), indices.data());
}

namespace {

// The rows of a shared image from the highest down, without gaps; pixel: bytes of a pixel.
std::vector<std::uint8_t> rows_of(const VT_Shared_Image& image, std::size_t pixel_bytes) {
    const std::size_t bytes = static_cast<std::size_t>(image.width()) * pixel_bytes;
    std::vector<std::uint8_t> rows(bytes * static_cast<std::size_t>(image.height()));
    for (std::int32_t r = 0; r < image.height(); ++r) {
        std::memcpy(rows.data() + static_cast<std::size_t>(r) * bytes, image.row(image.bottom_up() ? image.height() - 1 - r : r),
                    bytes);
    }
    return rows;
}

// An image of the size of the window covers the window and is copied unchanged; start and hard clip, as columns and rows of the
// buffer, choose a part of it.
void draw_presentation(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_DCI_Point& start,
                       const VT_Shared_Image& image) {
    const VT_Renderer_Options& options = renderer.current_renderer_options();
    if (options.window_size() != VT_Int_Pair{image.width(), image.height()}) {
        return;
    }
    const VT_Int_Pair origin = vorna::window_origin(options);
    const VT_Int_Rectangle clip = rendition.clip.hard_clip;
    const VT_Int_Rectangle part{std::max({start.x, clip.left, 0}), std::min(clip.right, image.width() - 1),
                                std::max(clip.bottom, 0), std::min({clip.top, start.y, image.height() - 1})};
    if (vorna::is_empty(part)) {
        return;
    }
    const VT_Reference<VT_Rendition> copying(new VT_Rendition(rendition));
    copying->clip = {};
    copying->clip.hard_clip = {origin.x + part.left, origin.x + part.right, origin.y + part.bottom, origin.y + part.top};
    copying->clip.depth_test = false;
    copying->drawing_flags = 0;
    const std::vector<std::uint8_t> rows = rows_of(image, 4);
    const std::size_t first =
        4 * (static_cast<std::size_t>(image.height() - 1 - part.top) * static_cast<std::size_t>(image.width()) +
             static_cast<std::size_t>(part.left));
    const VT_DCI_Point top_left{origin.x + part.left, origin.y + part.top, 0};
    const VT_DCI_Point bottom_right{origin.x + part.right, origin.y + part.bottom, 0};
    VD_Draw_DCI_RGB32_Image(renderer, *copying, &top_left, &bottom_right, 4 * image.width(),
                            reinterpret_cast<const VT_RGB32*>(rows.data() + first), 0, nullptr);
}

std::int32_t held(std::int64_t coordinate) noexcept {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(coordinate, INT32_MIN, INT32_MAX));
}

} // namespace

// The highest row is at start, the image extends to the right and downwards. Images of unknown formats are not drawn.
void VD_Standard_Draw_DCI_Image(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_DCI_Point* start,
                                const VT_Shared_Image* image) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_DCI_Image");
    if (!image) {
        return;
    }
    const bool has_colors = renderer.current_renderer_options().color_system() == 1;
    const Buffer_Format format = image->format() != Buffer_Format::whatever_is_there ? image->format()
                                 : has_colors                                        ? Buffer_Format::rgb32
                                                                                     : Buffer_Format::index8;
    const std::int32_t bytes = vorna::bytes_per_pixel(format);
    if (bytes == 0 || image->width() < 1 || image->height() < 1 || image->row_bytes() / bytes < image->width()) {
        return;
    }
    if (format == Buffer_Format::presentation_rgb32) {
        draw_presentation(renderer, rendition, *start, *image);
        return;
    }
    const std::vector<std::uint8_t> rows = rows_of(*image, static_cast<std::size_t>(bytes));
    const std::int32_t stride = bytes * image->width();
    const VT_DCI_Point end{held(std::int64_t{start->x} + image->width() - 1), held(std::int64_t{start->y} - image->height() + 1),
                           start->z};
    const Placed_Image placed(vorna::visible_rectangle(renderer, rendition), *start, end, stride, rows.data());
    if (vorna::is_empty(placed.drawn)) {
        return;
    }
    const VT_DCI_Point top_left = placed.top_left();
    const VT_DCI_Point bottom_right = placed.bottom_right();
    if (format == Buffer_Format::index8) {
        VD_Draw_DCI_Index8_Image(renderer, rendition, &top_left, &bottom_right, stride, placed.first<std::uint8_t>());
    } else if (format == Buffer_Format::rgb32) {
        VD_Draw_DCI_RGB32_Image(renderer, rendition, &top_left, &bottom_right, stride, placed.first<VT_RGB32>(), 0, nullptr);
    } else {
        VD_Write_Depth_Rectangle(renderer, rendition, &top_left, &bottom_right, stride, placed.first<std::uint16_t>());
    }
}

void VD_Standard_Write_Depth_Rectangle(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_DCI_Point* top_left,
                                       const VT_DCI_Point* bottom_right, std::int32_t stride, const std::uint16_t* depths) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Write_Depth_Rectangle");
    draw_inside<std::uint16_t, &VT_Action_Table::write_depth_rectangle>(renderer, rendition, top_left, bottom_right, stride,
                                                                        depths);
}

void VD_Standard_Read_Depth_Image(VT_Renderer_Data& renderer, const VT_Rendition&, const VT_DCI_Point*, const VT_DCI_Point*,
                                  const Buffer_Format*, VT_Reference<VT_Shared_Image>& image) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Read_Depth_Image");
    image = nullptr;
}

void VD_Standard_Read_Color_Image(VT_Renderer_Data& renderer, const VT_Rendition&, const VT_DCI_Point*, const VT_DCI_Point*,
                                  const Buffer_Format*, VT_Reference<VT_Shared_Image>& image) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Read_Color_Image");
    image = nullptr;
}
