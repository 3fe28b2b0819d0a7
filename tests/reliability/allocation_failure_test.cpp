// An allocator that fails the n-th time, for every n until an operation succeeds: the exception arrives at the caller, nothing
// stays behind, and afterwards everything works as if nothing had happened.
#include <cstdio>
#include <cstring>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "tests/reliability/calls.h"
#include "tests/reliability/counted_heap.h"
#include "tests/reliability/last_words.h"
#include "tests/support/test_renderer.h"
#include "vorna/canvas.h"

namespace {

using vorna::Canvas;

constexpr VT_Int_Pair window_size{40, 30};
constexpr VT_Int_Pair window_origin{5, -3};
constexpr VT_Int_Rectangle window{5, 44, -3, 26};

// More than the 64 that need no memory.
constexpr std::int32_t many_points = 70;

// All that have failed so far, for the record.
std::int64_t failures = 0;

// Calls operation() with the first allocation failing, the second, and so on, until nothing fails any more. After each failure
// mend() is called. Of very many allocations an ordinary run leaves out more and more. Returns the last that has failed.
int fail_each_allocation(const std::string& what, const std::function<void()>& operation, const std::function<void()>& mend) {
    int last = 0;
    for (int n = 1;; n += 1 + n / scaled(20)) {
        set_last_words(what + ", allocation " + std::to_string(n));
        bool was_thrown = false;
        bool has_failed = false;
        {
            const Failing_Allocation failing(n);
            try {
                operation();
            } catch (const std::bad_alloc&) {
                was_thrown = true;
            }
            has_failed = failing.has_failed();
        }
        EXPECT_LE(was_thrown, has_failed) << what << ": an exception of its own at allocation " << n;
        if (!has_failed) {
            return last;
        }
        last = n;
        ++failures;
        mend();
    }
}

void set_up(Canvas& canvas, std::size_t renderer_case, VT_Int_Pair size = window_size) {
    configure(canvas.options(), renderer_cases[renderer_case], size, window_origin);
    canvas.set_option("Use Mask", true);
    canvas.set_option("Enable Tiling", true);
}

std::string pixels_of(Canvas& canvas) {
    const Frame_Buffer& buffer = canvas.color_buffer();
    std::string bytes;
    const auto add = [&bytes](const std::uint8_t* row, std::int32_t count) {
        bytes.append(reinterpret_cast<const char*>(row), static_cast<std::size_t>(count));
    };
    for (std::int32_t row = 0; row < buffer.height; ++row) {
        add(buffer.rows[row], buffer.width * (buffer.format == Buffer_Format::index8 ? 1 : 4));
    }
    if (canvas.has_depth_buffer()) {
        const VT_Reference<VT_Shared_Image> depths = canvas.read_depth_image();
        for (std::int32_t row = 0; row < depths->height(); ++row) {
            add(depths->row(row), 2 * depths->width());
        }
    }
    return bytes;
}

// The ways of drawing that need memory of their own.
enum class Way {
    plain,
    region,
    shifted_region,
    hatched_and_wide,
    dashed,
    line_types,
    cased,
    smoothed,
    odd_texture,
    matrix,
    count
};

VT_Reference<VT_Line_Type_Set> line_types_of(std::int32_t kind) {
    const VT_Reference<VT_Line_Type> type(new VT_Line_Type);
    type->kind = kind;
    type->width = 2;
    type->color = {10, 200, 60, 255};
    type->leading[0] = 3;
    type->lengths = {4, 3, 2};
    type->kinds = {1, -1, 0};
    const VT_Reference<VT_Line_Type_Set> types(new VT_Line_Type_Set);
    types->types.push_back(type);
    return types;
}

VT_Reference<VT_Rendition> rendition_for(Way way) {
    VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->set_color({200, 90, 30, 180});
    rendition->face.index = rendition->line.index = rendition->marker.index = 77;
    rendition->clip.hard_clip = window;
    const std::int32_t side = way == Way::odd_texture ? 5 : 4;
    const VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
    const VT_Reference<VT_Shared_Image> texture(
        new VT_Shared_Image(side, side, Buffer_Format::rgb32, 4 * side, nullptr, false, true));
    std::memset(texture->row(0), 150, std::size_t{16} * 4);
    material->texture = texture;
    material->has_texture_matrix = way == Way::matrix;
    material->texture_matrix.m[0][1] = 0.5;
    rendition->face.material = material;
    switch (way) {
    case Way::region:
    case Way::shifted_region:
        rendition->clip.complex_clip = region_in(window, 3);
        rendition->clip.window_offset = way == Way::region ? VT_Int_Pair{} : VT_Int_Pair{-4, 2};
        break;
    case Way::hatched_and_wide:
        rendition->face.pattern = 76;
        rendition->line.weight = 5;
        rendition->marker.symbol = vorna::marker_symbol::circle;
        rendition->marker.size = 7;
        break;
    case Way::dashed:
        rendition->line.style = vorna::line_style::dash_dot;
        rendition->face.pattern = vorna::face_pattern::bitmap;
        rendition->face.bitmap = new VT_Pattern_Bitmap(3, 2, {1, 0, 1, 0, 0, 1});
        break;
    case Way::line_types:
    case Way::cased:
        rendition->line.line_types = line_types_of(way == Way::cased ? 7 : 0);
        rendition->line.weight = way == Way::cased ? 3 : 1;
        break;
    case Way::smoothed:
        rendition->line.weight = 3;
        rendition->line.style = vorna::line_style::dotted;
        rendition->line.flags = vorna::line_flag::smoothed;
        rendition->face.flags = vorna::face_flag::special_shading;
        break;
    default:
        break;
    }
    return rendition;
}

using Draw = std::function<void(VT_Renderer_Data&, const VT_Rendition&)>;

// Fails each allocation of the call, and draws it again afterwards: as on a canvas where nothing ever failed.
void fail_while_drawing(const std::string& what, std::size_t renderer_case, Way way, const Draw& draw) {
    const auto picture = [&](Canvas& canvas) {
        canvas.begin_picture(vorna::rgb(10, 20, 30));
        draw(canvas.renderer(), *rendition_for(way));
        return pixels_of(canvas);
    };
    // What the host makes once for all renderers is there when allocations are counted.
    for (const bool is_counted : {false, true}) {
        const std::int64_t live = live_allocations();
        {
            Canvas untouched(renderer_module());
            set_up(untouched, renderer_case);
            untouched.establish();
            const std::string right = is_counted ? picture(untouched) : std::string();
            Canvas canvas(renderer_module());
            set_up(canvas, renderer_case);
            canvas.establish();
            VT_Reference<VT_Rendition> rendition = rendition_for(way);
            fail_each_allocation(
                what, [&] { draw(canvas.renderer(), *rendition); },
                [&] {
                    if (is_counted) {
                        EXPECT_EQ(picture(canvas), right) << what;
                    }
                    // Masks and moved regions are to be made anew.
                    canvas.establish();
                    rendition = rendition_for(way);
                });
        }
        if (is_counted) {
            EXPECT_EQ(live_allocations(), live) << what;
        }
    }
}

// Slots that take no list of points.
struct Other_Call {
    const char* name;
    void (*draw)(VT_Renderer_Data&, const VT_Rendition&);
};

VT_Reference<VT_Shared_Image> image_of(Buffer_Format format, std::int32_t bytes) {
    const VT_Reference<VT_Shared_Image> image(new VT_Shared_Image(8, 6, format, 8 * bytes, nullptr, false, false));
    std::memset(image->row(0), 120, std::size_t{8} * static_cast<std::size_t>(bytes));
    return image;
}

void read_back(VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
    const VT_DCI_Point top_left{window.left, window.top, 0};
    const VT_DCI_Point bottom_right{window.right, window.bottom, 0};
    const Buffer_Format format = Buffer_Format::whatever_is_there;
    VT_Reference<VT_Shared_Image> image;
    VD_Read_Color_Image(renderer, rendition, &top_left, &bottom_right, &format, image);
    VD_Read_Depth_Image(renderer, rendition, &top_left, &bottom_right, &format, image);
}

constexpr VT_DCI_Point center{20, 15, 300};
constexpr VT_DCI_Point radii{12, 7, 0};
constexpr VT_DCI_Point corner{10, 20, 300};
constexpr VT_DCI_Point opposite_corner{17, 15, 300};

constexpr Other_Call other_calls[] = {
    {"draw_dci_ellipse",
     [](VT_Renderer_Data& to, const VT_Rendition& with) { VD_Draw_DCI_Ellipse(to, with, &center, &radii, 0, 7, 0, nullptr); }},
    {"draw_dci_elliptical_arc",
     [](VT_Renderer_Data& to, const VT_Rendition& with) {
         VD_Draw_DCI_Elliptical_Arc(to, with, &center, &radii, 1, 3, 1, nullptr);
     }},
    {"draw_dci_image of indices",
     [](VT_Renderer_Data& to, const VT_Rendition& with) {
         VD_Draw_DCI_Image(to, with, &corner, image_of(Buffer_Format::index8, 1).get());
     }},
    {"draw_dci_image of colours",
     [](VT_Renderer_Data& to, const VT_Rendition& with) {
         VD_Draw_DCI_Image(to, with, &corner, image_of(Buffer_Format::rgb32, 4).get());
     }},
    {"draw_dci_rgb32_image without pixels",
     [](VT_Renderer_Data& to, const VT_Rendition& with) {
         VD_Draw_DCI_RGB32_Image(to, with, &corner, &opposite_corner, 0, nullptr, 0, nullptr);
     }},
    {"draw_dci_index8_image",
     [](VT_Renderer_Data& to, const VT_Rendition& with) {
         VD_Draw_DCI_Index8_Image(to, with, &corner, &opposite_corner, 8, image_of(Buffer_Format::index8, 1)->row(0));
     }},
    {"draw_dci_dot", [](VT_Renderer_Data& to, const VT_Rendition& with) { VD_Draw_DCI_Dot(to, with, &corner, nullptr); }},
    {"draw_window",
     [](VT_Renderer_Data& to, const VT_Rendition& with) {
         VT_Reference<VT_Rendition> hatched(new VT_Rendition(with));
         hatched->window = {window, 77, {1, 2, 3, 255}, 9};
         VD_Draw_Window(to, *hatched);
         VD_Clear_Depth_Rectangle(to, *hatched);
     }},
    {"read_color_image, read_depth_image", read_back},
};

} // namespace

TEST(Counted_Heap, Counts_What_The_Module_Allocates) {
    const std::int64_t before = all_allocations();
    VT_Renderer_Data prototype;
    const std::int64_t own = all_allocations();
    EXPECT_GT(own, before) << "of the host library";
    const auto renderer = renderer_module().create_renderer(prototype);
    // Two tables of options, each an object with a value; short names need no memory.
    EXPECT_GT(all_allocations(), own + 2 * 2 * 19) << "of the module";
    // The first allocation is the module's own: the renderer itself.
    const Failing_Allocation failing(1);
    EXPECT_THROW(renderer_module().create_renderer(prototype), std::bad_alloc);
    EXPECT_TRUE(failing.has_failed());
}

TEST(Allocation_Failure, Construction_Leaves_Nothing_Behind) {
    const End_Of_Words end;
    renderer_module(); // stays loaded
    const std::int64_t live = live_allocations();
    const int last = fail_each_allocation(
        "construction", [] { const Canvas canvas(renderer_module()); },
        [&] { EXPECT_EQ(live_allocations(), live) << "after a failed construction"; });
    EXPECT_GT(last, 80);
    EXPECT_EQ(live_allocations(), live);
    // The other reason for which construction fails.
    const Kernel_Choice choice("nonsense");
    const std::int64_t live_then = live_allocations();
    fail_each_allocation(
        "construction without kernels", [] { EXPECT_THROW(const Canvas canvas(renderer_module()), std::exception); }, [] {});
    EXPECT_EQ(live_allocations(), live_then);
}

// Between a failed establish and the next one a renderer draws nothing, and into no buffer that is gone; a canvas has all that it
// had.
void fail_while_establishing(std::size_t from, std::size_t to) {
    constexpr VT_Int_Pair other_sizes[] = {{90, 70}, {7, 5}, {40, 30}};
    const VT_Int_Pair size = other_sizes[to % 3];
    Random random(from * 6 + to);
    Numbers numbers(random, window, false);
    std::vector<Slot_Call> calls;
    for (const std::string_view slot : point_slot_names()) {
        calls.push_back(make_call(slot, numbers, 5));
    }
    const VT_Reference<VT_Rendition> rendition = rendition_for(from % 2 == 0 ? Way::plain : Way::region);
    const auto draw = [&](Canvas& canvas) {
        for (const Slot_Call& call : calls) {
            call.draw(canvas.renderer(), *rendition);
        }
    };
    const auto picture = [&](Canvas& canvas) {
        canvas.begin_picture(vorna::rgb(10, 20, 30));
        draw(canvas);
        return pixels_of(canvas);
    };
    // A slot that the new case has no use for keeps its member.
    std::string kept;
    const auto change = [&](Canvas& canvas) {
        set_up(canvas, from);
        canvas.establish();
        kept = picture(canvas);
        set_up(canvas, to, size);
    };
    Canvas untouched(renderer_module());
    change(untouched);
    untouched.establish();
    const std::string right = picture(untouched);

    Canvas canvas(renderer_module());
    set_up(canvas, from);
    const std::string what = "establish " + std::to_string(from) + " to " + std::to_string(to);
    EXPECT_GT(fail_each_allocation(
                  what + ", the first time", [&] { canvas.establish(); }, [&] { draw(canvas); }),
              2);
    change(canvas);
    const bool is_bare = (from + to) % 2 != 0;
    fail_each_allocation(
        what,
        [&] {
            if (is_bare) {
                canvas.renderer().current_renderer_options_for_update() = canvas.options();
                canvas.renderer().establish_all();
            } else {
                canvas.establish();
            }
        },
        [&] {
            if (!is_bare) {
                EXPECT_EQ(canvas.window(), window) << what;
                EXPECT_EQ(pixels_of(canvas), kept) << what;
            }
            draw(canvas);
            canvas.establish();
            EXPECT_EQ(picture(canvas), right) << what;
            change(canvas);
        });
    EXPECT_EQ(picture(canvas), right) << what;
}

TEST(Allocation_Failure, Establish_Can_Be_Repeated) {
    const End_Of_Words end;
    fail_while_establishing(0, 0); // what is made once for all is there now
    const std::int64_t live = live_allocations();
    for (std::size_t from = 0; from < std::size(renderer_cases); ++from) {
        for (std::size_t to = 0; to < std::size(renderer_cases); ++to) {
            fail_while_establishing(from, to);
        }
    }
    EXPECT_EQ(live_allocations(), live);
}

TEST(Allocation_Failure, Drawing_Leaves_Nothing_Behind) {
    const End_Of_Words end;
    const int ways = std::min(scaled(1), static_cast<int>(Way::count));
    int turn = 0;
    for (std::size_t renderer_case = 0; renderer_case < std::size(renderer_cases); ++renderer_case) {
        for (const std::string_view slot : point_slot_names()) {
            for (int i = 0; i < ways; ++i) {
                // All of them take turns, so that each meets every slot in some case.
                const Way way = static_cast<Way>(turn++ % static_cast<int>(Way::count));
                Random random(static_cast<std::uint64_t>(turn));
                Numbers numbers(random, window, false);
                const Slot_Call call = make_call(slot, numbers, many_points);
                fail_while_drawing(std::string(slot) + ", case " + std::to_string(renderer_case) + ", way " +
                                       std::to_string(static_cast<int>(way)),
                                   renderer_case, way, call.draw);
            }
        }
        for (const Other_Call& call : other_calls) {
            const Way way = static_cast<Way>(turn++ % static_cast<int>(Way::count));
            fail_while_drawing(std::string(call.name) + ", case " + std::to_string(renderer_case), renderer_case, way, call.draw);
        }
    }
    std::printf("%lld allocations have failed\n", static_cast<long long>(failures));
}

// Masks are kept in a cache of four, which the fifth region takes one from.
TEST(Allocation_Failure, Masks_Are_Made_Whole_Or_Not_At_All) {
    const End_Of_Words end;
    const VT_DCI_Point strip[] = {{5, -3, 9}, {44, -3, 9}, {5, 26, 9}, {44, 26, 9}};
    const auto draw_regions = [&](VT_Renderer_Data& renderer, const VT_Rendition& rendition) {
        VT_Reference<VT_Rendition> changed(new VT_Rendition(rendition));
        for (std::int32_t i = 0; i < 6; ++i) {
            changed->clip.complex_clip = region_in(window, 3 * i);
            changed->face.color.red = static_cast<std::uint8_t>(40 * i);
            changed->face.index = static_cast<std::uint8_t>(40 * i);
            VD_Draw_DCI_Polytriangle(renderer, *changed, 4, strip);
        }
    };
    for (std::size_t renderer_case = 0; renderer_case < std::size(renderer_cases); ++renderer_case) {
        fail_while_drawing("six regions, case " + std::to_string(renderer_case), renderer_case, Way::plain, draw_regions);
    }
}
