// Changes of JSON and CBOR documents that leave them documents, so that fuzzers get behind the parser.
#pragma once

#include <nlohmann/json.hpp>
#include <span>
#include <string_view>

#include "app/check/random.h"

namespace fuzzing {

// What documents of a kind are made of.
struct Vocabulary {
    std::span<const std::string_view> keys, words;
    // A list at the top, and something that may stand in it.
    std::string_view list;
    nlohmann::ordered_json (*new_element)(vorna::app::check::Random&);
    // Reads a document that is not text, and tells whether bytes begin as one; null = all documents are text.
    nlohmann::ordered_json (*read_cbor)(std::string_view bytes) = nullptr;
    bool (*is_cbor)(std::string_view bytes) noexcept = nullptr;
};

// Of the fuzzer that is linked with the mutator.
extern const Vocabulary vocabulary;

// A number that is often at the edge of something.
nlohmann::ordered_json odd_number(vorna::app::check::Random& random);

} // namespace fuzzing
