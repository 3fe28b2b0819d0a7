// The digest SHA-256.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace vorna::drawing {

// sha256_libcrypto.cpp defines it with libcrypto, which uses the processor's instructions for it, and sha256.cpp without.
class Sha256 {
public:
    Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;
    ~Sha256();

    void add(const std::uint8_t* bytes, std::size_t count);
    // In hexadecimal digits, of all that was added. Ends the use of the object.
    std::string finish();

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace vorna::drawing
