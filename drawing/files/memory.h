// How much memory there is to use.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vorna::drawing {

// What the program occupies now, in bytes; 0 where the system does not say.
std::uint64_t resident_memory();

// Addresses that it uses now; 0 where the system does not say.
std::uint64_t address_space();

// From 512M, 2G, or a number of bytes; K, M, G and T stand for powers of 1024. Throws Usage_Error that names the option.
std::uint64_t parsed_memory(const std::string& option, const std::string& text);

// The same of the setting max_memory; none for an empty text: not given.
std::optional<std::uint64_t> parsed_limit(const std::string& text);

// The other way round, rounded up: as M below 10 G, in bytes below 1 M.
std::string memory_text(std::uint64_t bytes);

} // namespace vorna::drawing
