// What the module loader says about files that are no modules.
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "vorna/module.h"
#include "vorna/version.h"

#if !defined(_WIN32)
#include <dlfcn.h>
#endif

#include "host/clip.h"

namespace {

std::string complaint_about(const std::string& path) {
    try {
        const vorna::Module module(path);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "none";
}

void expect_one_line_that_names(const std::string& path, const std::string& reason) {
    const std::string message = complaint_about(path);
    EXPECT_THAT(message, testing::StartsWith(path + ": "));
    EXPECT_THAT(message, testing::HasSubstr(reason));
    EXPECT_THAT(message, testing::Not(testing::HasSubstr("\n")));
}

TEST(Module, Says_Which_File_And_What_Is_Missing) {
    EXPECT_EQ(complaint_about(""), "\"\": not loadable as a renderer module: the path is empty");
    EXPECT_STREQ(vorna::version(), VORNA_VERSION_TEXT);
    expect_one_line_that_names("no/such/module.vrd", "not loadable as a renderer module");
    const std::string text = (std::filesystem::path(testing::TempDir()) / "text.vrd").string();
    std::ofstream(text) << "This is no module.\n";
    expect_one_line_that_names(text, "not loadable as a renderer module");
    std::filesystem::remove(text);
#if !defined(_WIN32)
    Dl_info host;
    constexpr std::int32_t (*function)(const VT_Int_Rectangle&, std::int32_t, const VT_Point*, std::uint16_t*) = VD_Clip;
    ASSERT_NE(dladdr(reinterpret_cast<void*>(function), &host), 0);
    expect_one_line_that_names(host.dli_fname, "it has no entry point VD_Renderer");
#endif
}

} // namespace
