// Checks of the option tables.
#include <algorithm>
#include <string>

#include "app/check/checks.h"
#include "app/check/krb_profile.h"

namespace vorna::app::check {

namespace {

constexpr const char* kind_names[] = {"a bool", "a whole number", "a colour", "a pointer"};

struct Named_Table {
    const char* name;
    const VT_Option_Table* table;
};

void expect_kind(const Trial& trial, const Named_Table& in, const Known_Option& known, const VT_Option& option) {
    const std::size_t kind = option.value()->content.index();
    if (kind != known.initial.index()) {
        trial.fail(std::string(in.name) + " table: \"" + known.name + "\" is " + kind_names[kind] + " instead of " +
                   kind_names[known.initial.index()]);
    }
}

// Every known option, in the order of registration and with its scope, and no other.
void expect_registration(const Trial& trial, const Named_Table& in) {
    for (std::size_t i = 0; i < std::max(std::size(known_options), in.table->size()); ++i) {
        const std::string place = std::string(in.name) + " table: option " + std::to_string(i + 1) + " is ";
        if (i >= std::size(known_options)) {
            trial.fail(place + '"' + (*in.table)[i].name() + "\" instead of none");
        }
        const Known_Option& known = known_options[i];
        if (i >= in.table->size() || (*in.table)[i].name() != known.name) {
            trial.fail(place + (i >= in.table->size() ? "missing" : '"' + (*in.table)[i].name() + '"') + " instead of \"" +
                       known.name + '"');
        }
        if ((*in.table)[i].scope() != known.scope) {
            trial.fail(std::string(in.name) + " table: \"" + known.name + "\" has scope " +
                       std::to_string((*in.table)[i].scope()) + " instead of " + std::to_string(known.scope));
        }
    }
}

bool needs_depth_setters(const VT_Renderer_Data& renderer) {
    return renderer.declared_options.buffer_depth() >= 1;
}

} // namespace

void check_known_options(Trial& trial) {
    const VT_Renderer_Data prototype;
    const auto renderer = trial.module().create_renderer(prototype);
    for (const Named_Table in : {Named_Table{"requested", &renderer->requested_table}, {"current", &renderer->current_table}}) {
        for (const Known_Option& known : known_options) {
            if (const VT_Option* option = in.table->find(known.name)) {
                expect_kind(trial, in, known, *option);
            } else if (std::string_view(known.name) == "Color Buffer" ||
                       (std::string_view(known.name).starts_with("ZBuffer ") && needs_depth_setters(*renderer))) {
                trial.fail(std::string(in.name) + " table: \"" + known.name + "\" is missing");
            }
        }
        if (trial.profile() == Profile::krb) {
            expect_registration(trial, in);
        }
    }
}

void check_defaults(Trial& trial) {
    const VT_Renderer_Data prototype;
    const auto renderer = trial.module().create_renderer(prototype);
    const VT_Option_Table& current_table = renderer->current_table;
    if (needs_depth_setters(*renderer)) {
        trial.expect(current_table.find("ZBuffer Write")->as_setter<VT_Bool_Setter>(),
                     "\"ZBuffer Write\" of the current table holds no setter");
        trial.expect(current_table.find("ZBuffer Test")->as_setter<VT_Int_Setter>(),
                     "\"ZBuffer Test\" of the current table holds no setter");
    }
    for (const Known_Option& known : known_options) {
        const VT_Option* const requested = renderer->requested_table.find(known.name);
        const VT_Option* const current = current_table.find(known.name);
        const bool is_setter = std::string_view(known.name).starts_with("ZBuffer ");
        const std::string name = '"' + std::string(known.name) + '"';
        // Only changes are copied to the current table, so values that differ at first stay different.
        if (requested && current && !is_setter && requested->value()->content != current->value()->content) {
            trial.fail(name + " differs in the requested and the current table");
        }
        if (trial.profile() == Profile::krb && requested && requested->value()->content != known.initial) {
            trial.fail(name + " starts with another value than krb.vrd's");
        }
    }
    if (trial.profile() == Profile::krb) {
        const VT_Renderer_Options& declared = renderer->declared_options;
        trial.expect(declared.buffer_depth() == 16, "the renderer does not declare 16 bits of depth");
        trial.expect(declared.backing_store(), "the renderer declares no backing store");
        trial.expect(declared.supports_complex_clip(), "the renderer declares no clip regions");
    }
}

void check_setting(Trial& trial) {
    for (const Configuration& configuration : configurations) {
        Tried_Renderer renderer(trial, configuration);
        for (const Known_Option& known : known_options) {
            trial.at('"' + std::string(known.name) + "\", " + std::string(configuration.name));
            VT_Option* const requested = renderer->requested_table.find(known.name);
            const VT_Option* const current = renderer->current_table.find(known.name);
            if (!requested || !current || std::holds_alternative<VT_Pointer>(known.initial)) {
                continue;
            }
            VT_Option_Content changed = requested->value()->content;
            if (bool* flag = std::get_if<bool>(&changed)) {
                *flag = !*flag;
            } else if (std::int32_t* number = std::get_if<std::int32_t>(&changed)) {
                *number = 3;
            } else {
                changed = VT_Int_RGB{10, 20, 30};
            }
            for (const VT_Option_Content& content : {changed, VT_Option_Content(known.initial)}) {
                requested->set(content);
                renderer->establish_all();
                trial.expect(current->value()->content == content,
                             "the current table does not hold what was set in the requested one");
            }
        }
    }
}

} // namespace vorna::app::check
