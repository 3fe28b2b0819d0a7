// What help, manual pages and completions say of the command line.
#include <algorithm>
#include <iomanip>
#include <iterator>
#include <sstream>

#include <gmock/gmock.h>

#include "app/cli/command_line.h"
#include "app/cli/help.h"
#include "app/cli/messages.h"
#include "app/cli/page.h"
#include "app/cli/parser.h"
#include "drawing/files/usage_error.h"

namespace {

using namespace vorna::app::manual;

class Manual : public testing::Test {
protected:
    vorna::app::Program program = vorna::app::make_program();

    std::vector<Page> pages() const {
        std::vector<Page> pages{page_of(program)};
        for (const vorna::app::Command& command : program.commands) {
            pages.push_back(page_of(program, command));
        }
        return pages;
    }
    std::string help_on(const std::string& name) const {
        return help_of(page_of(program, *std::ranges::find(program.commands, name, &vorna::app::Command::name)));
    }
};

TEST_F(Manual, tells_of_every_option_in_lines_that_fit) {
    for (const Page& page : pages()) {
        SCOPED_TRACE(page.name);
        EXPECT_TRUE(page.summary.ends_with('.'));
        std::vector<Option_Entry> entries = page.arguments;
        for (const Option_Group& group : page.groups) {
            entries.insert(entries.end(), group.options.begin(), group.options.end());
        }
        for (const Option_Entry& entry : entries) {
            // A word that stands only for a number or a name says nothing about itself.
            EXPECT_GT(entry.text.size(), 10U) << (entry.names.empty() ? entry.value : entry.names.back());
        }
        std::istringstream help(help_of(page));
        for (std::string line; std::getline(help, line);) {
            EXPECT_LE(line.size(), 80U) << line;
            EXPECT_FALSE(line.ends_with(' ')) << line;
        }
    }
}

TEST_F(Manual, shows_what_an_option_takes_and_goes_together_with) {
    const std::string help = help_on("replay");
    EXPECT_THAT(help, testing::HasSubstr("Usage: vorna replay [OPTIONS] recording\n"));
    EXPECT_THAT(help, testing::HasSubstr("\n  --until N               Stop after call N; the first call is 0 (not with\n"
                                         "                          --only)\n"));
    EXPECT_THAT(help, testing::HasSubstr("\n  --timing[=FORM] "));
    EXPECT_THAT(help, testing::HasSubstr("table or json\n"
                                         "                          (default: table; not with --area, --pixel, --pixels or\n"
                                         "                          --threads)\n"));
    EXPECT_THAT(help, testing::HasSubstr("(1\n                          to 100000; default: 3; with --timing)\n"));
    const std::string render = help_on("render");
    EXPECT_THAT(render, testing::HasSubstr("Usage: vorna render [OPTIONS] -o FILE.png "));
    EXPECT_THAT(render, testing::HasSubstr("\n  -o, --output FILE.png   "));
}

// The words of a command line, where single quotes may stand around whole words, without the program's name.
std::vector<std::string> arguments_of(const std::string& line) {
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> std::quoted(word, '\'');) {
        words.push_back(word);
    }
    words.erase(words.begin());
    return words;
}

TEST_F(Manual, has_examples_that_the_command_understands) {
    for (const Page& page : pages()) {
        SCOPED_TRACE(page.name);
        ASSERT_FALSE(page.sections.empty());
        ASSERT_EQ(page.sections.front().title, "Examples");
        int own = 0;
        for (const std::string& line : page.sections.front().lines) {
            if (line.starts_with(' ')) {
                continue;
            }
            ASSERT_TRUE(line.starts_with("vorna ")) << line;
            own += line.starts_with(page.name + ' ') ? 1 : 0;
            try {
                vorna::app::parsed(program, arguments_of(line));
            } catch (const std::exception& error) {
                ADD_FAILURE() << line << ": " << error.what();
            }
        }
        EXPECT_GE(own, 1);
        EXPECT_EQ(page.sections.back().title, "Exit status");
    }
}

// One option for each input kind, and one for both.
TEST_F(Manual, options_apply_to_the_kinds_of_input_that_their_table_names) {
    const auto rejected = [this](const std::string& option, bool is_map) {
        const vorna::app::Request request = vorna::app::parsed(program, {"render", "a", "-o", "b.png", option});
        try {
            vorna::app::reject_options_of_other_kind(request.given, is_map, "a");
            return std::string();
        } catch (const vorna::drawing::Usage_Error& error) {
            return std::string(error.what());
        }
    };
    EXPECT_EQ(rejected("--turntable=3", true), "--turntable: expected a model, found a");
    EXPECT_EQ(rejected("--turntable=3", false), "");
    EXPECT_EQ(rejected("--labels", false), "--labels: expected a map or drawing, found a");
    EXPECT_EQ(rejected("--labels", true), "");
    EXPECT_EQ(rejected("--antialias", true) + rejected("--antialias", false), "");
}

// The command's names for the library's settings, of which each is that of the same place in the enumeration.
TEST_F(Manual, messages_name_options_that_there_are) {
    const vorna::app::Command& render = *std::ranges::find(program.commands, "render", &vorna::app::Command::name);
    const vorna::drawing::Setting_Names& names = vorna::app::setting_options();
    for (const std::string name : names) {
        const auto has_name = [&](const vorna::app::Option& option) { return option.names.back() == name; };
        EXPECT_TRUE(std::ranges::any_of(render.options, has_name) || std::ranges::any_of(program.itself.options, has_name))
            << name;
    }
    using vorna::drawing::Setting;
    for (const Setting setting : {Setting::bbox, Setting::clip_to, Setting::max_memory, Setting::overlay, Setting::water}) {
        std::string name = "--" + vorna::drawing::name_of(setting);
        std::ranges::replace(name, '_', '-');
        EXPECT_EQ(names[static_cast<std::size_t>(setting)], name);
    }
}

// Names in `needs` and `excludes` that no option has stop the parser from being made; every other mistake shows here.
TEST_F(Manual, tables_are_consistent) {
    for (const vorna::app::Command& command : program.commands) {
        SCOPED_TRACE(command.name);
        std::vector<std::string> names;
        for (const vorna::app::Option& option : command.options) {
            names.insert(names.end(), option.names.begin(), option.names.end());
            EXPECT_TRUE(option.names.back().starts_with("--")) << option.names.back();
            EXPECT_TRUE(option.group.empty() || !option.text.empty()) << option.names.back();
            // A default must be a value that the option accepts.
            if (option.value.problem && !option.by_default.empty()) {
                EXPECT_EQ(option.value.problem(option.by_default), "") << option.names.back();
            }
        }
        std::ranges::sort(names);
        EXPECT_EQ(std::ranges::adjacent_find(names), names.end());
        EXPECT_TRUE(command.run);
    }
}

} // namespace
