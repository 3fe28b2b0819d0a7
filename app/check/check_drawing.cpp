// Checks of the pixels that calls draw.
#include <algorithm>
#include <set>
#include <string>

#include "app/check/checks.h"
#include "app/check/scene.h"

namespace vorna::app::check {

namespace {

void expect_same(const Trial& trial, const Contents& expected, const Contents& found) {
    if (const std::string where = difference(expected, found); !where.empty()) {
        trial.fail(where);
    }
}

// At least two calls of each slot.
std::vector<Call> scene_of(const Trial& trial, std::size_t part, const Window& window) {
    Random random = trial.random(part);
    return random_scene(random, window, std::max(2, trial.scaled(3)));
}

// The buffers' contents after each call. Before the first call they hold noise.
std::vector<Contents> contents_after_each(Trial& trial, const Configuration& configuration, Tried_Renderer& renderer,
                                          const std::vector<Call>& calls) {
    std::vector<Contents> contents;
    fill_with_noise(renderer, 1);
    for (const Call& call : calls) {
        trial.at(place_of(call.slot, configuration));
        call.draw_with(*renderer);
        contents.push_back(contents_of(renderer));
    }
    return contents;
}

// Fails at the first call after which the contents differ.
void expect_same_contents(Trial& trial, const std::string& where, const std::vector<Call>& calls,
                          const std::vector<Contents>& expected, const std::vector<Contents>& found) {
    for (std::size_t i = 0; i < calls.size(); ++i) {
        trial.at(std::string(calls[i].slot) + ", " + where + ", call " + std::to_string(i + 1));
        expect_same(trial, expected[i], found[i]);
    }
}

} // namespace

void check_visible(Trial& trial) {
    const Window window;
    for (const Configuration& configuration : configurations) {
        Tried_Renderer renderer(trial, configuration, window);
        for (const std::string_view slot : slot_names()) {
            if (slot.starts_with("draw_")) {
                trial.at(place_of(slot, configuration));
                clear(renderer);
                const Contents before = contents_of(renderer);
                plain_call(slot, window).draw_with(*renderer);
                trial.expect(contents_of(renderer).colors != before.colors, "a plain call draws nothing");
            }
        }
    }
}

// Many window sizes, because stray writes miss the window by a few pixels only.
void check_sentinels(Trial& trial) {
    for (std::size_t i = 0; i < std::size(configurations); ++i) {
        Random random = trial.random(i);
        for (int scene = 0; scene < trial.scaled(12); ++scene) {
            // Near the origin, columns and device coordinates differ by a few pixels only.
            const std::int32_t farthest = random.chance(50) ? 9 : 100;
            const Window window{{random.number(1, 70), random.number(1, 40)},
                                {random.number(-farthest, farthest), random.number(-farthest, farthest)},
                                random.number(1, 9)};
            Tried_Renderer renderer(trial, configurations[i], window);
            fill_with_noise(renderer, 2);
            for (const Call& call : random_scene(random, window, 1)) {
                trial.at(place_of(call.slot, configurations[i]) + ", window " + std::to_string(window.size.x) + " x " +
                         std::to_string(window.size.y));
                call.draw_with(*renderer);
                // Rows of full width may be filled as one block.
                const bool fills_blocks = call.slot == "draw_window" || call.slot == "clear_depth_rectangle";
                for (const auto& buffer : renderer.buffers().made()) {
                    if (fills_blocks) {
                        buffer->renew_padding();
                    }
                    if (const std::string broken = buffer->broken_guard(); !broken.empty()) {
                        trial.fail(broken + (buffer->format == Buffer_Format::depth16 ? ", depths" : ", colours"));
                    }
                }
            }
        }
    }
}

void check_repeatable(Trial& trial) {
    const Window window;
    for (std::size_t i = 0; i < std::size(configurations); ++i) {
        const Configuration& configuration = configurations[i];
        const std::vector<Call> calls = scene_of(trial, i, window);
        Tried_Renderer renderer(trial, configuration, window), other(trial, configuration, window);
        const auto first = contents_after_each(trial, configuration, renderer, calls);
        const auto again = contents_after_each(trial, configuration, renderer, calls);
        expect_same_contents(trial, std::string(configuration.name) + ", drawn again", calls, first, again);
        const auto others = contents_after_each(trial, configuration, other, calls);
        expect_same_contents(trial, std::string(configuration.name) + ", another renderer", calls, first, others);
    }
}

// A host may change one rendition from call to call, and free or reuse arguments as soon as a call returns; or it may keep a list
// of calls with all their arguments. A module that remembers addresses draws these two differently.
void check_recorded(Trial& trial) {
    const Window window;
    for (std::size_t i = 0; i < std::size(configurations); ++i) {
        const Configuration& configuration = configurations[i];
        const std::vector<Call> calls = scene_of(trial, i, window);
        Tried_Renderer directly_drawn(trial, configuration, window), from_list(trial, configuration, window);
        fill_with_noise(directly_drawn, 1);
        const VT_Reference<VT_Rendition> shared(new VT_Rendition);
        std::vector<Contents> direct;
        for (Call& next : scene_of(trial, i, window)) {
            trial.at(place_of(next.slot, configuration) + ", drawn directly");
            *shared = *next.rendition;
            next.draw(*directly_drawn, *shared);
            next = {}; // frees the call's points and images
            direct.push_back(contents_of(directly_drawn));
        }
        const auto replayed = contents_after_each(trial, configuration, from_list, calls);
        expect_same_contents(trial, std::string(configuration.name) + ", from a list", calls, direct, replayed);
    }
}

void check_side_by_side(Trial& trial) {
    for (std::size_t i = 0; i < std::size(configurations); ++i) {
        // Two renderers that differ in format, depth or blending, with windows that differ in size and origin.
        struct Side {
            const Configuration& configuration;
            Window window;
            std::vector<Call> calls;
            Tried_Renderer renderer;
            std::vector<Contents> alone, beside;

            Side(Trial& trial, std::size_t part, const Configuration& its, const Window& own)
                : configuration(its), window(own), calls(scene_of(trial, part, own)), renderer(trial, its, own) {}
            void draw(Trial& trial, std::size_t call) {
                trial.at(place_of(calls[call].slot, configuration));
                calls[call].draw_with(*renderer);
                beside.push_back(contents_of(renderer));
            }
        };
        const Configuration& other = configurations[(i + 1) % std::size(configurations)];
        Side left(trial, 2 * i, configurations[i], Window{});
        left.alone = contents_after_each(trial, left.configuration, left.renderer, left.calls);
        Side right(trial, 2 * i + 1, other, Window{{40, 50}, {7, -30}, 0});
        right.alone = contents_after_each(trial, other, right.renderer, right.calls);

        fill_with_noise(left.renderer, 1);
        fill_with_noise(right.renderer, 1);
        for (std::size_t call = 0; call < left.calls.size(); ++call) {
            left.draw(trial, call);
            right.draw(trial, call);
        }
        for (const Side* side : {&left, &right}) {
            const Side& neighbour = side == &left ? right : left;
            expect_same_contents(trial,
                                 std::string(side->configuration.name) + " beside " + std::string(neighbour.configuration.name),
                                 side->calls, side->alone, side->beside);
        }
    }
}

namespace {

// A slot's name without "draw_" and the coordinate form.
std::string_view primitive_of(std::string_view slot) {
    for (const std::string_view form : {"draw_2d_", "draw_dc_", "draw_2di_", "draw_dci_", "draw_3d_"}) {
        if (slot.starts_with(form)) {
            return slot.substr(form.size());
        }
    }
    return slot;
}

// Primitives with a slot that is filled in the changed renderer and empty in the fresh one.
std::set<std::string_view> kept_primitives(VT_Renderer_Data& changed, VT_Renderer_Data& fresh) {
    std::set<std::string_view> kept;
    vorna::for_each_action([&](std::string_view name, auto slot, auto*) {
        if ((changed.actions.*slot).enabled && !(fresh.actions.*slot).enabled) {
            kept.insert(primitive_of(name));
        }
    });
    return kept;
}

} // namespace

// Slots that the new configuration does not install may keep their functions. Primitives that use them are not compared.
void check_reconfigured(Trial& trial) {
    const Window window, window_before{{33, 70}, {5, 5}, 0};
    for (std::size_t i = 0; i < std::size(configurations); ++i) {
        // Before the change: another format, another depth, another blending.
        for (const std::size_t distance : {1U, 3U, 5U}) {
            const Configuration& configuration = configurations[i];
            const Configuration& before = configurations[(i + distance) % std::size(configurations)];
            Tried_Renderer fresh(trial, configuration, window), changed(trial, before, window_before);
            changed.establish(configuration, window);
            const std::set<std::string_view> kept = kept_primitives(*changed, *fresh);
            Random random = trial.random(i);
            std::vector<Call> calls = random_scene(random, window, 1);
            std::erase_if(calls, [&kept](const Call& call) { return kept.count(primitive_of(call.slot)) != 0; });
            const auto expected = contents_after_each(trial, configuration, fresh, calls);
            const auto found = contents_after_each(trial, configuration, changed, calls);
            expect_same_contents(trial, std::string(configuration.name) + " after " + std::string(before.name), calls, expected,
                                 found);
        }
    }
}

namespace {

// Fails when the call changes a pixel for which may_change(column, row) is false. before: the contents of the buffers.
template <class May_Change>
void expect_confined(Trial& trial, Tried_Renderer& renderer, const Contents& before, const Call& call, const char* reason,
                     May_Change&& may_change) {
    call.draw_with(*renderer);
    const Contents after = contents_of(renderer);
    const auto width = static_cast<std::size_t>(after.width);
    for (const auto member : {&Contents::colors, &Contents::depths}) {
        for (std::size_t i = 0; i < (after.*member).size(); ++i) {
            const auto column = static_cast<std::int32_t>(i % width), row = static_cast<std::int32_t>(i / width);
            if ((after.*member)[i] != (before.*member)[i] && !may_change(column, row)) {
                trial.fail(pixel_name(after, i, member == &Contents::depths) + " has changed, " + reason);
            }
        }
    }
}

} // namespace

void check_hard_clip(Trial& trial) {
    const Window window;
    for (std::size_t i = 0; i < std::size(configurations); ++i) {
        Random random = trial.random(i);
        Tried_Renderer renderer(trial, configurations[i], window);
        fill_with_noise(renderer, 1);
        const Contents noise = contents_of(renderer);
        for (int round = 0; round < trial.scaled(8); ++round) {
            for (const std::string_view slot : slot_names()) {
                if (!clips_to_hard_clip(slot)) {
                    continue;
                }
                const Call call = random_call(random, slot, window);
                VT_Int_Rectangle& clip = call.rendition->clip.hard_clip;
                clip = {window.origin.x + random.number(0, 30), window.origin.x + random.number(30, 60),
                        window.origin.y + random.number(0, 20), window.origin.y + random.number(20, 42)};
                trial.at(place_of(slot, configurations[i]));
                restore(renderer, noise);
                expect_confined(trial, renderer, noise, call, "outside the hard clip",
                                [&](std::int32_t column, std::int32_t row) {
                                    return contains(clip, window.origin.x + column, window.origin.y + row);
                                });
            }
        }
    }
}

void check_clip_region(Trial& trial) {
    const Window window;
    for (std::size_t i = 0; i < std::size(configurations); ++i) {
        if (configurations[i].depth) {
            continue;
        }
        Random random = trial.random(i);
        Tried_Renderer renderer(trial, configurations[i], window);
        if (!renderer->declared_options.supports_complex_clip()) {
            continue;
        }
        renderer.set_option("Use Mask", true);
        fill_with_noise(renderer, 1);
        const Contents noise = contents_of(renderer);
        for (int round = 0; round < trial.scaled(8); ++round) {
            for (const std::string_view slot : slot_names()) {
                // Lines of several colours may be drawn through regions.
                const bool may_ignore = slot.find("colorized_polyline") != std::string_view::npos ||
                                        slot.find("gouraud_polyline") != std::string_view::npos;
                if (!draws_primitives(slot) || may_ignore) {
                    continue;
                }
                // A frame: its hole lies outside the region.
                const auto left = static_cast<float>(window.origin.x + random.number(2, 15));
                const auto bottom = static_cast<float>(window.origin.y + random.number(2, 10));
                const auto rectangle = [&](float inset) {
                    const float right = static_cast<float>(window.origin.x + 57) - inset;
                    const float top = static_cast<float>(window.origin.y + 40) - inset;
                    return VT_Contour_Set::Contour{
                        {left + inset, bottom + inset, 0}, {right, bottom + inset, 0}, {right, top, 0}, {left + inset, top, 0}};
                };
                const Call call = random_call(random, slot, window);
                call.rendition->clip.complex_clip = new VT_Contour_Set(std::vector{rectangle(0), rectangle(8)});
                trial.at(place_of(slot, configurations[i]));
                restore(renderer, noise);
                expect_confined(trial, renderer, noise, call, "outside the clip region",
                                [&](std::int32_t column, std::int32_t row) {
                                    const float x = static_cast<float>(window.origin.x + column) + 0.5F;
                                    const float y = static_cast<float>(window.origin.y + row) + 0.5F;
                                    const auto is_in = [&](const VT_Contour_Set::Contour& corners) {
                                        return x > corners[0].x && x < corners[2].x && y > corners[0].y && y < corners[2].y;
                                    };
                                    return is_in(rectangle(0)) && !is_in(rectangle(8));
                                });
            }
        }
    }
}

namespace {

struct Handed_Over_Call {
    std::string_view primitive; // part of the slot's name
    const char* what;
    void (*change)(VT_Rendition&);
};

// Calls that a renderer may hand over to the host's standard functions, which draw with the renderer's other slots.
constexpr Handed_Over_Call handed_over_calls[] = {
    {"polyline", "a wide line", [](VT_Rendition& r) { r.line.weight = 7; }},
    {"polyline", "a dashed line", [](VT_Rendition& r) { r.line.style = vorna::line_style::dashed; }},
    {"polyline", "a smoothed line", [](VT_Rendition& r) { r.line.flags = vorna::line_flag::smoothed; }},
    {"polytriangle", "a hatched face",
     [](VT_Rendition& r) { r.face.pattern = vorna::face_pattern::last_drawn_by_renderers + 1; }},
    {"polytriangle", "special shading", [](VT_Rendition& r) { r.face.flags = vorna::face_flag::special_shading; }},
    {"polygon", "a hatched face", [](VT_Rendition& r) { r.face.pattern = vorna::face_pattern::last_drawn_by_renderers + 1; }},
    {"polymarker", "a large symbol",
     [](VT_Rendition& r) {
         r.marker.symbol = vorna::marker_symbol::circle;
         r.marker.size = 9;
     }},
    {"ellip", "a wide line", [](VT_Rendition& r) { r.line.weight = 3; }},
    {"draw_window", "a hatched window",
     [](VT_Rendition& r) { r.window.fill = vorna::face_pattern::last_drawn_by_renderers + 1; }},
};

// Calls the standard function instead of the slot.
void draw_standard(VT_Renderer_Data& renderer, const Call& call) {
    VT_Action_Table actions = renderer.actions;
    vorna::for_each_action([&](std::string_view name, auto slot, auto*) {
        if (name == call.slot) {
            (renderer.actions.*slot).enabled = 0;
        }
    });
    call.draw_with(renderer);
    renderer.actions = actions;
}

} // namespace

void check_fall_backs(Trial& trial) {
    const Window window;
    for (const Configuration& configuration : configurations) {
        Tried_Renderer renderer(trial, configuration, window);
        for (const std::string_view slot : slot_names()) {
            for (const Handed_Over_Call& handed_over : handed_over_calls) {
                if (!slot.starts_with("draw_") || slot.find(handed_over.primitive) == std::string_view::npos) {
                    continue;
                }
                trial.at(place_of(slot, configuration) + ", " + handed_over.what);
                const Call call = plain_call(slot, window);
                handed_over.change(*call.rendition);
                clear(renderer);
                const Contents before = contents_of(renderer);
                call.draw_with(*renderer);
                trial.expect(contents_of(renderer).colors != before.colors, "nothing is drawn");
                clear(renderer);
                draw_standard(*renderer, call);
                trial.expect(contents_of(renderer).colors != before.colors,
                             "the host's standard function draws nothing with the other slots");
            }
        }
    }
}

} // namespace vorna::app::check
