// The workloads of triangles.
#include "bench/models.h"
#include "bench/workload_list.h"

namespace bench {

void add_triangles(Workload_List& list, const std::string& model) {
    const auto scattered = [](const Variation& variation) -> Subject { return scattered_triangles(512, 200, variation); };
    const auto tiled = [](std::int32_t legs) {
        return [legs](const Variation& variation) -> Subject { return tiled_triangles(legs, 4, variation); };
    };
    constexpr Shading flat = Shading::flat, gouraud = Shading::gouraud, textured = Shading::textured;
    const std::vector<Peer> every{llvmpipe(triangle_edge), sdl(triangle_edge), cairo(triangle_edge), agg(triangle_edge)};
    const std::vector<Peer> with_depth{llvmpipe(triangle_edge)}, small{llvmpipe(small_triangle_edge)};
    const auto with = Clears::depth;
    using Of = Goal::Of;
    const Workload rows[] = {
        {"W1",
         "fill_512",
         "solid, no depth, legs 512",
         scattered,
         {},
         {flat},
         Clears::none,
         Counts::pixels,
         every,
         {Of::memset, 0.9}},
        {"W2",
         "flat_512",
         "flat, depth, legs 512",
         scattered,
         {},
         {flat, true},
         with,
         Counts::pixels,
         with_depth,
         {Of::best_peer, 5.5, 5, 3.5}},
        {"W3",
         "gouraud_512",
         "Gouraud, depth, legs 512",
         scattered,
         {},
         {gouraud, true},
         with,
         Counts::pixels,
         with_depth,
         {Of::best_peer, 6, 4.5, 3}},
        {"W4",
         "blended_512",
         "Gouraud colour and alpha, blended, legs 512",
         scattered,
         {},
         {gouraud, false, true},
         Clears::none,
         Counts::pixels,
         {llvmpipe(triangle_edge), sdl(triangle_edge), agg(triangle_edge)},
         {Of::best_peer, 6.5, 5, 3}},
        {"W5",
         "textured_512",
         "texture × Gouraud, depth, legs 512",
         scattered,
         {},
         {textured, true},
         with,
         Counts::pixels,
         with_depth,
         {Of::best_peer, 4.5, 3, 2}},
        {"W6",
         "flat_8",
         "strips, flat, depth, legs 8",
         tiled(8),
         {},
         {flat, true},
         with,
         Counts::triangles,
         small,
         {Of::best_peer, 9, 5, 3.5}},
        {"W6",
         "gouraud_3",
         "strips, Gouraud, depth, legs 3",
         tiled(3),
         {},
         {gouraud, true},
         with,
         Counts::triangles,
         small,
         {Of::best_peer, 8, 5, 3.5}},
    };
    for (const Workload& row : rows) {
        list.add(row);
    }
    const Workload frame{"W11",
                         "bunny",
                         "bunny.obj, whole frame",
                         [model](const Variation& variation) -> Subject { return model_in_front(model, variation); },
                         {},
                         {gouraud, true},
                         Clears::all,
                         Counts::frames,
                         small,
                         {Of::best_peer, 6, 4, 3}};
    list.add(frame);
    for (const int i : {0, 1, 2}) {
        list.add_palette(rows[i], i < 2 ? 0.8 : 0.5);
    }
    for (const Workload& row : rows) {
        list.add_masked(row);
    }
    for (const Workload& row : rows) {
        if (row.surface.depth) {
            list.add_blocks(row, 0.98);
        }
    }
    list.add_blocks(frame, 0.98);
}

void add_forms(Workload_List& list) {
    const auto lines = [](const Variation& variation) -> Subject { return scattered_lines(10, 20000, variation); };
    const auto triangles = [](const Variation& variation) -> Subject { return scattered_triangles(8, 20000, variation); };
    struct Kind {
        const char *name, *title;
        Form form;
    };
    for (const Kind& kind : {Kind{"dc", "DC", Form::dc}, Kind{"2di", "2DI", Form::plane_di}, Kind{"2d", "2D", Form::plane},
                             Kind{"3d", "3D", Form::space}}) {
        const auto add = [&](const char* name, const char* title, const auto& make, Counts counts) {
            list.add({"forms",
                      std::string("form_") + kind.name + name,
                      std::string(title) + ", form " + kind.title,
                      make,
                      {},
                      {.form = kind.form},
                      Clears::none,
                      counts,
                      {},
                      {Goal::Of::reference, 1 / 1.3},
                      Surface{}});
        };
        add("_line", "line of 2 points, length 10", lines, Counts::lines);
        add("_strip", "strip of 3 points, legs 8", triangles, Counts::triangles);
    }
}

void add_layers(Workload_List& list) {
    struct Order {
        const char *name, *title;
        Layer_Order order;
        double share; // with blocks
    };
    for (const Order& order : {Order{"layers_front_first", "16 layers, front to back", Layer_Order::front_first, 4},
                               Order{"layers_back_first", "16 layers, back to front", Layer_Order::back_first, 0.98},
                               Order{"layers_shuffled", "16 layers, shuffled", Layer_Order::shuffled, 2}}) {
        const Workload row{
            "layers",
            order.name,
            order.title,
            [order](const Variation& variation) -> Subject { return layered_triangles(64, 16, order.order, variation); },
            {},
            {Shading::gouraud, true},
            Clears::depth,
            Counts::pixels,
            {llvmpipe(triangle_edge)}};
        list.add(row);
        list.add_blocks(row, order.share);
    }
}

void add_models(Workload_List& list, const std::string& dragon) {
    const auto add = [&list](const char* name, const char* title, auto make) {
        const Workload row{"models",
                           name,
                           title,
                           [make](const Variation& variation) -> Subject { return make(variation); },
                           {},
                           {Shading::gouraud, true},
                           Clears::all,
                           Counts::frames,
                           {llvmpipe(small_triangle_edge)}};
        list.add(row);
        list.add_blocks(row, 0.98);
    };
    add("building", "building of 1,000 rooms, whole frame", building_at_angle);
    if (!dragon.empty()) {
        add("dragon", "dragon, whole frame", [dragon](const Variation& variation) { return model_in_front(dragon, variation); });
    }
}

} // namespace bench
