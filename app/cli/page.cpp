// What there is to say of a command.
#include "app/cli/page.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

#include "app/cli/command.h"

namespace vorna::app::manual {
namespace {

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    stream.exceptions(std::ios::badbit); // a failed allocation must not cut the text short
    for (std::string part; std::getline(stream, part, separator);) {
        parts.push_back(part);
    }
    return parts;
}

// The names of options that CLI11 keeps in no order of ours.
std::string names_of(const std::set<CLI::Option*>& options) {
    std::vector<std::string> names;
    names.reserve(options.size());
    for (const CLI::Option* option : options) {
        names.push_back(option->get_name());
    }
    std::ranges::sort(names);
    return list_of(names);
}

// The type's name, and what the checks say of themselves: NAME:{iso,front}, INT:INT in [1 - 1000]. A number stands for itself.
struct Value_Description {
    std::string name, range;
    std::vector<std::string> choices;

    explicit Value_Description(const CLI::Option& option) {
        const std::string text = option.get_type_name();
        const std::size_t colon = text.find(':');
        name = text.substr(0, colon);
        const std::string check = colon == std::string::npos ? "" : text.substr(colon + 1);
        if (check.starts_with('{') && check.ends_with('}')) {
            choices = split(check.substr(1, check.size() - 2), ',');
        }
        const std::size_t bracket = check.find(" in [");
        if (bracket != std::string::npos) {
            range = check.substr(bracket + 5, check.size() - bracket - 6);
            range.replace(range.find(" - "), 3, " to ");
        }
        if (name == "INT" || name == "UINT" || name == "FLOAT") {
            name = "N";
        } else if (name == "TEXT" || name.empty()) {
            name = "NAME";
        }
    }
};

Option_Entry entry_of(const CLI::Option& option) {
    Option_Entry entry;
    for (const std::string& name : option.get_snames()) {
        entry.names.push_back("-" + name);
    }
    for (const std::string& name : option.get_lnames()) {
        entry.names.push_back("--" + name);
    }
    const Value_Description value(option);
    const bool flag = option.get_items_expected_max() == 0;
    entry.value_optional = flag && !option.get_fnames().empty();
    std::string by_default = option.get_default_str();
    if (option.get_positional()) {
        entry.value = option.get_name(true, false);
    } else if (!flag || entry.value_optional) {
        entry.value = value.name;
    }
    entry.kind = option.get_positional() ? value.name : entry.value;
    if (entry.value_optional) {
        by_default = option.get_flag_value(option.get_fnames().front(), "");
    }
    entry.required = option.get_required();
    entry.repeated = option.get_items_expected_max() >= CLI::detail::expected_max_vector_size;
    entry.choices = value.choices;
    entry.text = option.get_description();
    if (!entry.choices.empty()) {
        entry.text += ": " + list_of(entry.choices);
    }
    std::vector<std::string> remarks;
    if (!value.range.empty()) {
        remarks.push_back(value.range);
    }
    if (!by_default.empty()) {
        remarks.push_back("default: " + by_default);
    }
    if (entry.required && !option.get_positional()) {
        remarks.emplace_back("required");
    }
    if (!option.get_needs().empty()) {
        remarks.push_back("with " + names_of(option.get_needs()));
    }
    if (!option.get_excludes().empty()) {
        remarks.push_back("not with " + names_of(option.get_excludes()));
    }
    for (std::size_t i = 0; i < remarks.size(); ++i) {
        entry.text += (i == 0 ? " (" : "; ") + remarks[i] + (i + 1 == remarks.size() ? ")" : "");
    }
    return entry;
}

std::vector<Section> sections_of(const std::string& footer) {
    std::vector<Section> sections;
    for (const std::string& line : split(footer, '\n')) {
        if (line.starts_with("  ")) {
            sections.back().lines.push_back(line.substr(2));
        } else if (line.ends_with(':')) {
            sections.push_back({line.substr(0, line.size() - 1), {}});
        }
    }
    return sections;
}

void add_groups(Page& page, const CLI::App& command, const std::string& only = {}) {
    for (const std::string& title : command.get_groups()) {
        const auto belongs = [&](const CLI::Option* option) {
            return option->get_group() == title && option->nonpositional() && !title.empty() &&
                   (only.empty() ? command.get_parent() == nullptr || option != command.get_help_ptr()
                                 : title == only && option->get_name() != "--version");
        };
        Option_Group group{title, {}};
        for (const CLI::Option* option : command.get_options(belongs)) {
            group.options.push_back(entry_of(*option));
        }
        if (!group.options.empty()) {
            page.groups.push_back(std::move(group));
        }
    }
}

} // namespace

Page page_of(const CLI::App& command) {
    Page page;
    const CLI::App* parent = command.get_parent();
    page.name = parent ? parent->get_name() + " " + command.get_name() : command.get_name();
    page.summary = command.get_description();
    for (const CLI::Option* option : command.get_options([](const CLI::Option* o) { return o->get_positional(); })) {
        page.arguments.push_back(entry_of(*option));
    }
    add_groups(page, command);
    if (parent) {
        add_groups(page, *parent, parent->get_help_ptr()->get_group());
    }
    for (const CLI::App* child : command.get_subcommands([](const CLI::App*) { return true; })) {
        page.commands.push_back(page_of(*child));
    }
    page.sections = sections_of(command.get_footer());
    return page;
}

std::string synopsis_of(const Page& page) {
    std::string text = " [OPTIONS]";
    for (const Option_Group& group : page.groups) {
        for (const Option_Entry& option : group.options) {
            text += option.required ? " " + option.names.front() + value_text_of(option) : "";
        }
    }
    for (const Option_Entry& argument : page.arguments) {
        const std::string name = argument.value + (argument.repeated ? "..." : "");
        text += argument.required ? " " + name : " [" + name + "]";
    }
    return text + (page.commands.empty() ? "" : " COMMAND");
}

std::string value_text_of(const Option_Entry& option) {
    return option.value.empty() ? "" : option.value_optional ? "[=" + option.value + "]" : " " + option.value;
}

} // namespace vorna::app::manual
