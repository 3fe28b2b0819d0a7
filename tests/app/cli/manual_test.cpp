// What help, manual pages and completions say of the command line.
#include <algorithm>
#include <sstream>

#include <gmock/gmock.h>

#include "app/cli/command.h"
#include "app/cli/command_line.h"
#include "app/cli/help.h"
#include "app/cli/page.h"

namespace {

using namespace vorna::app::manual;

class Manual : public testing::Test {
protected:
    int status = 0;
    std::unique_ptr<CLI::App> application = vorna::app::make_command_line(status);
    Page program = page_of(*application);

    std::vector<Page> pages() const {
        std::vector<Page> pages = program.commands;
        pages.push_back(program);
        return pages;
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
    const std::string help = help_of(page_of(*application->get_subcommand("replay")));
    EXPECT_THAT(help, testing::HasSubstr("Usage: vorna replay [OPTIONS] picture\n"));
    EXPECT_THAT(help, testing::HasSubstr("\n  --until N               Stop after call N; the first call is 0 (not with\n"
                                         "                          --only)\n"));
    EXPECT_THAT(help, testing::HasSubstr("\n  --timing[=FORM] "));
    EXPECT_THAT(help, testing::HasSubstr("table or json\n                          (default: table)\n"));
    EXPECT_THAT(help, testing::HasSubstr("(1\n                          to 100000; default: 3; with --timing)\n"));
    const std::string render = help_of(page_of(*application->get_subcommand("render")));
    EXPECT_THAT(render, testing::HasSubstr("Usage: vorna render [OPTIONS] -o FILE.png "));
    EXPECT_THAT(render, testing::HasSubstr("\n  -o, --output FILE.png   "));
}

// Thrown between parsing and running.
struct Parsed {};

TEST_F(Manual, has_examples_that_the_command_understands) {
    application->parse_complete_callback([] { throw Parsed(); });
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
                application->parse(line, true);
                ADD_FAILURE() << line << ": ran";
            } catch (const Parsed&) {
            } catch (const CLI::CallForHelp&) {
            } catch (const std::exception& error) {
                ADD_FAILURE() << line << ": " << error.what();
            }
        }
        EXPECT_GE(own, 1);
        EXPECT_EQ(page.sections.back().title, "Exit status");
    }
}

} // namespace
