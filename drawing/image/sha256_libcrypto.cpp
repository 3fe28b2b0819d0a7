// The digest SHA-256 by libcrypto.
//
// Its newer interface finds algorithms in providers, which are read when the program starts; a statically linked digest has
// nothing to find.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <array>

#include <openssl/sha.h>

#include "drawing/image/sha256.h"

namespace vorna::drawing {

struct Sha256::State {
    SHA256_CTX context;
};

Sha256::Sha256() : state_(std::make_unique<State>()) {
    SHA256_Init(&state_->context);
}

Sha256::~Sha256() = default;

void Sha256::add(const std::uint8_t* bytes, std::size_t count) {
    SHA256_Update(&state_->context, bytes, count);
}

std::string Sha256::finish() {
    std::array<std::uint8_t, SHA256_DIGEST_LENGTH> digest;
    SHA256_Final(digest.data(), &state_->context);
    std::string text;
    for (const std::uint8_t byte : digest) {
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 0xF];
    }
    return text;
}

} // namespace vorna::drawing
