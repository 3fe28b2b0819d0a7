// Runs the tests. With a kernel set forced, a processor that lacks it skips the run instead of passing it.
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

#include <gmock/gmock.h>

#include "renderer/kernels/kernel_sets.h"

namespace {

// The status that CTest takes for a skipped test.
constexpr int skipped = 77;

// Says on standard output which set runs when one is forced; not 0 when the tests cannot run with it.
int check_kernels() {
    const char* forced = std::getenv("KRB_KERNELS");
    if (!forced) {
        return 0;
    }
    try {
        const std::string_view chosen = krb::chosen_kernel_set().name;
        std::printf("kernel set: %s\n", chosen.data());
        return chosen == forced ? 0 : 1;
    } catch (const std::invalid_argument& error) {
        const bool lacking = std::string_view(error.what()).find("this processor cannot run") != std::string_view::npos;
        std::printf("%s%s\n", lacking ? "skipped: " : "", error.what());
        return lacking ? skipped : 1;
    }
}

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    const int status = check_kernels();
    return status == 0 ? RUN_ALL_TESTS() : status;
}
