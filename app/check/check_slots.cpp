// Checks of the action table.
#include <string>

#include "app/check/checks.h"
#include "app/check/krb_profile.h"

namespace vorna::app::check {

namespace {

// The standard functions of all other slots draw with these: dots, and blocks of depths.
bool is_needed(std::string_view slot, bool depth) {
    return slot == "draw_dci_dot" || slot == "read_color_image" ||
           (depth && (slot == "write_depth_rectangle" || slot == "read_depth_image"));
}

// Calls check(configuration, name, renderer, slot, standard function) for every slot of a new renderer in every configuration.
template <class Check> void for_each_slot(Trial& trial, bool tiling, Check&& check) {
    for (std::size_t i = 0; i < std::size(configurations); ++i) {
        Tried_Renderer renderer(trial, configurations[i]);
        if (tiling) {
            renderer.set_option("Enable Tiling", true);
        }
        vorna::for_each_action([&](std::string_view name, auto slot, auto* standard) {
            trial.at(place_of(name, configurations[i]) + (tiling ? ", tiling" : ""));
            check(i, name, *renderer, (*renderer).actions.*slot, standard);
        });
    }
}

} // namespace

void check_slot_fields(Trial& trial) {
    for (const bool tiling : {false, true}) {
        for_each_slot(trial, tiling, [&](std::size_t, std::string_view, auto& renderer, const auto& slot, auto*) {
            trial.expect(slot.enabled == 0 || slot.enabled == 1, "enabled is neither 0 nor 1");
            if (slot.enabled) {
                trial.expect(slot.function, "enabled without a function");
                trial.expect(slot.owner == &renderer, slot.owner ? "the owner is not the renderer" : "enabled without an owner");
                trial.expect(slot.reserved == 0, "the reserved word is not 0");
            }
        });
    }
}

void check_needed_slots(Trial& trial) {
    for (const bool tiling : {false, true}) {
        for_each_slot(trial, tiling, [&](std::size_t i, std::string_view name, auto&, const auto& slot, auto* standard) {
            const bool is_standard = slot.function == standard;
            if (is_needed(name, configurations[i].depth)) {
                trial.expect(slot.enabled && !is_standard,
                             "the slot has no function of the renderer, and the host cannot draw this by itself");
            }
            if (trial.profile() == Profile::krb) {
                const char found = !slot.enabled ? '-' : is_standard ? 'h' : 'o';
                const auto text_of = [](char letter) {
                    return letter == '-' ? "nothing" : letter == 'h' ? "the host's function" : "a function of the renderer";
                };
                if (const char expected = krb_slot_letter(name, i, tiling); found != expected) {
                    trial.fail(std::string("the slot holds ") + text_of(found) + " instead of " + text_of(expected));
                }
            }
        });
    }
}

} // namespace vorna::app::check
