// vorna compare with folders and masks, and what it refuses.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/image/png_writer.h"
#include "tests/support/command_line.h"

namespace replay_tests {

namespace {

using testing::HasSubstr;

class Compare_Folders : public testing::Test {
protected:
    // A grey image of 4 x 3 pixels in which the pixel of column 1, row 1 has this level.
    void write(const std::string& name, std::uint8_t level) {
        const vorna::drawing::Image_Form form{.width = 4, .height = 3, .colors = vorna::drawing::Image_Form::Colors::grey};
        folder.file(name, vorna::drawing::png_file(form, [level](std::uint32_t row, std::uint8_t* samples) {
                        std::fill(samples, samples + 4, static_cast<std::uint8_t>(100));
                        samples[1] = row == 1 ? level : samples[1];
                    }));
    }
    void SetUp() override {
        for (const char* name : {"a/one", "b", "masks", "empty"}) {
            std::filesystem::create_directories(folder.file(name));
        }
        write("a/one.png", 100);
        write("b/one.png", 103);
    }
    Outcome compared(std::vector<std::string> options, const std::string& first = "a", const std::string& second = "b") {
        options.insert(options.begin(), {"compare", folder.file(first), folder.file(second)});
        return run_vorna(options);
    }

    Temporary_Folder folder;
};

TEST_F(Compare_Folders, masks_apply_by_name_or_to_all) {
    EXPECT_EQ(compared({}).status, 1);
    EXPECT_EQ(compared({"--tolerance", "3"}).status, 0);
    EXPECT_EQ(compared({"--tolerance", "2"}).status, 1);
    write("masks/one.png", 0); // black where they differ
    write("all.png", 0);
    EXPECT_EQ(compared({"--mask", folder.file("masks")}).status, 0);
    EXPECT_EQ(compared({"--mask", folder.file("all.png")}).status, 0);
    EXPECT_EQ(compared({"--mask", folder.file("all.png")}, "a/one.png", "b/one.png").output,
              "same: 4 x 3 pixels, grey of 8 bits, 11 compared pixels\n");
    EXPECT_EQ(compared({"--mask", folder.file("empty")}).status, 1) << "without a mask all pixels are compared";
    folder.file("black.png", vorna::drawing::png_file(
                                 {.width = 4, .height = 3, .colors = vorna::drawing::Image_Form::Colors::grey},
                                 [](std::uint32_t, std::uint8_t* samples) { std::fill(samples, samples + 4, std::uint8_t{0}); }));
    const Outcome of_nothing = compared({"--mask", folder.file("black.png")}, "a/one.png", "b/one.png");
    EXPECT_EQ(of_nothing.status, 2);
    EXPECT_THAT(of_nothing.errors, HasSubstr("black.png: expected pixels to compare, found none"));
    folder.file("masks/one.png", read_file(std::string(VORNA_GOLDENS) + "/glass.color.png"));
    const Outcome other_size = compared({"--mask", folder.file("masks")});
    EXPECT_EQ(other_size.status, 2);
    EXPECT_THAT(other_size.output, HasSubstr("masks/one.png: expected a mask of 4 x 3 pixels"));
}

TEST_F(Compare_Folders, what_is_missing_counts_and_nothing_is_not_the_same) {
    write("a/two.png", 1);
    write("b/three.png", 1);
    folder.file("b/notes.txt", "not an image");
    const Outcome outcome = compared({"--tolerance", "3"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, HasSubstr("3 images: 1 near enough, 1 missing, 1 extra\n"));
    EXPECT_THAT(compared({}, "empty", "empty").errors, HasSubstr("expected images in it or in"));
    EXPECT_EQ(compared({}, "empty", "empty").status, 2);
    EXPECT_EQ(compared({}, "a", "empty").status, 1);
    EXPECT_THAT(compared({}, "a", "b/one.png").errors, HasSubstr("b/one.png: expected a folder, as the other one is"));
    EXPECT_EQ(compared({}, "a", "b/one.png").status, 2);
    EXPECT_THAT(compared({"--diff", folder.file("d.png")}).errors, HasSubstr("--diff: expected two images"));
}

TEST_F(Compare_Folders, reports_go_to_files_that_were_not_read) {
    EXPECT_THAT(compared({"--json", "-"}).output, HasSubstr("\"near\": 0"));
    EXPECT_THAT(compared({"--json", "-"}).errors, HasSubstr("1 image: 1 different")) << "standard output is taken";
    EXPECT_EQ(compared({"--json", "-", "--junit", "-"}).status, 2);
    EXPECT_EQ(compared({"--html", folder.file("none") + "/page.html"}).status, 2);
    EXPECT_THAT(compared({"--html", folder.file("p.png")}).errors, HasSubstr("expected a name that ends in .html"));
    EXPECT_THAT(run_vorna({"compare", "-", folder.file("a/one.png"), "--html", folder.file("p.html")},
                          read_file(folder.file("a/one.png")))
                    .errors,
                HasSubstr("--html: expected files to compare, found standard input"));
}

} // namespace

} // namespace replay_tests
