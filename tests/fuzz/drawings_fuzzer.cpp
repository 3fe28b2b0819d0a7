// DXF: read and drawn. The first byte chooses how.
#include "tests/fuzz/map_drawing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::Bytes input(fuzzing::text_of(data, size));
    const std::size_t style = input.byte() * std::size_t{4};
    fuzzing::try_out([&] { fuzzing::draw_map(input.rest(), style, true); });
    return 0;
}
