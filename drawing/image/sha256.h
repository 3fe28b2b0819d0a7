// The digest SHA-256.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace vorna::drawing {

// After FIPS 180-4.
class Sha256 {
public:
    void add(const std::uint8_t* bytes, std::size_t count);
    // In hexadecimal digits, of all that was added. Ends the use of the object.
    std::string finish();

private:
    void add_block(const std::uint8_t* block);

    std::array<std::uint32_t, 8> state_{0x6A09E667, 0xBB67AE85, 0x3C6EF372, 0xA54FF53A,
                                        0x510E527F, 0x9B05688C, 0x1F83D9AB, 0x5BE0CD19};
    std::array<std::uint8_t, 64> block_{};
    std::uint64_t count_ = 0;
};

} // namespace vorna::drawing
