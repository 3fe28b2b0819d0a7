// DXF: read and drawn. The first byte chooses how.
#include "tests/fuzz/map_drawing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzzing::Map_File file(".dxf");
    fuzzing::Bytes input(fuzzing::text_of(data, size));
    const std::size_t style = input.byte() * std::size_t{4};
    fuzzing::try_out([&] { file.draw(input.rest(), style, true); });
    return 0;
}
