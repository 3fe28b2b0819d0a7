// The help of a command.
#include "app/cli/page.h"

#include <algorithm>
#include <iterator>

namespace vorna::app::manual {
namespace {

// Two options that exclude each other may say so in one of them.
std::vector<std::string> exclusions_of(const Option& option, const std::vector<Option>& all) {
    std::vector<std::string> names = option.excludes;
    for (const Option& other : all) {
        if (std::ranges::find(other.excludes, option.names.back()) != other.excludes.end()) {
            names.push_back(other.names.back());
        }
    }
    std::ranges::sort(names);
    return names;
}

Option_Entry entry_of(const Option& option, const std::vector<Option>& all) {
    const Value& value = option.value;
    Option_Entry entry{.value = value.word,
                       .kind = value.word,
                       .value_optional = !value.bare.empty(),
                       .required = option.is_required,
                       .text = option.text,
                       .choices = value.choices};
    if (option.names.back().starts_with('-')) {
        entry.names = option.names;
    } else {
        entry.value = option.names.back();
        entry.repeated = std::holds_alternative<std::vector<std::string>*>(option.target);
    }
    if (!value.choices.empty()) {
        entry.text += ": " + list_of(value.choices);
    }
    const std::string& by_default = value.bare.empty() ? option.by_default : value.bare;
    std::vector<std::string> remarks;
    if (!value.range.empty()) {
        remarks.push_back(value.range);
    }
    if (!by_default.empty()) {
        remarks.push_back("default: " + by_default);
    }
    if (entry.required && !entry.names.empty()) {
        remarks.emplace_back("required");
    }
    if (!option.needs.empty()) {
        remarks.push_back("with " + list_of(option.needs));
    }
    if (const std::vector<std::string> excluded = exclusions_of(option, all); !excluded.empty()) {
        remarks.push_back("not with " + list_of(excluded));
    }
    for (std::size_t i = 0; i < remarks.size(); ++i) {
        entry.text += (i == 0 ? " (" : "; ") + remarks[i] + (i + 1 == remarks.size() ? ")" : "");
    }
    return entry;
}

// The default group first, the others in the order of their first options.
std::vector<Option_Group> groups_of(const std::vector<Option>& options) {
    std::vector<Option_Group> groups{{default_group, {}}};
    for (const Option& option : options) {
        if (option.group.empty()) {
            continue;
        }
        auto group = std::ranges::find(groups, option.group, &Option_Group::title);
        if (group == groups.end()) {
            group = groups.insert(groups.end(), {option.group, {}});
        }
        group->options.push_back(entry_of(option, options));
    }
    if (groups.front().options.empty()) {
        groups.erase(groups.begin());
    }
    return groups;
}

Page page_with_own_options(const std::string& name, const Command& command) {
    Page page{.name = name, .summary = command.summary, .groups = groups_of(command.options)};
    for (const Option& argument : command.arguments) {
        page.arguments.push_back(entry_of(argument, command.arguments));
    }
    Section examples{"Examples", {}};
    for (const Example& example : command.examples) {
        examples.lines.insert(examples.lines.end(), {example.command, "    " + example.meaning});
    }
    page.sections.push_back(std::move(examples));
    std::ranges::copy(command.sections, std::back_inserter(page.sections));
    page.sections.push_back({"Exit status", {command.statuses}});
    return page;
}

} // namespace

Page page_of(const Program& program, const Command& command) {
    Page page = page_with_own_options(program.itself.name + ' ' + command.name, command);
    for (Option_Group& group : groups_of(program.itself.options)) {
        std::erase_if(group.options, [](const Option_Entry& option) { return option.names.back() == "--version"; });
        page.groups.push_back(std::move(group));
    }
    return page;
}

Page page_of(const Program& program) {
    Page page = page_with_own_options(program.itself.name, program.itself);
    for (const Command& command : program.commands) {
        page.commands.push_back(page_of(program, command));
    }
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
