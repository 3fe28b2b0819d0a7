// A struct of a recording, with a member that its list of keys leaves out when FORGOTTEN is defined.
#include <cstdint>
#include <optional>

#include "drawing/recording/keys.h"

namespace {

using vorna::drawing::recording::given;

struct Group {
    std::optional<std::int32_t> width;
#if defined(FORGOTTEN)
    std::optional<std::int32_t> forgotten;
#endif

    static constexpr auto keys = std::tuple(given("width", &Group::width));
};

} // namespace

int main() {
    int count = 0;
    vorna::drawing::recording::for_each_field<Group>([&](const auto&) { ++count; });
    return count - 1;
}
